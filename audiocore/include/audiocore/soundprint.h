#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

/// What came of making a print, each failure with a line in the log.
enum SoundPrintStatus : std::int32_t {
    SOUND_PRINT_MADE = 0,
    SOUND_PRINT_TOO_SHORT = 1, ///< too little sound for any value
    SOUND_PRINT_CANCELLED = 2,
    SOUND_PRINT_NO_FILE = 3,  ///< no file that can be read
    SOUND_PRINT_NO_AUDIO = 4, ///< nothing in it decodes, or decoding it would not end
    SOUND_PRINT_NO_MEMORY = 5,
    SOUND_PRINT_NO_MODULE = 6 ///< of the identifier
};

/// What a recording is known by, whatever it is encoded in: values of 32 bits of its first two minutes, about
/// eight for a second, of which most bits stay the same while the sound does. Decodes the file, whose path is
/// bytes as the system has them. Ends within a fifth of a second once the flag is set. The first call loads
/// the identifier's module; no network. Any thread, several at once.
SoundPrintStatus MakeSoundPrint(const char* path, const std::atomic<bool>& isCancelled,
                                std::vector<std::uint32_t>& values);
