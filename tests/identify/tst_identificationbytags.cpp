// Whole identifications by what a file says of itself, for want of a key or of a sound that is known.
#include "identifying.h"

#include <QTemporaryDir>
#include <QUrlQuery>

using namespace Identifying;
using namespace std::chrono_literals;

namespace {
constexpr auto named = "Ida Marlowe - Paper Lanterns - 04 - Midnight Ferry";

QString written(const QTemporaryDir& folder, const QString& name, const QByteArray& content)
{
    QFile file(folder.filePath(name));
    file.open(QIODevice::WriteOnly);
    file.write(content);
    return file.fileName();
}

QString searched(const IdentifyServer& server)
{
    const QByteArrayList searches = targets(server, IdentifyServer::Search);
    const QUrlQuery query(QUrl::fromEncoded(searches.value(0)));
    return query.queryItemValue("query", QUrl::FullyDecoded);
}
} // namespace

class TestIdentificationByTags : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void withoutAKeyTheTagsAreAsked();
    void anUnknownSoundLeavesTheTags();
    void whatCannotBeHeardHasAName_data();
    void whatCannotBeHeardHasAName();
    void aServiceThatFailsLeavesNothing();
    void nothingThatFitsKeepsTheReason_data();
    void nothingThatFitsKeepsTheReason();
    void aMisbehavingSearchIsAFailureOfItsOwn_data();
    void aMisbehavingSearchIsAFailureOfItsOwn();
    void slowDownIsHonoured();
    void whatTakesTooLongIsLeft();
    void decodingThatTakesTooLongLeavesTheTags();
    void releasesThatTakeTooLongLeaveTheOnesNamed();
    void allThatIsGivenIsUnderThirtySeconds();

private:
    QTemporaryDir m_folder;
};

void TestIdentificationByTags::init()
{
    AudioFile::takeLog();
}

void TestIdentificationByTags::withoutAKeyTheTagsAreAsked()
{
    const IdentifyServer server;
    TestServices services(server);
    const Identification found = identify(withoutKey(services.all()), taggedSong(m_folder.path()));
    QCOMPARE(int(found.status), int(IDENTIFY_FOUND_BY_TAGS));
    QCOMPARE(text(found, TAG_TITLE), QString("Midnight Ferry"));
    QCOMPARE(text(found, TAG_ARTIST), QString("Ida Marlowe feat. The Salt Choir"));
    QCOMPARE(text(found, TAG_ALBUM), QString("Paper Lanterns"));
    QCOMPARE(text(found, TAG_YEAR), QString("2012"));
    QCOMPARE(text(found, TAG_TRACK), QString("4"));
    QCOMPARE(QByteArray::fromStdString(found.picture), IdentifyServer::picture());
    QVERIFY(server.requests(IdentifyServer::AcoustId).isEmpty());
    QCOMPARE(server.requests().size(), 4); // search, recording, and the picture by a redirect
    QVERIFY2(searched(server).contains(R"(+recording:("Midnight Ferry" OR)") &&
                 searched(server).contains(R"(+artist:("Ida Marlowe" OR)") &&
                 searched(server).contains(R"( release:("Paper Lanterns" OR)") &&
                 searched(server).contains(" dur:["),
             qPrintable(searched(server)));
    QCOMPARE(AudioFile::takeLog(), QStringList());
}

void TestIdentificationByTags::anUnknownSoundLeavesTheTags()
{
    IdentifyServer server;
    server.setAnswer(IdentifyServer::AcoustId, IdentifyServer::emptyLookupAnswer());
    TestServices services(server);
    const Identification found = identify(services.all(), taggedSong(m_folder.path()));
    QCOMPARE(int(found.status), int(IDENTIFY_FOUND_BY_TAGS));
    QCOMPARE(text(found, TAG_TITLE), QString("Midnight Ferry"));
    QCOMPARE(server.requests(IdentifyServer::AcoustId).size(), 1);
}

