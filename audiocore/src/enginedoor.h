#pragma once

#ifdef _WIN32
#define ENGINE_DOOR __declspec(dllexport)
#else
#define ENGINE_DOOR
#endif

class IAudioIdentifier;
class IAudioPlayer;

namespace audiocore {
/// What an engine's module offers, under the name of its door.
template <typename Engine>
struct EngineDoor
{
    Engine* (*make)();
    void (*destroy)(Engine*);
};

struct PlaybackDoor : EngineDoor<IAudioPlayer>
{
    bool (*isSilent)(const IAudioPlayer*);
};

struct IdentifyDoor : EngineDoor<IAudioIdentifier>
{
    bool (*hasKey)();
};
} // namespace audiocore
