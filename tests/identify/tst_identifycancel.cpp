// A cancellation ends an identification soon, whatever it is doing: over and over in each phase.
#include "audiocore/iaudioidentifier.h"
#include "audiofile.h"
#include "fixtures.h"
#include "identify/identifyjob.h"
#include "latency.h"
#include "nameserver.h"
#include "sanitized.h"
#include "testservices.h"

#include <QTemporaryDir>
#include <QtTest>

#include <functional>
#include <thread>

using audiocore::Cancellation;
using audiocore::IdentifyJob;
using Manner = IdentifyServer::Manner;
using namespace std::chrono_literals;

namespace {
const int times = sanitized ? 40 : 100;
/// A fifth of a second is meant; a busy machine makes more of it.
constexpr qint64 longestMilliseconds = 2000;
/// No busy machine puts a single one off for so long, and what misses its cancellation goes on for longer.
constexpr qint64 stuckMilliseconds = 9000;

std::string shortSong()
{
    return Fixtures::tone("flac", 5000).toStdString();
}

IdentifyJob::Work workWith(const audiocore::Services& services)
{
    return [services](const std::string& path, const Cancellation& cancellation) {
        return audiocore::identifyFile(path, services, cancellation);
    };
}

/// Runs the job in a thread, and cancels it when the phase has come; how long it went on then.
qint64 millisecondsToEnd(IdentifyJob& job, const std::function<void()>& waitForPhase)
{
    std::thread worker([&job] { job.run(); });
    waitForPhase();
    return millisecondsOf([&job, &worker] {
        job.cancel();
        worker.join();
    });
}

void verifyEndsSoon(const Latencies& ends)
{
    qInfo("%lld ms at the longest", ends.longest());
    QVERIFY2(ends.usual() <= longestMilliseconds, qPrintable(QString::number(ends.usual())));
    QVERIFY2(ends.longest() <= stuckMilliseconds, qPrintable(QString::number(ends.longest())));
}

/// Does so over and over.
void cancelOften(const std::string& path, const audiocore::Services& services,
                 const std::function<void(int)>& waitForPhase)
{
    IdentifyJob job(workWith(services));
    Latencies ends;
    for (int i = 0; i < times; ++i) {
        job.open(path);
        ends.add(millisecondsToEnd(job, [&waitForPhase, i] { waitForPhase(i); }));
        QCOMPARE(int(job.found().status), int(IDENTIFY_CANCELLED));
    }
    verifyEndsSoon(ends);
}
} // namespace

class TestIdentifyCancel : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void whileDecoding();
    void whileATransferIsUnderWay_data();
    void whileATransferIsUnderWay();
    void whileSearching();
    void whileWaitingForTheTurn();
    void whileSlowingDown();
    void whileTheNameIsResolved();
    void throughTheInterfaceAtAnyMoment();
};

void TestIdentifyCancel::cleanup()
{
    AudioFile::takeLog();
}

void TestIdentifyCancel::whileDecoding()
{
    IdentifyServer server;
    server.setManner(IdentifyServer::AcoustId, Manner::Silent);
    TestServices services(server);
    cancelOften(Fixtures::tone("mp3", 125000).toStdString(), services.all(),
                [](int i) { std::this_thread::sleep_for(i * 300us); });
    // Or it was no test of decoding.
    QVERIFY(server.requests().size() < times - 10);
}

void TestIdentifyCancel::whileATransferIsUnderWay_data()
{
    QTest::addColumn<int>("service");
    QTest::addColumn<int>("manner");
    QTest::newRow("lookup") << int(IdentifyServer::AcoustId) << int(Manner::Silent);
    QTest::newRow("recording") << int(IdentifyServer::MusicBrainz) << int(Manner::Silent);
    QTest::newRow("picture") << int(IdentifyServer::CoverArt) << int(Manner::Silent);
    QTest::newRow("trickling picture") << int(IdentifyServer::CoverArt) << int(Manner::Trickling);
    QTest::newRow("endless picture") << int(IdentifyServer::CoverArt) << int(Manner::EndlessBody);
}

