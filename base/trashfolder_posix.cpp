#include "base/trashfolder_posix.h"

#include "base/text.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using base::Descriptor;
using base::Trash;
using base::TrashFolder;

namespace {
const std::string noteEnding = ".trashinfo";
constexpr std::size_t longestName = 255;
constexpr std::size_t longestEnding = 16;
constexpr int trashNamesTried = 40;
constexpr int numbersInARow = 4;

std::string reason()
{
    return std::strerror(errno);
}

/// As the note has it: what is no plain character of an address as a number.
std::string encoded(const std::string& path)
{
    static const char digits[] = "0123456789ABCDEF";
    static const std::string plain = "-_.~/!*'()";
    std::string text;
    text.reserve(path.size() + path.size() / 4);
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
            plain.find(c) != std::string::npos)
            text += c;
        else
            text.append({'%', digits[byte >> 4], digits[byte & 15]});
    }
    return text;
}

/// Of this moment, in the user's time.
std::string noteFor(const std::string& path)
{
    const std::time_t now = std::time(nullptr);
    std::tm date = {};
    localtime_r(&now, &date);
    char text[32];
    const std::size_t size = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &date);
    return "[Trash Info]\nPath=" + encoded(path) + "\nDeletionDate=" + std::string(text, size) + '\n';
}

/// Whether it is the system that is short of something.
bool isPassing(int failure)
{
    return failure == EMFILE || failure == ENFILE || failure == ENOMEM || failure == EIO || failure == EINTR;
}

bool isOwnAndWritable(const Descriptor& folder, TrashFolder::Refusal& refusal)
{
    struct stat status = {};
    if (!folder.isOpen() || ::fstat(folder.fd, &status) != 0)
        refusal = {errno == ENOENT ? "there is no trash on that disk"
                                   : "the trash cannot be opened: " + reason(),
                   isPassing(errno)};
    else if (status.st_uid != ::geteuid())
        refusal = {"the trash is another user's"};
    else if (!(status.st_mode & S_IWUSR) || ::faccessat(folder.fd, ".", W_OK | X_OK, 0) != 0)
        refusal = {"the trash is read-only"};
    else
        return true;
    return false;
}

