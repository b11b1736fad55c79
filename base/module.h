#pragma once

#include <string>

namespace base {
/// Something that a module offers by its name; loads the module, which lies beside this library, and keeps it
/// to the end of the process. Null with the reason. Any thread.
void* offeredBy(const std::string& module, const char* name, std::string& error);
} // namespace base
