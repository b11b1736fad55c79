#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace base {
class NewFile;
}

namespace itunes {
/// Writes pictures to files that appear whole or not at all; equal ones are further names of one file. Calls
/// from any thread.
class Artwork
{
public:
    bool write(const std::vector<char>& picture, const std::string& path);

private:
    std::unique_ptr<base::NewFile> linkTo(const std::vector<char>& picture, const std::string& path);

    std::mutex m_mutex;
    /// The last file of each picture, by hash and size.
    std::map<std::pair<std::size_t, std::size_t>, std::string> m_files;
};

/// Whether the bytes begin as pictures do that media files may hold.
bool isPicture(const std::vector<char>& bytes);

/// A picture file's bytes: empty when there is no such file, nothing when it is too large or cannot be read.
std::optional<std::vector<char>> pictureFile(const std::string& path);
} // namespace itunes
