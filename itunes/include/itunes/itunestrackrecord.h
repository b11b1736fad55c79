#pragma once

#include <stdint.h>

// Where pointers are 4 bytes wide the record is 172 bytes long and every field lies at a fixed offset, also
// on systems that would align 64-bit numbers to 8 bytes.
#if UINTPTR_MAX == 0xffffffffu
#pragma pack(push, 4)
#endif

/// One track of the iTunes library, as GetMusicInfo delivers it; records lie back to back in one array.
/// Texts are zero-terminated UTF-8 owned by the library; a null text stands for an empty one.
struct iTunesTrackRecord
{
    uint8_t reserved0[12];
    const char* name;
    const char* artist;
    uint8_t reserved20[4];
    const char* album;
    const char* genre;
    const char* kind;
    uint64_t size;     ///< bytes
    uint64_t duration; ///< milliseconds
    uint64_t trackNumber;
    uint64_t year;
    uint8_t reserved68[16];
    uint64_t bitRate;    ///< kbit/s
    uint64_t sampleRate; ///< hertz
    uint8_t reserved100[24];
    const char* persistentId; ///< hexadecimal digits
    uint8_t reserved128[4];
    uint8_t skipA; ///< non-zero: no music file on this machine
    uint8_t skipB; ///< non-zero: not a song
    uint8_t reserved134[18];
    const char* location; ///< percent-encoded file URL with the 16-character prefix "file://localhost"
    uint8_t reserved156[16];
};

#if UINTPTR_MAX == 0xffffffffu
#pragma pack(pop)
#endif
