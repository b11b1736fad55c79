#pragma once

#include "audiocore/soundprint.h"

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
    int (*score)(const IAudioIdentifier*);
    SoundPrintStatus (*makePrint)(const char* path, const std::atomic<bool>& isCancelled,
                                  std::vector<std::uint32_t>& values);
};
} // namespace audiocore
