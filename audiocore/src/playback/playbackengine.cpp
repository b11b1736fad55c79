#include "playback/playbackengine.h"

#include "base/log.h"
#include "base/threadroom.h"
#include "playback/songstream.h"

#include <mpv/client.h>

#include <array>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <utility>

using audiocore::PlaybackEngine;

namespace {
struct Option
{
    const char* name;
    const char* value;
};

/// Sound only, and nothing that comes from elsewhere than from the one stream.
constexpr Option options[] = {
    {"config", "no"},
    {"terminal", "no"},
    {"load-scripts", "no"},
    {"load-stats-overlay", "no"},
    {"load-osd-console", "no"},
    {"load-auto-profiles", "no"},
    {"ytdl", "no"},
    {"osc", "no"},
    {"osd-level", "0"},
    {"input-default-bindings", "no"},
    {"input-builtin-bindings", "no"},
    {"vid", "no"},
    {"sid", "no"},
    {"audio-display", "no"},
    {"force-window", "no"},
    {"autoload-files", "no"},
    {"sub-auto", "no"},
    {"audio-file-auto", "no"},
    {"cover-art-auto", "no"},
    {"access-references", "no"},
    {"load-unsafe-playlists", "no"},
    {"ordered-chapters", "no"},
    {"resume-playback", "no"},
    {"save-position-on-quit", "no"},
    {"cache", "no"},
    {"demuxer", "lavf"},
    {"audio-client-name", "Melodrift"},
    {"title", "Melodrift"},
    {"audio-fallback-to-null", "yes"},
    {"idle", "yes"},
    {"pause", "yes"},
    {"keep-open", "yes"},
    {"keep-open-pause", "no"},
    {"hr-seek", "yes"},
    {"hr-seek-demuxer-offset", "1"}, // containers may lead to a place behind the target
};

/// What the engine runs at once for one song, and some more. It waits for ever when it cannot make one.
constexpr int engineThreads = 8;

constexpr const char* noOutput = "null";
constexpr const char* outputProperty = "current-ao";

/// Whether it is the one without sound.
bool chooseOutput(mpv_handle* engine)
{
    const char* output = std::getenv("MELODRIFT_AUDIO_OUTPUT");
    if (!output) {
#ifdef __linux__
        // Tried in this order. The engine knows more; trying the last of those leaks memory every time.
        mpv_set_option_string(engine, "ao", "pipewire,pulse,alsa");
#endif
        return false;
    }
    const bool silent = std::strcmp(output, noOutput) == 0;
    if (silent) {
        mpv_set_option_string(engine, "ao", noOutput);
        mpv_set_option_string(engine, "ao-null-buffer", "0.02");
    } else if (std::strncmp(output, "pcm:", 4) == 0) {
        mpv_set_option_string(engine, "ao", "pcm");
        mpv_set_option_string(engine, "ao-pcm-file", output + 4);
    } else {
        base::logLine(output, "is no sound output for MELODRIFT_AUDIO_OUTPUT");
    }
    return silent;
}
} // namespace

void audiocore::setEngineLocale()
{
    const char* name = std::setlocale(LC_NUMERIC, nullptr);
    if (!name || std::strcmp(name, "C") != 0)
        std::setlocale(LC_NUMERIC, "C");
}

void PlaybackEngine::Destroy::operator()(mpv_handle* engine) const
{
    mpv_terminate_destroy(engine);
}

PlaybackEngine::PlaybackEngine(SongSource& source, const char* demuxer, void (*wake)(void*), void* context)
{
    if (!base::hasRoomForThreads(engineThreads)) {
        m_error = "too few threads can be made for the playback engine";
        return;
    }
    m_engine.reset(mpv_create());
    // Naming the container leaves nothing to guess, and no list of other files a chance.
    if (!m_engine || !start(source, demuxer, wake, context)) {
        m_engine.reset();
        m_error = "the playback engine does not start";
    }
}

PlaybackEngine::~PlaybackEngine() = default;

