#include "artwork.h"

#include "libraryreading.h"
#include "platform.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string_view>

using itunes::Artwork;
namespace fs = std::filesystem;
namespace platform = audiocore::platform;

namespace {
constexpr std::int64_t largestPicture = 64 * 1024 * 1024;

std::pair<std::size_t, std::size_t> keyOf(const std::vector<char>& picture)
{
    return {std::hash<std::string_view>()({picture.data(), picture.size()}), picture.size()};
}

bool writeFile(const std::vector<char>& bytes, const fs::path& path)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), std::streamsize(bytes.size()));
    file.close();
    return !file.fail();
}
} // namespace

bool itunes::isPicture(const std::vector<char>& bytes)
{
    const std::string_view all(bytes.data(), bytes.size());
    for (const std::string_view begin : {"\xFF\xD8\xFF", "\x89PNG\r\n\x1A\n", "GIF87a", "GIF89a"})
        if (all.substr(0, begin.size()) == begin)
            return true;
    if (all.substr(0, 4) == "RIFF")
        return all.substr(std::min<std::size_t>(8, all.size()), 4) == "WEBP";
    // Two letters alone may begin any text; the size of the header, below 256, has three zeros.
    constexpr std::size_t headerSize = 14;
    return all.substr(0, 2) == "BM" && all.size() > headerSize + 4 &&
           all.substr(headerSize + 1, 3) == std::string_view("\0\0\0", 3);
}

std::optional<std::vector<char>> itunes::pictureFile(const std::string& path)
{
    platform::FileState state;
    if (path.empty() || !platform::stateOf(path, state) || !state.regular)
        return std::vector<char>();
    const File file(platform::openFile(path, false));
    if (!file || state.size > largestPicture)
        return std::nullopt;
    std::vector<char> bytes(std::size_t(state.size));
    if (platform::readAt(file.get(), 0, bytes.data(), bytes.size()) != bytes.size())
        return std::nullopt;
    return bytes;
}

bool Artwork::write(const std::vector<char>& picture, const std::string& path)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const std::string part = path + ".part" + std::to_string(m_count++);
    std::error_code failure;
    bool done = link(picture, part) || writeFile(picture, fs::u8path(part));
    if (done) {
        fs::rename(fs::u8path(part), fs::u8path(path), failure);
        done = !failure;
    }
    if (done)
        m_files[keyOf(picture)] = path;
    // Also after success: between two names of one file nothing is renamed.
    fs::remove(fs::u8path(part), failure);
    return done;
}

bool Artwork::link(const std::vector<char>& picture, const std::string& path)
{
    const auto known = m_files.find(keyOf(picture));
    if (known == m_files.end() || pictureFile(known->second) != picture)
        return false;
    std::error_code failure;
    fs::create_hard_link(fs::u8path(known->second), fs::u8path(path), failure);
    return !failure;
}