void TestIdentificationByTags::whatCannotBeHeardHasAName_data()
{
    QTest::addColumn<QString>("ending");
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("too short") << ".ape" << Fixtures::silentApe(1500);
    QTest::newRow("no audio") << ".mp3" << QByteArray("This is no music.\n").repeated(100);
    QTest::newRow("empty") << ".flac" << QByteArray("");
}

void TestIdentificationByTags::whatCannotBeHeardHasAName()
{
    QFETCH(QString, ending);
    QFETCH(QByteArray, content);
    const QString path = written(m_folder, named + ending, content);
    const IdentifyServer server;
    TestServices services(server);
    const Identification found = identify(services.all(), path);
    QCOMPARE(int(found.status), int(IDENTIFY_FOUND_BY_TAGS));
    QCOMPARE(text(found, TAG_ALBUM), QString("Paper Lanterns"));
    QVERIFY(server.requests(IdentifyServer::AcoustId).isEmpty());
}

void TestIdentificationByTags::aServiceThatFailsLeavesNothing()
{
    IdentifyServer server;
    server.setManner(IdentifyServer::AcoustId, Manner::ServerError);
    TestServices services(server);
    QCOMPARE(int(identify(services.all(), taggedSong(m_folder.path())).status), int(IDENTIFY_REFUSED));
    QVERIFY(server.requests(IdentifyServer::Search).isEmpty());
}

void TestIdentificationByTags::nothingThatFitsKeepsTheReason_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("nothing found") << QByteArray(R"({"recordings": []})");
    QTest::newRow("nothing that fits")
        << IdentifyServer::searchAnswer(20000).replace("Ida Marlowe", "Otto Quist");
    QTest::newRow("another length") << IdentifyServer::searchAnswer(200000);
}

void TestIdentificationByTags::nothingThatFitsKeepsTheReason()
{
    QFETCH(QByteArray, answer);
    IdentifyServer server;
    server.setAnswer(IdentifyServer::AcoustId, IdentifyServer::emptyLookupAnswer());
    server.setAnswer(IdentifyServer::Search, answer);
    TestServices services(server);
    const QString path = taggedSong(m_folder.path());
    QCOMPARE(int(identify(services.all(), path).status), int(IDENTIFY_NO_MATCH));
    QCOMPARE(int(identify(withoutKey(services.all()), path).status), int(IDENTIFY_NO_KEY));
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 2);
    QVERIFY2(log[0].contains("AcoustID knows no such recording") && log[0].contains("what its tags say"),
             qPrintable(log[0]));
    QVERIFY(server.requests(IdentifyServer::MusicBrainz).isEmpty());
}

void TestIdentificationByTags::aMisbehavingSearchIsAFailureOfItsOwn_data()
{
    QTest::addColumn<Manner>("manner");
    QTest::addColumn<int>("status");
    QTest::newRow("silent") << Manner::Silent << int(IDENTIFY_NO_CONNECTION);
    QTest::newRow("a byte now and then") << Manner::Trickling << int(IDENTIFY_NO_CONNECTION);
    QTest::newRow("cut off") << Manner::CutOff << int(IDENTIFY_NO_CONNECTION);
    QTest::newRow("error 500") << Manner::ServerError << int(IDENTIFY_REFUSED);
    QTest::newRow("error 404") << Manner::NotFound << int(IDENTIFY_REFUSED);
    QTest::newRow("wrong JSON") << Manner::WrongJson << int(IDENTIFY_NOT_UNDERSTOOD);
    QTest::newRow("redirect to plain HTTP") << Manner::PlainRedirect << int(IDENTIFY_BAD_ADDRESS);
    QTest::newRow("endless redirect") << Manner::EndlessRedirect << int(IDENTIFY_NO_CONNECTION);
    QTest::newRow("endless body") << Manner::EndlessBody << int(IDENTIFY_NO_CONNECTION);
    QTest::newRow("endless headers") << Manner::EndlessHeaders << int(IDENTIFY_NO_CONNECTION);
}

