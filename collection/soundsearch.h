#pragma once

#include "collection/fingerprintcache.h"
#include "collection/songlist.h"
#include "collection/songsearch.h"

#include <QVector>

/// Which songs are of one recording (SoundGroups).
namespace SoundSearch {
/// The groups, in the order of their first songs, each ascending; none where it was ended. Fingerprints that
/// the cache does not have are made on all processors, of those songs alone that have another one of their
/// length; what the cache does not keep takes some 4 kB of memory for each.
QVector<QVector<int>> groups(const SongList& songs, FingerprintCache& cache, SongSearchListener& listener);
} // namespace SoundSearch
