#pragma once

#include <stdint.h>

/// Gets the music library ready for the application's run: on macOS asks the system to start the music
/// program in the background; elsewhere changes that an earlier run could not write any more are written now,
/// in the background. Returns at once, whatever the library's disk does, and never fails visibly.
void launchiTunes();

/// Takes a track out of the library and out of all its playlists; its media file stays. Non-zero on success:
/// the change then survives whatever happens. 0: no such track, or one log line tells why. Any thread.
unsigned char deleteMusic(uint64_t persistentId);
