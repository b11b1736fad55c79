#include "groupclearing.h"

#include "songs/songdeletion.h"

#include <QScopedValueRollback>

#include <utility>

int GroupClearing::run(const QList<QMusicInfo*>& songs, const QList<QMusicInfo*>& kept, QWidget& window,
                       const std::function<void(QMusicInfo*)>& left)
{
    QVector<SongRemoval::Removal> plan;
    for (QMusicInfo* song : songs)
        plan.append({song, nullptr});
    SongDeletion deletion(lists());
    m_work.run({"clearing a group", QStringLiteral("Deleting…"),
                [&](const Progress& progress) {
                    deletion.keep(kept);
                    deletion.remove(plan, progress);
                }},
               window);
    m_tally.add(deletion.tally());
    const QScopedValueRollback<bool> went(m_filesWent, true);
    for (int i = 0; i < deletion.done(); ++i)
        left(songs.at(i));
    return deletion.done();
}

std::optional<RemovedSong> GroupClearing::takeOut(QMusicInfo* song, qint64 currentGroup)
{
    if (m_filesWent)
        return SongRemoval::leaveLists(lists(), song, currentGroup);
    FileRemoval removal;
    const auto removed = SongRemoval::removeOne(lists(), song, currentGroup, KeptFiles(), removal);
    m_tally.addFiles(removal.removed());
    return removed;
}

RemovalTally GroupClearing::takeTally()
{
    return std::exchange(m_tally, RemovalTally());
}
