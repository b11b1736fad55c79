#include "collection/librarytracks.h"

#include "collection/folderwalk.h"

#include <algorithm>
#include <limits>

namespace {
QString textOf(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

int smallest(std::uint64_t number)
{
    return int(std::min<std::uint64_t>(number, std::numeric_limits<int>::max()));
}
} // namespace

/// Never a null one.
QString LibraryTracks::kindOf(const iTunesTrackRecord& record)
{
    const QString kind = record.kind ? textOf(record.kind) : QStringLiteral("unknown");
    return *m_kinds.insert(kind);
}

SongCopy LibraryTracks::copyOf(const SongFile& track)
{
    SongCopy copy{track.path,
                  track.state,
                  {track.kind, track.bitRate / 1000, track.sampleRate, track.milliseconds},
                  track.persistentId,
                  {}};
    if (track.persistentId == 0)
        copy.whyItStays = QStringLiteral("the library cannot tell its track from others");
    else if (!FolderWalk::isMusicName(track.path))
        copy.whyItStays = QStringLiteral("no music by its name");
    return copy;
}

LibraryTracks::Track LibraryTracks::at(int position)
{
    const iTunesTrackRecord& record = m_sight.at(position);
    Track track;
    track.isSong = record.skipB == 0;
    track.bytesInLibrary = record.size;
    SongFile& song = track.song;
    song.path = m_sight.pathAt(position);
    song.persistentId = m_sight.identifierAt(position);
    song.title = textOf(record.name);
    song.artist = textOf(record.artist);
    song.album = textOf(record.album);
    song.genre = textOf(record.genre);
    song.kind = kindOf(record);
    song.year = smallest(record.year);
    song.track = smallest(record.trackNumber);
    song.milliseconds = record.duration;
    song.bitRate = record.bitRate * 1000;
    song.sampleRate = record.sampleRate;
    song.bytes = record.size;
    if (song.path.empty())
        return track;
    song.state = FileState::ofEntry(song.path);
    const FileState file = song.state.file.link ? FileState::of(song.path) : song.state;
    track.media = file.exists() ? Media::There : Media::Missing;
    if (file.exists())
        song.bytes = std::uint64_t(file.file.size);
    return track;
}
