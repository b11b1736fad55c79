#pragma once

#include "collection/fileremoval.h"
#include "songs/footlines.h"

struct QMusicInfo;

/// What one deletion did, with files or with tracks, for the one line that tells of it all. One thread at a
/// time.
class RemovalTally
{
public:
    void addFiles(const RemovedFiles& files) { m_files.append(files); }
    void addTrack(const QMusicInfo& song, iTunesEditProblem problem);
    void add(const RemovalTally& other);

    /// What became of the files.
    const RemovedFiles& files() const { return m_files; }
    /// The tracks that are out of the library, by persistent identifier.
    const QVector<quint64>& tracks() const { return m_removedTracks; }
    /// Empty when there is nothing to tell.
    QString line() const;
    /// Whether anything stayed that should have gone.
    bool failed() const { return !m_files.failed.isEmpty() || m_tracks.stayed > 0; }

private:
    RemovedFiles m_files;
    FootLines::TakingOut m_tracks;
    QVector<quint64> m_removedTracks;
};
