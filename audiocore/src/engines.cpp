// The doors to the two engines, which are loaded when somebody asks for them first.
#include "audiocore/iaudioidentifier.h"
#include "audiocore/iaudioplayer.h"
#include "audiocore/soundprint.h"
#include "base/module.h"
#include "enginedoor.h"

namespace {
/// The door of a module.
template <typename Engine, typename Door = audiocore::EngineDoor<Engine>>
class EngineModule
{
public:
    constexpr EngineModule(const char* file, const char* doorName, const char* purpose)
        : m_module(file, doorName, purpose)
    {
    }

    void prepare() { m_module.opened(); }
    Engine* make()
    {
        const Door* const door = opened();
        return door ? door->make() : nullptr;
    }
    const Door* opened() { return static_cast<const Door*>(m_module.opened()); }
    /// Null when nobody has asked for an engine: whoever has one came through the door.
    const Door* openedBefore() const { return static_cast<const Door*>(m_module.openedBefore()); }
    void destroy(Engine* engine)
    {
        if (const Door* const door = openedBefore())
            door->destroy(engine);
    }

private:
    base::Module m_module;
};

EngineModule<IAudioPlayer, audiocore::PlaybackDoor> playback("melodrift-playback", "melodriftPlayback",
                                                             "playing a song");
EngineModule<IAudioIdentifier, audiocore::IdentifyDoor> identify("melodrift-identify", "melodriftIdentify",
                                                                 "identifying a song");
} // namespace

IAudioPlayer* CreatePlayer()
{
    return playback.make();
}

void PreparePlayer()
{
    playback.prepare();
}

bool PlayerIsSilent(const IAudioPlayer* player)
{
    const audiocore::PlaybackDoor* const door = playback.openedBefore();
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

bool IdentifiesBySound()
{
    const audiocore::IdentifyDoor* const door = identify.openedBefore();
    return door && door->hasKey();
}

int IdentificationScore(const IAudioIdentifier* identifier)
{
    const audiocore::IdentifyDoor* const door = identify.openedBefore();
    return door ? door->score(identifier) : 0;
}

void DestroyIdentifier(IAudioIdentifier* identifier)
{
    identify.destroy(identifier);
}

SoundPrintStatus MakeSoundPrint(const char* path, const std::atomic<bool>& isCancelled,
                                std::vector<std::uint32_t>& values)
{
    const audiocore::IdentifyDoor* const door = identify.opened();
    return door ? door->makePrint(path, isCancelled, values) : SOUND_PRINT_NO_MODULE;
}
