// The doors to the two engines, which are loaded when somebody asks for them first.
#include "audiocore/iaudioidentifier.h"
#include "audiocore/iaudioplayer.h"
#include "base/module.h"
#include "enginedoor.h"

namespace {
template <typename Engine>
class EngineModule
{
    using Door = audiocore::EngineDoor<Engine>;

public:
    constexpr EngineModule(const char* file, const char* doorName, const char* purpose)
        : m_module(file, doorName, purpose)
    {
    }

    void prepare() { m_module.opened(); }
    Engine* make()
    {
        const auto* const door = static_cast<const Door*>(m_module.opened());
        return door ? door->make() : nullptr;
    }
    /// Whoever has an engine came through the door.
    void destroy(Engine* engine)
    {
        if (const auto* const door = static_cast<const Door*>(m_module.openedBefore()))
            door->destroy(engine);
    }

private:
    base::Module m_module;
};

EngineModule<IAudioPlayer> playback("melodrift-playback", "melodriftPlayback", "playing a song");
EngineModule<IAudioIdentifier> identify("melodrift-identify", "melodriftIdentify", "identifying a song");
} // namespace

IAudioPlayer* CreatePlayer()
{
    return playback.make();
}

void PreparePlayer()
{
    playback.prepare();
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
