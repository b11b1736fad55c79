#pragma once

#include <string>
#include <string_view>

namespace base {
/// A name that nothing has, for a new file beside the file of the given name. No name of music: a folder walk
/// passes it over.
std::string newFileNameFor(const std::string& name);
/// Whether the name in a folder was made by newFileNameFor for the file of that name.
bool isNewFileNameFor(std::string_view entry, const std::string& name);
} // namespace base
