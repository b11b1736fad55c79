// Whole identifications against a server that plays the services, well and badly.
#include "audiofile.h"
#include "fixtures.h"
#include "identify/identification.h"
#include "testservices.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <optional>
#include <thread>

using audiocore::Cancellation;
using audiocore::Identification;
using Manner = IdentifyServer::Manner;
using Service = IdentifyServer::Service;
using namespace std::chrono_literals;

Q_DECLARE_METATYPE(Manner)
Q_DECLARE_METATYPE(Service)

namespace {
constexpr int songMilliseconds = 20000;

QString song()
{
    return Fixtures::tone("flac", songMilliseconds);
}

Identification identify(const audiocore::Services& services, const QString& path = song())
{
    const Cancellation never;
    return audiocore::identifyFile(path.toStdString(), services, never);
}

/// @param hurried is to answer in a third of a second, if any is.
Identification identify(const IdentifyServer& server, std::optional<Service> hurried = std::nullopt)
{
    TestServices services(server);
    if (hurried)
        services.hurry(*hurried);
    return identify(services.all());
}

QString text(const Identification& found, int type)
{
    return QString::fromStdU32String(found.texts[size_t(type)]);
}

/// So many releases of which the last in the service's order is the original, and the others compilations.
QVector<IdentifyServer::Release> discography(int count)
{
    QVector<IdentifyServer::Release> releases;
    for (int i = 1; i < count; ++i)
        releases.append({IdentifyServer::identifier(i), "Best of " + QByteArray::number(i), "1999-01-01",
                         "Official", "Compilation", 1});
    releases.append({IdentifyServer::identifier(count), "The Original", "1975-11-21", "Official", "", 11});
    return releases;
}

QByteArrayList targets(const IdentifyServer& server, Service service)
{
    QByteArrayList result;
    for (const IdentifyServer::Request& request : server.requests(service))
        result.append(request.target);
    return result;
}

QByteArray nameOf(Service service)
{
    if (service == IdentifyServer::AcoustId)
        return "AcoustID";
    return service == IdentifyServer::CoverArt ? "Cover Art Archive" : "MusicBrainz";
}
} // namespace

class TestIdentification : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void findsTextsAndPicture();
    void asksAsTheServicesDocument();
    void theAlbumOfACommonSongIsChosenAmongAllReleases();
    void noMoreIsAskedThanNeeded();
    void allPagesAreRead();
    void withoutOfficialReleasesTheOthersCount();
    void anEndlessListIsLeft();
    void aMergedRecordingIsGoneAfterByItsNewIdentifier();
    void anErrorIsNoMatchWhateverComesWithIt_data();
    void anErrorIsNoMatchWhateverComesWithIt();
    void theServicesReasonsAreLogged();
    void aMisbehavingServiceIsAFailureOfItsOwn_data();
    void aMisbehavingServiceIsAFailureOfItsOwn();
    void aMissingPictureLeavesTheTexts_data();
    void aMissingPictureLeavesTheTexts();
    void slowDownIsHonouredOnce();
    void slowDownTwiceIsAFailure();
    void slowDownForLongIsAFailureAtOnce();
    void slowDownHoldsForWhoeverAsksNext();
    void badFilesAreFailuresOfTheirOwn_data();
    void badFilesAreFailuresOfTheirOwn();
    void withoutAKeyNobodyIsAsked();
    void addressesBeyondThisMachineMustBeHttps();
    void aServiceThatIsNotThereIsNoConnection();
    void absentTextsAreEmpty();
};

void TestIdentification::init()
{
    AudioFile::takeLog();
}

void TestIdentification::findsTextsAndPicture()
{
    const IdentifyServer server;
    const Identification found = identify(server);
    QCOMPARE(int(found.status), int(IDENTIFY_FOUND));
    QCOMPARE(text(found, TAG_TITLE), QString("Midnight Ferry"));
    QCOMPARE(text(found, TAG_ARTIST), QString("Ida Marlowe feat. The Salt Choir"));
    QCOMPARE(text(found, TAG_ALBUM), QString("Paper Lanterns"));
    QCOMPARE(text(found, TAG_GENRE), QString("Pop"));
    QCOMPARE(text(found, TAG_YEAR), QString("2012"));
    QCOMPARE(text(found, TAG_TRACK), QString("4"));
    QCOMPARE(QByteArray::fromStdString(found.picture), IdentifyServer::picture());
    QCOMPARE(AudioFile::takeLog(), QStringList());
}

