#pragma once

#include "base/platform.h"

#include <functional>
#include <memory>
#include <string>

namespace base {
/// A file that lies in the trash, and what brings it back. Paths are bytes as the system has them.
struct TrashedFile
{
    std::string path;  ///< where it was: absolute, through no link
    std::string trash; ///< the folder of that trash, absolute
    std::string name;  ///< its name there
    FileState state;   ///< as it came to lie there
};

/// The desktop's trash as freedesktop.org specifies it: the user's own for files on its disk, for others the
/// one at the top of theirs. No file is copied and none crosses disks: it is renamed, once its note says
/// where it came from. Systems that have another trash, or none, answer that there is none.
///
/// A file's bytes are never touched, and a rename is one step of a disk's journal: a kill or a power cut
/// leaves the file whole, at its path or in the trash. What goes into the trash is therefore not flushed, as
/// no deletion is; a power cut may take what the notes of the last seconds say, and such a file lies in the
/// trash without the place that it came from. What came back is flushed, folder by folder, when the object
/// ends.
///
/// Keeps open what it found for one folder and one disk, so one object is for one run of deletions or one
/// undo. One thread at a time.
class Trash
{
public:
    enum class Taking {
        Done,
        NoTrash, ///< none for this file, or it takes none: the file is as it was
        Failed   ///< the file is gone, is not the one expected, or may not leave its folder; left as it was
    };
    enum class Restoring {
        Done,
        PathTaken, ///< something stands at the path, which is not touched
        Gone,      ///< it is not in the trash any more
        Changed,   ///< what lies in the trash is not as it went there
        Failed
    };

    /// Told where a file is about to go, for writing it down: with the state that is expected of it. False,
    /// with a reason, leaves the file where it is. A name that turns out to be taken is followed by another.
    using Announce = std::function<bool(const TrashedFile& planned, std::string& error)>;

    Trash();
    ~Trash();
    Trash(const Trash&) = delete;
    Trash& operator=(const Trash&) = delete;

    /// Moves what lies at the path itself, a link or a regular file, if it has the content that is expected.
    /// What is not done has a reason. Takes as long for the ten-thousandth file of one name as for the
    /// second.
    Taking take(const std::string& path, const FileState& expected, TrashedFile& taken, std::string& error,
                const Announce& announce = nullptr);
    /// Moves the file back where it was, if nothing stands there, and then removes its note. What is not done
    /// has a reason and changed nothing.
    Restoring restore(const TrashedFile& file, std::string& error);

private:
    struct Places;

    std::unique_ptr<Places> m_places;
};
} // namespace base
