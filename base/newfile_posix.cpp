#include "base/newfile.h"

#include "base/descriptor_posix.h"
#include "base/filecopy_posix.h"
#include "base/newfilename.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using base::Descriptor;
using base::Failure;
using base::NewFile;

namespace {
constexpr mode_t anyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr int namesTried = 100;

/// Root may write everywhere; a file or folder that nobody may write stays as it is all the same.
bool mayWrite(int folder, const std::string& name, mode_t mode)
{
    if (mode & anyWrite)
        return ::faccessat(folder, name.c_str(), W_OK, 0) == 0;
    errno = 0; // the mode says all
    return false;
}

bool mayReplace(int folder, const std::string& name, const struct stat& file, Failure& failure)
{
    struct stat directory = {};
    if (::fstat(folder, &directory) != 0) {
        failure = base::systemFailure();
        return false;
    }
    if (!mayWrite(folder, name, file.st_mode)) {
        failure = errno != 0 ? base::systemFailure("the file is not to be written: ")
                             : Failure{"the file is read-only", Failure::Kind::FileReadOnly};
        return false;
    }
    if (!mayWrite(folder, ".", directory.st_mode)) {
        failure = errno != 0 ? base::systemFailure("the folder is not to be written: ")
                             : Failure{"the folder is read-only", Failure::Kind::FolderReadOnly};
        return false;
    }
    return true;
}

/// Opens what a new file is to be like.
Descriptor openModel(int folder, const std::string& name, struct stat& status, Failure& failure)
{
    Descriptor model(base::openAt(folder, name, O_RDONLY | O_NOFOLLOW));
    if (!model.isOpen() || ::fstat(model.fd, &status) != 0)
        failure = base::systemFailure();
    else if (!S_ISREG(status.st_mode))
        failure = {"not a regular file"};
    else if (mayReplace(folder, name, status, failure))
        return model;
    return Descriptor();
}
} // namespace

struct NewFile::Place
{
    Descriptor folder;
    Descriptor original;
    struct stat originalStatus = {};
    std::string target;
    std::string name; ///< of the new file; empty when it has none of its own
};

NewFile::NewFile() : m_place(std::make_unique<Place>()) {}

NewFile::~NewFile()
{
    if (!m_place->name.empty() && isAtItsName())
        ::unlinkat(m_place->folder.fd, m_place->name.c_str(), 0);
    if (m_file)
        std::fclose(m_file);
}

std::unique_ptr<NewFile> NewFile::inFolderOf(const std::string& path, Failure& failure)
{
    std::unique_ptr<NewFile> file(new NewFile);
    file->m_place->target = nameOf(path);
    file->m_place->folder = openFolderOf(path);
    if (file->m_place->folder.isOpen())
        return file;
    failure = base::systemFailure();
    return nullptr;
}

std::unique_ptr<NewFile> NewFile::beside(const std::string& path, Content content, Failure& failure)
{
    std::unique_ptr<NewFile> file = inFolderOf(path, failure);
    if (file && file->openOriginal(failure) && file->make(failure) && file->becomeOriginal(content, failure))
        return file;
    return nullptr;
}

std::unique_ptr<NewFile> NewFile::forName(const std::string& path, Failure& failure)
{
    std::unique_ptr<NewFile> file = inFolderOf(path, failure);
    return file && file->make(failure) ? std::move(file) : nullptr;
}

std::unique_ptr<NewFile> NewFile::linkOf(std::FILE* open, const std::string& existing,
                                         const std::string& path, Failure& failure)
{
    std::unique_ptr<NewFile> file = inFolderOf(path, failure);
    if (!file)
        return nullptr;
    const int own = ::fcntl(::fileno(open), F_DUPFD_CLOEXEC, 0);
    file->m_file = own >= 0 ? ::fdopen(own, "rb") : nullptr;
    const std::string name = base::newFileNameFor(file->m_place->target);
    if (!file->m_file ||
        ::linkat(AT_FDCWD, existing.c_str(), file->m_place->folder.fd, name.c_str(), 0) != 0) {
        failure = base::systemFailure();
        return nullptr;
    }
    file->m_place->name = name;
    if (file->isAtItsName())
        return file;
    ::unlinkat(file->m_place->folder.fd, name.c_str(), 0); // a further name of something else
    failure = {"the file was exchanged meanwhile", Failure::Kind::ChangedMeanwhile};
    return nullptr;
}

bool NewFile::openOriginal(Failure& failure)
{
    m_place->original = openModel(m_place->folder.fd, m_place->target, m_place->originalStatus, failure);
    m_original = stateFrom(m_place->originalStatus);
    return m_place->original.isOpen();
}

