#pragma once

#include <QByteArray>
#include <QSize>
#include <QString>
#include <QStringList>

/// Real music files for tests: short tones, encoded once per build tree with the ffmpeg command and then
/// copied.
namespace Fixtures {
/// The formats by the name of their fixture: "mp3", "m4a", "ape", "aac", "flac", "wma", "wav", "ogg".
QStringList formats();
/// The kinds beyond these eight: "mp3novbr" (variable bit rate without any header that says so), "alac",
/// "opus", "oggflac". There are also "mp3vbr", variable bit rate with such a header, "aacquad", AAC that says
/// in its first frame which channels it has, and "w64" and "loas", which are read and not written.
QStringList furtherKinds();
/// What else MP4 files hold, beside AAC and ALAC: "mp4flac", "mp4opus", "mp4ac3", "mp4eac3". There is also
/// "mp4half", AAC of half the usual rate, and "mp4fragments".
QStringList mp4Kinds();
/// Sound in WAV files that is compressed, or in more than 16 bits: "adpcm", "ima", "gsm" (8000 Hz, one
/// channel), "mulaw", "alaw", "float", "surround". There is also "rf64", which may be larger than 4 GB.
QStringList wavKinds();
/// The ending that files of the kind carry.
QString suffixOf(const QString& kind);

/// A tagless tone of the kind, 3 seconds long; made on the first call. Tests copy it, never change it. Ends
/// the test program when the file cannot be made.
QString tone(const QString& kind);
/// The same of another length.
QString tone(const QString& kind, int milliseconds);
/// Where the length is guessed from a file's beginning the guess is far off by then, in milliseconds.
constexpr int longSong = 240000;
/// Copies the tone of the kind to folder/name.suffix, writable; the new path.
QString copyTone(const QString& kind, const QString& folder, const QString& name = QStringLiteral("song"));

/// A silent APE file, made by hand: there is no encoder at hand.
QByteArray silentApe(int milliseconds);

/// A JPEG picture of one colour pattern per seed.
QByteArray jpeg(int width, int height, int seed);
/// A GIF picture whose only frame is one pixel of a screen of this size.
QByteArray gif(const QSize& screen);
} // namespace Fixtures
