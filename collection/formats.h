#pragma once

#include <QString>

/// The kinds of music files that a collection has: the one table of their names.
namespace Formats {
/// Whether a file counts as music, by the last three characters of its name: "lac" stands for FLAC.
bool isMusicEnding(const QString& lastThree);
/// The name of the audio core's format code as the song card shows it; "None" for an unknown one.
QString nameOf(int formatCode);
} // namespace Formats
