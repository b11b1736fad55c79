#pragma once

#include "songs/changehistory.h"

#include <QVector>

#include <memory>

struct QMusicInfo;
struct TrackTruth;

/// Changes of tracks of the music library, to be taken back. What that needs is kept by the library itself,
/// until it is read anew.
namespace TrackChanges {
/// After an edit that the library took; null where it changed nothing. What the library said before is the
/// song's truth once the edit was taken back.
std::unique_ptr<Change> edit(const TrackTruth& before, QMusicInfo* song);
/// After a deletion that took these tracks, by persistent identifier, out of the library; null where it took
/// none. All of them come back, or none does.
std::unique_ptr<Change> deletion(const QVector<quint64>& tracks, const QVector<RemovedSong>& songs);
} // namespace TrackChanges
