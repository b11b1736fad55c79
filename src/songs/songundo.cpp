#include "songs/songundo.h"

#include "audiocore/iaudiotag.h"
#include "collection/filestate.h"
#include "qmusicinfo.h"
#include "songs/filechanges.h"
#include "songs/footlines.h"
#include "songs/removaltally.h"
#include "songs/songediting.h"
#include "songs/songfields.h"
#include "songs/trackchanges.h"

#include <QFileInfo>

#include <utility>

namespace {
/// The songs whose files did not come back, and are not there in another way either.
QSet<QMusicInfo*> songsAway(const TakenBack& taken)
{
    QSet<QString> paths;
    for (const RemovedFiles::Told& file : taken.failed)
        paths.insert(file.path);
    QSet<QMusicInfo*> away;
    for (const RemovedSong& removed : taken.removed) {
        const QString& path = removed.song->localInfo->filePath;
        if (paths.contains(path) || !FileState::ofEntry(path).exists())
            away.insert(removed.song);
    }
    return away;
}
} // namespace

void SongUndo::songsLeft(const QVector<RemovedSong>& songs)
{
    m_leaving += songs;
    for (const RemovedSong& removed : songs)
        m_left.insert(removed.song);
}

void SongUndo::endDeletion(const RemovalTally& tally)
{
    const QVector<RemovedSong> songs = std::exchange(m_leaving, {});
    m_history.add(FileChanges::deletion(tally.files(), songs));
    m_history.add(TrackChanges::deletion(tally.tracks(), songs));
}

void SongUndo::takeBack(const Progress& progress)
{
    m_taken = TakenBack(); // or a fault on the way would take the last one for this one
    m_taken = m_history.takeBack([&progress](int done, int total) { return progress(done / 2, total); });
    if (m_taken.kind != TakenBack::Kind::Deletion)
        return;
    m_away = songsAway(m_taken);
    openTags(progress);
}

/// Each reads its file, which is the other half of the work.
void SongUndo::openTags(const Progress& progress)
{
    const int songs = m_taken.removed.size();
    for (int i = 0; i < songs && progress((songs + i) / 2, songs); ++i) {
        const RemovedSong& removed = m_taken.removed.at(i);
        if (removed.tag && !m_away.contains(removed.song))
            removed.tag->Open(removed.song->localInfo->filePath.toStdU32String().c_str());
    }
}

SongUndo::Undone SongUndo::finish(const SongLists& lists)
{
    const TakenBack taken = std::exchange(m_taken, TakenBack());
    switch (taken.kind) {
    case TakenBack::Kind::Edit:
        return finishEdit(taken);
    case TakenBack::Kind::Deletion:
        return finishDeletion(taken, lists);
    case TakenBack::Kind::TakingOut:
        return finishTakingOut(taken, lists);
    case TakenBack::Kind::Nothing:
        break;
    }
    return Undone();
}

SongUndo::Undone SongUndo::undo(const SongLists& lists)
{
    takeBack();
    return finish(lists);
}

SongUndo::Undone SongUndo::finishEdit(const TakenBack& taken) const
{
    Undone undone;
    if (taken.failed.isEmpty() && SongEditing::takeBack(*taken.song)) {
        undone.line = FootLines::editTakenBack(SongFields::shownName(taken.song), taken.picturesLost);
        undone.edited = taken.song;
        return undone;
    }
    const QString reason =
        taken.failed.isEmpty() ? QStringLiteral("the file cannot be read") : taken.failed.first().reason;
    undone.line = FootLines::editNotTakenBack(SongFields::shownName(taken.song), reason);
    undone.failed = true;
    return undone;
}

SongUndo::Undone SongUndo::finishDeletion(const TakenBack& taken, const SongLists& lists)
{
    Undone undone;
    undone.returned = putBack(taken, lists, std::exchange(m_away, {}));
    FootLines::Return told;
    told.songs = taken.paths.size();
    told.stayed = taken.failed.size();
    if (told.stayed > 0) {
        told.firstThatStayed = QFileInfo(taken.failed.first().path).fileName();
        told.whyItStayed = taken.failed.first().reason;
    }
    undone.line = FootLines::broughtBack(told);
    undone.failed = told.stayed > 0;
    return undone;
}

/// All tracks are in the library again, or none is.
SongUndo::Undone SongUndo::finishTakingOut(const TakenBack& taken, const SongLists& lists)
{
    Undone undone;
    undone.failed = !taken.whyNoTrack.isEmpty();
    undone.line = undone.failed ? FootLines::takingOutNotTakenBack(taken.tracks, taken.whyNoTrack)
                                : FootLines::tracksBack(taken.tracks);
    if (!undone.failed)
        undone.returned = putBack(taken, lists, {});
    return undone;
}

/// The songs that are in the lists again: all but those that stay away.
QList<QMusicInfo*> SongUndo::putBack(const TakenBack& taken, const SongLists& lists,
                                     const QSet<QMusicInfo*>& away)
{
    QList<QMusicInfo*> returned;
    SongRemoval::putBack(lists, taken.removed, away);
    for (const RemovedSong& removed : taken.removed) {
        if (away.contains(removed.song))
            continue;
        m_left.remove(removed.song);
        returned.append(removed.song);
    }
    return returned;
}

void SongUndo::forgetChanges()
{
    m_history.forget();
    m_leaving.clear();
}

void SongUndo::forget()
{
    forgetChanges();
    qDeleteAll(std::exchange(m_left, {}));
}
