#pragma once

#include <QString>

struct iTunesTrackRecord;

/// The files that the artwork of tracks goes to, for the views.
namespace TrackCover {
/// In the private temporary folder; nobody makes it here.
QString folder();
QString pathIn(const QString& folder, const iTunesTrackRecord& track);
/// Whether it is such a file of the track, and not a picture that the user chose.
bool isOwn(const QString& path, const iTunesTrackRecord& track);
/// Has the music library write the artwork that the track's media file holds now; of one without artwork no
/// file is left. Any thread; waits for the disk.
void fetch(const QString& path, quint64 persistentId);
} // namespace TrackCover
