#include "base/userfolder.h"

#include <cstdlib>

namespace {
/// The value, if it is an absolute path.
std::string folderOfVariable(const char* name)
{
    const char* const value = std::getenv(name);
    return value && *value == '/' ? value : std::string();
}
} // namespace

std::string base::userFolder(const char* variable, const char* atHome)
{
    std::string named = folderOfVariable(variable);
    if (!named.empty())
        return named;
    const std::string home = folderOfVariable("HOME");
    return home.empty() ? home : home + atHome;
}
