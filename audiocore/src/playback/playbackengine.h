#pragma once

#include "audiocore/iaudiodecoder.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

struct mpv_event_property;
struct mpv_handle;

namespace audiocore {
struct SongSource;

/// Makes the process's numeric locale the one that the engine demands. A thread's own locale does not help:
/// the engine looks at the process's.
void setEngineLocale();

/// One file in a playback engine of its own, from the start paused. All calls from one thread; they may take
/// as long as the engine is busy, with the sound device for example.
class PlaybackEngine
{
public:
    enum class Event {
        None,
        Loaded,
        Arrived, ///< the seek is done
        Broken   ///< the file cannot be played, or not any further
    };

    /// The source must outlive the engine; the demuxer is the one for its song. `wake` is called on any
    /// thread when there are events; it must not call the engine.
    PlaybackEngine(SongSource& source, const char* demuxer, void (*wake)(void*), void* context);
    ~PlaybackEngine();
    PlaybackEngine(const PlaybackEngine&) = delete;
    PlaybackEngine& operator=(const PlaybackEngine&) = delete;

    Event nextEvent();
    /// Why the file is broken.
    const std::string& error() const { return m_error; }

    void setPaused(bool paused);
    /// False when no seek began, so none will arrive.
    bool seek(std::int64_t milliseconds);
    /// Nothing while the engine does not know.
    std::optional<std::int64_t> position() const;
    std::int64_t duration() const;
    bool atEnd() const;
    /// Whether the song runs without a sound device, though nobody asked for that.
    bool isSilent() const { return m_silent; }

private:
    struct Destroy
    {
        void operator()(mpv_handle* engine) const;
    };

    bool start(SongSource& source, const char* container, void (*wake)(void*), void* context);
    void noteOutput(const mpv_event_property& output);
    std::optional<std::int64_t> milliseconds(const char* property) const;

    std::unique_ptr<mpv_handle, Destroy> m_engine;
    std::string m_error;
    bool m_toldStartError = false;
    bool m_silenceWanted = false;
    bool m_silent = false;
    bool m_seekIsAsked = false; ///< and has not begun
};
} // namespace audiocore
