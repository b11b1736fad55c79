#include "songs/removaltally.h"

#include "songs/songfields.h"

#include <QFileInfo>

namespace {
/// Of the reasons the first stands for all.
FootLines::Deletion deletionOf(const RemovedFiles& files)
{
    FootLines::Deletion deletion;
    deletion.toTrash = files.trashed.size();
    deletion.forGood = files.deleted.size();
    deletion.stayed = files.failed.size();
    if (deletion.forGood > 0)
        deletion.whyForGood = files.deleted.first().reason;
    if (deletion.stayed > 0) {
        deletion.firstThatStayed = QFileInfo(files.failed.first().path).fileName();
        deletion.whyItStayed = files.failed.first().reason;
    }
    return deletion;
}
} // namespace

void RemovalTally::addTrack(const QMusicInfo& song, iTunesEditProblem problem)
{
    if (problem == ITUNES_EDIT_DONE) {
        ++m_tracks.tracks;
        m_removedTracks.append(SongFields::persistentId(&song));
        return;
    }
    if (m_tracks.stayed++ > 0)
        return;
    m_tracks.firstThatStayed = SongFields::shownName(&song);
    m_tracks.whyItStayed = problem;
}

void RemovalTally::add(const RemovalTally& other)
{
    m_files.append(other.m_files);
    if (m_tracks.stayed == 0) {
        m_tracks.firstThatStayed = other.m_tracks.firstThatStayed;
        m_tracks.whyItStayed = other.m_tracks.whyItStayed;
    }
    m_tracks.tracks += other.m_tracks.tracks;
    m_removedTracks += other.m_removedTracks;
    m_tracks.stayed += other.m_tracks.stayed;
}

QString RemovalTally::line() const
{
    const QString files = FootLines::deleted(deletionOf(m_files));
    const QString tracks = FootLines::takenOut(m_tracks);
    return files.isEmpty() || tracks.isEmpty() ? files + tracks : files + QLatin1Char(' ') + tracks;
}
