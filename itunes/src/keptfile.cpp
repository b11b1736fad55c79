#include "keptfile.h"

#include "libraryreading.h"
#include "platform.h"

#include <cstdio>
#include <ctime>
#include <filesystem>

namespace fs = std::filesystem;
namespace platform = audiocore::platform;

namespace {
std::string nameOf(const std::string& path, const std::string& kind)
{
    return path + ".melodrift-" + kind + '-';
}

/// As in "2024-12-31".
std::string today()
{
    const std::time_t now = std::time(nullptr);
    std::tm date = {};
#ifdef _WIN32
    localtime_s(&date, &now);
#else
    localtime_r(&now, &date);
#endif
    char text[16];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d", &date)};
}

/// Moves a file to a name that nothing has; false with `taken` when something has it.
bool moveToNew(const std::string& from, const std::string& to, bool& taken, std::string& error)
{
    std::error_code failure;
    fs::create_hard_link(fs::u8path(from), fs::u8path(to), failure);
    taken = failure == std::errc::file_exists;
    if (!failure) {
        platform::removeFile(from);
        return true;
    }
    // Not every system has hard links.
    taken = taken || fs::symlink_status(fs::u8path(to), failure).type() != fs::file_type::not_found;
    return !taken && platform::replaceFile(from, to, error);
}
} // namespace

std::vector<std::string> itunes::keptFiles(const std::string& path, const std::string& kind)
{
    const std::string begin = nameOf(path, kind);
    std::vector<std::string> found;
    std::error_code failure;
    fs::directory_iterator entry(fs::u8path(path).parent_path(), failure);
    for (; !failure && entry != fs::directory_iterator(); entry.increment(failure)) {
        const std::string name = entry->path().u8string();
        if (name.compare(0, begin.size(), begin) == 0 &&
            entry->symlink_status(failure).type() == fs::file_type::regular)
            found.push_back(name);
    }
    return found;
}

std::string itunes::keepFile(const std::string& source, const std::string& path, const std::string& kind,
                             std::string& error)
{
    platform::removeLeftovers(source);
    std::FILE* lockFile = nullptr;
    const std::string copy = platform::copyBeside(source, lockFile, error);
    const File lock(lockFile);
    return copy.empty() ? copy : keepCopy(copy, path, kind, error);
}

std::string itunes::keepCopy(const std::string& copy, const std::string& path, const std::string& kind,
                             std::string& error)
{
    constexpr int mostOfADay = 1000;
    const std::string name = nameOf(path, kind) + today();
    bool taken = true;
    for (int i = 1; taken && i <= mostOfADay; ++i) {
        const std::string kept = i == 1 ? name : name + '-' + std::to_string(i);
        if (moveToNew(copy, kept, taken, error))
            return kept;
    }
    if (taken)
        error = "there are too many files of the name " + name;
    platform::removeFile(copy);
    return std::string();
}
