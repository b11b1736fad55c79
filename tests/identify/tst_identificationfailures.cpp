// Whole identifications against a server that plays the services badly, or none at all.
#include "identifying.h"

#include <QTemporaryDir>

#include <thread>

using namespace Identifying;
using namespace std::chrono_literals;

class TestIdentificationFailures : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void anErrorIsNoMatchWhateverComesWithIt_data();
    void anErrorIsNoMatchWhateverComesWithIt();
    void theServicesReasonsAreLogged();
    void aMisbehavingServiceIsAFailureOfItsOwn_data();
    void aMisbehavingServiceIsAFailureOfItsOwn();
    void slowDownIsHonouredOnce();
    void slowDownTwiceIsAFailure();
    void slowDownForLongIsAFailureAtOnce();
    void slowDownHoldsForWhoeverAsksNext();
    void badFilesAreFailuresOfTheirOwn_data();
    void badFilesAreFailuresOfTheirOwn();
    void withoutAKeyAndNamesNobodyIsAsked();
    void addressesBeyondThisMachineMustBeHttps();
    void aServiceThatIsNotThereIsNoConnection();
};

void TestIdentificationFailures::init()
{
    AudioFile::takeLog();
}

void TestIdentificationFailures::anErrorIsNoMatchWhateverComesWithIt_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("without a message") << QByteArray(R"({"status": "error", "error": {"code": 5}})");
    QTest::newRow("of another form") << QByteArray(R"({"status": "error", "error": 5})");
    QTest::newRow("with results") << IdentifyServer::lookupAnswer("20").replace("\"ok\"", "\"error\"");
}

void TestIdentificationFailures::anErrorIsNoMatchWhateverComesWithIt()
{
    QFETCH(QByteArray, answer);
    IdentifyServer server;
    server.setAnswer(IdentifyServer::AcoustId, answer);
    QCOMPARE(int(identify(server).status), int(IDENTIFY_REFUSED));
    const QString log = AudioFile::takeLog().join('\n');
    QVERIFY2(log.contains("AcoustID answers 200"), qPrintable(log));
}

void TestIdentificationFailures::theServicesReasonsAreLogged()
{
    for (const Service service : {IdentifyServer::AcoustId, IdentifyServer::MusicBrainz}) {
        IdentifyServer server;
        server.setManner(service, Manner::NotFound);
        QCOMPARE(int(identify(server).status), int(IDENTIFY_REFUSED));
        const QString log = AudioFile::takeLog().join('\n');
        QVERIFY2(log.contains(nameOf(service) + " answers 404, \"Not Found\""), qPrintable(log));
    }
}

void TestIdentificationFailures::aMisbehavingServiceIsAFailureOfItsOwn_data()
{
    QTest::addColumn<Service>("service");
    QTest::addColumn<Manner>("manner");
    QTest::addColumn<int>("status");
    const QVector<QPair<Service, QByteArray>> services = {{IdentifyServer::AcoustId, "AcoustID"},
                                                          {IdentifyServer::MusicBrainz, "MusicBrainz"},
                                                          {IdentifyServer::Releases, "all releases"},
                                                          {IdentifyServer::ReleaseTracks, "one release"}};
    const auto add = [&services](const char* name, Manner manner, IdentifyStatus status) {
        for (const auto& service : services)
            QTest::addRow("%s: %s", service.second.constData(), name)
                << service.first << manner << int(status);
    };
    add("silent", Manner::Silent, IDENTIFY_NO_CONNECTION);
    add("a byte now and then", Manner::Trickling, IDENTIFY_NO_CONNECTION);
    add("cut off", Manner::CutOff, IDENTIFY_NO_CONNECTION);
    add("error 500", Manner::ServerError, IDENTIFY_REFUSED);
    add("error 404", Manner::NotFound, IDENTIFY_REFUSED);
    add("wrong JSON", Manner::WrongJson, IDENTIFY_NOT_UNDERSTOOD);
    add("redirect to plain HTTP", Manner::PlainRedirect, IDENTIFY_BAD_ADDRESS);
    add("endless redirect", Manner::EndlessRedirect, IDENTIFY_NO_CONNECTION);
    add("endless body", Manner::EndlessBody, IDENTIFY_NO_CONNECTION);
    add("endless headers", Manner::EndlessHeaders, IDENTIFY_NO_CONNECTION);
}

