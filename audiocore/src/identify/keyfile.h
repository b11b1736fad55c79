#pragma once

#include <string>

namespace audiocore {
/// The application key in the user's file "melodrift/acoustid-key", in the folder that XDG_CONFIG_HOME names
/// or in ".config" at home. Empty where there is none; and, with a line in the log, where the file is not the
/// user's own, others may write into it, or what it holds is no key: letters, digits, "-" and "_" in one
/// line.
std::string keyInFile();
} // namespace audiocore
