#pragma once

#include "itunes/editproblem.h"

#include <stdint.h>

/// Gets the music library ready for the application's run: on macOS asks the system to start the music
/// program in the background; elsewhere changes that an earlier run could not write any more are written now,
/// in the background. Returns at once, whatever the library's disk does, and never fails visibly.
void launchiTunes();

/// Takes a track out of the library and out of all its playlists; its media file stays. Non-zero on success:
/// the change then survives whatever happens. 0: no such track, or one log line tells why. Any thread.
unsigned char deleteMusic(uint64_t persistentId);

/// The same for so many tracks at a few strokes, each of which takes hardly longer than one track: every
/// change that is answered survives whatever happens. Sets why each of them stays (`problems` has room for
/// `count`); ITUNES_EDIT_DONE for those that are out. Any thread.
void deleteTracks(const uint64_t* persistentIds, uint64_t count, iTunesEditProblem* problems);
