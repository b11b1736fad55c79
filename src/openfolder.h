#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

/// A folder held open by its descriptor, so that what is done in it is done there whatever becomes of its
/// path. For systems with descriptors of folders.
class OpenFolder
{
public:
    struct Entry
    {
        std::string name;
        bool isFolder; ///< a link to one is none
    };

    OpenFolder() = default;
    /// The folder under the name in the folder that `parent` describes, or AT_FDCWD; a link is not followed.
    OpenFolder(int parent, const char* name);
    ~OpenFolder();
    OpenFolder(OpenFolder&& other) noexcept : m_descriptor(other.m_descriptor) { other.m_descriptor = -1; }
    OpenFolder& operator=(OpenFolder&& other) noexcept;

    bool isOpen() const { return m_descriptor >= 0; }
    int descriptor() const { return m_descriptor; }

    /// Belongs to this process's user, and nobody else may do anything in it.
    bool isPrivate() const;
    /// Whether the name in `parent` leads to this folder itself.
    bool standsUnder(int parent, const char* name) const;
    /// Locks it against all others until it is closed or its process ends. False where another has the lock;
    /// `impossible` tells, where not null, that the file system has none.
    bool lock(bool* impossible = nullptr) const;

    /// Without "." and ".."; empty when it cannot be read.
    std::vector<Entry> entries() const;
    /// Takes out whatever can be taken out, without going into other file systems.
    void removeContents() const;

private:
    void removeContents(dev_t device, int depth) const;

    int m_descriptor = -1;
};
