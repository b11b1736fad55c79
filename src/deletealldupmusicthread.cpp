#include "deletealldupmusicthread.h"

#include "common/workers.h"

#include <QElapsedTimer>

#include <utility>

namespace {
constexpr int progressMilliseconds = 100;
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
        SongDeletion deletion(m_lists);
        Workers::finish("deleting duplicates", [this, &plan, &deletion] {
            plan = SongRemoval::planOfAll(*m_lists.groups);
            deleteSongs(plan, deletion);
        });
        plan.resize(deletion.done()); // what is gone leaves the lists, whatever ended the deletion
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_tally = deletion.tally();
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

void DeleteAllDupMusicThread::deleteSongs(const QVector<SongRemoval::Removal>& plan, SongDeletion& deletion)
{
    QElapsedTimer sinceProgress;
    sinceProgress.start();
    deletion.remove(plan, [this, &sinceProgress](int done, int total) {
        if (sinceProgress.elapsed() >= progressMilliseconds) {
            emit emitProgress(done, total);
            sinceProgress.start();
        }
        return !isInterruptionRequested();
    });
}
