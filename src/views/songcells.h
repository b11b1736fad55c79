#pragma once

#include <QVariant>

struct QMusicInfo;

/// What the cells of the song and the group models have in common.
namespace SongCells {
constexpr int columnModeGrid = 1;
constexpr int columnModeTable = 6;
constexpr int columnModeDupTable = 7;

/// Whether the song's value of a column is the empty text or the number 0; a column without a value is empty.
bool isEmpty(const QMusicInfo* song, int column);
/// The value as a table shows it, "unknown" for an empty one; invalid for columns without a value.
QVariant text(const QMusicInfo* song, int column);
/// The song's cover as an icon; the generic cover when there is none.
QVariant coverIcon(const QMusicInfo* song);
/// White and pale blue by turns.
QVariant stripe(int row);
/// What a cell answers to the roles that do not look at its value: tool tip, alignment and, in tables,
/// stripe; invalid for every other role.
QVariant plainRole(int role, int row, bool grid);
/// The header of a table's column, out of seven; invalid for every other orientation or role.
QVariant header(const char* const (&headers)[7], int section, Qt::Orientation orientation, int role);
/// "Double click to start playing".
QString toolTip();
} // namespace SongCells