void TestIdentification::asksAsTheServicesDocument()
{
    const IdentifyServer server;
    QCOMPARE(int(identify(server).status), int(IDENTIFY_FOUND));
    const QList<IdentifyServer::Request> requests = server.requests();
    QCOMPARE(requests.size(), 4);
    const IdentifyServer::Request& lookup = requests[0];
    QCOMPARE(lookup.method, QByteArray("POST"));
    QCOMPARE(lookup.target, QByteArray("/v2/lookup"));
    QCOMPARE(lookup.headers.value("content-type"), QByteArray("application/x-www-form-urlencoded"));
    QCOMPARE(lookup.field("client"), QByteArray("testkey"));
    QCOMPARE(lookup.field("format"), QByteArray("json"));
    QCOMPARE(lookup.field("duration"), QByteArray("20"));
    QCOMPARE(lookup.field("meta"), QByteArray("recordings sources"));
    QVERIFY(lookup.field("fingerprint").startsWith("AQAA"));
    QCOMPARE(requests[1].method, QByteArray("GET"));
    QCOMPARE(requests[1].target,
             QByteArray("/ws/2/recording/cd2e7c47-16f5-46c6-a37c-a1eb7bf599ff?inc=artists+artist-credits+"
                        "releases+release-groups+media+genres&fmt=json"));
    QCOMPARE(requests[2].target, QByteArray("/release/22d6b8a1-2b5b-4fd5-a0c8-2b4a0b9f4a4e/front-500"));
    QCOMPARE(requests[3].target, QByteArray("/download/front.jpg"));
    for (const IdentifyServer::Request& request : requests) {
        const QString agent = QString::fromLatin1(request.headers.value("user-agent"));
        QVERIFY2(
            QRegularExpression("^Melodrift/\\d+\\.\\d+\\.\\d+ \\( https://\\S+ \\)$").match(agent).hasMatch(),
            qPrintable(agent));
    }
}

void TestIdentification::theAlbumOfACommonSongIsChosenAmongAllReleases()
{
    IdentifyServer server;
    server.setReleases(discography(60));
    const Identification found = identify(server);
    QCOMPARE(int(found.status), int(IDENTIFY_FOUND));
    QCOMPARE(text(found, TAG_ALBUM), QString("The Original"));
    QCOMPARE(text(found, TAG_YEAR), QString("1975"));
    QCOMPARE(text(found, TAG_TRACK), QString("11"));
    QCOMPARE(text(found, TAG_GENRE), QString("Pop"));
    const QByteArray original = IdentifyServer::identifier(60);
    QCOMPARE(targets(server, IdentifyServer::Releases),
             {"/ws/2/release?recording=cd2e7c47-16f5-46c6-a37c-a1eb7bf599ff&status=official"
              "&inc=release-groups&limit=100&offset=0&fmt=json"});
    QCOMPARE(targets(server, IdentifyServer::ReleaseTracks),
             {"/ws/2/release/" + original + "?inc=recordings+release-groups+genres&fmt=json"});
    QCOMPARE(targets(server, IdentifyServer::CoverArt).first(), "/release/" + original + "/front-500");
    QCOMPARE(AudioFile::takeLog(), QStringList());
}

void TestIdentification::noMoreIsAskedThanNeeded()
{
    // All releases are named with the recording.
    IdentifyServer few;
    few.setReleases(discography(24));
    QCOMPARE(text(identify(few), TAG_ALBUM), QString("The Original"));
    QCOMPARE(few.requests().size(), 4);
    // The best one is, and its track with it.
    IdentifyServer many;
    many.setReleases(discography(25));
    const Identification found = identify(many);
    QCOMPARE(text(found, TAG_ALBUM), QString("The Original"));
    QCOMPARE(text(found, TAG_TRACK), QString("11"));
    QCOMPARE(many.requests(IdentifyServer::Releases).size(), 1);
    QCOMPARE(many.requests(IdentifyServer::ReleaseTracks).size(), 0);
}

void TestIdentification::allPagesAreRead()
{
    IdentifyServer server;
    server.setReleases(discography(201));
    QCOMPARE(text(identify(server), TAG_ALBUM), QString("The Original"));
    const QByteArrayList pages = targets(server, IdentifyServer::Releases);
    QCOMPARE(pages.size(), 3);
    for (int i = 0; i < pages.size(); ++i)
        QVERIFY(pages[i].contains("&offset=" + QByteArray::number(i * 100) + '&'));
}

void TestIdentification::withoutOfficialReleasesTheOthersCount()
{
    QVector<IdentifyServer::Release> bootlegs = discography(60);
    for (IdentifyServer::Release& release : bootlegs)
        release.status = "Bootleg";
    IdentifyServer server;
    server.setReleases(bootlegs);
    QCOMPARE(text(identify(server), TAG_ALBUM), QString("The Original"));
    const QByteArrayList pages = targets(server, IdentifyServer::Releases);
    QCOMPARE(pages.size(), 2);
    QVERIFY(!pages.last().contains("status"));
}

