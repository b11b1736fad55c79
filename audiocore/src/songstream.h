#pragma once

#include <mpv/stream_cb.h>

#include <string>

namespace audiocore {
/// Lets a playback engine read one regular file, and no other, under the address that is handed back. `path`
/// must stay where it is for the engine's life. Null when the engine refuses.
const char* offerSong(mpv_handle* engine, const std::string& path);
} // namespace audiocore
