#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

/// Music library files as the music programs write them.
namespace Fixtures {
struct ITunesTrack
{
    int trackId = 0;
    quint64 persistentId = 0; ///< 0: none in the entry
    QByteArray name;          ///< texts are plain UTF-8; empty ones are left out, and so are zeros
    QByteArray artist;
    QByteArray album;
    QByteArray genre;
    QByteArray kind = "MPEG audio file";
    quint64 size = 4000000;
    quint64 duration = 0;
    quint64 trackNumber = 0;
    quint64 year = 0;
    quint64 bitRate = 128;
    quint64 sampleRate = 44100;
    QByteArray type = "File";
    QByteArray location; ///< as it stands in the file
    QByteArray further;  ///< keys and values as they stand in the file
};

struct ITunesPlaylist
{
    QByteArray name;
    QVector<int> trackIds;
};

/// A song like no other with number `number`, 0 upwards: its identifiers, texts and numbers follow from it.
/// The location names no file that is there.
ITunesTrack itunesTrack(int number);
/// The song in a media file that is there.
ITunesTrack itunesTrack(int number, const QString& mediaFile);
/// How the library writes the place of a file.
QByteArray itunesLocation(const QString& path);
/// Sixteen upper-case digits.
QByteArray itunesIdentifier(quint64 persistentId);

/// A whole library file.
QByteArray itunesLibrary(const QVector<ITunesTrack>& tracks, const QVector<ITunesPlaylist>& playlists = {});
/// A library of this many songs as large as real ones: about two kilobytes a song, three playlists.
QByteArray largeItunesLibrary(int count);
/// Writes the bytes to a file and returns its path.
QString writeLibrary(const QString& path, const QByteArray& bytes);
} // namespace Fixtures
