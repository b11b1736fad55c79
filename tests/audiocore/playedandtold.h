#pragma once

#include "audiofile.h"
#include "identify/fingerprint.h"
#include "playing.h"

#include <QtTest>

/// The file plays to its end, and the whole of it is listened to for its fingerprint.
inline void playedAndTold(const QString& file)
{
    using namespace Playing;
    chooseOutput("null");
    const Player player = opened(file);
    QCOMPARE(player->GetState(), int(PLAYER_STATE_PAUSED));
    QCOMPARE(player->GetDuration(), AudioFile::properties(file).duration);
    player->Play();
    QVERIFY(passes(*player, 100));
    player->Seek(std::uint64_t(player->GetDuration() - 200));
    QVERIFY(reaches(*player, PLAYER_STATE_FINISHED));
    const audiocore::Cancellation never;
    const audiocore::Fingerprint told = audiocore::fingerprintOf(file.toStdString(), never);
    QVERIFY(told.result == audiocore::Decoding::Done);
    QVERIFY(!told.text.empty());
    QCOMPARE(int(told.milliseconds), player->GetDuration());
}
