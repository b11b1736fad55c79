#pragma once

#include "libraryreading.h"
#include "trackedit.h"

#include <cstdint>
#include <string>

namespace itunes {
/// Keeps the changes that were answered but are not in the library file yet in a small file beside it, one
/// line each, behind a line that tells a journal from any other file. A last line that was torn by a kill or
/// a power cut is no change; lines damaged before it are told in the log, and the journal is kept once more
/// beside itself. While the journal is open no other process can take it. Calls from one thread at a time.
class Journal
{
public:
    explicit Journal(const std::string& libraryPath);

    /// Whether an earlier run, or this one, left changes.
    bool exists() const;
    /// Opens the journal, or makes it; what it holds goes into the changes. False with the reason; whatever
    /// is no journal stays as it is.
    bool open(TrackChanges& changes, std::string& error);
    bool isOpen() const { return bool(m_file); }

    /// Adds a change for good: it is on the disk when the call answers true.
    bool addDeletion(std::uint64_t id);
    /// Adds an edit that does not count before confirm(), which can only fail when the disk does.
    bool prepareEdit(std::uint64_t id, const TrackEdit& edit);
    bool confirm();

    /// All changes are in the library file.
    void remove();

private:
    bool openOnce(std::string& error);
    bool load(TrackChanges& changes, std::string& error);
    bool readLines(const std::string& lines, TrackChanges& changes, std::string& error);
    bool keepDamaged(std::size_t lines, std::string& error) const;
    bool blank(std::size_t begin, std::size_t end);
    bool isTheFileAtItsPath() const;
    bool append(char state, const std::string& record);
    bool makeRoom(std::int64_t size);

    std::string m_library;
    std::string m_path;
    File m_file;
    std::int64_t m_end = 0;      ///< where the next line goes
    std::int64_t m_room = 0;     ///< the file's size; line feeds fill it
    std::int64_t m_prepared = 0; ///< the line that does not count yet
};

/// A later change takes the place of an earlier one.
void mergeDeletion(TrackChanges& changes, std::uint64_t id);
void mergeEdit(TrackChanges& changes, std::uint64_t id, const TrackEdit& edit);
} // namespace itunes