void TestIdentifyCancel::whileATransferIsUnderWay()
{
    QFETCH(int, service);
    QFETCH(int, manner);
    IdentifyServer server;
    server.setManner(IdentifyServer::Service(service), Manner(manner));
    TestServices services(server);
    cancelOften(shortSong(), services.all(), [&server, service](int i) {
        QVERIFY(server.waitForRequests(IdentifyServer::Service(service), i + 1));
    });
}

void TestIdentifyCancel::whileSearching()
{
    const QTemporaryDir folder;
    const QString path = Fixtures::copyTone("flac", folder.path());
    AudioFile::write(path, {{TAG_TITLE, "Midnight Ferry"}, {TAG_ARTIST, "Ida Marlowe"}});
    IdentifyServer server;
    server.setManner(IdentifyServer::Search, Manner::Silent);
    TestServices services(server);
    audiocore::Services keyless = services.all();
    keyless.addresses.key.clear();
    cancelOften(path.toStdString(), keyless,
                [&server](int i) { QVERIFY(server.waitForRequests(IdentifyServer::Search, i + 1)); });
}

void TestIdentifyCancel::whileWaitingForTheTurn()
{
    const IdentifyServer server;
    TestServices services(server);
    services.holdMusicBrainz(1h);
    cancelOften(shortSong(), services.all(), [&server](int i) {
        QVERIFY(server.waitForRequests(IdentifyServer::AcoustId, i + 1));
        // The answer is on its way; the wait is soon, and goes on.
        std::this_thread::sleep_for(i % 10 * 1ms);
    });
    QVERIFY(server.requests(IdentifyServer::MusicBrainz).isEmpty());
}

void TestIdentifyCancel::whileSlowingDown()
{
    IdentifyServer server;
    server.setManner(IdentifyServer::MusicBrainz, Manner::SlowDown);
    server.setRetryAfter("10");
    Latencies ends;
    for (int i = 0; i < 20; ++i) {
        TestServices services(server); // the wait that was asked for would hold for the next run, too
        IdentifyJob job(workWith(services.all()));
        job.open(shortSong());
        ends.add(millisecondsToEnd(job, [&server, i] {
            QVERIFY(server.waitForRequests(IdentifyServer::MusicBrainz, i + 1));
            std::this_thread::sleep_for(i * 1ms);
        }));
        QCOMPARE(int(job.found().status), int(IDENTIFY_CANCELLED));
    }
    verifyEndsSoon(ends);
}

void TestIdentifyCancel::whileTheNameIsResolved()
{
    const IdentifyServer server;
    TestServices services(server);
    audiocore::Services all = services.all();
    all.addresses.acoustId = "https://slow.melodrift.invalid";
    NameServer::hold();
    cancelOften(shortSong(), all, [](int i) { QVERIFY(NameServer::waitForQuestions(i + 1)); });
    NameServer::release();
}

void TestIdentifyCancel::throughTheInterfaceAtAnyMoment()
{
    const IdentifyServer server;
    server.putIntoEnvironment();
    const std::u32string path = Fixtures::tone("mp3", 20000).toStdU32String();
    IAudioIdentifier* identifier = CreateIdentifier();
    int cancelled = 0;
    Latencies ends;
    for (int i = 0; i < times; ++i) {
        identifier->Open(path.c_str());
        std::thread worker([identifier] { identifier->Identify(1, 1, 3); });
        std::this_thread::sleep_for(i * 50000us / times);
        ends.add(millisecondsOf([identifier, &worker] {
            identifier->Cancel();
            worker.join();
        }));
        const int status = identifier->GetStatus();
        cancelled += int(status == IDENTIFY_CANCELLED);
        QVERIFY2(status == IDENTIFY_CANCELLED || status == IDENTIFY_FOUND,
                 qPrintable(QString::number(status)));
        identifier->Close();
    }
    DestroyIdentifier(identifier);
    qInfo("%d cancelled", cancelled);
    QVERIFY(cancelled > 0);
    verifyEndsSoon(ends);
}

QTEST_GUILESS_MAIN(TestIdentifyCancel)
#include "tst_identifycancel.moc"
