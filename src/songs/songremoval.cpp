#include "songs/songremoval.h"

#include "audiocore/iaudiotag.h"
#include "dupmusicinfo.h"
#include "itunes/delmusiclib.h"
#include "qiorvoutil.h"
#include "qmusicinfo.h"
#include "songs/songfields.h"

#include <QDebug>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace {
/// Out of the list of all songs, with their tags; the songs from the last one on.
QVector<RemovedSong> takeOut(const SongLists& lists, const QSet<QMusicInfo*>& leaving)
{
    QList<QMusicInfo*> staying;
    QList<IAudioTag*> stayingTags;
    QVector<RemovedSong> removed;
    for (int position = 0; position < lists.all->size(); ++position) {
        QMusicInfo* const song = lists.all->at(position);
        IAudioTag* const tag = lists.tags->value(position);
        if (leaving.contains(song)) {
            removed.append({song, tag, position});
            continue;
        }
        staying.append(song);
        if (position < lists.tags->size())
            stayingTags.append(tag);
    }
    *lists.all = staying;
    *lists.tags = stayingTags;
    std::reverse(removed.begin(), removed.end());
    return removed;
}

/// Into the list of all songs, with their tags; each has its place behind the one before it.
void putIn(const SongLists& lists, const QVector<RemovedSong>& returning)
{
    const QList<QMusicInfo*> formerSongs = std::exchange(*lists.all, {});
    const QList<IAudioTag*> formerTags = std::exchange(*lists.tags, {});
    const auto append = [&lists](QMusicInfo* song, IAudioTag* tag) {
        lists.all->append(song);
        if (SongRemoval::songsAreFiles())
            lists.tags->append(tag);
    };
    int former = 0;
    const auto appendFormer = [&](int end) {
        for (; former < formerSongs.size() && lists.all->size() < end; ++former)
            append(formerSongs.at(former), formerTags.value(former));
    };
    for (const RemovedSong& song : returning) {
        appendFormer(song.position);
        append(song.song, song.tag);
    }
    appendFormer(std::numeric_limits<int>::max());
}
} // namespace

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

QVector<iTunesEditProblem> SongRemoval::removeTracks(const QVector<Removal>& plan)
{
    std::vector<std::uint64_t> ids;
    for (const Removal& removal : plan)
        ids.push_back(SongFields::persistentId(removal.song));
    QVector<iTunesEditProblem> problems(plan.size(), ITUNES_EDIT_DONE);
    deleteTracks(ids.data(), ids.size(), problems.data());
    for (std::size_t i = 0; i < ids.size(); ++i)
        qDebug("track %llx deleted from the library: %d", static_cast<unsigned long long>(ids[i]),
               int(problems.at(int(i)) == ITUNES_EDIT_DONE));
    return problems;
}

std::optional<RemovedSong> SongRemoval::leaveLists(const SongLists& lists, QMusicInfo* song,
                                                   qint64 currentGroup)
{
    RemovedSong removed{song, nullptr, lists.all->lastIndexOf(song)};
    if (songsAreFiles() && removed.position >= 0 && removed.position < lists.tags->size())
        removed.tag = lists.tags->takeAt(removed.position);
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
    return removed.position >= 0 ? std::make_optional(removed) : std::nullopt;
}

std::optional<RemovedSong> SongRemoval::removeOne(const SongLists& lists, QMusicInfo* song,
                                                  qint64 currentGroup, const KeptFiles& kept,
                                                  FileRemoval& removal)
{
    const int position = lists.all->lastIndexOf(song);
    if (songsAreFiles() && position >= 0)
        removeFile(*song, lists.tags->value(position), kept, removal);
    return leaveLists(lists, song, currentGroup);
}

QVector<SongRemoval::Removal> SongRemoval::planOfAll(const QList<DupMusicInfo*>& groups)
{
    QVector<Removal> plan;
    for (const DupMusicInfo* group : groups)
        for (int position = group->musicList.size() - 1; position > 0; --position)
            plan.append(Removal{group->musicList.at(position), group->musicList.first()});
    return plan;
}

QVector<RemovedSong> SongRemoval::removeAll(const SongLists& lists, const QVector<Removal>& plan)
{
    QSet<QMusicInfo*> leaving;
    leaving.reserve(plan.size());
    for (const Removal& removal : plan)
        leaving.insert(removal.song);

    const QVector<RemovedSong> removed = takeOut(lists, leaving);
    const auto leaves = [&](QMusicInfo* song) { return leaving.contains(song); };
    lists.undefined->erase(std::remove_if(lists.undefined->begin(), lists.undefined->end(), leaves),
                           lists.undefined->end());
    for (DupMusicInfo* group : qAsConst(*lists.groups))
        while (group->musicList.size() > 1)
            group->musicList.removeLast();
    lists.groups->clear();
    return removed;
}

/// The songs that left last come back first, and all at once those of which each has its place behind the one
/// before it.
void SongRemoval::putBack(const SongLists& lists, const QVector<RemovedSong>& removed,
                          const QSet<QMusicInfo*>& away)
{
    const auto isNotBehind = [](const RemovedSong& a, const RemovedSong& b) {
        return a.position >= b.position;
    };
    for (auto begin = removed.crbegin(); begin != removed.crend();) {
        auto end = std::adjacent_find(begin, removed.crend(), isNotBehind);
        end += end == removed.crend() ? 0 : 1;
        putIn(lists, QVector<RemovedSong>(begin, end));
        begin = end;
    }
    if (!away.isEmpty())
        takeOut(lists, away);
}
