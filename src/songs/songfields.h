#pragma once

#include <QString>

struct QMusicInfo;

/// The one place that answers what a song's fields are in the mode in force: from its iTunes track record in
/// the iTunes clean mode, from its local data in the local clean mode. A song without the data of the mode,
/// or no song at all, has empty texts and zeros.
namespace SongFields {
/// Whether the song carries data of the mode in force.
bool available(const QMusicInfo* song);

QString title(const QMusicInfo* song);
/// The title, or the name of the file where there is none.
QString shownName(const QMusicInfo* song);
QString artist(const QMusicInfo* song);
QString album(const QMusicInfo* song);
QString genre(const QMusicInfo* song);
quint64 year(const QMusicInfo* song);
quint64 trackNumber(const QMusicInfo* song);
/// File of the cover picture; empty when there is none.
QString coverPath(const QMusicInfo* song);
/// Milliseconds.
quint64 duration(const QMusicInfo* song);
/// Kilobits per second, rounded down.
quint64 bitRateKbps(const QMusicInfo* song);
/// Hertz.
quint64 sampleRate(const QMusicInfo* song);
/// The kind of file as the library or the reader names it.
QString kind(const QMusicInfo* song);
/// Bytes: of the file as it is now in the local mode, as the library has it in the iTunes mode.
quint64 fileSize(const QMusicInfo* song);
/// Where the file is, as it is written there: a path in the local mode, a percent-encoded file URL in the
/// iTunes mode.
QString location(const QMusicInfo* song);
/// The track's id in the iTunes library; 0 when it is no hexadecimal number, or in the local mode.
quint64 persistentId(const QMusicInfo* song);
/// The path of the audio file.
QString audioPath(const QMusicInfo* song);
} // namespace SongFields
