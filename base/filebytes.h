#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

namespace base {
/// The bytes of a file by their places, wherever they lie: what reads and edits files stands on this, and
/// knows no names and no other files. One thread at a time.
class FileBytes
{
public:
    virtual ~FileBytes() = default;

    /// Nothing for what is no regular file.
    virtual std::optional<std::int64_t> size() const = 0;
    /// Both answer the bytes done, fewer only at the end or on failure. Writing behind the end leaves zeros
    /// between.
    virtual std::size_t readAt(std::int64_t offset, void* bytes, std::size_t count) const = 0;
    virtual std::size_t writeAt(std::int64_t offset, const void* bytes, std::size_t count) = 0;
    /// Whether the bytes take no room: they are zeros. False also where nobody can tell.
    virtual bool isHole(std::int64_t offset, std::int64_t count) const = 0;
    /// Makes the bytes zeros that take no room, behind the end as well; false where that cannot be done.
    virtual bool makeHole(std::int64_t offset, std::int64_t count) = 0;
    virtual bool truncateTo(std::int64_t size) = 0;
    /// Hands everything to where it is safe.
    virtual bool sync() = 0;
};

/// A file of the system.
class SystemFile final : public FileBytes
{
public:
    /// An open file, which stays the caller's.
    explicit SystemFile(std::FILE* file) : m_file(file) {}
    /// Opens as openFile() does, until the object goes; null with errno set.
    static std::unique_ptr<SystemFile> open(const std::string& path, bool writing);
    ~SystemFile() override;
    SystemFile(const SystemFile&) = delete;
    SystemFile& operator=(const SystemFile&) = delete;

    /// The system's number for why the first writing that failed did, a flush included; 0 while none has.
    int writeError() const { return m_writeError; }

    std::optional<std::int64_t> size() const override;
    std::size_t readAt(std::int64_t offset, void* bytes, std::size_t count) const override;
    std::size_t writeAt(std::int64_t offset, const void* bytes, std::size_t count) override;
    bool isHole(std::int64_t offset, std::int64_t count) const override;
    bool makeHole(std::int64_t offset, std::int64_t count) override;
    bool truncateTo(std::int64_t size) override;
    bool sync() override;

private:
    bool noteWriting(bool done);

    std::FILE* m_file;
    bool m_owned = false;
    int m_writeError = 0;
};

/// A file that is bytes in memory alone. What goes beyond its room fails as on a full disk.
class MemoryFile final : public FileBytes
{
public:
    explicit MemoryFile(std::string bytes, std::int64_t room = std::int64_t(1) << 30);

    const std::string& bytes() const { return m_bytes; }

    std::optional<std::int64_t> size() const override;
    std::size_t readAt(std::int64_t offset, void* bytes, std::size_t count) const override;
    std::size_t writeAt(std::int64_t offset, const void* bytes, std::size_t count) override;
    bool isHole(std::int64_t, std::int64_t) const override { return false; }
    bool makeHole(std::int64_t, std::int64_t) override { return false; }
    bool truncateTo(std::int64_t size) override;
    bool sync() override { return true; }

private:
    std::string m_bytes;
    std::int64_t m_room;
};
} // namespace base
