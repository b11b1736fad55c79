#pragma once

#include "base/trash.h"
#include "collection/filestate.h"
#include "collection/historyjournal.h"
#include "collection/historysteps.h"
#include "collection/keptcovers.h"
#include "collection/tagfiles.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// Changes files so that a later run can take it back: nothing is changed that could not be written down
/// before. One object for each call of a program, made by History; while it lives no other run changes
/// anything. Paths are bytes as the system has them. One thread at a time.
class ChangeStep
{
public:
    ChangeStep(std::unique_ptr<HistoryJournal> journal, const KeptCovers& covers, const std::string& what);
    /// Ends the step: what was written down outlives a power cut.
    ~ChangeStep();
    ChangeStep(const ChangeStep&) = delete;
    ChangeStep& operator=(const ChangeStep&) = delete;

    /// Its number in the history, by which it is taken back; counts once something was changed.
    int number() const { return m_number; }
    bool isEmpty() const { return !m_begun; }

    // Each answers the reason why it was not done, or empty.

    /// Moves what lies at the path itself, never a folder, into the trash, if it is in that state. Where
    /// there is no trash for it, it stays.
    QString moveToTrash(const std::string& path, const FileState& state);
    /// Deletes it for good, if it is in that state, and writes down that it did, if that can be.
    QString deleteForGood(const std::string& path, const FileState& state);
    enum class Edited { No, Yes };
    /// Puts the change into the tags of the file; what the file holds already is no change. Where it answers
    /// a reason and `edited` is Yes all the same, a part of it was done.
    QString edit(const std::string& path, const TagTexts& change, TagFiles& tags, Edited& edited);
    /// Takes tracks, by persistent identifier, out of the library file, all of them or none; their media
    /// files stay (takeTracksOut).
    QString takeOut(const std::string& library, const std::vector<std::uint64_t>& tracks);

private:
    bool append(const std::string& lines, HistoryJournal::Safety safety, QString& reason);
    QString writeEdit(const FileChange& edit, const TagTexts& change, TagFiles& tags, Edited& edited);

    const std::unique_ptr<HistoryJournal> m_journal;
    KeptCovers m_covers;
    base::Trash m_trash;
    const std::string m_what;
    int m_number = 0;
    int m_next = 1; ///< number of the next change
    bool m_begun = false;
};
