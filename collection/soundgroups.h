#pragma once

#include <QList>
#include <QtGlobal>
#include <QVector>

#include <functional>

/// Which songs sound alike, whatever their formats, bit rates and tags, by fingerprints of their sound: rows
/// of values of 32 bits, about eight for a second, of which most bits stay the same while the sound does
/// (Chromaprint's, uncompressed). Any thread.
namespace SoundGroups {
using Fingerprint = QVector<quint32>;

/// The share of all bits in which two fingerprints of one recording differ at most, laid over each other.
constexpr double mostBitsApart = 0.1;
/// How much later one may begin than the other, in values: seven seconds and a half.
constexpr int mostShift = 60;
/// Whoever has fewer values is like nobody: about two seconds. So is who has one value alone, as silence
/// does.
constexpr int fewestValues = 16;
/// How far apart lengths may be, in milliseconds.
constexpr quint64 mostApart = 7000;

/// Whether they are of one recording, where the one begins so many values later than the other. They have to
/// overlap by three quarters of the longer one, and no eight seconds of it may differ as other music does.
bool areAlike(const Fingerprint& one, const Fingerprint& other, int shift);

/// The groups of songs that sound alike, in the order of their first songs, each ascending. A song is in a
/// group with whatever is like it or like one that is, of about its length (milliseconds; 0 for one that is
/// like nobody). Each fingerprint is asked for once, in no order that could be told, and let go once all
/// songs of its length were; an empty one is like nobody.
///
/// Takes time and memory in proportion to the number of songs: songs are compared only that have values in
/// common, of which an index tells the last few that have each.
QVector<QVector<int>> find(const QList<quint64>& durations,
                           const std::function<Fingerprint(int song)>& fingerprintOf);
} // namespace SoundGroups
