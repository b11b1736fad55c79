#pragma once

#include <QByteArray>
#include <QList>

/// WAV files as programs leave them that do not go back to fill in sizes, or count otherwise than most.
namespace WavFixture {
struct Wav
{
    QByteArray name;
    QByteArray bytes;
    int milliseconds;        ///< of a tone that takes a second
    QByteArray artist;       ///< empty where nobody can know it
    const char* whyNotSaved; ///< what the log says of it; null where it can be saved
};

/// Of a tone of one second, 16 bits a sample.
QList<Wav> odd(const QByteArray& tone);
/// The same for files of more than 4 GB.
QList<Wav> ofLongSizes(const QByteArray& rf64Tone);
/// With other numbers where the sizes of the file and of its sound stand.
QByteArray sized(QByteArray wav, quint32 file, quint32 sound);
/// Puts chunks before the sound.
QByteArray with(QByteArray wav, const QByteArray& chunksBeforeSound);
/// A list that says an artist.
QByteArray artistChunk(const QByteArray& artist);
} // namespace WavFixture
