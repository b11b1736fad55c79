#pragma once

#include <stdint.h>

/// Takes back what deleteMusic did to these tracks since the last GetMusicInfo: they stand in the library
/// again and at their places in its playlists, byte for byte as before. All of them do, or none. Non-zero on
/// success: the change then survives whatever happens. 0: one log line tells why, and
/// iTunesLastEditProblem(); nothing was changed. Among the reasons: another program wrote the library file
/// since, or more was deleted than is kept (64 MB of entries, the last ones). Any thread; takes as long as
/// writing the library file, where that does not hold the tracks any more.
unsigned char takeBackDeletions(const uint64_t* persistentIds, uint64_t count);

/// The memory that takes what can be taken back, in bytes. Any thread.
uint64_t takeBackBytes();
