#pragma once

#include "songs/removaltally.h"
#include "songs/songremoval.h"
#include "waitedwork.h"

#include <QList>

#include <functional>
#include <optional>

class QWidget;
struct QMusicInfo;

/// Clears a group of what its user does not keep: first the files or tracks go, on a thread while the user
/// waits, then the lists lose the songs, one by one. GUI thread only.
class GroupClearing
{
public:
    /// Answers with the lists that songs are in; until it is known, songs have no files. The lists must
    /// outlive a run.
    void setLists(const std::function<SongLists()>& lists) { m_lists = lists; }
    SongLists lists() const { return m_lists ? m_lists() : SongLists(); }

    /// Deletes the files or tracks of the songs, in this order, but for what the kept ones need on disk, and
    /// then has `left` take each of them out of the lists. How many that were: fewer than all where the
    /// program ended early.
    int run(const QList<QMusicInfo*>& songs, const QList<QMusicInfo*>& kept, QWidget& window,
            const std::function<void(QMusicInfo*)>& left);
    /// Whether files or tracks are being deleted: the lists are to be left alone.
    bool isDeleting() const { return m_work.isRunning(); }
    /// Whether the lists lose the songs of a run one by one: more go before anybody looks.
    bool isTakingOut() const { return m_filesWent; }
    /// Takes a song out of the lists, as SongRemoval::leaveLists() does it; out of a run it loses its file
    /// before.
    std::optional<RemovedSong> takeOut(QMusicInfo* song, qint64 currentGroup);
    /// What became of files or tracks since this was asked last.
    RemovalTally takeTally();

private:
    std::function<SongLists()> m_lists;
    WaitedWork m_work;
    bool m_filesWent = false; ///< those of the songs that leave the lists now, or their tracks
    RemovalTally m_tally;
};