void TestIdentificationFailures::aMisbehavingServiceIsAFailureOfItsOwn()
{
    QFETCH(Service, service);
    QFETCH(Manner, manner);
    QFETCH(int, status);
    IdentifyServer server;
    server.setReleases(discography(60));
    server.setManner(service, manner);
    const bool waits = manner == Manner::Silent || manner == Manner::Trickling;
    const Identification found = identify(server, waits ? std::optional(service) : std::nullopt);
    QCOMPARE(int(found.status), status);
    for (const std::u32string& text : found.texts)
        QVERIFY(text.empty());
    QVERIFY(found.picture.empty());
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log[0].contains(song()) && log[0].contains("is not identified"), qPrintable(log[0]));
    QVERIFY2(log[0].contains(nameOf(service)), qPrintable(log[0]));
}

void TestIdentificationFailures::slowDownIsHonouredOnce()
{
    for (const Service service :
         {IdentifyServer::AcoustId, IdentifyServer::MusicBrainz, IdentifyServer::CoverArt}) {
        IdentifyServer server;
        server.setManner(service, Manner::SlowDown, 1);
        server.setRetryAfter("1");
        QCOMPARE(int(identify(server).status), int(IDENTIFY_FOUND));
        const QList<IdentifyServer::Request> requests = server.requests(service);
        QVERIFY(requests.size() >= 2);
        QVERIFY(requests[1].time - requests[0].time >= 1s);
        QVERIFY(requests[1].time - requests[0].time < 9s); // what asks for one second is not held for ten
        QCOMPARE(requests[1].body, requests[0].body);
    }
}

void TestIdentificationFailures::slowDownTwiceIsAFailure()
{
    IdentifyServer server;
    server.setManner(IdentifyServer::MusicBrainz, Manner::SlowDown);
    server.setRetryAfter("");
    QCOMPARE(int(identify(server).status), int(IDENTIFY_REFUSED));
    QCOMPARE(server.requests(IdentifyServer::MusicBrainz).size(), 2);
}

void TestIdentificationFailures::slowDownForLongIsAFailureAtOnce()
{
    IdentifyServer server;
    server.setManner(IdentifyServer::MusicBrainz, Manner::SlowDown);
    server.setRetryAfter("11");
    QCOMPARE(int(identify(server).status), int(IDENTIFY_REFUSED));
    QCOMPARE(server.requests(IdentifyServer::MusicBrainz).size(), 1);
}

void TestIdentificationFailures::slowDownHoldsForWhoeverAsksNext()
{
    for (const char* time : {"11", "", "100000"}) {
        IdentifyServer server;
        server.setManner(IdentifyServer::MusicBrainz, Manner::SlowDown);
        server.setRetryAfter(time);
        TestServices services(server);
        QCOMPARE(int(identify(services.all()).status), int(IDENTIFY_REFUSED));
        const int asked = server.requests(IdentifyServer::MusicBrainz).size();
        const auto refused = audiocore::Cancellation::Clock::now();
        audiocore::Cancellation cancellation;
        std::thread impatient([&cancellation] {
            std::this_thread::sleep_for(500ms);
            cancellation.cancel();
        });
        const Identification next =
            audiocore::identifyFile(song().toStdString(), services.all(), cancellation);
        impatient.join();
        if (audiocore::Cancellation::Clock::now() - refused > 900ms && !*time)
            continue; // on a busy machine the shortest wait is over before it is cancelled
        QCOMPARE(int(next.status), int(IDENTIFY_CANCELLED));
        QCOMPARE(server.requests(IdentifyServer::MusicBrainz).size(), asked);
    }
}

