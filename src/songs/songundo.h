#pragma once

#include "songs/changehistory.h"

#include <QList>
#include <QSet>
#include <QString>
#include <QVector>

class RemovalTally;

/// Takes back what was done to songs, in their files, in the music library and in the lists: the changes that
/// can be taken back, and the songs that left the lists. One thread at a time.
class SongUndo
{
public:
    SongUndo() = default;
    ~SongUndo() { forget(); }
    SongUndo(const SongUndo&) = delete;
    SongUndo& operator=(const SongUndo&) = delete;

    ChangeHistory& history() { return m_history; }
    /// What undo() takes back, in a few words; empty where there is nothing.
    QString next() const { return m_history.name(); }

    /// Songs that left the lists in the deletion under way, in this order; they belong here from now on.
    void songsLeft(const QVector<RemovedSong>& songs);
    /// All of it was one deletion.
    void endDeletion(const RemovalTally& tally);

    struct Undone
    {
        QString line; ///< what the foot of the window says of it; empty where there was nothing
        bool failed = false;
        QMusicInfo* edited = nullptr; ///< that is as it was before an edit
        QList<QMusicInfo*> returned;  ///< that are in the lists again
    };
    /// Takes the newest change back in the files or the music library alone; finish() is next. Waits for the
    /// disk. Any thread.
    void takeBack(const Progress& progress = goOn);
    /// The same in songs and lists; undefined songs and groups are then to be found anew. GUI thread.
    Undone finish(const SongLists& lists);
    /// Both. GUI thread.
    Undone undo(const SongLists& lists);
    /// All changes; the songs that left stay, since a panel may show one.
    void forgetChanges();
    /// All changes, and frees the songs that left: no view or panel may show one.
    void forget();

private:
    void openTags(const Progress& progress);
    Undone finishEdit(const TakenBack& taken) const;
    Undone finishDeletion(const TakenBack& taken, const SongLists& lists);
    Undone finishTakingOut(const TakenBack& taken, const SongLists& lists);
    QList<QMusicInfo*> putBack(const TakenBack& taken, const SongLists& lists, const QSet<QMusicInfo*>& away);

    ChangeHistory m_history;
    TakenBack m_taken;              ///< between takeBack() and finish()
    QSet<QMusicInfo*> m_away;       ///< whose files did not come back then
    QVector<RemovedSong> m_leaving; ///< in the deletion under way
    QSet<QMusicInfo*> m_left;       ///< owned
};
