#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

/// What came of reading the music of a file, each failure with a line in the log.
enum MusicBytesStatus : std::int32_t {
    MUSIC_BYTES_READ = 0,
    MUSIC_BYTES_ENDED = 1,    ///< by who takes them
    MUSIC_BYTES_NO_FILE = 2,  ///< nothing that can be read, or not to its end
    MUSIC_BYTES_NO_MUSIC = 3, ///< of no format that is known, or nothing but tags
    MUSIC_BYTES_NO_MEMORY = 4
};

/// Takes bytes; false ends it.
using TakeMusicBytes = std::function<bool(const char* bytes, std::size_t count)>;

/// The bytes of a music file that are heard, as they stand there, and without its tags: files that differ in
/// those alone have the same. What cannot be taken apart counts as music. Path in bytes as the system has it;
/// links are followed. Any thread.
///
/// Of MP3, AAC and APE all between the tags in front and behind. Of FLAC the frames, with rate, channels and
/// bits of a sample. Of WAV the sound and the chunk that says of which kind it is. Of Ogg what is in the
/// pages behind the header packets, and those of the latter that set decoders up. Of MP4 the media data, and
/// the tables of kind, size and time. Of WMA the packets.
MusicBytesStatus ReadMusicBytes(const char* path, const TakeMusicBytes& take);
/// How many those are. Reads as little as that takes.
MusicBytesStatus MeasureMusicBytes(const char* path, std::int64_t& count);
