#include "base/keptfile.h"

#include <ctime>
#include <filesystem>

namespace fs = std::filesystem;
using base::Failure;
using base::NewFile;

namespace {
std::string beginningOf(const std::string& path, const std::string& kind)
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
} // namespace

std::vector<std::string> base::keptFiles(const std::string& path, const std::string& kind)
{
    const std::string begin = beginningOf(path, kind);
    std::vector<std::string> found;
    std::error_code ended;
    fs::directory_iterator entry(fs::u8path(path).parent_path(), ended);
    for (; !ended && entry != fs::directory_iterator(); entry.increment(ended)) {
        const std::string name = entry->path().u8string();
        if (name.compare(0, begin.size(), begin) == 0 &&
            entry->symlink_status(ended).type() == fs::file_type::regular)
            found.push_back(name);
    }
    return found;
}

std::string base::keepFile(const std::string& source, const std::string& path, const std::string& kind,
                           Failure& failure)
{
    base::removeLeftovers(source);
    const auto copy = NewFile::beside(source, NewFile::Content::Copied, failure);
    return copy ? keepCopy(*copy, path, kind, failure) : std::string();
}

std::string base::keepCopy(NewFile& copy, const std::string& path, const std::string& kind, Failure& failure)
{
    constexpr int mostOfADay = 1000;
    const std::string name = beginningOf(path, kind) + today();
    for (int i = 1; i <= mostOfADay; ++i) {
        std::string kept = i == 1 ? name : name + '-' + std::to_string(i);
        const NewFile::Taking taking = copy.takeFreeName(kept, failure);
        if (taking == NewFile::Taking::Done)
            return kept;
        if (taking != NewFile::Taking::NameTaken)
            return std::string();
    }
    failure = {"there are too many files of the name " + name};
    return std::string();
}
