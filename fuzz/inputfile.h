#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <unistd.h>

/// One file in a folder of this process, written anew for each input, for what reads files by their names. A
/// TMPDIR in memory makes it faster.
class InputFile
{
public:
    InputFile()
    {
        std::string folder = (std::filesystem::temp_directory_path() / "melodrift-fuzz-XXXXXX").string();
        if (mkdtemp(folder.data()) == nullptr)
            std::abort();
        m_path = folder + "/input";
    }
    ~InputFile()
    {
        std::error_code failure;
        std::filesystem::remove_all(std::filesystem::path(m_path).parent_path(), failure);
    }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    void write(const std::uint8_t* data, std::size_t size) const
    {
        std::FILE* file = std::fopen(m_path.c_str(), "wb");
        if (file == nullptr || std::fwrite(data, 1, size, file) != size || std::fclose(file) != 0)
            std::abort();
    }
    std::u32string path() const { return {m_path.begin(), m_path.end()}; }

private:
    std::string m_path;
};
