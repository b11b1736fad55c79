#pragma once

#include <string>

struct stat;

namespace base {
/// Copies so many bytes from the beginning, holes as holes; false, with errno or a reason, for anything less.
bool copyContent(int from, const struct stat& status, int to, std::string& error);
/// Takes the rights away from a new file that it inherited from its folder: it is its owner's alone.
bool makePrivate(int made);
/// Owner, group, mode and attributes of the original, but never rights for others than those that had them:
/// where the group cannot be kept, its rights go. Without the right to give files away the file stays this
/// user's.
bool becomeLike(int original, const struct stat& status, int made);
} // namespace base
