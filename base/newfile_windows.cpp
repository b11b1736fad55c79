#include "base/newfile.h"

#include "base/newfilename.h"

#include <filesystem>
#include <system_error>

#include <io.h>
#include <share.h>
#include <windows.h>

namespace fs = std::filesystem;
using base::Failure;
using base::NewFile;

namespace {
/// What the system has just refused; its own words follow `what`.
Failure lastFailure(const std::string& what = std::string())
{
    const std::error_code code(int(GetLastError()), std::system_category());
    return {what + code.message(), base::kindOf(code.default_error_condition().value())};
}

fs::path newNameFor(const fs::path& target)
{
    return target.parent_path() / fs::u8path(base::newFileNameFor(target.filename().u8string()));
}

bool mayReplace(const fs::path& target, Failure& failure)
{
    const DWORD attributes = GetFileAttributesW(target.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_READONLY))
        return true;
    failure = attributes == INVALID_FILE_ATTRIBUTES
                  ? lastFailure()
                  : Failure{"the file is read-only", Failure::Kind::FileReadOnly};
    return false;
}

bool createEmpty(const fs::path& path)
{
    const HANDLE made =
        CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    return made != INVALID_HANDLE_VALUE && CloseHandle(made);
}

bool moveOver(const fs::path& from, const fs::path& to)
{
    // Replacing keeps more of the old file than moving does, but needs one.
    return (GetFileAttributesW(to.c_str()) == INVALID_FILE_ATTRIBUTES &&
            MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH)) ||
           ReplaceFileW(to.c_str(), from.c_str(), nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr);
}
} // namespace

struct NewFile::Place
{
    fs::path target;
    fs::path name; ///< of the new file; empty when it has none of its own
};

NewFile::NewFile() : m_place(std::make_unique<Place>()) {}

NewFile::~NewFile()
{
    if (m_file)
        std::fclose(m_file); // what is open cannot be removed here
    std::error_code failure;
    if (!m_place->name.empty())
        fs::remove(m_place->name, failure);
}

std::unique_ptr<NewFile> NewFile::inFolderOf(const std::string& path, std::string&)
{
    std::unique_ptr<NewFile> file(new NewFile);
    file->m_place->target = fs::u8path(path);
    return file;
}

std::unique_ptr<NewFile> NewFile::beside(const std::string& path, Content content, Failure& failure)
{
    std::unique_ptr<NewFile> file = inFolderOf(path, failure);
    return file->openOriginal(failure) && file->becomeOriginal(content, failure) && file->make(failure)
               ? std::move(file)
               : nullptr;
}

std::unique_ptr<NewFile> NewFile::forName(const std::string& path, Failure& failure)
{
    std::unique_ptr<NewFile> file = inFolderOf(path, failure);
    return file->becomeOriginal(Content::Empty, failure) && file->make(failure) ? std::move(file) : nullptr;
}

std::unique_ptr<NewFile> NewFile::linkOf(std::FILE*, const std::string& existing, const std::string& path,
                                         Failure& failure)
{
    std::unique_ptr<NewFile> file = inFolderOf(path, failure);
    const fs::path name = newNameFor(file->m_place->target);
    if (!CreateHardLinkW(name.c_str(), fs::u8path(existing).c_str(), nullptr)) {
        failure = lastFailure();
        return nullptr;
    }
    file->m_place->name = name;
    return file;
}

bool NewFile::openOriginal(Failure& failure)
{
    if (!mayReplace(m_place->target, failure))
        return false;
    if (stateOf(m_place->target.u8string(), m_original))
        return true;
    failure = lastFailure();
    return false;
}

bool NewFile::becomeOriginal(Content content, Failure& failure)
{
    const fs::path name = newNameFor(m_place->target);
    const bool done = content == Content::Copied ? CopyFileW(m_place->target.c_str(), name.c_str(), TRUE) != 0
                                                 : createEmpty(name);
    if (done)
        m_place->name = name;
    else
        failure = lastFailure("no new file can be made in the folder: ");
    return done;
}

bool NewFile::make(Failure& failure)
{
    m_file = openFile(m_place->name.u8string(), true);
    if (!m_file)
        failure = {"the new file cannot be opened"};
    return m_file != nullptr;
}

bool NewFile::isAtItsName() const
{
    FileState own;
    FileState there;
    return !m_file || (stateOf(m_file, own) && stateOf(m_place->name.u8string(), there) && own.isOf(there));
}

NewFile::Taking NewFile::replaceOriginal(Failure& failure)
{
    FileState now;
    if (stateOf(m_place->target.u8string(), now) && now == m_original)
        return moveTo(m_place->target.u8string(), failure);
    failure = {"another program changed the file meanwhile", Failure::Kind::ChangedMeanwhile};
    return Taking::ChangedMeanwhile;
}

NewFile::Taking NewFile::takeName(const std::string& path, Failure& failure)
{
    return moveTo(path, failure);
}

NewFile::Taking NewFile::moveTo(const std::string& name, Failure& failure)
{
    failure = {"another program exchanged the new file meanwhile", Failure::Kind::ChangedMeanwhile};
    if (!isAtItsName())
        return Taking::ChangedMeanwhile;
    if (m_file)
        std::fclose(m_file); // what is open cannot be moved here
    m_file = nullptr;
    if (!moveOver(m_place->name, fs::u8path(name))) {
        failure = lastFailure();
        return Taking::Failed;
    }
    return settleAt(name);
}

NewFile::Taking NewFile::takeFreeName(const std::string& path, Failure& failure)
{
    if (GetFileAttributesW(fs::u8path(path).c_str()) != INVALID_FILE_ATTRIBUTES) {
        failure = {"there is a file of that name"};
        return Taking::NameTaken;
    }
    return moveTo(path, failure);
}

NewFile::Taking NewFile::settleAt(const std::string&)
{
    m_place->name.clear();
    return Taking::Done;
}

void base::removeLeftovers(const std::string& path)
{
    const fs::path target = fs::u8path(path);
    const std::string name = target.filename().u8string();
    std::error_code failure;
    for (const fs::directory_entry& entry : fs::directory_iterator(target.parent_path(), failure))
        if (isNewFileNameFor(entry.path().filename().u8string(), name))
            fs::remove(entry.path(), failure); // fails while its writer has it open
}

bool base::renameFile(const std::string& from, const std::string& to, Failure& failure)
{
    if (moveOver(fs::u8path(from), fs::u8path(to)))
        return true;
    failure = lastFailure();
    return false;
}

bool base::createLike(const std::string& model, const std::string& path, Failure& failure)
{
    if (!mayReplace(fs::u8path(model), failure))
        return false;
    if (createEmpty(fs::u8path(path)) || GetLastError() == ERROR_FILE_EXISTS)
        return true;
    failure = lastFailure("no new file can be made in the folder: ");
    return false;
}
