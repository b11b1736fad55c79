#pragma once

#include "audiofile.h"
#include "itunes/itunesmusiclibrary.h"
#include "itunesfixture.h"

#include <QFile>
#include <QTemporaryDir>

/// Libraries made of bytes, read by the calls.
namespace PlainLibrary {
/// A reading as it would look in the application.
struct Reading
{
    iTunesTrackRecord* records = nullptr;
    int count = 0;
};

inline Reading readAgain()
{
    Reading reading;
    GetMusicInfo(&reading.records, &reading.count);
    return reading;
}

inline QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

/// A library around the entries of its tracks.
inline QByteArray libraryAround(const QByteArray& tracks)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist "
           "version=\"1.0\"><dict><key>Tracks</key><dict>" +
           tracks + "</dict></dict></plist>\n";
}

inline QByteArray entryWith(const QByteArray& pairs)
{
    return "<key>1</key><dict><key>Persistent ID</key><string>00000000000000A1</string>"
           "<key>Location</key><string>file:///m/a.mp3</string>" +
           pairs + "</dict>";
}

inline QByteArray named(const QByteArray& raw)
{
    return libraryAround(entryWith("<key>Name</key><string>" + raw + "</string>"));
}
/// Reads a library of these bytes.
inline Reading read(const QTemporaryDir& folder, const QByteArray& bytes)
{
    const QString path = Fixtures::writeLibrary(folder.filePath("Library.xml"), bytes);
    setITunesLibraryOption(QFile::encodeName(path).constData());
    return readAgain();
}
} // namespace PlainLibrary