void TestIdentificationFailures::badFilesAreFailuresOfTheirOwn_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("status");
    QTest::newRow("none") << QByteArray() << int(IDENTIFY_NO_FILE);
    QTest::newRow("empty") << QByteArray("") << int(IDENTIFY_NO_AUDIO);
    QTest::newRow("text") << QByteArray("This is no music.\n").repeated(100) << int(IDENTIFY_NO_AUDIO);
    QTest::newRow("playlist") << "#EXTM3U\n#EXTINF:20\n" + Fixtures::tone("flac", songMilliseconds).toUtf8() +
                                     "\n"
                              << int(IDENTIFY_NO_AUDIO);
    QTest::newRow("segment list") << "#EXTM3U\n#EXT-X-TARGETDURATION:20\n#EXTINF:20,\n" +
                                         Fixtures::tone("mp3", songMilliseconds).toUtf8() +
                                         "\n#EXT-X-ENDLIST\n"
                                  << int(IDENTIFY_NO_AUDIO);
    QTest::newRow("concatenation") << "ffconcat version 1.0\nfile " +
                                          Fixtures::tone("flac", songMilliseconds).toUtf8() + "\n"
                                   << int(IDENTIFY_NO_AUDIO);
    QTest::newRow("picture") << Fixtures::jpeg(100, 100, 1) << int(IDENTIFY_NO_AUDIO);
    QTest::newRow("too short") << Fixtures::silentApe(1500) << int(IDENTIFY_TOO_SHORT);
}

void TestIdentificationFailures::badFilesAreFailuresOfTheirOwn()
{
    QFETCH(QByteArray, content);
    QFETCH(int, status);
    const QTemporaryDir folder;
    const QString path = folder.filePath("song.mp3");
    if (!content.isNull()) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    const IdentifyServer server;
    TestServices services(server);
    QCOMPARE(int(identify(services.all(), path).status), status);
    QVERIFY(!AudioFile::takeLog().isEmpty());
    QVERIFY(server.requests().isEmpty());
    QCOMPARE(int(identify(services.all(), folder.path()).status), int(IDENTIFY_NO_FILE));
    QCOMPARE(int(identify(services.all(), QString()).status), int(IDENTIFY_NO_FILE));
}

void TestIdentificationFailures::withoutAKeyAndNamesNobodyIsAsked()
{
    const IdentifyServer server;
    TestServices services(server);
    audiocore::Services keyless = services.all();
    keyless.addresses.key.clear();
    QCOMPARE(int(identify(keyless).status), int(IDENTIFY_NO_KEY));
    QVERIFY(server.requests().isEmpty());
    QVERIFY(AudioFile::takeLog().join("").contains("no application key"));
}

void TestIdentificationFailures::addressesBeyondThisMachineMustBeHttps()
{
    const IdentifyServer server;
    TestServices services(server);
    for (const char* address : {"http://192.0.2.1", "http://localhost.example", "ftp://127.0.0.1",
                                "file:///etc", "http://127.0.0.1@192.0.2.1", "", "nonsense"}) {
        audiocore::Services lookup = services.all();
        lookup.addresses.acoustId = address;
        QCOMPARE(int(identify(lookup).status), int(IDENTIFY_BAD_ADDRESS));
        audiocore::Services cover = services.all();
        cover.addresses.coverArt = address;
        QCOMPARE(int(identify(cover).status), int(IDENTIFY_FOUND));
    }
}

void TestIdentificationFailures::aServiceThatIsNotThereIsNoConnection()
{
    std::string gone;
    {
        const IdentifyServer server;
        gone = server.address().toStdString();
    }
    const IdentifyServer server;
    TestServices services(server);
    audiocore::Services all = services.all();
    all.addresses.acoustId = gone;
    QCOMPARE(int(identify(all).status), int(IDENTIFY_NO_CONNECTION));
}

QTEST_GUILESS_MAIN(TestIdentificationFailures)
#include "tst_identificationfailures.moc"
