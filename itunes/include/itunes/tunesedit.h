#pragma once

#include "itunes/eyetunes.h"

#include <stdint.h>

/// Writes a track's fields into its media file's tags and into its entry in the library file. Fields that are
/// as the last reading delivered them, or the last such call made them, stay as they are in both, whoever
/// changed them since; a track that is no longer in the library file is not edited at all. All texts are
/// zero-terminated; name, album and artist are UTF-8, genre and coverPath in the local 8-bit encoding. Null
/// texts count as empty; empty texts and a year of 0 or less take the field out. The picture file at
/// coverPath becomes the artwork, unless there is no such file or the artwork is the same already. 0 on
/// success: the change then survives whatever happens. Any other value: nothing was changed, one log line
/// tells why. Any thread; takes as long as writing the media file.
int set_trackWithPresistentID(EyeTunes* application, uint64_t persistentId, const char* name,
                              const char* album, const char* artist, const char* genre, int32_t year,
                              const char* coverPath);

/// Answers about one track of the last reading, in one of two forms:
/// - `fifth` holds a path (at most 255 bytes of UTF-8): the track's artwork is written to that
///   file, which appears whole or not at all; equal pictures share their disk space. The outputs stay as they
///   are; all buffers have 256 bytes.
/// - `fifth` is empty: `last` gets the track's location, cut at a character if it does not fit. The other
///   outputs stay as they are; all buffers have 1024 bytes.
/// 0 on success, another value when the track, its file or its artwork is not there. Any thread.
int get_trackWithPresistentID(EyeTunes* application, uint64_t persistentId, char* output1, char* output2,
                              char* output3, char* output4, void* null, char* fifth, char* last);
