#pragma once

#include "base/failure.h"

#include <chrono>
#include <cstdio>
#include <string>
#include <string_view>

namespace base {
/// The user's folder that the variable names (XDG_CONFIG_HOME and its like), by an absolute path; else the
/// one at home ("/.config"). Empty for a user without a home.
std::string userFolder(const char* variable, const char* atHome);
/// Makes the folder, and those around it, unless it is there; where the disk has rights it is this user's
/// alone. False with the reason.
bool makeUserFolder(const std::string& folder, Failure& failure);
/// Opens a file for reading and writing, the one at the path itself and no link; where there is none it is
/// made with the content, for this user alone. Null with the reason.
std::FILE* openUserFile(const std::string& path, std::string_view content, Failure& failure);
/// Opens a file like that and takes it for this process, as long as it is open. Whoever else has it is waited
/// for so long, and then it is Failure::InUse. Where the disk has no locks it is open and that is all.
std::FILE* lockUserFile(const std::string& path, std::chrono::milliseconds patience, Failure& failure);
} // namespace base
