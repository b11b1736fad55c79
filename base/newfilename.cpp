#include "base/newfilename.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <random>

namespace {
constexpr std::size_t endingSize = 16;

std::string prefixFor(const std::string& name)
{
    char hash[32];
    std::snprintf(hash, sizeof hash, ".melodrift-%016zx-", std::hash<std::string>()(name));
    return hash;
}

bool isHexadecimal(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
}
} // namespace

std::string base::newFileNameFor(const std::string& name)
{
    std::random_device random;
    char ending[endingSize + 1];
    std::snprintf(ending, sizeof ending, "%08x%08x", random(), random());
    return prefixFor(name) + ending;
}

bool base::isNewFileNameFor(std::string_view entry, const std::string& name)
{
    const std::string prefix = prefixFor(name);
    return entry.size() == prefix.size() + endingSize && entry.substr(0, prefix.size()) == prefix &&
           std::all_of(entry.end() - endingSize, entry.end(), isHexadecimal);
}
