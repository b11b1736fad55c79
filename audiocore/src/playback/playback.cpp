#include "playback/playback.h"

#include "base/checkedmath.h"
#include "base/log.h"

#include <algorithm>
#include <exception>
#include <utility>

using audiocore::Playback;

namespace {
/// How often the position is looked at while the song plays.
constexpr std::chrono::milliseconds tick(20);
/// How far ahead of the song the engine may read. A parser that finds no frame in half a gigabyte ends the
/// program.
constexpr std::int64_t bytesToGetOn = 48 << 20;
/// More than any song has.
constexpr std::int64_t bytesASecondPlayed = 8 << 20;
/// More than any MP3 has. Where it has no table of places, seeking reads all that lies before the target.
constexpr std::int64_t bytesASecondSought = 48000;
} // namespace

Playback::Playback(std::string path, const char* demuxer, std::int64_t milliseconds, std::int64_t audioBegin)
    : m_source(std::move(path)), m_demuxer(demuxer), m_audioBegin(audioBegin), m_duration(milliseconds)
{
    try {
        m_thread = std::thread([this] { run(); });
    } catch (const std::exception& fault) {
        fail(fault.what());
    }
}

Playback::~Playback()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_quit = true;
    }
    m_source.closed = true;
    m_work.notify_one();
    if (m_thread.joinable())
        m_thread.join();
}

Playback::Phase Playback::waitUntilOpen(std::chrono::steady_clock::time_point latest)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_opened.wait_until(lock, latest, [this] { return m_phase != Phase::Opening; });
    return m_phase;
}

void Playback::play()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (hasEnded())
            m_wishedTarget = 0;
        m_play = true;
        m_woken = true;
    }
    m_work.notify_one();
}

void Playback::pause()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_play = false;
        m_woken = true;
    }
    m_work.notify_one();
}

void Playback::seek(std::int64_t milliseconds)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_wishedTarget = std::clamp<std::int64_t>(milliseconds, 0, m_duration);
        m_woken = true;
    }
    m_work.notify_one();
}

Playback::Phase Playback::phase() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_phase;
}

bool Playback::playing() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_play;
}

bool Playback::finished() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return hasEnded();
}

bool Playback::silent() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_silent;
}

std::int64_t Playback::duration() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_duration;
}

std::int64_t Playback::position() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_phase == Phase::Failed)
        return 0;
    if (hasEnded())
        return m_duration;
    const std::int64_t shown = m_wishedTarget ? *m_wishedTarget : m_target.value_or(m_position);
    return std::min(shown, m_duration);
}

/// The end counts only while nobody wishes to be elsewhere.
bool Playback::hasEnded() const
{
    return m_finished && !m_wishedTarget && !m_target;
}

void Playback::wake(void* playback) noexcept
{
    auto* self = static_cast<Playback*>(playback);
    {
        const std::lock_guard<std::mutex> lock(self->m_mutex);
        self->m_woken = true;
    }
    self->m_work.notify_one();
}

void Playback::run() noexcept
{
    try {
        playToTheEnd();
    } catch (const std::exception& fault) {
        fail(fault.what());
    }
}

void Playback::fail(const char* fault) noexcept
{
    base::logFailure(m_source.path, "cannot be played", fault);
    setPhase(Phase::Failed, 0);
}

void Playback::playToTheEnd()
{
    m_source.allowance = base::checked::sum(bytesToGetOn, m_audioBegin);
    PlaybackEngine engine(m_source, m_demuxer, wake, this);
    for (;;) {
        handleEvents(engine);
        if (phase() == Phase::Ready) {
            carryWishes(engine);
            look(engine);
        }
        waitForWork();
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_quit)
            return;
    }
}

void Playback::waitForWork()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const auto work = [this] { return m_woken || m_quit; };
    if (m_enginePlays)
        m_work.wait_for(lock, tick, work);
    else
        m_work.wait(lock, work);
    m_woken = false;
}

void Playback::handleEvents(PlaybackEngine& engine)
{
    for (;;) {
        switch (engine.nextEvent()) {
        case PlaybackEngine::Event::None:
            return;
        case PlaybackEngine::Event::Loaded:
            setPhase(Phase::Ready, engine.duration());
            break;
        case PlaybackEngine::Event::Broken:
            m_enginePlays = false;
            fail(engine.error().c_str());
            break;
        case PlaybackEngine::Event::Arrived: {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_position = m_target.value_or(m_position);
            m_target.reset();
            m_finished = false;
            break;
        }
        }
    }
}

void Playback::setPhase(Phase phase, std::int64_t duration) noexcept
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_phase = phase;
        if (m_duration == 0 || phase == Phase::Failed)
            m_duration = duration;
    }
    m_opened.notify_all();
}

/// One seek at a time: of all that is wished meanwhile the last one follows.
void Playback::carryWishes(PlaybackEngine& engine)
{
    bool play = false;
    std::optional<std::int64_t> target;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_wishedTarget && !m_target) {
            target = std::exchange(m_wishedTarget, std::nullopt);
            m_target = target;
        }
        // Sound starts at the target only, never with what was ready before the seek.
        play = m_play && (m_enginePlays || !m_target);
    }
    if (target)
        m_source.allowance =
            base::checked::sum(bytesToGetOn, base::checked::scaled(*target, bytesASecondSought, 1000));
    if (target && !engine.seek(*target)) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_target.reset();
    }
    if (play != m_enginePlays)
        engine.setPaused(!play);
    m_enginePlays = play;
}

void Playback::look(const PlaybackEngine& engine)
{
    const bool atEnd = engine.atEnd();
    const std::optional<std::int64_t> position = engine.position();
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_silent = engine.isSilent();
    if (m_wishedTarget || m_target)
        return;
    if (position) {
        const std::int64_t more = base::checked::scaled(std::max<std::int64_t>(*position - m_position, 0),
                                                        bytesASecondPlayed, 1000);
        m_source.allowance = std::min(base::checked::sum(m_source.allowance, more), bytesToGetOn);
        m_position = *position;
    }
    if (atEnd && !m_finished) {
        m_play = false;
        m_woken = true; // to tell the engine
    }
    m_finished = atEnd;
}
