#pragma once

#include "collection/glob.h"

#include <cstdint>
#include <deque>
#include <string>
#include <unordered_set>
#include <vector>

/// Finds the music files in folders and below, Windows Media included: level by level, each folder's entries
/// sorted by name. A folder that a link leads back to is walked once, also by several calls. Paths and names
/// are the bytes that the system has. Memory grows with folders and with the entries of one of them, not with
/// files. One thread at a time.
class FolderWalk
{
public:
    struct Rules
    {
        bool hidden = true;
        bool unwritable = false;    ///< takes also what this user may only read
        bool oneFileSystem = false; ///< keeps to that of the folder where the walk starts
        std::vector<Glob> excluded; ///< files and folders
    };
    /// Who is told of what is found.
    class Visitor
    {
    public:
        virtual ~Visitor() = default;
        virtual void found(const std::string& path) = 0;
        /// What cannot be read, or is gone since its folder was read.
        virtual void failed(const std::string& path, const std::string& reason) = 0;
        /// A music file or a folder that the user may not write; what he may not read has failed.
        virtual void leftOut(const std::string& path) = 0;
        /// False ends the walk; asked at each entry.
        virtual bool goesOn() = 0;
        /// Between folders.
        virtual void folderDone() {}

    protected:
        Visitor() = default;
        Visitor(const Visitor&) = default;
        Visitor& operator=(const Visitor&) = default;
    };

    FolderWalk(Rules rules, Visitor& visitor);

    static bool isFolder(const std::string& path);
    /// Whether a name counts as one of music (oddity 19), of Windows Media, too.
    static bool isMusicName(const std::string& path);
    /// Walks a folder, which is taken whatever its name and rights.
    void walk(const std::string& folder);

private:
    struct Entry
    {
        std::string name;
        bool isFolder;
        bool isLink;
    };
    struct Folder
    {
        std::string path;
        const std::string* real; ///< in m_walked
    };

    std::vector<Entry> entriesOf(const std::string& folder);
    bool visit(const Folder& folder);
    void take(const Folder& parent, const Entry& entry);
    void enqueue(const std::string& path, const std::string& real);
    bool isTaken(const std::string& path);

    Rules m_rules;
    Visitor& m_visitor;
    std::unordered_set<std::string> m_walked; ///< without links in them
    std::deque<Folder> m_waiting;
    std::size_t m_below = 0; ///< where paths below the start begin
    std::uint64_t m_device = 0;
};
