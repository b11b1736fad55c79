#pragma once

#include "collection/songlist.h"
#include "collection/songsearch.h"

#include <QVector>

/// Which songs have the same music bytes (audiocore/musicbytes.h), whatever their tags.
namespace ContentSearch {
/// The groups, in the order of their first songs, each ascending; none where it was ended. Only songs with
/// equally many such bytes are read, on all processors; nothing is decoded.
QVector<QVector<int>> groups(const SongList& songs, SongSearchListener& listener);
} // namespace ContentSearch
