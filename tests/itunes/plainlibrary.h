#pragma once

#include "audiofile.h"
#include "itunesfixture.h"
#include "librarycalls.h"

#include <QTemporaryDir>

/// Libraries made of bytes, read by the calls.
namespace PlainLibrary {
using LibraryCalls::Reading;

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
    return LibraryCalls::read(Fixtures::writeLibrary(folder.filePath("Library.xml"), bytes));
}
} // namespace PlainLibrary
