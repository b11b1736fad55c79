#pragma once

#include <mpv/stream_cb.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

namespace audiocore {
/// The one file that a playback engine may read.
struct SongSource
{
    explicit SongSource(std::string file) : path(std::move(file)) {}

    const std::string path;
    /// How many more bytes the engine gets before the file seems to be at its end. The engine takes memory
    /// for what it cannot make out, without a limit, and may go through the wide holes of a file. Any thread.
    std::atomic<std::int64_t> allowance{0};
    /// Once true, the engine gets nothing more: it is to end.
    std::atomic<bool> closed{false};
};

/// Lets the engine read the source's regular file under the address that is handed back. The source must live
/// as long as the engine. Null when the engine refuses.
const char* offerSong(mpv_handle* engine, SongSource& source);
} // namespace audiocore
