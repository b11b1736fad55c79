#pragma once

#include "base/failure.h"
#include "base/platform.h"

#include <cstdio>
#include <memory>
#include <string>

namespace base {
/// A file that is made under a name of its own and then takes another's place at one stroke. Whoever else
/// writes into the folder changes nothing about which bytes go where: the file is written through what made
/// it, and its name is looked at before it is used. One thread at a time.
class NewFile
{
public:
    enum class Content { Copied, Empty };
    enum class Taking {
        Done,
        NameTaken,        ///< by something that was not to be replaced
        ChangedMeanwhile, ///< somebody else wrote the file, or exchanged a name: everything is as they left
                          ///< it
        Failed
    };

    /// Beside the file at the path, which is no link: with its owner, mode and attributes, and no more rights
    /// for anybody, whatever the folder hands on. Locked as long as the object lives. Null with the reason.
    static std::unique_ptr<NewFile> beside(const std::string& path, Content content, Failure& failure);
    /// An empty file of this user alone, in the folder of the path.
    static std::unique_ptr<NewFile> forName(const std::string& path, Failure& failure);
    /// A further name of the open file, which lies at `existing`, in the folder of the path; for reading
    /// only.
    static std::unique_ptr<NewFile> linkOf(std::FILE* open, const std::string& existing,
                                           const std::string& path, Failure& failure);
    /// Removes what took no place.
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    /// For reading and writing; stays this object's. Not to be used once the file took a place.
    std::FILE* file() const { return m_file; }
    /// The file that this one lies beside, as it was when this one was made.
    const FileState& original() const { return m_original; }
    /// Takes the place of the original, which has to be as it was. Not by forName() and linkOf(). What is not
    /// done has a reason.
    Taking replaceOriginal(Failure& failure);
    /// Takes the name, in the same folder, of whatever is there.
    Taking takeName(const std::string& path, Failure& failure);
    /// Takes a name in the same folder that nothing has, not even a link to nowhere.
    Taking takeFreeName(const std::string& path, Failure& failure);

private:
    struct Place;

    NewFile();
    static std::unique_ptr<NewFile> inFolderOf(const std::string& path, Failure& failure);
    bool openOriginal(Failure& failure);
    bool make(Failure& failure);
    bool becomeOriginal(Content content, Failure& failure);
    bool isAtItsName() const;
    Taking moveTo(const std::string& name, Failure& failure);
    Taking settleAt(const std::string& name);

    std::unique_ptr<Place> m_place;
    std::FILE* m_file = nullptr;
    FileState m_original;
};

/// Removes the new files that killed writers left beside the file; those of living writers stay.
void removeLeftovers(const std::string& path);
/// Gives what lies at `from` the name of `to`, in the same folder, instead of whatever is there.
bool renameFile(const std::string& from, const std::string& to, Failure& failure);
#ifdef _WIN32
/// Makes an empty file with owner and mode of `model` unless there is something at the path, a link included;
/// that stays as it is. False with the reason in `error` when there is nothing afterwards.
bool createLike(const std::string& model, const std::string& path, Failure& failure);
#endif
} // namespace base
