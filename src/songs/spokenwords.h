#pragma once

#include <QString>

struct DupMusicInfo;
struct QMusicInfo;

/// Songs, groups and lists in words, for those who hear them.
namespace SpokenWords {
/// "Midnight Ferry, The Harbour, Night Lines": what tells songs apart, with what is unknown.
QString of(const QMusicInfo* song);
/// The rest: "Pop, 1999, track 7, 4 minutes 3 seconds".
QString about(const QMusicInfo* song);
/// "Midnight Ferry, The Harbour, Night Lines, 3 songs".
QString of(const DupMusicInfo* group);
/// One of a group whose copies are told apart by their sound: "Kept: Midnight Ferry, M4A, 96 kilobits per
/// second, best sound of this group".
QString ofCopy(const QMusicInfo* song, const QString& format, bool kept, bool best);

enum class List { All, Undefined, Duplicates };
/// What a list shows, and how many: "All songs, 95,650 songs", or "All songs, 12 of 95,650 songs".
QString ofList(List list, int shown, int all);
} // namespace SpokenWords
