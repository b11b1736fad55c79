#include "base/userfolder.h"

#include "base/newfile.h"
#include "base/platform.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>
#include <thread>

namespace fs = std::filesystem;

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

bool base::makeUserFolder(const std::string& folder, Failure& failure)
{
    std::error_code refused;
    fs::create_directories(folder, refused);
    if (!refused && fs::is_directory(folder, refused) && !refused) {
        std::error_code borne; // of a disk without rights
        fs::permissions(folder, fs::perms::owner_all, borne);
        return true;
    }
    failure = {"the folder " + folder + " cannot be made: " + (refused ? refused.message() : "it is a file"),
               kindOf(refused.value())};
    return false;
}

std::FILE* base::openUserFile(const std::string& path, std::string_view content, Failure& failure)
{
    removeLeftovers(path); // of a kill while it was made
    std::FILE* const there = openNoLink(path);
    if (there || errno != ENOENT) {
        if (!there)
            failure = systemFailure(path + " cannot be opened: ");
        return there;
    }
    const std::unique_ptr<NewFile> made = NewFile::forName(path, failure);
    if (!made)
        return nullptr;
    if (writeAt(made->file(), 0, content.data(), content.size()) != content.size() ||
        !syncToDevice(made->file())) {
        failure = systemFailure(path + " cannot be made: ");
        return nullptr;
    }
    const NewFile::Taking taking = made->takeFreeName(path, failure);
    const bool isThere = taking == NewFile::Taking::Done || taking == NewFile::Taking::NameTaken;
    return isThere ? openNoLink(path) : nullptr;
}

std::FILE* base::lockUserFile(const std::string& path, std::chrono::milliseconds patience, Failure& failure)
{
    constexpr std::chrono::milliseconds retryPause(20);
    std::FILE* const file = openUserFile(path, std::string_view(), failure);
    const auto end = std::chrono::steady_clock::now() + patience;
    while (file && !lockFile(file) && errno == EWOULDBLOCK) {
        if (std::chrono::steady_clock::now() >= end) {
            std::fclose(file);
            failure = {"another process has " + path, Failure::Kind::InUse};
            return nullptr;
        }
        std::this_thread::sleep_for(retryPause);
    }
    return file;
}
