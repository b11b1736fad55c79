#pragma once

#include <string>

namespace base {
/// The user's folder that the variable names (XDG_CONFIG_HOME and its like), by an absolute path; else the
/// one at home ("/.config"). Empty for a user without a home.
std::string userFolder(const char* variable, const char* atHome);
} // namespace base
