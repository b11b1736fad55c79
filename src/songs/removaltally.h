#pragma once

#include "songs/footlines.h"
#include "songs/songremoval.h"

struct QMusicInfo;

/// Counts what a deletion does, song by song, for the one line that tells of it all. One thread at a time.
class RemovalTally
{
public:
    void addFile(const QMusicInfo& song, const SongRemoval::FileRemoval& removal);
    void addTrack(const QMusicInfo& song, iTunesEditProblem problem);
    void add(const RemovalTally& other);

    /// Empty when there is nothing to tell.
    QString line() const;
    /// Whether anything stayed that should have gone.
    bool failed() const { return m_files.stayed + m_tracks.stayed > 0; }

private:
    FootLines::Deletion m_files;
    FootLines::TakingOut m_tracks;
};
