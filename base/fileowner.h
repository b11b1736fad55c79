#pragma once

#include "base/failure.h"

#include <cstdio>
#include <string>

namespace base {
/// Whose a file is, for a library that several users share. Where files have no such owner they are the
/// user's.
enum class Owner {
    User,
    LibraryOwner, ///< who may write into the library whatever he likes anyway
    Other
};

Owner ownerOf(std::FILE* file, const std::string& libraryPath);

/// Whether the file is the user's own, and nobody else may write into it.
bool isUsersAlone(std::FILE* file);
/// Makes an empty file that nobody but its owner can ever open, unless there is something at the path, a link
/// included; that stays as it is. False with the reason when there is nothing afterwards.
bool createPrivate(const std::string& path, const std::string& libraryPath, Failure& failure);
/// Takes from everybody but the owner the right to open the file from now on.
bool makePrivate(std::FILE* file);
} // namespace base
