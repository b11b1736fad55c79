#include "songs/songremoval.h"

#include "audiocore/iaudiotag.h"
#include "dupmusicinfo.h"
#include "itunes/delmusiclib.h"
#include "qiorvoutil.h"
#include "qmusicinfo.h"
#include "songs/songfields.h"

#include <QDebug>
#include <QSet>

#include <algorithm>

bool SongRemoval::songsAreFiles()
{
    return QIOrvoUtil::m_cleanMode;
}

KeptFiles SongRemoval::filesOf(const QList<QMusicInfo*>& songs)
{
    KeptFiles files;
    if (!songsAreFiles())
        return files;
    for (const QMusicInfo* song : songs)
        files.add(SongFields::audioPath(song));
    return files;
}

void SongRemoval::removeFile(const QMusicInfo& song, IAudioTag* tag, const KeptFiles& kept,
                             FileRemoval& removal)
{
    if (tag)
        tag->Close();
    if (!song.localInfo)
        return;
    const QString& path = song.localInfo->filePath;
    if (kept.wouldLose(path))
        removal.leave(path, QStringLiteral("a song that is kept has the same file"));
    else
        removal.remove(path, song.localInfo->file);
}

iTunesEditProblem SongRemoval::removeTrack(const QMusicInfo& song)
{
    const quint64 id = SongFields::persistentId(&song);
    const int deleted = deleteMusic(id);
    qDebug("track %llx deleted from the library: %d", id, deleted);
    return deleted ? ITUNES_EDIT_DONE : iTunesLastEditProblem();
}

bool SongRemoval::removeOne(const SongLists& lists, QMusicInfo* song, qint64 currentGroup,
                            const KeptFiles& kept, FileRemoval& removal)
{
    const int position = lists.all->lastIndexOf(song);
    if (songsAreFiles() && position >= 0) {
        IAudioTag* tag = position < lists.tags->size() ? lists.tags->takeAt(position) : nullptr;
        removeFile(*song, tag, kept, removal);
    }
    lists.all->removeOne(song);
    lists.undefined->removeOne(song);
    if (currentGroup >= 0 && currentGroup < lists.groups->size()) {
        // Oddity 25: the last entry goes, whichever song was deleted.
        QList<QMusicInfo*>& group = lists.groups->at(int(currentGroup))->musicList;
        if (!group.isEmpty())
            group.removeLast();
        if (group.size() == 1)
            lists.groups->removeAt(int(currentGroup));
    }
    return position >= 0;
}

QVector<SongRemoval::Removal> SongRemoval::planOfAll(const QList<DupMusicInfo*>& groups)
{
    QVector<Removal> plan;
    for (const DupMusicInfo* group : groups)
        for (int position = group->musicList.size() - 1; position > 0; --position)
            plan.append(Removal{group->musicList.at(position), group->musicList.first()});
    return plan;
}

QList<QMusicInfo*> SongRemoval::removeAll(const SongLists& lists, const QVector<Removal>& plan)
{
    QSet<const QMusicInfo*> leaving;
    leaving.reserve(plan.size());
    for (const Removal& removal : plan)
        leaving.insert(removal.song);

    QList<QMusicInfo*> staying;
    QList<IAudioTag*> stayingTags;
    QList<QMusicInfo*> removed;
    for (int position = 0; position < lists.all->size(); ++position) {
        QMusicInfo* song = lists.all->at(position);
        if (leaving.contains(song)) {
            removed.append(song);
            continue;
        }
        staying.append(song);
        if (position < lists.tags->size())
            stayingTags.append(lists.tags->at(position));
    }
    *lists.all = staying;
    *lists.tags = stayingTags;
    const auto leaves = [&](const QMusicInfo* song) { return leaving.contains(song); };
    lists.undefined->erase(std::remove_if(lists.undefined->begin(), lists.undefined->end(), leaves),
                           lists.undefined->end());
    for (DupMusicInfo* group : qAsConst(*lists.groups))
        while (group->musicList.size() > 1)
            group->musicList.removeLast();
    lists.groups->clear();
    return removed;
}
