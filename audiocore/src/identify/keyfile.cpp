#include "identify/keyfile.h"

#include "base/fileowner.h"
#include "base/log.h"
#include "base/platform.h"
#include "base/userfolder.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <memory>

namespace {
constexpr std::size_t longestKey = 64;

struct CloseFile
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};

std::string keyPath()
{
    const std::string configuration = base::userFolder("XDG_CONFIG_HOME", "/.config");
    return configuration.empty() ? configuration : configuration + "/melodrift/acoustid-key";
}

bool isKey(const std::string& text)
{
    return !text.empty() && text.size() <= longestKey && std::all_of(text.begin(), text.end(), [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_';
    });
}

std::string withoutBlanks(const std::string& text)
{
    static const char* const blanks = " \t\r\n";
    const std::size_t begin = std::min(text.find_first_not_of(blanks), text.size());
    return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}
} // namespace

std::string audiocore::keyInFile()
{
    const std::string path = keyPath();
    const std::unique_ptr<std::FILE, CloseFile> file(path.empty() ? nullptr : base::openFile(path, false));
    base::FileState state;
    if (!file || !base::stateOf(file.get(), state) || !state.regular)
        return std::string();
    if (!base::isUsersAlone(file.get())) {
        base::logLine(path, "is passed over: it is not your own, or others may write into it");
        return std::string();
    }
    std::array<char, 2 * longestKey> bytes = {};
    const std::size_t size = base::readAt(file.get(), 0, bytes.data(), bytes.size());
    std::string key = withoutBlanks(std::string(bytes.data(), size));
    if (isKey(key))
        return key;
    base::logLine(path, "is passed over: it holds no key");
    return std::string();
}
