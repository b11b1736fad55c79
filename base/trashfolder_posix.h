#pragma once

#include "base/descriptor_posix.h"
#include "base/trash.h"

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>

namespace base {
/// One trash: a folder of files and a folder with a note for each. What is not the user's own, or leads
/// elsewhere by a link, is none.
class TrashFolder
{
public:
    /// What is to be moved, in an open folder.
    struct Source
    {
        int folder;
        std::string path; ///< of the folder: absolute, through no link, with the slash
        std::string name;
    };

    /// Why there is no trash.
    struct Refusal
    {
        std::string reason;
        bool isPassing = false; ///< a shortage of the moment, which tells nothing of the trash
    };

    /// The trash at the path, which may be a link of the user's own; made where it is not there, in a folder
    /// of the user's. Null with the reason.
    static std::unique_ptr<TrashFolder> ofUser(const std::string& path, Refusal& refusal);
    /// The user's trash at the top of a disk: in the folder that the administrator made for all users, else
    /// one beside it. Null with the reason.
    static std::unique_ptr<TrashFolder> atTop(const std::string& top, Refusal& refusal);
    /// A trash that is there. Null with the reason.
    static std::unique_ptr<TrashFolder> at(const std::string& path, Refusal& refusal);

    /// As Trash does it.
    Trash::Taking take(const Source& source, const FileState& expected, TrashedFile& taken,
                       std::string& error, const Trash::Announce& announce = nullptr);
    /// As Trash does it, to a name in an open folder.
    Trash::Restoring restore(const TrashedFile& file, int folder, std::string& error) const;

private:
    enum class Making { Allowed, No };
    enum class Step { Done, NameTaken, NoTrash, Failed };

    TrashFolder() = default;
    static std::unique_ptr<TrashFolder> in(const Descriptor& folder, const std::string& path, Making making,
                                           Refusal& refusal);
    static std::unique_ptr<TrashFolder> inAllUsersFolder(const Descriptor& top, const std::string& path);
    Step tryName(const Source& source, const FileState& expected, TrashedFile& taken, std::string& error,
                 const Trash::Announce& announce);
    bool writeNote(const std::string& name, const std::string& text) const;
    void removeNote(const std::string& name) const;
    Step giveBack(const Source& source, const std::string& name, std::string& error) const;
    std::string nameFor(const std::string& name, std::uint64_t number) const;

    std::string m_path; ///< without a slash at its end
    std::string m_top;  ///< what paths in notes begin behind; empty: they are absolute
    Descriptor m_files;
    Descriptor m_notes;
    std::size_t m_longestName = 0;
    std::unordered_map<std::string, std::uint64_t> m_numbers; ///< that come next for names that were taken
    std::minstd_rand m_random{std::random_device()()};
};
} // namespace base