void TestIdentificationByTags::aMisbehavingSearchIsAFailureOfItsOwn()
{
    QFETCH(Manner, manner);
    QFETCH(int, status);
    IdentifyServer server;
    server.setManner(IdentifyServer::Search, manner);
    TestServices services(server);
    if (manner == Manner::Silent || manner == Manner::Trickling)
        services.hurry(IdentifyServer::Search);
    const Identification found = identify(withoutKey(services.all()), taggedSong(m_folder.path()));
    QCOMPARE(int(found.status), status);
    QVERIFY(found.texts[TAG_TITLE].empty() && found.picture.empty());
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log[0].contains("MusicBrainz"), qPrintable(log[0]));
}

void TestIdentificationByTags::slowDownIsHonoured()
{
    IdentifyServer server;
    server.setManner(IdentifyServer::Search, Manner::SlowDown, 1);
    TestServices services(server);
    QCOMPARE(int(identify(withoutKey(services.all()), taggedSong(m_folder.path())).status),
             int(IDENTIFY_FOUND_BY_TAGS));
    const QList<IdentifyServer::Request> requests = server.requests(IdentifyServer::Search);
    QCOMPARE(requests.size(), 2);
    QVERIFY(requests[1].time - requests[0].time >= 1s);
    QCOMPARE(requests[1].target, requests[0].target);
}

void TestIdentificationByTags::whatTakesTooLongIsLeft()
{
    for (const Service service : {IdentifyServer::Search, IdentifyServer::MusicBrainz}) {
        IdentifyServer server;
        server.setManner(service, Manner::Silent);
        TestServices services(server);
        services.setPatience({1s, 1s}); // a transfer of its own would have thirty
        QCOMPARE(int(identify(withoutKey(services.all()), taggedSong(m_folder.path())).status),
                 int(IDENTIFY_NO_CONNECTION));
        const QStringList log = AudioFile::takeLog();
        QCOMPARE(log.size(), 1);
        QVERIFY2(log[0].contains("too long"), qPrintable(log[0]));
    }
}

void TestIdentificationByTags::decodingThatTakesTooLongLeavesTheTags()
{
    const IdentifyServer server;
    TestServices services(server);
    services.setPatience({0s, 1h});
    QCOMPARE(int(identify(services.all(), taggedSong(m_folder.path())).status), int(IDENTIFY_FOUND_BY_TAGS));
    QCOMPARE(int(identify(services.all()).status), int(IDENTIFY_NO_AUDIO));
    QVERIFY(AudioFile::takeLog().join("").contains("decoding it takes too long"));
}

void TestIdentificationByTags::releasesThatTakeTooLongLeaveTheOnesNamed()
{
    IdentifyServer server;
    server.setReleases(discography(60));
    server.setManner(IdentifyServer::Releases, Manner::Silent);
    TestServices services(server);
    Identification found;
    // A busy machine may take long for what comes before.
    for (auto patient = 1s; server.requests(IdentifyServer::Releases).isEmpty(); patient *= 2) {
        services.setPatience({patient, patient});
        found = identify(withoutKey(services.all()), taggedSong(m_folder.path()));
    }
    QCOMPARE(int(found.status), int(IDENTIFY_FOUND_BY_TAGS));
    QCOMPARE(text(found, TAG_ALBUM), QString("Best of 1"));
    QVERIFY(found.picture.empty());
}

void TestIdentificationByTags::allThatIsGivenIsUnderThirtySeconds()
{
    QVERIFY(audiocore::sharedServices().patience.inAll < 30s);
    QVERIFY(audiocore::Patience().decoding < audiocore::Patience().inAll);
}

QTEST_GUILESS_MAIN(TestIdentificationByTags)
#include "tst_identificationbytags.moc"