/// No link is followed.
Descriptor openFolderAt(int parent, const std::string& name)
{
    return Descriptor(::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

/// Nothing where it is there already.
void makeFolderAt(int parent, const std::string& name)
{
    (void)::mkdirat(parent, name.c_str(), S_IRWXU);
}

/// Never replaces anything: EEXIST. ENOTSUP where the disk cannot promise that.
bool renameToFree(int fromFolder, const std::string& from, int toFolder, const std::string& to)
{
#ifdef RENAME_NOREPLACE
    if (::renameat2(fromFolder, from.c_str(), toFolder, to.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS)
        return false;
#endif
    if (::linkat(fromFolder, from.c_str(), toFolder, to.c_str(), 0) != 0) {
        if (errno == EPERM || errno == ENOSYS || errno == EOPNOTSUPP || errno == EMLINK)
            errno = ENOTSUP;
        return false;
    }
    if (::unlinkat(fromFolder, from.c_str(), 0) == 0)
        return true;
    const int failure = errno;
    ::unlinkat(toFolder, to.c_str(), 0);
    errno = failure;
    return false;
}
} // namespace

std::unique_ptr<TrashFolder> TrashFolder::in(const Descriptor& folder, const std::string& path, Making making,
                                             Refusal& refusal)
{
    if (!isOwnAndWritable(folder, refusal))
        return nullptr;
    if (making == Making::Allowed) {
        makeFolderAt(folder.fd, "files");
        makeFolderAt(folder.fd, "info");
    }
    std::unique_ptr<TrashFolder> trash(new TrashFolder);
    trash->m_path = path;
    trash->m_files = openFolderAt(folder.fd, "files");
    trash->m_notes = openFolderAt(folder.fd, "info");
    if (!isOwnAndWritable(trash->m_files, refusal) || !isOwnAndWritable(trash->m_notes, refusal))
        return nullptr;
    const int notes = trash->m_notes.fd;
    const long most = notes < 0 ? -1 : ::fpathconf(notes, _PC_NAME_MAX);
    trash->m_longestName = most > 0 ? std::min(std::size_t(most), longestName) : longestName;
    return trash;
}

std::unique_ptr<TrashFolder> TrashFolder::at(const std::string& path, Refusal& refusal)
{
    return in(openFolderOf(path + '/'), path, Making::No, refusal);
}

std::unique_ptr<TrashFolder> TrashFolder::ofUser(const std::string& path, Refusal& refusal)
{
    std::string there = path;
    struct stat status = {};
    while (::stat(there.c_str(), &status) != 0 && there.rfind('/') != 0)
        there.resize(there.rfind('/'));
    if (status.st_uid != ::geteuid()) {
        refusal = {"the trash would be in another user's folder"};
        return nullptr;
    }
    std::size_t end = there.size();
    while (end < path.size()) {
        end = std::min(path.find('/', end + 1), path.size());
        makeFolderAt(AT_FDCWD, path.substr(0, end));
    }
    return in(openFolderOf(path + '/'), path, Making::Allowed, refusal);
}

/// Null where the administrator made no such folder, or not as it has to be for all users.
std::unique_ptr<TrashFolder> TrashFolder::inAllUsersFolder(const Descriptor& top, const std::string& path)
{
    const Descriptor folder = openFolderAt(top.fd, ".Trash");
    struct stat status = {};
    if (!folder.isOpen() || ::fstat(folder.fd, &status) != 0 || !(status.st_mode & S_ISVTX))
        return nullptr;
    const std::string own = std::to_string(::geteuid());
    makeFolderAt(folder.fd, own);
    Refusal refusal;
    return in(openFolderAt(folder.fd, own), path + ".Trash/" + own, Making::Allowed, refusal);
}

std::unique_ptr<TrashFolder> TrashFolder::atTop(const std::string& top, Refusal& refusal)
{
    const std::string path = top.back() == '/' ? top : top + '/';
    const Descriptor folder = openFolderOf(path);
    std::unique_ptr<TrashFolder> trash = inAllUsersFolder(folder, path);
    if (!trash) {
        const std::string own = ".Trash-" + std::to_string(::geteuid());
        makeFolderAt(folder.fd, own);
        trash = in(openFolderAt(folder.fd, own), path + own, Making::Allowed, refusal);
    }
    if (trash)
        trash->m_top = path;
    return trash;
}

Trash::Taking TrashFolder::take(const Source& source, const FileState& expected, TrashedFile& taken,
                                std::string& error)
{
    const auto known = m_numbers.find(source.name);
    std::uint64_t number = known == m_numbers.end() ? 1 : known->second;
    Step step = Step::NameTaken;
    for (int i = 1; step == Step::NameTaken && i <= trashNamesTried; ++i) {
        taken.name = nameFor(source.name, number);
        step = tryName(source, expected, taken, error);
        if (step == Step::Done && number > 1)
            m_numbers[source.name] = number + 1;
        // A trash that is full of the name is not searched number by number.
        number = i < numbersInARow ? number + 1 : m_random() % (std::uint64_t(16) << (2 * std::min(i, 20)));
    }
    if (step == Step::NameTaken)
        error = "the trash has too many files of that name";
    if (step == Step::Done)
        return Trash::Taking::Done;
    return step == Step::Failed ? Trash::Taking::Failed : Trash::Taking::NoTrash;
}

/// Leaves no note where it leaves no file.
TrashFolder::Step TrashFolder::tryName(const Source& source, const FileState& expected, TrashedFile& taken,
                                       std::string& error)
{
    taken.path = source.path + source.name;
    taken.trash = m_path;
    if (!writeNote(taken.name, noteFor(taken.path.substr(m_top.size())))) {
        if (errno == EEXIST)
            return Step::NameTaken;
        const Step step = isPassing(errno) ? Step::Failed : Step::NoTrash;
        error = "the trash takes no file: " + reason();
        return step;
    }
    if (!renameToFree(source.folder, source.name, m_files.fd, taken.name)) {
        const int failure = errno;
        removeNote(taken.name);
        error = std::strerror(failure);
        if (failure == EEXIST)
            return Step::NameTaken;
        return failure == EXDEV || failure == ENOTSUP ? Step::NoTrash : Step::Failed;
    }
    if (stateAt(m_files.fd, taken.name, taken.state) && taken.state.looksLike(expected))
        return Step::Done;
    return giveBack(source, taken.name, error);
}

/// Somebody exchanged the file in between. What cannot go back stays in the trash, with its note.
TrashFolder::Step TrashFolder::giveBack(const Source& source, const std::string& name,
                                        std::string& error) const
{
    error = "another program exchanged the file meanwhile";
    if (renameToFree(m_files.fd, name, source.folder, source.name))
        removeNote(name);
    else
        error += "; what was there is in the trash";
    return Step::Failed;
}

/// False with errno set; then there is none.
bool TrashFolder::writeNote(const std::string& name, const std::string& text) const
{
    const std::string note = name + noteEnding;
    Descriptor made(openAt(m_notes.fd, note, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, S_IRUSR | S_IWUSR));
    if (!made.isOpen())
        return false;
    errno = ENOSPC; // what fewer bytes mean
    const bool whole = ::write(made.fd, text.data(), text.size()) == ssize_t(text.size());
    if (whole && ::close(std::exchange(made.fd, -1)) == 0)
        return true;
    const int failure = errno == EEXIST ? EIO : errno;
    removeNote(name);
    errno = failure;
    return false;
}

void TrashFolder::removeNote(const std::string& name) const
{
    ::unlinkat(m_notes.fd, (name + noteEnding).c_str(), 0);
}

/// With its ending, and so short that there is room for the note's.
std::string TrashFolder::nameFor(const std::string& name, std::uint64_t number) const
{
    std::size_t dot = name.rfind('.');
    if (dot == 0 || dot == std::string::npos || name.size() - dot > longestEnding)
        dot = name.size();
    const std::string ending = (number > 1 ? '.' + std::to_string(number) : "") + name.substr(dot);
    const std::size_t others = ending.size() + noteEnding.size();
    const std::size_t room = m_longestName - std::min(others, m_longestName);
    std::size_t stem = std::min(dot, room);
    while (stem > 0 && stem < dot && room - stem < longestUtf8 && continuesUtf8(name[stem]))
        --stem;
    return name.substr(0, stem) + ending;
}

Trash::Restoring TrashFolder::restore(const TrashedFile& file, int folder, std::string& error) const
{
    FileState there;
    if (!stateAt(m_files.fd, file.name, there)) {
        error = reason();
        return Trash::Restoring::Gone;
    }
    if (!there.looksLike(file.state)) {
        error = "it was changed in the trash";
        return Trash::Restoring::Changed;
    }
    if (!renameToFree(m_files.fd, file.name, folder, nameOf(file.path))) {
        const bool taken = errno == EEXIST;
        error = taken ? "there is a file at its path" : reason();
        return taken ? Trash::Restoring::PathTaken : Trash::Restoring::Failed;
    }
    removeNote(file.name);
    return Trash::Restoring::Done;
}
