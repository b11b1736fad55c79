#pragma once

#include "audiocore/iaudioplayer.h"

#include <QString>
#include <QtTest>

#include <memory>

/// Players in tests.
namespace Playing {
struct Freed
{
    void operator()(IAudioPlayer* player) const { DestroyPlayer(player); }
};
using Player = std::unique_ptr<IAudioPlayer, Freed>;

inline int open(IAudioPlayer& player, const QString& path)
{
    return player.Open(path.toStdU32String().c_str());
}

inline Player opened(const QString& path)
{
    Player player(CreatePlayer());
    open(*player, path);
    return player;
}

/// For the players that are opened from now on: "null" or "pcm:FILE".
inline void chooseOutput(const QString& output)
{
    qputenv("MELODRIFT_AUDIO_OUTPUT", output.toLocal8Bit());
}

inline bool reaches(IAudioPlayer& player, PlayerState state, int milliseconds = 10000)
{
    return QTest::qWaitFor([&player, state] { return player.GetState() == state; }, milliseconds);
}

inline bool passes(IAudioPlayer& player, int position, int milliseconds = 10000)
{
    return QTest::qWaitFor([&player, position] { return player.GetPosition() > position; }, milliseconds);
}
} // namespace Playing
