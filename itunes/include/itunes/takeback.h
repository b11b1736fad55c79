#pragma once

#include <stdint.h>

/// Takes back what deleteMusic did to these tracks since the last GetMusicInfo: they stand in the library
/// again and at their places in its playlists, byte for byte as before. All of them do, or none. Non-zero on
/// success: the change then survives whatever happens. 0: one log line tells why, and
/// iTunesLastEditProblem(); nothing was changed. Among the reasons: another program wrote the library file
/// since, or more was deleted than is kept (64 MB of entries, the last ones). Any thread; takes as long as
/// writing the library file, where that does not hold the tracks any more.
unsigned char takeBackDeletions(const uint64_t* persistentIds, uint64_t count);

/// Takes back what the last set_trackWithPresistentID did to this track that was not taken back yet, since
/// the last GetMusicInfo: the fields that it changed have their former values in the library's entry and in
/// the media file's tags, which may have been others, and the former artwork is in the media file again, or
/// none. Non-zero on success: the change then survives whatever happens. 0: one log line tells why, and
/// iTunesLastEditProblem(); nothing was changed, and the edit is forgotten. Among the reasons: another
/// program wrote the library file or the media file since, or it is too long ago (a hundred edits and 64 MB
/// of pictures are kept). Any thread; takes as long as writing the media file.
unsigned char takeBackEdit(uint64_t persistentId);

/// Whether the last set_trackWithPresistentID on this thread left something for takeBackEdit: not where it
/// failed, or where library and media file said already what they were to say.
unsigned char canTakeBackEdit();

/// The memory that takes what can be taken back, in bytes. Any thread.
uint64_t takeBackBytes();