void TestIdentification::anEndlessListIsLeft()
{
    QVector<IdentifyServer::Release> bootlegs = discography(25);
    for (IdentifyServer::Release& release : bootlegs)
        release.status = "Bootleg";
    const QByteArray untitled = R"({"release-count": 1e300, "releases": [{"title": ""}]})";
    const QByteArray none = R"({"release-count": 1e300, "releases": []})";
    const QVector<QPair<QByteArray, int>> answers = {{untitled, 10}, {none, 2}};
    for (const auto& [answer, pages] : answers) {
        IdentifyServer server;
        server.setReleases(bootlegs);
        server.setAnswer(IdentifyServer::Releases, answer);
        QCOMPARE(text(identify(server), TAG_ALBUM), QString("The Original"));
        QCOMPARE(server.requests(IdentifyServer::Releases).size(), pages);
    }
}

void TestIdentification::aMergedRecordingIsGoneAfterByItsNewIdentifier()
{
    IdentifyServer server;
    server.setReleases(discography(60));
    QByteArray lookup = IdentifyServer::lookupAnswer("20");
    server.setAnswer(IdentifyServer::AcoustId,
                     lookup.replace("cd2e7c47-16f5-46c6-a37c-a1eb7bf599ff", IdentifyServer::identifier(7)));
    const Identification found = identify(server);
    QCOMPARE(text(found, TAG_TRACK), QString("11"));
    QVERIFY(targets(server, IdentifyServer::MusicBrainz).first().contains(IdentifyServer::identifier(7)));
    QVERIFY(targets(server, IdentifyServer::Releases).first().contains("cd2e7c47"));
}

void TestIdentification::anErrorIsNoMatchWhateverComesWithIt_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("without a message") << QByteArray(R"({"status": "error", "error": {"code": 5}})");
    QTest::newRow("of another form") << QByteArray(R"({"status": "error", "error": 5})");
    QTest::newRow("with results") << IdentifyServer::lookupAnswer("20").replace("\"ok\"", "\"error\"");
}

void TestIdentification::anErrorIsNoMatchWhateverComesWithIt()
{
    QFETCH(QByteArray, answer);
    IdentifyServer server;
    server.setAnswer(IdentifyServer::AcoustId, answer);
    QCOMPARE(int(identify(server).status), int(IDENTIFY_REFUSED));
    const QString log = AudioFile::takeLog().join('\n');
    QVERIFY2(log.contains("AcoustID answers 200"), qPrintable(log));
}

void TestIdentification::theServicesReasonsAreLogged()
{
    for (const Service service : {IdentifyServer::AcoustId, IdentifyServer::MusicBrainz}) {
        IdentifyServer server;
        server.setManner(service, Manner::NotFound);
        QCOMPARE(int(identify(server).status), int(IDENTIFY_REFUSED));
        const QString log = AudioFile::takeLog().join('\n');
        QVERIFY2(log.contains(nameOf(service) + " answers 404, \"Not Found\""), qPrintable(log));
    }
}

void TestIdentification::aMisbehavingServiceIsAFailureOfItsOwn_data()
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

void TestIdentification::aMisbehavingServiceIsAFailureOfItsOwn()
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

void TestIdentification::aMissingPictureLeavesTheTexts_data()
{
    QTest::addColumn<Manner>("manner");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("status");
    const auto add = [](const char* name, Manner manner, IdentifyStatus status) {
        QTest::newRow(name) << manner << QByteArray() << int(status);
    };
    add("there is none", Manner::NotFound, IDENTIFY_FOUND);
    add("silent", Manner::Silent, IDENTIFY_FOUND_NO_PICTURE);
    add("cut off", Manner::CutOff, IDENTIFY_FOUND_NO_PICTURE);
    add("error 500", Manner::ServerError, IDENTIFY_FOUND_NO_PICTURE);
    add("redirect to plain HTTP", Manner::PlainRedirect, IDENTIFY_FOUND_NO_PICTURE);
    add("endless", Manner::EndlessBody, IDENTIFY_FOUND_NO_PICTURE);
    QTest::newRow("no picture") << Manner::Proper << QByteArray("<html>no picture</html>")
                                << int(IDENTIFY_FOUND_NO_PICTURE);
    QTest::newRow("a page that begins as a picture does")
        << Manner::Proper << QByteArray("\xFF\xD8\xFF<html>no picture</html>")
        << int(IDENTIFY_FOUND_NO_PICTURE);
    QTest::newRow("half a picture") << Manner::Proper << IdentifyServer::picture().left(3000)
                                    << int(IDENTIFY_FOUND_NO_PICTURE);
    QTest::newRow("nothing") << Manner::Proper << QByteArray("") << int(IDENTIFY_FOUND_NO_PICTURE);
}

