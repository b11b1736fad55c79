#include "cli/pathlist.h"

#include "base/failure.h"
#include "base/platform.h"

#include <cstdio>
#include <memory>

namespace {
/// The next text up to the separator; false at the end.
bool readPath(std::FILE* list, char separator, std::string& path)
{
    path.clear();
    for (int c = std::getc(list); c != EOF; c = std::getc(list)) {
        if (char(c) == separator)
            return true;
        path += char(c);
    }
    return !path.empty();
}
} // namespace

std::string PathList::read(const Order& order, const std::function<bool(const std::string& path)>& take)
{
    for (const std::string& path : order.paths)
        if (!take(path))
            return std::string();
    if (order.pathsFrom.empty())
        return std::string();
    const bool isInput = order.pathsFrom == "-";
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(nullptr, std::fclose);
    if (!isInput) {
        file.reset(base::openFile(order.pathsFrom, false));
        if (!file)
            return base::systemFailure(order.pathsFrom + ": ").text;
    }
    std::FILE* const list = isInput ? stdin : file.get();
    std::string path;
    while (readPath(list, order.pathsEndWithZero ? '\0' : '\n', path))
        if (!path.empty() && !take(path))
            return std::string();
    return std::ferror(list) ? order.pathsFrom + ": cannot be read to its end" : std::string();
}
