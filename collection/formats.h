#pragma once

#include <QString>
#include <QStringList>

/// The kinds of music files that a collection has: the one table of their names.
namespace Formats {
/// Oddity 19: whether a file counts as music, by the last three characters of its name; "lac" is FLAC.
bool isMusicEnding(const QString& lastThree);
/// The same for Windows Media files, which only those who name them get.
bool isWindowsMediaEnding(const QString& lastThree);
/// "*.mp3 *.m4a" and so on, for a dialog that lets the user choose any of them.
QString namePatterns();
/// "MP3", "M4A" and so on: what comes by dropping it, or its folder.
QStringList dropped();
/// Oddity 8: a name for the audio core's format code, which no screen shows; "None" for an unknown one.
QString nameOf(int formatCode);
/// Oddity 9: "WAV", "MP3" and so on; every code without a name of its own is "MP3".
QString listedName(int formatCode);
} // namespace Formats
