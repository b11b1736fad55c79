#include "playback/songstream.h"

#include "base/platform.h"
#include "tags/soundview.h"

#include <cstdio>
#include <memory>
#include <new>
#include <optional>
#include <utility>

namespace {
using audiocore::SongSource;

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

struct Song
{
    SongSource& source;
    File file;
    audiocore::SoundView view;
    std::int64_t position = 0;
};

Song* songOf(void* cookie)
{
    return static_cast<Song*>(cookie);
}

std::int64_t read(void* cookie, char* bytes, std::uint64_t count) noexcept
{
    Song* song = songOf(cookie);
    if (song->source.closed || song->source.allowance <= 0)
        return 0;
    const auto got =
        std::int64_t(song->view.readAt(song->file.get(), song->position, bytes, std::size_t(count)));
    song->position += got;
    song->source.allowance -= got;
    return got;
}

std::int64_t seek(void* cookie, std::int64_t position) noexcept
{
    if (position < 0)
        return MPV_ERROR_GENERIC;
    return songOf(cookie)->position = position;
}

std::int64_t size(void* cookie) noexcept
{
    const Song* song = songOf(cookie);
    base::FileState state;
    return base::stateOf(song->file.get(), state) ? song->view.shownOf(state.size)
                                                  : std::int64_t(MPV_ERROR_GENERIC);
}

void close(void* cookie) noexcept
{
    delete songOf(cookie);
}

/// Null when there is nothing to hear; throws when there is no memory for it.
Song* songFrom(SongSource& source, File file)
{
    std::optional<audiocore::SoundView> view = audiocore::SoundView::of(file.get(), source.path);
    return view ? new Song{source, std::move(file), std::move(*view)} : nullptr;
}

/// Looks at the opened file itself, so that nothing else can take its place in between.
int open(void* offered, char*, mpv_stream_cb_info* info) noexcept
{
    SongSource& source = *static_cast<SongSource*>(offered);
    File file(base::openFile(source.path, false), std::fclose);
    base::FileState state;
    if (!file || !base::stateOf(file.get(), state) || !state.regular)
        return MPV_ERROR_LOADING_FAILED;
    Song* song = nullptr;
    try {
        song = songFrom(source, std::move(file));
    } catch (const std::bad_alloc&) {
        return MPV_ERROR_NOMEM; // the engine is no C++: nothing is thrown through it
    }
    if (!song)
        return MPV_ERROR_LOADING_FAILED;
    *info = {};
    info->cookie = song;
    info->read_fn = read;
    info->seek_fn = seek;
    info->size_fn = size;
    info->close_fn = close;
    return 0;
}
} // namespace

const char* audiocore::offerSong(mpv_handle* engine, SongSource& source)
{
    return mpv_stream_cb_add_ro(engine, "song", &source, open) == 0 ? "song://" : nullptr;
}
