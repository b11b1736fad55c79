#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// Real music files for tests: short tones, encoded once per build tree with the ffmpeg command and then
/// copied.
namespace Fixtures {
/// The formats by the name of their fixture: "mp3", "m4a", "ape", "aac", "flac", "wma", "wav", "ogg".
QStringList formats();
/// The kinds beyond these eight: "mp3novbr" (variable bit rate without any header that says so), "alac",
/// "opus", "oggflac". There is also "mp3vbr", variable bit rate with such a header, and
/// "w64" and "loas", which are read and not written.
QStringList furtherKinds();
/// The ending that files of the kind carry.
QString suffixOf(const QString& kind);

/// A tagless tone of the kind, 3 seconds long; made on the first call. Tests copy it, never change it. Ends
/// the test program when the file cannot be made.
QString tone(const QString& kind);
/// The same of another length.
QString tone(const QString& kind, int milliseconds);
/// Copies the tone of the kind to folder/name.suffix, writable; the new path.
QString copyTone(const QString& kind, const QString& folder, const QString& name = QStringLiteral("song"));

/// A silent APE file, made by hand: there is no encoder at hand.
QByteArray silentApe(int milliseconds);

/// A JPEG picture of one colour pattern per seed.
QByteArray jpeg(int width, int height, int seed);
} // namespace Fixtures
