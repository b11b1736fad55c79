#pragma once

#include <QString>
#include <QVector>

/// Which of several copies of one song sounds best, as far as lists of songs know. Any thread.
///
/// 1. Lossless before lossy. Lossless is what its kind says it is (FLAC, APE, WAV, AIFF, "Apple Lossless"),
/// and what has more than 12 bits for every moment that is sampled: M4A, OGG and WMA may be either, and
/// nothing lossy has as many.
/// 2. Of lossy copies, the higher bit rate by what the codec makes of it: AAC and Vorbis sound with 100
/// kbit/s as MP3 does with 130, WMA as it does with 110. Of lossless ones the bit rate tells how tightly they
/// are packed, and counts nothing.
/// 3. The higher sample rate.
/// 4. The longer copy, by whole seconds: encoders add a few milliseconds.
namespace BestCopy {
/// A copy, as a list shows it. 0 for a number that is not known.
struct Sound
{
    QString kind;           ///< "FLAC", "MPEG audio file", in any language and any capitals
    quint64 bitRate = 0;    ///< kbit/s
    quint64 sampleRate = 0; ///< hertz
    quint64 duration = 0;   ///< milliseconds
};

/// The position of the copy that sounds best, the first of several such; -1 where none sounds worse.
int find(const QVector<Sound>& copies);
/// The positions of all that sound as good as that one, ascending; of all copies where none sounds worse.
QVector<int> findAll(const QVector<Sound>& copies);
} // namespace BestCopy
