#pragma once

#include "audiocore/iaudioplayer.h"
#include "latency.h"

#include <QElapsedTimer>
#include <QFile>
#include <QString>
#include <QtTest>

#include <memory>
#include <vector>

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

/// A player that may still be opening the file.
inline Player opening(const QString& path)
{
    Player player(CreatePlayer());
    open(*player, path);
    return player;
}

inline Player opened(const QString& path)
{
    Player player = opening(path);
    if (!QTest::qWaitFor([&player] { return player->GetState() != PLAYER_STATE_OPENING; }, patience))
        qFatal("%s stays half open", qUtf8Printable(path));
    return player;
}

/// For the players that are opened from now on: "null" or "pcm:FILE".
inline void chooseOutput(const QString& output)
{
    qputenv("MELODRIFT_AUDIO_OUTPUT", output.toLocal8Bit());
}

inline bool reaches(IAudioPlayer& player, PlayerState state)
{
    return QTest::qWaitFor([&player, state] { return player.GetState() == state; }, patience);
}

inline bool passes(IAudioPlayer& player, int position)
{
    return QTest::qWaitFor([&player, position] { return player.GetPosition() > position; }, patience);
}

/// Waits until the position is the same for a while: what is on its way to the sound device still counts.
inline bool stands(IAudioPlayer& player)
{
    return QTest::qWaitFor(
        [&player] {
            const int position = player.GetPosition();
            QTest::qWait(200);
            return player.GetPosition() == position;
        },
        patience);
}

/// How far a song can have come at most that plays from a position on since this was made: a busy machine may
/// hold it up, but it never runs ahead.
class Run
{
public:
    explicit Run(int from) : m_from(from) { m_clock.start(); }
    int latest() const
    {
        constexpr int ahead = 250; // of what is heard
        return m_from + int(m_clock.elapsed()) + ahead;
    }

private:
    const int m_from;
    QElapsedTimer m_clock;
};

/// That nothing is played of the file.
inline void verifyNothing(const QString& file)
{
    const Player player(CreatePlayer());
    QVERIFY(processorMillisecondsOf([&player, &file] { QVERIFY(open(*player, file) != 0); }) <= 500);
    player->Seek(0);
    player->Play();
    QCOMPARE(player->GetDuration(), 0);
    QCOMPARE(player->GetPosition(), 0);
    QCOMPARE(player->GetState(), int(PLAYER_STATE_EMPTY));
    player->Pause();
    player->Seek(5000);
    QCOMPARE(player->GetPosition(), 0);
}

/// That all of them end, played at the same time.
inline void verifyEnds(const QStringList& files)
{
    std::vector<Player> players;
    for (const QString& file : files) {
        players.push_back(opened(file));
        players.back()->Seek(0);
        players.back()->Play();
    }
    for (size_t i = 0; i < players.size(); ++i) {
        IAudioPlayer& player = *players.at(i);
        const auto ended = [&player] { return player.GetState() != PLAYER_STATE_PLAYING; };
        QVERIFY2(QTest::qWaitFor(ended, patience), qPrintable(files.at(int(i))));
        QVERIFY(player.GetState() == PLAYER_STATE_FINISHED || player.GetState() == PLAYER_STATE_EMPTY);
        QCOMPARE(player.GetPosition(), player.GetDuration());
        player.Seek(500);
        player.Play();
        QVERIFY2(QTest::qWaitFor(ended, patience), qPrintable(files.at(int(i))));
    }
}

inline QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline void setContent(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qUtf8Printable(path));
}
} // namespace Playing
