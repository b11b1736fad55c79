#pragma once

#include "base/newfile.h"

#include <string>
#include <vector>

namespace base {
/// Files that are kept for good beside another one, under its name with what they are and the day. Paths are
/// UTF-8.

/// The regular files that are kept so.
std::vector<std::string> keptFiles(const std::string& path, const std::string& kind);
/// Copies `source`, which lies beside `path`, to a name of its own; what is there is never replaced. The new
/// file's path; empty on failure with the reason.
std::string keepFile(const std::string& source, const std::string& path, const std::string& kind,
                     Failure& failure);
/// Gives a copy that lies beside `path` already its name for good.
std::string keepCopy(base::NewFile& copy, const std::string& path, const std::string& kind, Failure& failure);
} // namespace base
