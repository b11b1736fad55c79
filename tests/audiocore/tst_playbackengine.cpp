#include "fixtures.h"
#include "playback/playbackengine.h"
#include "playback/songstream.h"
#include "playing.h"

#include <QtTest>

using audiocore::PlaybackEngine;
using audiocore::SongSource;
using Event = PlaybackEngine::Event;

/// What the engine tells of itself, below the player.
class TestPlaybackEngine : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void anArrivalIsThatOfTheSeek();

private:
    static void ignore(void* /*context*/) {}
};

void TestPlaybackEngine::initTestCase()
{
    Playing::chooseOutput("null");
    audiocore::setEngineLocale();
}

/// The song's own begin is an arrival to the engine, too. Whoever takes it for that of a seek asked for
/// meanwhile lets sound out from where the song was before.
void TestPlaybackEngine::anArrivalIsThatOfTheSeek()
{
    SongSource source(Fixtures::tone("wav").toStdString());
    source.allowance = 1 << 20;
    PlaybackEngine engine(source, "wav", ignore, nullptr);
    QVERIFY(QTest::qWaitFor([&engine] { return engine.nextEvent() == Event::Loaded; }, patience));
    engine.setPaused(false);
    QTRY_VERIFY(engine.position().value_or(0) > 100); // so it has begun
    QVERIFY(engine.seek(2000));
    int arrivals = 0;
    const auto atEnd = [&engine, &arrivals] {
        const bool arrived = engine.nextEvent() == Event::Arrived;
        arrivals += arrived;
        return engine.atEnd();
    };
    QVERIFY(QTest::qWaitFor(atEnd, patience));
    QCOMPARE(arrivals, 1);
}

QTEST_GUILESS_MAIN(TestPlaybackEngine)
#include "tst_playbackengine.moc"
