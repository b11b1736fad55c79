// The doors to the two engines, which are loaded when somebody asks for them first.
#include "audiocore/iaudioidentifier.h"
#include "audiocore/iaudioplayer.h"
#include "base/log.h"
#include "base/module.h"
#include "enginedoor.h"

#include <atomic>

namespace {
/// The door of a module; null, with a line in the log, as long as it cannot be loaded.
template <typename Engine, typename Door = audiocore::EngineDoor<Engine>>
class Module
{
public:
    constexpr Module(const char* file, const char* doorName, const char* purpose)
        : m_file(file), m_doorName(doorName), m_purpose(purpose)
    {
    }

    /// Two threads may load at once: the system does it for one, and has the other wait.
    const Door* opened()
    {
        if (!m_door)
            m_door = load();
        return m_door;
    }
    Engine* make()
    {
        const Door* const door = opened();
        return door ? door->make() : nullptr;
    }
    /// Whoever has an engine came through the door.
    void destroy(Engine* engine)
    {
        if (const Door* const door = m_door)
            door->destroy(engine);
    }

private:
    const Door* load() const
    {
        std::string error;
        const void* const door = base::offeredBy(m_file, m_doorName, error);
        if (!door)
            base::logLine(m_purpose, "is not possible, its module cannot be loaded: " + error);
        return static_cast<const Door*>(door);
    }

    const char* m_file;
    const char* m_doorName;
    const char* m_purpose;
    std::atomic<const Door*> m_door{nullptr};
};

Module<IAudioPlayer, audiocore::PlaybackDoor> playback("melodrift-playback", "melodriftPlayback",
                                                       "playing a song");
Module<IAudioIdentifier> identify("melodrift-identify", "melodriftIdentify", "identifying a song");
} // namespace

IAudioPlayer* CreatePlayer()
{
    return playback.make();
}

void PreparePlayer()
{
    playback.opened();
}

bool PlayerIsSilent(const IAudioPlayer* player)
{
    const audiocore::PlaybackDoor* const door = playback.opened();
    return door && door->isSilent(player);
}

void DestroyPlayer(IAudioPlayer* player)
{
    playback.destroy(player);
}

IAudioIdentifier* CreateIdentifier()
{
    return identify.make();
}

void DestroyIdentifier(IAudioIdentifier* identifier)
{
    identify.destroy(identifier);
}
