#include "base/trash.h"

#include "base/trashfolder_posix.h"
#include "base/userfolder.h"

#include <cerrno>
#include <cstring>
#include <map>
#include <set>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using base::Descriptor;
using base::FileState;
using base::Trash;
using base::TrashFolder;

namespace {
/// Empty where the user has no place for it.
std::string usersTrash()
{
    const std::string data = base::userFolder("XDG_DATA_HOME", "/.local/share");
    return data.empty() ? data : data + "/Trash";
}

std::string above(const std::string& folder)
{
    return folder.substr(0, folder.rfind('/', folder.size() - 2) + 1);
}

/// The highest folder above this one, with the slash, on its disk.
std::string topOf(const std::string& folder, dev_t disk)
{
    std::string top = folder;
    struct stat status = {};
    while (top != "/" && ::stat(above(top).c_str(), &status) == 0 && status.st_dev == disk)
        top = above(top);
    return top;
}

/// Whether the path, or what of it is there, lies on the disk.
bool isOnDisk(std::string path, dev_t disk)
{
    struct stat status = {};
    while (!path.empty() && ::stat(path.c_str(), &status) != 0)
        path.resize(path.rfind('/'));
    return !path.empty() && status.st_dev == disk;
}

/// Folders of one disk. Each flush of one waits for the disk's own cache: beyond a few, all of the disk at
/// once is sooner done.
void flush(const std::set<std::string>& folders)
{
#ifdef __linux__
    constexpr std::size_t few = 32;
    if (folders.size() > few && ::syncfs(base::openFolderOf(*folders.begin()).fd) == 0)
        return;
#endif
    for (const std::string& folder : folders)
        base::syncFolder(base::openFolderOf(folder).fd);
}
} // namespace

struct Trash::Places
{
    ~Places();
    bool find(const std::string& folder, std::string& error);
    TrashFolder* trashOf(TrashFolder::Refusal& refusal);
    TrashFolder* trashAt(const std::string& path, TrashFolder::Refusal& refusal);

    /// A trash, or the reason why there is none.
    struct Found
    {
        std::unique_ptr<TrashFolder> trash;
        TrashFolder::Refusal refusal;
    };

    std::string asked; ///< the folder found last, as it was asked for
    Descriptor folder;
    struct stat status = {};
    std::string path; ///< absolute, through no link, with the slash
    std::string trashKey;
    std::map<std::string, Found> trashes;          ///< by the top of their disk; the user's own by nothing
    std::map<std::string, Found> opened;           ///< by their own path
    std::map<dev_t, std::set<std::string>> filled; ///< folders that files came back to, by their disk
};

Trash::Places::~Places()
{
    for (const auto& [disk, folders] : filled)
        flush(folders);
}

/// Opens the folder, unless it is the one found last and still that one.
bool Trash::Places::find(const std::string& name, std::string& error)
{
    struct stat now = {};
    const bool there = ::stat(name.c_str(), &now) == 0;
    if (there && name == asked && now.st_dev == status.st_dev && now.st_ino == status.st_ino)
        return true;
    asked.clear();
    folder = openFolderOf(name);
    path = realPath(name);
    if (!folder.isOpen() || path.empty() || ::fstat(folder.fd, &status) != 0) {
        error = std::strerror(errno);
        return false;
    }
    if (path.back() != '/')
        path += '/';
    const bool usersOwn = isOnDisk(usersTrash(), status.st_dev);
    trashKey = usersOwn ? std::string() : topOf(path, status.st_dev);
    asked = name;
    return true;
}

/// The one for files of the folder found last.
TrashFolder* Trash::Places::trashOf(TrashFolder::Refusal& refusal)
{
    const auto [found, isNew] = trashes.try_emplace(trashKey);
    Found& place = found->second;
    if (isNew || place.refusal.isPassing) {
        place.refusal = {};
        place.trash = trashKey.empty() ? TrashFolder::ofUser(usersTrash(), place.refusal)
                                       : TrashFolder::atTop(trashKey, place.refusal);
    }
    refusal = place.refusal;
    return place.trash.get();
}

TrashFolder* Trash::Places::trashAt(const std::string& trash, TrashFolder::Refusal& refusal)
{
    const auto [found, isNew] = opened.try_emplace(trash);
    Found& place = found->second;
    if (isNew || place.refusal.isPassing) {
        place.refusal = {};
        place.trash = TrashFolder::at(trash, place.refusal);
    }
    refusal = place.refusal;
    return place.trash.get();
}

Trash::Trash() : m_places(std::make_unique<Places>()) {}

Trash::~Trash() = default;

Trash::Taking Trash::take(const std::string& path, const FileState& expected, TrashedFile& taken,
                          std::string& error, const Announce& announce)
{
    if (!m_places->find(folderOf(path), error))
        return Taking::Failed;
    const TrashFolder::Source source = {m_places->folder.fd, m_places->path, nameOf(path)};
    FileState there;
    if (!stateAt(source.folder, source.name, there)) {
        error = std::strerror(errno);
        return Taking::Failed;
    }
    if (!(there.regular || there.link) || !there.hasContentOf(expected)) {
        error = "it is not the file that was listed any more";
        return Taking::Failed;
    }
    TrashFolder::Refusal refusal;
    if (TrashFolder* const trash = m_places->trashOf(refusal))
        return trash->take(source, expected, taken, error, announce);
    error = refusal.reason;
    return refusal.isPassing ? Taking::Failed : Taking::NoTrash;
}

Trash::Restoring Trash::restore(const TrashedFile& file, std::string& error)
{
    if (!m_places->find(folderOf(file.path), error))
        return Restoring::Failed;
    TrashFolder::Refusal refusal;
    const TrashFolder* const trash = m_places->trashAt(file.trash, refusal);
    if (!trash) {
        error = refusal.reason;
        return refusal.isPassing ? Restoring::Failed : Restoring::Gone;
    }
    const Restoring restoring = trash->restore(file, m_places->folder.fd, error);
    if (restoring == Restoring::Done)
        m_places->filled[m_places->status.st_dev].insert(m_places->path);
    return restoring;
}
