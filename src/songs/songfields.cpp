#include "songs/songfields.h"

#include "itunes/itunestrackrecord.h"
#include "qiorvoutil.h"
#include "qmusicinfo.h"

#include <QFileInfo>
#include <QUrl>

namespace {
/// What stands before the path in a track's location: "file://localhost".
constexpr int locationPrefix = 16;

/// The file behind a track's location.
QString fileAt(const QString& location)
{
    QString path = QUrl::fromPercentEncoding(location.mid(locationPrefix).toUtf8());
#ifdef Q_OS_WIN
    // A drive's letter stands behind the slash that begins every path: "/C:/Music".
    if (path.startsWith(QLatin1Char('/')) && path.mid(2, 1) == QLatin1String(":"))
        path.remove(0, 1);
#endif
    return path;
}

QString fromUtf8(const char* text)
{
    return QString::fromUtf8(text);
}

/// Answers one field from whichever record the mode in force names; the field's zero value without a record.
template <typename FromTrack, typename FromLocal>
auto field(const QMusicInfo* song, FromTrack fromTrack, FromLocal fromLocal)
{
    using Value = decltype(fromTrack(*song->track));
    if (!SongFields::available(song))
        return Value();
    return QIOrvoUtil::m_cleanMode ? static_cast<Value>(fromLocal(*song->localInfo))
                                   : fromTrack(*song->track);
}
} // namespace

bool SongFields::available(const QMusicInfo* song)
{
    if (!song)
        return false;
    return QIOrvoUtil::m_cleanMode ? song->localInfo != nullptr : song->track != nullptr;
}

QString SongFields::title(const QMusicInfo* song)
{
    return field(
        song, [](const iTunesTrackRecord& track) { return fromUtf8(track.name); },
        [](const LocalMusicInfo& local) { return local.title; });
}

QString SongFields::shownName(const QMusicInfo* song)
{
    const QString own = title(song);
    return own.isEmpty() ? QFileInfo(audioPath(song)).fileName() : own;
}

QString SongFields::artist(const QMusicInfo* song)
{
    return field(
        song, [](const iTunesTrackRecord& track) { return fromUtf8(track.artist); },
        [](const LocalMusicInfo& local) { return local.artist; });
}

QString SongFields::album(const QMusicInfo* song)
{
    return field(
        song, [](const iTunesTrackRecord& track) { return fromUtf8(track.album); },
        [](const LocalMusicInfo& local) { return local.album; });
}

QString SongFields::genre(const QMusicInfo* song)
{
    return field(
        song, [](const iTunesTrackRecord& track) { return fromUtf8(track.genre); },
        [](const LocalMusicInfo& local) { return local.genre; });
}

quint64 SongFields::year(const QMusicInfo* song)
{
    return field(
        song, [](const iTunesTrackRecord& track) { return quint64(track.year); },
        [](const LocalMusicInfo& local) { return local.year; });
}

quint64 SongFields::trackNumber(const QMusicInfo* song)
{
    return field(
        song, [](const iTunesTrackRecord& track) { return quint64(track.trackNumber); },
        [](const LocalMusicInfo& local) { return local.trackNumber; });
}

QString SongFields::coverPath(const QMusicInfo* song)
{
    if (!available(song))
        return QString();
    return QIOrvoUtil::m_cleanMode ? song->localInfo->coverPath : song->coverPath;
}

quint64 SongFields::duration(const QMusicInfo* song)
{
    return field(
        song, [](const iTunesTrackRecord& track) { return quint64(track.duration); },
        [](const LocalMusicInfo& local) { return local.duration; });
}

quint64 SongFields::bitRateKbps(const QMusicInfo* song)
{
    return field(
        song, [](const iTunesTrackRecord& track) { return quint64(track.bitRate); },
        [](const LocalMusicInfo& local) { return local.bitrate / 1000; });
}

quint64 SongFields::sampleRate(const QMusicInfo* song)
{
    return field(
        song, [](const iTunesTrackRecord& track) { return quint64(track.sampleRate); },
        [](const LocalMusicInfo& local) { return local.sampleRate; });
}

QString SongFields::kind(const QMusicInfo* song)
{
    return field(
        song, [](const iTunesTrackRecord& track) { return fromUtf8(track.kind); },
        [](const LocalMusicInfo& local) { return local.format; });
}

quint64 SongFields::fileSize(const QMusicInfo* song)
{
    return field(
        song, [](const iTunesTrackRecord& track) { return quint64(track.size); },
        [](const LocalMusicInfo& local) { return QFileInfo(local.filePath).size(); });
}

QString SongFields::location(const QMusicInfo* song)
{
    return field(
        song, [](const iTunesTrackRecord& track) { return fromUtf8(track.location); },
        [](const LocalMusicInfo& local) { return local.filePath; });
}

quint64 SongFields::persistentId(const QMusicInfo* song)
{
    return field(
        song,
        [](const iTunesTrackRecord& track) {
            return quint64(fromUtf8(track.persistentId).toULongLong(nullptr, 16));
        },
        [](const LocalMusicInfo&) { return quint64(0); });
}

QString SongFields::audioPath(const QMusicInfo* song)
{
    return field(
        song, [](const iTunesTrackRecord& track) { return fileAt(fromUtf8(track.location)); },
        [](const LocalMusicInfo& local) { return local.filePath; });
}