bool NewFile::make(Failure& failure)
{
    for (int i = 0; i < namesTried && !m_file; ++i) {
        const std::string name = base::newFileNameFor(m_place->target);
        Descriptor made = createPrivateAt(m_place->folder.fd, name, Inherited::Refused);
        if (!made.isOpen() && errno == EEXIST)
            continue;
        m_file = made.isOpen() ? ::fdopen(made.fd, "r+b") : nullptr;
        if (!m_file) {
            failure = base::systemFailure("no new file can be made in the folder: ");
            return false;
        }
        made.fd = -1; // the stream's now
        m_place->name = name;
    }
    if (m_file)
        lockFile(m_file);
    else
        failure = {"no new file can be made in the folder: all names are taken"};
    return m_file != nullptr;
}

bool NewFile::becomeOriginal(Content content, Failure& failure)
{
    const int from = m_place->original.fd;
    const int made = ::fileno(m_file);
    std::string reason;
    struct stat now = {};
    const bool done =
        (content == Content::Empty || copyContent(from, m_place->originalStatus, made, reason)) &&
        becomeLike(from, m_place->originalStatus, made) && ::fstat(from, &now) == 0;
    if (done && stateFrom(now) == m_original)
        return true;
    const std::string what = "the new file cannot be written: ";
    if (done)
        failure = {what + "another program is writing the file", Failure::Kind::ChangedMeanwhile};
    else
        failure = reason.empty() ? base::systemFailure(what) : Failure{what + reason};
    return false;
}

bool NewFile::isAtItsName() const
{
    FileState own;
    FileState there;
    return m_file && stateOf(m_file, own) && stateAt(m_place->folder.fd, m_place->name, there) &&
           own.isOf(there);
}

NewFile::Taking NewFile::replaceOriginal(Failure& failure)
{
    FileState now;
    if (stateAt(m_place->folder.fd, m_place->target, now) && now == m_original)
        return moveTo(m_place->target, failure);
    failure = {"another program changed the file meanwhile", Failure::Kind::ChangedMeanwhile};
    return Taking::ChangedMeanwhile;
}

NewFile::Taking NewFile::takeName(const std::string& path, Failure& failure)
{
    return moveTo(nameOf(path), failure);
}

NewFile::Taking NewFile::moveTo(const std::string& name, Failure& failure)
{
    failure = {"another program exchanged the new file meanwhile", Failure::Kind::ChangedMeanwhile};
    if (!isAtItsName())
        return Taking::ChangedMeanwhile;
    const int folder = m_place->folder.fd;
    if (::renameat(folder, m_place->name.c_str(), folder, name.c_str()) != 0) {
        failure = base::systemFailure();
        return Taking::Failed;
    }
    return settleAt(name);
}

NewFile::Taking NewFile::takeFreeName(const std::string& path, Failure& failure)
{
    const int folder = m_place->folder.fd;
    const std::string name = nameOf(path);
    failure = {"another program exchanged the new file meanwhile", Failure::Kind::ChangedMeanwhile};
    if (!isAtItsName())
        return Taking::ChangedMeanwhile;
    if (::linkat(folder, m_place->name.c_str(), folder, name.c_str(), 0) == 0)
        return settleAt(name);
    FileState there;
    if (errno == EEXIST || stateAt(folder, name, there)) {
        failure = {"there is a file of that name"};
        return Taking::NameTaken;
    }
    return moveTo(name, failure); // not every file system knows further names
}

/// What follows once the file has that name.
NewFile::Taking NewFile::settleAt(const std::string& name)
{
    const int folder = m_place->folder.fd;
    if (isAtItsName()) // it has its former name as well: between names of one file nothing is renamed
        ::unlinkat(folder, m_place->name.c_str(), 0);
    syncFolder(folder);
    m_place->name = name;
    const Taking taking = isAtItsName() ? Taking::Done : Taking::ChangedMeanwhile;
    m_place->name.clear();
    return taking;
}

void base::removeLeftovers(const std::string& path)
{
    const Descriptor folder = openFolderOf(path);
    const std::string name = nameOf(path);
    const int listed = ::dup(folder.fd);
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(listed < 0 ? nullptr : ::fdopendir(listed), ::closedir);
    if (!entries)
        return;
    while (const dirent* entry = ::readdir(entries.get())) {
        if (!isNewFileNameFor(entry->d_name, name))
            continue;
        // A living writer holds a lock on its file.
        const Descriptor file(openAt(folder.fd, entry->d_name, O_RDWR | O_NOFOLLOW));
        if (file.isOpen() && ::flock(file.fd, LOCK_EX | LOCK_NB) == 0)
            ::unlinkat(folder.fd, entry->d_name, 0);
    }
}

bool base::renameFile(const std::string& from, const std::string& to, Failure& failure)
{
    const Descriptor folder = openFolderOf(from);
    if (folder.isOpen() && ::renameat(folder.fd, nameOf(from).c_str(), folder.fd, nameOf(to).c_str()) == 0) {
        syncFolder(folder.fd);
        return true;
    }
    failure = base::systemFailure();
    return false;
}
