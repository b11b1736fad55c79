#include "songs/trackchanges.h"

#include "itunes/takeback.h"
#include "itunes/tunesedit.h"
#include "qmusicinfo.h"
#include "songs/footlines.h"
#include "songs/songfields.h"
#include "songs/trackcover.h"

#include <cstdint>
#include <vector>

namespace {
/// Of what this thread asked the library last.
QString lastReason()
{
    return FootLines::reasonOf(iTunesLastEditProblem(), SaveProblem(iTunesMediaProblem()));
}

class Edit final : public Change
{
public:
    Edit(const TrackTruth& before, QMusicInfo* song) : m_before(before), m_song(song) {}

    TakenBack takeBack(ChangeHistory&, const Progress&) override
    {
        TakenBack result;
        result.kind = TakenBack::Kind::Edit;
        result.song = m_song;
        const QString path = SongFields::audioPath(m_song);
        const quint64 id = SongFields::persistentId(m_song);
        if (!takeBackEdit(id)) {
            result.failed.append({path, lastReason()});
            return result;
        }
        result.paths.append(path);
        m_song->truth = std::make_unique<TrackTruth>(m_before);
        // What lies there may have been fetched after the edit.
        if (m_song->coverPath != m_before.coverPath && TrackCover::isOwn(m_before.coverPath, *m_song->track))
            TrackCover::fetch(m_before.coverPath, id);
        return result;
    }
    QString name() const override { return FootLines::nameOfEdit(SongFields::shownName(m_song)); }

private:
    const TrackTruth m_before;
    QMusicInfo* const m_song;
};

class Deletion final : public Change
{
public:
    Deletion(const QVector<quint64>& tracks, const QVector<RemovedSong>& songs)
        : m_tracks(tracks), m_songs(songs)
    {
    }

    TakenBack takeBack(ChangeHistory&, const Progress&) override
    {
        TakenBack result;
        result.kind = TakenBack::Kind::TakingOut;
        result.removed = m_songs;
        result.tracks = m_tracks.size();
        const std::vector<std::uint64_t> ids(m_tracks.begin(), m_tracks.end());
        if (!takeBackDeletions(ids.data(), ids.size()))
            result.whyNoTrack = lastReason();
        return result;
    }
    QString name() const override { return FootLines::nameOfTakingOut(m_tracks.size()); }

private:
    const QVector<quint64> m_tracks;
    const QVector<RemovedSong> m_songs;
};
} // namespace

std::unique_ptr<Change> TrackChanges::edit(const TrackTruth& before, QMusicInfo* song)
{
    return canTakeBackEdit() ? std::make_unique<Edit>(before, song) : nullptr;
}

std::unique_ptr<Change> TrackChanges::deletion(const QVector<quint64>& tracks,
                                               const QVector<RemovedSong>& songs)
{
    return tracks.isEmpty() ? nullptr : std::make_unique<Deletion>(tracks, songs);
}
