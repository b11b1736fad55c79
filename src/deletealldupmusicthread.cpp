#include "deletealldupmusicthread.h"

#include "common/workers.h"

#include <QElapsedTimer>
#include <QHash>

#include <utility>

namespace {
constexpr int progressMilliseconds = 100;

/// The tag object of every song; null where a song has none.
QHash<const QMusicInfo*, IAudioTag*> tagsOf(const SongLists& lists)
{
    QHash<const QMusicInfo*, IAudioTag*> tags;
    tags.reserve(lists.all->size());
    for (int position = 0; position < lists.all->size(); ++position)
        tags.insert(lists.all->at(position),
                    position < lists.tags->size() ? lists.tags->at(position) : nullptr);
    return tags;
}
} // namespace

DeleteAllDupMusicThread::DeleteAllDupMusicThread(QObject* parent) : QThread(parent) {}

void DeleteAllDupMusicThread::GetDupMusicBeDelete(QList<QMusicInfo*>* all, QList<DupMusicInfo*>* groups,
                                                  QList<QMusicInfo*>* undefined, QList<IAudioTag*>* tags)
{
    m_lists = {all, groups, undefined, tags};
    m_tally = RemovalTally();
}

QVector<RemovedSong> DeleteAllDupMusicThread::takeRemovedSongs()
{
    return std::exchange(m_removedSongs, {});
}

RemovalTally DeleteAllDupMusicThread::takeTally()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_tally, RemovalTally());
}

void DeleteAllDupMusicThread::run()
{
    if (!m_lists.groups->isEmpty()) {
        QVector<SongRemoval::Removal> plan;
        FileRemoval removal;
        int done = 0; // what is gone leaves the lists, whatever ended the deletion
        Workers::finish("deleting duplicates", [this, &plan, &done, &removal] {
            plan = SongRemoval::planOfAll(*m_lists.groups);
            deleteSongs(plan, done, removal);
        });
        plan.resize(done);
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_tally.addFiles(removal.removed());
            m_deleted = std::exchange(plan, {});
        }
        QMetaObject::invokeMethod(this, "editLists",
                                  thread() == QThread::currentThread() ? Qt::DirectConnection
                                                                       : Qt::BlockingQueuedConnection);
    }
    emit emitAllMusicInfo();
}

void DeleteAllDupMusicThread::editLists()
{
    QVector<SongRemoval::Removal> deleted;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_deleted.swap(deleted);
    }
    m_removedSongs += SongRemoval::removeAll(m_lists, deleted);
}

/// Counts in `done` how many of them it deleted: all, unless it was told to end.
void DeleteAllDupMusicThread::deleteSongs(const QVector<SongRemoval::Removal>& plan, int& done,
                                          FileRemoval& removal)
{
    const bool files = SongRemoval::songsAreFiles();
    const QHash<const QMusicInfo*, IAudioTag*> tags = tagsOf(m_lists);
    KeptFiles kept;
    const QMusicInfo* keptSong = nullptr;
    QElapsedTimer sinceProgress;
    sinceProgress.start();
    for (done = 0; done < plan.size(); ++done) {
        if (isInterruptionRequested())
            return;
        const SongRemoval::Removal& next = plan.at(done);
        if (!files) {
            m_tally.addTrack(*next.song, SongRemoval::removeTrack(*next.song));
        } else if (tags.contains(next.song)) { // else it went before, and its file with it
            if (next.kept != keptSong) {
                kept = SongRemoval::filesOf({next.kept});
                keptSong = next.kept;
            }
            SongRemoval::removeFile(*next.song, tags.value(next.song), kept, removal);
        }
        if (sinceProgress.elapsed() >= progressMilliseconds) {
            emit emitProgress(done + 1, plan.size());
            sinceProgress.start();
        }
    }
}