bool PlaybackEngine::start(SongSource& source, const char* container, void (*wake)(void*), void* context)
{
    // Options that this build of the engine does not have are no loss: it lacks what they switch off.
    for (const Option& option : options)
        mpv_set_option_string(m_engine.get(), option.name, option.value);
    m_silenceWanted = chooseOutput(m_engine.get());
    if (mpv_set_option_string(m_engine.get(), "demuxer-lavf-format", container) < 0)
        return false;
    mpv_set_wakeup_callback(m_engine.get(), wake, context);
    const char* address = offerSong(m_engine.get(), source);
    std::array<const char*, 3> load{"loadfile", address, nullptr};
    return address && mpv_initialize(m_engine.get()) == 0 &&
           mpv_observe_property(m_engine.get(), 0, "eof-reached", MPV_FORMAT_FLAG) == 0 &&
           mpv_observe_property(m_engine.get(), 0, outputProperty, MPV_FORMAT_STRING) == 0 &&
           mpv_command(m_engine.get(), load.data()) == 0;
}

PlaybackEngine::Event PlaybackEngine::nextEvent()
{
    if (!m_engine)
        return std::exchange(m_toldStartError, true) ? Event::None : Event::Broken;
    for (;;) {
        const mpv_event* event = mpv_wait_event(m_engine.get(), 0);
        switch (event->event_id) {
        case MPV_EVENT_NONE:
            return Event::None;
        case MPV_EVENT_FILE_LOADED:
            return Event::Loaded;
        case MPV_EVENT_SEEK:
            m_seekIsAsked = false;
            break;
        case MPV_EVENT_PLAYBACK_RESTART:
            if (m_seekIsAsked)
                break; // at where it was before, the song's begin as a rule
            return Event::Arrived;
        case MPV_EVENT_END_FILE:
            m_error = mpv_error_string(static_cast<const mpv_event_end_file*>(event->data)->error);
            return Event::Broken;
        case MPV_EVENT_PROPERTY_CHANGE:
            noteOutput(*static_cast<const mpv_event_property*>(event->data));
            break;
        default:
            break;
        }
    }
}

void PlaybackEngine::noteOutput(const mpv_event_property& output)
{
    if (output.format == MPV_FORMAT_STRING && std::strcmp(output.name, outputProperty) == 0)
        m_silent = !m_silenceWanted && std::strcmp(*static_cast<char**>(output.data), noOutput) == 0;
}

void PlaybackEngine::setPaused(bool paused)
{
    int flag = paused ? 1 : 0;
    mpv_set_property(m_engine.get(), "pause", MPV_FORMAT_FLAG, &flag);
}

bool PlaybackEngine::seek(std::int64_t milliseconds)
{
    // No number as a text: the thread's locale may write it with a comma.
    std::array<mpv_node, 3> arguments{};
    arguments[0].format = MPV_FORMAT_STRING;
    arguments[0].u.string = const_cast<char*>("seek");
    arguments[1].format = MPV_FORMAT_DOUBLE;
    arguments[1].u.double_ = double(milliseconds) / 1000;
    arguments[2].format = MPV_FORMAT_STRING;
    arguments[2].u.string = const_cast<char*>("absolute+exact");
    mpv_node_list list{int(arguments.size()), arguments.data(), nullptr};
    mpv_node command{};
    command.format = MPV_FORMAT_NODE_ARRAY;
    command.u.list = &list;
    m_seekIsAsked = mpv_command_node(m_engine.get(), &command, nullptr) == 0;
    return m_seekIsAsked;
}

std::optional<std::int64_t> PlaybackEngine::milliseconds(const char* property) const
{
    double seconds = 0;
    if (!m_engine || mpv_get_property(m_engine.get(), property, MPV_FORMAT_DOUBLE, &seconds) != 0 ||
        !(seconds >= 0 && seconds < 1e9))
        return std::nullopt;
    return std::llround(seconds * 1000);
}

std::optional<std::int64_t> PlaybackEngine::position() const
{
    return milliseconds("time-pos");
}

std::int64_t PlaybackEngine::duration() const
{
    return milliseconds("duration").value_or(0);
}

bool PlaybackEngine::atEnd() const
{
    int flag = 0;
    return m_engine && mpv_get_property(m_engine.get(), "eof-reached", MPV_FORMAT_FLAG, &flag) == 0 &&
           flag != 0;
}
