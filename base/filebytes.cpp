#include "base/filebytes.h"

#include "base/platform.h"

#include <algorithm>
#include <cerrno>
#include <utility>

using base::MemoryFile;
using base::SystemFile;

std::unique_ptr<SystemFile> SystemFile::open(const std::string& path, bool writing)
{
    std::FILE* const opened = openFile(path, writing);
    if (!opened)
        return nullptr;
    auto file = std::make_unique<SystemFile>(opened);
    file->m_owned = true;
    return file;
}

SystemFile::~SystemFile()
{
    if (m_owned)
        std::fclose(m_file);
}

std::optional<std::int64_t> SystemFile::size() const
{
    FileState state;
    return stateOf(m_file, state) && state.regular ? std::optional(state.size) : std::nullopt;
}

std::size_t SystemFile::readAt(std::int64_t offset, void* bytes, std::size_t count) const
{
    return base::readAt(m_file, offset, bytes, count);
}

std::size_t SystemFile::writeAt(std::int64_t offset, const void* bytes, std::size_t count)
{
    errno = 0;
    const std::size_t done = base::writeAt(m_file, offset, bytes, count);
    noteWriting(done == count);
    return done;
}

bool SystemFile::isHole(std::int64_t offset, std::int64_t count) const
{
    return base::isHole(m_file, offset, count);
}

bool SystemFile::makeHole(std::int64_t offset, std::int64_t count)
{
    return base::makeHole(m_file, offset, count);
}

bool SystemFile::truncateTo(std::int64_t size)
{
    errno = 0;
    return noteWriting(base::truncateTo(m_file, size));
}

bool SystemFile::sync()
{
    errno = 0;
    return noteWriting(syncToDevice(m_file));
}

bool SystemFile::noteWriting(bool done)
{
    if (!done && m_writeError == 0)
        m_writeError = errno;
    return done;
}

MemoryFile::MemoryFile(std::string bytes, std::int64_t room) : m_bytes(std::move(bytes)), m_room(room) {}

std::optional<std::int64_t> MemoryFile::size() const
{
    return std::int64_t(m_bytes.size());
}

std::size_t MemoryFile::readAt(std::int64_t offset, void* bytes, std::size_t count) const
{
    if (offset < 0 || offset >= std::int64_t(m_bytes.size()))
        return 0;
    return m_bytes.copy(static_cast<char*>(bytes), count, std::size_t(offset));
}

std::size_t MemoryFile::writeAt(std::int64_t offset, const void* bytes, std::size_t count)
{
    if (offset < 0 || offset >= m_room || count == 0)
        return 0;
    const std::size_t fits = std::size_t(std::min<std::uint64_t>(count, std::uint64_t(m_room - offset)));
    m_bytes.resize(std::max(m_bytes.size(), std::size_t(offset) + fits));
    m_bytes.replace(std::size_t(offset), fits, static_cast<const char*>(bytes), fits);
    return fits;
}

bool MemoryFile::truncateTo(std::int64_t size)
{
    if (size < 0 || size > m_room)
        return false;
    m_bytes.resize(std::size_t(size));
    return true;
}
