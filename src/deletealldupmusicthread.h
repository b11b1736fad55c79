#pragma once

#include "songs/removaltally.h"
#include "songs/songdeletion.h"
#include "songs/songremoval.h"

#include <QThread>

#include <mutex>

/// Reduces every duplicate group to its first song: deletes the others' files or tracks on a thread of its
/// own and then takes them out of the lists.
///
/// The lists are read by the thread and edited on the thread that this object lives in, which therefore runs
/// its event loop and leaves the lists alone meanwhile. Can be started again and again. An interruption
/// that is asked for ends the run after the song at hand.
class DeleteAllDupMusicThread : public QThread
{
    Q_OBJECT

public:
    explicit DeleteAllDupMusicThread(QObject* parent = nullptr);

    /// The lists to work on; they are not owned and must outlive the run.
    void GetDupMusicBeDelete(QList<QMusicInfo*>* all, QList<DupMusicInfo*>* groups,
                             QList<QMusicInfo*>* undefined, QList<IAudioTag*>* tags);
    /// The songs that the last run took out of the list of all songs; they are nobody's from then on.
    QVector<RemovedSong> takeRemovedSongs();
    /// What the last run did with their files or tracks.
    RemovalTally takeTally();

signals:
    /// When everything is deleted and the lists are edited.
    void emitAllMusicInfo();
    /// Several times a second while files or tracks are deleted.
    void emitProgress(int done, int total);

protected:
    void run() override;

private slots:
    void editLists();

private:
    void deleteSongs(const QVector<SongRemoval::Removal>& plan, SongDeletion& deletion);

    SongLists m_lists;
    QVector<RemovedSong> m_removedSongs;
    // What the thread hands over. Signals bring it in order already; the thread sanitizer sees no lock of the
    // toolkit.
    std::mutex m_mutex;
    QVector<SongRemoval::Removal> m_deleted;
    RemovalTally m_tally;
};
