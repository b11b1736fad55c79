#include "audiofile.h"
#include "fixtures.h"
#include "playing.h"
#include "shortage.h"

#include <QtTest>

using namespace Playing;

/// A player on a machine that has no threads or no memory left.
class TestPlayerShortage : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void withoutAnyThreadNothingPlays();
    void howeverFewThreadsThereAreTheProgramGoesOn();
    void whicheverMemoryIsRefusedTheProgramGoesOn();

private:
    static void verifyPlays();
};

void TestPlayerShortage::init()
{
    chooseOutput("null");
    AudioFile::takeLog();
}

void TestPlayerShortage::verifyPlays()
{
    const Player player = opened(Fixtures::tone("mp3"));
    player->Play();
    QVERIFY(passes(*player, 0));
}

void TestPlayerShortage::withoutAnyThreadNothingPlays()
{
    {
        const Shortage::OfThreads none;
        const Player player(CreatePlayer());
        QVERIFY(open(*player, Fixtures::tone("mp3")) != 0);
        QCOMPARE(player->GetState(), int(PLAYER_STATE_EMPTY));
        player->Play();
        player->Seek(1000);
        QCOMPARE(player->GetPosition(), 0);
        QCOMPARE(player->GetDuration(), 0);
        player->Pause();
    }
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().startsWith(Fixtures::tone("mp3") + ": cannot be played: "), qPrintable(log.first()));
    verifyPlays();
}

/// The engine makes some of its own, too.
void TestPlayerShortage::howeverFewThreadsThereAreTheProgramGoesOn()
{
    int most = 0;
    for (int refused = 1; refused > 0; ++most) {
        const Shortage::OfThreads few(most);
        const Player player = opened(Fixtures::tone("mp3"));
        player->Play();
        player->Seek(500);
        const auto failed = [&player] { return player->GetState() == PLAYER_STATE_EMPTY; };
        QVERIFY(QTest::qWaitFor([&player, &failed] { return failed() || player->GetPosition() > 500; },
                                patience));
        refused = Shortage::OfThreads::refused();
        QCOMPARE(failed(), refused > 0);
        QCOMPARE(AudioFile::takeLog().size(), refused > 0 ? 1 : 0);
    }
    qInfo("%d threads play a song", most - 1);
    QVERIFY(most > 1);
}

void TestPlayerShortage::whicheverMemoryIsRefusedTheProgramGoesOn()
{
    verifyPlays(); // what the libraries keep for themselves is there by now
    int granted = 0;
    for (int refused = 1; refused > 0; ++granted) {
        AudioFile::takeLog();
        const Shortage::OfMemory little(Shortage::Whose::Others, 1, granted);
        const Player player = opened(Fixtures::tone("mp3"));
        player->Play();
        const auto failed = [&player] { return player->GetState() == PLAYER_STATE_EMPTY; };
        QVERIFY(QTest::qWaitFor([&player, &failed] { return failed() || player->GetPosition() > 100; },
                                patience));
        refused = Shortage::OfMemory::refused();
        if (failed())
            QCOMPARE(AudioFile::takeLog().size(), 1);
    }
    qInfo("%d pieces of memory play a song", granted - 1);
    QVERIFY(granted > 1);
}

QTEST_GUILESS_MAIN(TestPlayerShortage)
#include "tst_playershortage.moc"
