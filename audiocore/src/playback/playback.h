#pragma once

#include "playback/playbackengine.h"
#include "playback/songstream.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace audiocore {
/// The playback of one file. A thread of its own carries the wishes to the engine and keeps what is shown of
/// it, so that no call waits for the engine. Any thread.
class Playback
{
public:
    enum class Phase { Opening, Ready, Failed };

    /// Where no thread can be made the playback has failed from the start.
    /// The demuxer is a name that stays, and `milliseconds` is the length when it is known, else 0;
    /// `audioBegin` is where the tag at the file's beginning ends.
    Playback(std::string path, const char* demuxer, std::int64_t milliseconds, std::int64_t audioBegin);
    /// Ends the playback.
    ~Playback();
    Playback(const Playback&) = delete;
    Playback& operator=(const Playback&) = delete;

    /// Whether the file can be played; still Opening when that took longer than until `latest`.
    Phase waitUntilOpen(std::chrono::steady_clock::time_point latest);

    void play();
    void pause();
    void seek(std::int64_t milliseconds);

    Phase phase() const;
    bool playing() const;
    bool finished() const;
    std::int64_t duration() const;
    std::int64_t position() const;
    /// Whether there is no sound device for it.
    bool silent() const;

private:
    static void wake(void* playback) noexcept;
    void run() noexcept;
    void playToTheEnd();
    void fail(const char* fault) noexcept;
    void waitForWork();
    void handleEvents(PlaybackEngine& engine);
    void carryWishes(PlaybackEngine& engine);
    void look(const PlaybackEngine& engine);
    void setPhase(Phase phase, std::int64_t duration) noexcept;
    bool hasEnded() const;

    SongSource m_source;
    const char* const m_demuxer;
    const std::int64_t m_audioBegin;

    mutable std::mutex m_mutex; ///< never held while the engine is called, which calls wake()
    std::condition_variable m_work;
    std::condition_variable m_opened;
    bool m_woken = false;
    bool m_quit = false;
    // What is wished.
    bool m_play = false;
    std::optional<std::int64_t> m_wishedTarget;
    // What is shown.
    Phase m_phase = Phase::Opening;
    std::int64_t m_duration;
    std::int64_t m_position = 0;
    bool m_finished = false;
    bool m_silent = false;
    std::optional<std::int64_t> m_target; ///< of the seek that is under way

    bool m_enginePlays = false; ///< of the thread alone
    std::thread m_thread;       ///< started when everything is made
};
} // namespace audiocore
