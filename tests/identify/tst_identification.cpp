// Whole identifications against a server that plays the services well.
#include "identifying.h"

#include <QRegularExpression>

using namespace Identifying;

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
    void aMissingPictureLeavesTheTexts_data();
    void aMissingPictureLeavesTheTexts();
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

void TestIdentification::aMissingPictureLeavesTheTexts_data()
{
    QTest::addColumn<Manner>("manner");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("logged");
    const auto add = [](const char* name, Manner manner, int logged) {
        QTest::newRow(name) << manner << QByteArray() << logged;
    };
    add("there is none", Manner::NotFound, 0);
    add("silent", Manner::Silent, 1);
    add("cut off", Manner::CutOff, 1);
    add("error 500", Manner::ServerError, 1);
    add("redirect to plain HTTP", Manner::PlainRedirect, 1);
    add("endless", Manner::EndlessBody, 1);
    QTest::newRow("no picture") << Manner::Proper << QByteArray("<html>no picture</html>") << 1;
    QTest::newRow("a page that begins as a picture does")
        << Manner::Proper << QByteArray("\xFF\xD8\xFF<html>no picture</html>") << 1;
    QTest::newRow("half a picture") << Manner::Proper << IdentifyServer::picture().left(3000) << 1;
    QTest::newRow("nothing") << Manner::Proper << QByteArray("") << 1;
}

void TestIdentification::aMissingPictureLeavesTheTexts()
{
    QFETCH(Manner, manner);
    QFETCH(QByteArray, answer);
    QFETCH(int, logged);
    IdentifyServer server;
    server.setManner(IdentifyServer::CoverArt, manner);
    server.setAnswer(IdentifyServer::CoverArt, answer);
    const Identification found =
        identify(server, manner == Manner::Silent ? std::optional(IdentifyServer::CoverArt) : std::nullopt);
    QCOMPARE(int(found.status), int(IDENTIFY_FOUND));
    QCOMPARE(text(found, TAG_TITLE), QString("Midnight Ferry"));
    QVERIFY(found.picture.empty());
    QCOMPARE(AudioFile::takeLog().size(), logged);
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
