#include "base/newfile.h"

#include "base/newfilename.h"

#include <filesystem>
#include <system_error>

#include <io.h>
#include <share.h>
#include <windows.h>

namespace fs = std::filesystem;
using base::NewFile;

namespace {
std::string reason(const std::error_code& code = std::error_code(int(GetLastError()), std::system_category()))
{
    return code.message();
}

fs::path newNameFor(const fs::path& target)
{
    return target.parent_path() / fs::u8path(base::newFileNameFor(target.filename().u8string()));
}

bool mayReplace(const fs::path& target, std::string& error)
{
    const DWORD attributes = GetFileAttributesW(target.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_READONLY))
        return true;
    error = attributes == INVALID_FILE_ATTRIBUTES ? reason() : "the file is read-only";
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

std::unique_ptr<NewFile> NewFile::beside(const std::string& path, Content content, std::string& error)
{
    std::unique_ptr<NewFile> file = inFolderOf(path, error);
    return file->openOriginal(error) && file->becomeOriginal(content, error) && file->make(error)
               ? std::move(file)
               : nullptr;
}

std::unique_ptr<NewFile> NewFile::forName(const std::string& path, std::string& error)
{
    std::unique_ptr<NewFile> file = inFolderOf(path, error);
    return file->becomeOriginal(Content::Empty, error) && file->make(error) ? std::move(file) : nullptr;
}

std::unique_ptr<NewFile> NewFile::linkOf(std::FILE*, const std::string& existing, const std::string& path,
                                         std::string& error)
{
    std::unique_ptr<NewFile> file = inFolderOf(path, error);
    const fs::path name = newNameFor(file->m_place->target);
    if (!CreateHardLinkW(name.c_str(), fs::u8path(existing).c_str(), nullptr)) {
        error = reason();
        return nullptr;
    }
    file->m_place->name = name;
    return file;
}

bool NewFile::openOriginal(std::string& error)
{
    if (!mayReplace(m_place->target, error))
        return false;
    if (stateOf(m_place->target.u8string(), m_original))
        return true;
    error = reason();
    return false;
}

bool NewFile::becomeOriginal(Content content, std::string& error)
{
    const fs::path name = newNameFor(m_place->target);
    const bool done = content == Content::Copied ? CopyFileW(m_place->target.c_str(), name.c_str(), TRUE) != 0
                                                 : createEmpty(name);
    if (done)
        m_place->name = name;
    else
        error = "no new file can be made in the folder: " + reason();
    return done;
}

bool NewFile::make(std::string& error)
{
    m_file = openFile(m_place->name.u8string(), true);
    if (!m_file)
        error = "the new file cannot be opened";
    return m_file != nullptr;
}

bool NewFile::isAtItsName() const
{
    FileState own;
    FileState there;
    return !m_file || (stateOf(m_file, own) && stateOf(m_place->name.u8string(), there) && own.isOf(there));
}

NewFile::Taking NewFile::replaceOriginal(std::string& error)
{
    FileState now;
    if (stateOf(m_place->target.u8string(), now) && now == m_original)
        return moveTo(m_place->target.u8string(), error);
    error = "another program changed the file meanwhile";
    return Taking::ChangedMeanwhile;
}

NewFile::Taking NewFile::takeName(const std::string& path, std::string& error)
{
    return moveTo(path, error);
}

NewFile::Taking NewFile::moveTo(const std::string& name, std::string& error)
{
    error = "another program exchanged the new file meanwhile";
    if (!isAtItsName())
        return Taking::ChangedMeanwhile;
    if (m_file)
        std::fclose(m_file); // what is open cannot be moved here
    m_file = nullptr;
    if (!moveOver(m_place->name, fs::u8path(name))) {
        error = reason();
        return Taking::Failed;
    }
    return settleAt(name);
}

NewFile::Taking NewFile::takeFreeName(const std::string& path, std::string& error)
{
    if (GetFileAttributesW(fs::u8path(path).c_str()) != INVALID_FILE_ATTRIBUTES) {
        error = "there is a file of that name";
        return Taking::NameTaken;
    }
    return moveTo(path, error);
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

bool base::renameFile(const std::string& from, const std::string& to, std::string& error)
{
    if (moveOver(fs::u8path(from), fs::u8path(to)))
        return true;
    error = reason();
    return false;
}

bool base::createLike(const std::string& model, const std::string& path, std::string& error)
{
    if (!mayReplace(fs::u8path(model), error))
        return false;
    if (createEmpty(fs::u8path(path)) || GetLastError() == ERROR_FILE_EXISTS)
        return true;
    error = "no new file can be made in the folder: " + reason();
    return false;
}