void TestIdentification::aMissingPictureLeavesTheTexts()
{
    QFETCH(Manner, manner);
    QFETCH(QByteArray, answer);
    QFETCH(int, status);
    IdentifyServer server;
    server.setManner(IdentifyServer::CoverArt, manner);
    server.setAnswer(IdentifyServer::CoverArt, answer);
    const Identification found =
        identify(server, manner == Manner::Silent ? std::optional(IdentifyServer::CoverArt) : std::nullopt);
    QCOMPARE(int(found.status), status);
    QCOMPARE(text(found, TAG_TITLE), QString("Midnight Ferry"));
    QVERIFY(found.picture.empty());
    QCOMPARE(AudioFile::takeLog().size(), status == IDENTIFY_FOUND ? 0 : 1);
}

void TestIdentification::slowDownIsHonouredOnce()
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

void TestIdentification::slowDownTwiceIsAFailure()
{
    IdentifyServer server;
    server.setManner(IdentifyServer::MusicBrainz, Manner::SlowDown);
    server.setRetryAfter("");
    QCOMPARE(int(identify(server).status), int(IDENTIFY_REFUSED));
    QCOMPARE(server.requests(IdentifyServer::MusicBrainz).size(), 2);
}

void TestIdentification::slowDownForLongIsAFailureAtOnce()
{
    IdentifyServer server;
    server.setManner(IdentifyServer::MusicBrainz, Manner::SlowDown);
    server.setRetryAfter("11");
    QCOMPARE(int(identify(server).status), int(IDENTIFY_REFUSED));
    QCOMPARE(server.requests(IdentifyServer::MusicBrainz).size(), 1);
}

void TestIdentification::slowDownHoldsForWhoeverAsksNext()
{
    for (const char* time : {"11", "", "100000"}) {
        IdentifyServer server;
        server.setManner(IdentifyServer::MusicBrainz, Manner::SlowDown);
        server.setRetryAfter(time);
        TestServices services(server);
        QCOMPARE(int(identify(services.all()).status), int(IDENTIFY_REFUSED));
        const int asked = server.requests(IdentifyServer::MusicBrainz).size();
        const auto refused = Cancellation::Clock::now();
        Cancellation cancellation;
        std::thread impatient([&cancellation] {
            std::this_thread::sleep_for(500ms);
            cancellation.cancel();
        });
        const Identification next =
            audiocore::identifyFile(song().toStdString(), services.all(), cancellation);
        impatient.join();
        if (Cancellation::Clock::now() - refused > 900ms && !*time)
            continue; // on a busy machine the shortest wait is over before it is cancelled
        QCOMPARE(int(next.status), int(IDENTIFY_CANCELLED));
        QCOMPARE(server.requests(IdentifyServer::MusicBrainz).size(), asked);
    }
}

void TestIdentification::badFilesAreFailuresOfTheirOwn_data()
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

void TestIdentification::badFilesAreFailuresOfTheirOwn()
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

void TestIdentification::withoutAKeyNobodyIsAsked()
{
    const IdentifyServer server;
    TestServices services(server);
    audiocore::Services keyless = services.all();
    keyless.addresses.key.clear();
    QCOMPARE(int(identify(keyless).status), int(IDENTIFY_NO_KEY));
    QVERIFY(server.requests().isEmpty());
    QVERIFY(AudioFile::takeLog().join("").contains("MELODRIFT_ACOUSTID_KEY"));
}

void TestIdentification::addressesBeyondThisMachineMustBeHttps()
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
        QCOMPARE(int(identify(cover).status), int(IDENTIFY_FOUND_NO_PICTURE));
    }
}

void TestIdentification::aServiceThatIsNotThereIsNoConnection()
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

void TestIdentification::absentTextsAreEmpty()
{
    IdentifyServer server;
    server.setAnswer(IdentifyServer::MusicBrainz, R"({"title": "Alone"})");
    const Identification found = identify(server);
    QCOMPARE(int(found.status), int(IDENTIFY_FOUND));
    QCOMPARE(text(found, TAG_TITLE), QString("Alone"));
    for (const int type : {TAG_ARTIST, TAG_ALBUM, TAG_GENRE, TAG_YEAR, TAG_TRACK})
        QCOMPARE(text(found, type), QString());
    QVERIFY(found.picture.empty());
    QVERIFY(server.requests(IdentifyServer::CoverArt).isEmpty());
}

QTEST_GUILESS_MAIN(TestIdentification)
#include "tst_identification.moc"
