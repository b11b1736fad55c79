#pragma once

#include "base/trash.h"
#include "collection/historyjournal.h"
#include "collection/historysteps.h"
#include "collection/keptcovers.h"
#include "collection/tagfiles.h"

#include <QString>

#include <functional>
#include <string>
#include <vector>

/// Takes a step of a history back. One object for each; one thread at a time.
class StepReturn
{
public:
    struct Told
    {
        std::string path;
        QString reason;
    };
    struct Result
    {
        int step = 0; ///< 0 where nothing was done, which has a reason
        QString reason;
        std::vector<std::string> paths; ///< that are again as they were
        std::vector<Told> failed;       ///< that were left as they are
        bool isWhole = false;           ///< else it was ended before it had come to all files
    };
    /// Told how many files it has come to, of how many; false ends it there, and it can be gone on with.
    using Progress = std::function<bool(int done, int total)>;

    StepReturn(HistoryJournal& journal, HistorySteps& history, const KeptCovers& covers, TagFiles& tags)
        : m_journal(journal), m_history(history), m_covers(covers), m_tags(tags)
    {
    }

    /// What is left of the step, the last change first.
    Result takeBack(HistoryStep& step, const Progress& progress);

private:
    QString takeBack(const FileChange& change);
    QString bringBack(const FileChange& change);
    QString takeEditBack(const FileChange& edit);
    QString bringTracksBack(const FileChange& change);
    QString restore(const FileChange& edit);
    void note(const HistoryStep& step, int number, FileChange& change);

    HistoryJournal& m_journal;
    HistorySteps& m_history;
    const KeptCovers m_covers;
    TagFiles& m_tags;
    base::Trash m_trash;
};
