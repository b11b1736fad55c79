#include "library/artwork.h"

#include "base/newfile.h"
#include "library/libraryreading.h"

#include <algorithm>
#include <functional>
#include <string_view>

using base::NewFile;
using itunes::Artwork;

namespace {
constexpr std::int64_t largestPicture = 64 * 1024 * 1024;

std::pair<std::size_t, std::size_t> keyOf(const std::vector<char>& picture)
{
    return {std::hash<std::string_view>()({picture.data(), picture.size()}), picture.size()};
}

std::unique_ptr<NewFile> writtenFile(const std::vector<char>& bytes, const std::string& path)
{
    base::Failure failure;
    auto file = NewFile::forName(path, failure);
    return file && base::writeAt(file->file(), 0, bytes.data(), bytes.size()) == bytes.size()
               ? std::move(file)
               : nullptr;
}

/// The bytes of an open file; nothing when it is too large or cannot be read.
std::optional<std::vector<char>> contentOf(std::FILE* file)
{
    base::FileState state;
    if (!base::stateOf(file, state) || !state.regular || state.size > largestPicture)
        return std::nullopt;
    std::vector<char> bytes(std::size_t(state.size));
    if (base::readAt(file, 0, bytes.data(), bytes.size()) != bytes.size())
        return std::nullopt;
    return bytes;
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
    base::FileState state;
    if (path.empty() || !base::stateOf(path, state) || !state.regular)
        return std::vector<char>();
    const File file(base::openFile(path, false));
    return file ? contentOf(file.get()) : std::nullopt;
}

bool Artwork::write(const std::vector<char>& picture, const std::string& path)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    base::Failure failure;
    std::unique_ptr<NewFile> file = linkTo(picture, path);
    if (!file)
        file = writtenFile(picture, path);
    if (!file || file->takeName(path, failure) != NewFile::Taking::Done)
        return false;
    m_files[keyOf(picture)] = path;
    return true;
}

std::unique_ptr<NewFile> Artwork::linkTo(const std::vector<char>& picture, const std::string& path)
{
    const auto known = m_files.find(keyOf(picture));
    if (known == m_files.end())
        return nullptr;
    base::Failure failure;
    const File file(base::openFile(known->second, false));
    return file && contentOf(file.get()) == picture
               ? NewFile::linkOf(file.get(), known->second, path, failure)
               : nullptr;
}
