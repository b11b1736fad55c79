// What is searched for, and what is understood of the answer.
#include "identify/musicbrainz.h"
#include "identify/recordingquery.h"

#include <nlohmann/json.hpp>

#include <QtTest>

namespace musicbrainz = audiocore::musicbrainz;
using audiocore::SongNames;

namespace {
QString text(const std::string& utf8)
{
    return QString::fromStdString(utf8);
}

QString completed(const SongNames& tagged, const char* path)
{
    const SongNames names = audiocore::completed(tagged, path);
    return text(names.artist + "/" + names.album + "/" + names.title);
}

const char* const id = "11111111-1111-4111-8111-111111111111";
} // namespace

class TestSearch : public QObject
{
    Q_OBJECT

private slots:
    void namesAreCompletedByThePath();
    void namesThatSayNothingAreMissing_data();
    void namesThatSayNothingAreMissing();
    void theQueryNamesWhatIsKnown_data();
    void theQueryNamesWhatIsKnown();
    void theQueryIsBounded();
    void theAddressIsEncoded();
    void theAnswersFormIsRead();
    void whatIsOddReadsAsUnknown();
    void whatMakesNoSenseIsNotUnderstood();
    void theAnswerIsBounded();
};

void TestSearch::namesAreCompletedByThePath()
{
    const char* const path = "/m/Ida Marlowe/Paper Lanterns/04 Midnight Ferry.mp3";
    QCOMPARE(completed({}, path), QString("Ida Marlowe/Paper Lanterns/Midnight Ferry"));
    QCOMPARE(completed({"Title", "", ""}, path), QString("Ida Marlowe/Paper Lanterns/Title"));
    QCOMPARE(completed({"", "Artist", "Album"}, path), QString("Artist/Album/Midnight Ferry"));
    QCOMPARE(completed({"Title", "Artist", ""}, path), QString("Artist//Title"));
    // What is known tells which part of the name is which.
    const char* const turned = "/m/Midnight Ferry - Ida Marlowe.mp3";
    QCOMPARE(completed({"", "IDA MARLOWE", ""}, turned), QString("IDA MARLOWE//Midnight Ferry"));
    QCOMPARE(completed({"Midnight ferry", "", ""}, turned), QString("Ida Marlowe//Midnight ferry"));
}

void TestSearch::namesThatSayNothingAreMissing_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("artist");
    QTest::newRow("track") << "Track 03"
                           << "Unknown Artist";
    QTest::newRow("small") << "audiotrack 3"
                           << "unknown";
    QTest::newRow("various") << "Unknown"
                             << "Various Artists";
    QTest::newRow("none") << ""
                          << "";
}

void TestSearch::namesThatSayNothingAreMissing()
{
    QFETCH(QString, title);
    QFETCH(QString, artist);
    const SongNames tagged = {title.toStdString(), artist.toStdString(), "Unknown Album"};
    QCOMPARE(completed(tagged, "/m/Ida Marlowe/Paper Lanterns/04 Midnight Ferry.mp3"),
             QString("Ida Marlowe/Paper Lanterns/Midnight Ferry"));
    QCOMPARE(completed(tagged, "/m/Unknown Artist/Unknown Album/03 Track 3.mp3"), QString("//"));
}

void TestSearch::theQueryNamesWhatIsKnown_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("artist");
    QTest::addColumn<QString>("album");
    QTest::addColumn<int>("milliseconds");
    QTest::addColumn<QString>("query");
    const QString title = R"(+recording:("Midnight Ferry" OR midnight~ OR ferry~))";
    const QString artist = R"(artist:("Ida Marlowe" OR ida OR marlowe~))";
    const QString album = R"(release:("Paper" OR paper~))";
    QTest::newRow("all") << "Midnight Ferry"
                         << "Ida Marlowe"
                         << "Paper" << 20000 << title + " +" + artist + " " + album + " dur:[13000 TO 27000]";
    QTest::newRow("no album") << "Midnight Ferry"
                              << "Ida Marlowe"
                              << "" << 3000 << title + " +" + artist + " dur:[0 TO 10000]";
    QTest::newRow("no length") << "Midnight Ferry"
                               << "Ida Marlowe"
                               << "" << 0 << title + " +" + artist;
    QTest::newRow("no artist") << "Midnight Ferry"
                               << ""
                               << "Paper" << 0 << title + " +" + album;
    QTest::newRow("the syntax")
        << R"(AND (a) "b" OR c:d* \ e/f && !g)"
        << "-+[x TO y]~^?|{}"
        << "" << 0
        << R"(+recording:("AND \(a\) \"b\" OR c\:d\* \\ e\/f \&\& \!g" OR a OR b OR c OR d )"
           R"(OR e OR f OR g) )"
           R"(+artist:("\-\+\[x TO y\]\~\^\?\|\{\}" OR x OR y))";
    QTest::newRow("signs alone") << "?"
                                 << "!!!"
                                 << "" << 0 << R"(+recording:("\?" OR \?) +artist:("\!\!\!" OR \!\!\!))";
    QTest::newRow("another script") << "Вальс"
                                    << "東京"
                                    << "" << 0
                                    << R"(+recording:("Вальс" OR вальс~) +artist:("東京" OR 東京))";
    QTest::newRow("no title") << ""
                              << "Ida Marlowe"
                              << "Paper" << 20000 << "";
    QTest::newRow("title alone") << "Midnight Ferry"
                                 << ""
                                 << "" << 20000 << "";
}

void TestSearch::theQueryNamesWhatIsKnown()
{
    QFETCH(QString, title);
    QFETCH(QString, artist);
    QFETCH(QString, album);
    QFETCH(int, milliseconds);
    QFETCH(QString, query);
    const SongNames names = {title.toStdString(), artist.toStdString(), album.toStdString()};
    QCOMPARE(text(audiocore::recordingQuery({names, milliseconds})), query);
}

void TestSearch::theQueryIsBounded()
{
    std::string longest;
    for (int i = 0; i < 1000; ++i)
        longest += "(" + std::string(std::size_t(i), 'x') + ") ";
    const std::string query = audiocore::recordingQuery({{longest, longest, longest}, 1LL << 60});
    QVERIFY2(query.size() < 5000, qPrintable(QString::number(query.size())));
}

void TestSearch::theAddressIsEncoded()
{
    audiocore::ServiceAddresses addresses;
    addresses.musicBrainz = "https://mirror.example";
    const auto request = musicbrainz::searchRequest(addresses, "+a:(\"é&b\" OR c)");
    QCOMPARE(text(request.address),
             QString("https://mirror.example/ws/2/recording?query=%2Ba%3A%28%22%C3%A9%26b"
                     "%22%20OR%20c%29&limit=50&fmt=json"));
    QVERIFY(request.form.empty());
    QVERIFY(request.largestAnswer > 0);
}

void TestSearch::theAnswersFormIsRead()
{
    const musicbrainz::Search search = musicbrainz::readSearch(R"({"created": "2024-05-01T10:00:00.000Z",
        "count": 1, "offset": 0, "recordings": [{"id": "11111111-1111-4111-8111-111111111111", "score": 93,
        "title": "Midnight Ferry", "length": 20123, "disambiguation": "live, 2013-06-01", "video": null,
        "artist-credit": [{"name": "Ida M.", "joinphrase": " feat. ", "artist": {"name": "Ida Marlowe",
                           "sort-name": "Marlowe, Ida", "aliases": [{"name": "Ида Марлоу"}, {"name": "Ida M."}]}},
                          {"name": "The Salt Choir", "artist": {"name": "The Salt Choir"}}],
        "releases": [{"id": "22d6b8a1-2b5b-4fd5-a0c8-2b4a0b9f4a4e", "title": "Best of", "status": "Official",
                      "date": "2001", "release-group": {"primary-type": "Album",
                      "secondary-types": ["Compilation", "Live"]}},
                     {"id": "97ab4a4a-2c1d-4e12-9a3c-3e5a2f0a6f9d", "title": "Paper Lanterns",
                      "status": "Official", "date": "2012-03-05", "release-group": {"primary-type": "Album",
                      "secondary-types": ["Live"]}, "media": [{"track": [{"number": "4"}]}]}]}]})");
    QVERIFY(search.understood);
    QCOMPARE(search.recordings.size(), std::size_t(1));
    const musicbrainz::FoundRecording& found = search.recordings[0];
    QCOMPARE(text(found.id), QString(id));
    QCOMPARE(text(found.title), QString("Midnight Ferry"));
    QCOMPARE(text(found.credit), QString("Ida M. feat. The Salt Choir"));
    QCOMPARE(found.artists, (std::vector<std::string>{"Ida M.", "Ida Marlowe", "Marlowe, Ida", "Ида Марлоу",
                                                      "Ida M. The Salt Choir"}));
    QCOMPARE(text(found.comment), QString("live, 2013-06-01"));
    QCOMPARE(found.score, 0.93);
    QCOMPARE(found.milliseconds, std::int64_t(20123));
    QCOMPARE(found.albums, (std::vector<std::string>{"Best of", "Paper Lanterns"}));
    QVERIFY(found.isLive);
    QCOMPARE(text(found.release->title), QString("Paper Lanterns"));
}

void TestSearch::whatIsOddReadsAsUnknown()
{
    const musicbrainz::Search search = musicbrainz::readSearch(R"({"recordings": [7, null, [], {},
        {"id": "../../etc", "title": "Title"}, {"id": "11111111-1111-4111-8111-111111111111"},
        {"id": "11111111-1111-4111-8111-111111111111", "title": "A", "length": null, "score": "100",
         "artist-credit": {"name": "A"}, "releases": {"title": "A"}, "disambiguation": []},
        {"id": "11111111-1111-4111-8111-111111111111", "title": "B", "length": -5, "score": 1e300,
         "artist-credit": [7, {"artist": 7}], "releases": [7, {"title": 7, "release-group": []}]},
        {"id": "11111111-1111-4111-8111-111111111111", "title": "C", "length": 1e300}]})");
    QVERIFY(search.understood);
    QCOMPARE(search.recordings.size(), std::size_t(3));
    for (const musicbrainz::FoundRecording& found : search.recordings) {
        QVERIFY(found.credit.empty() && found.artists.empty() && found.comment.empty());
        QVERIFY(found.albums.empty() && !found.release && !found.isLive);
        QVERIFY(found.milliseconds >= 0 && found.milliseconds <= 1000000000);
    }
    QCOMPARE(search.recordings[0].score, 0.0);
    QCOMPARE(search.recordings[1].score, 1.0);
}

void TestSearch::whatMakesNoSenseIsNotUnderstood()
{
    for (const char* answer : {"", "null", "7", "[]", "{}", "<html>", R"({"recordings": {}})",
                               R"({"recordings": [)", "{\"recordings\": \"\xFF\"}"}) {
        const musicbrainz::Search search = musicbrainz::readSearch(answer);
        QVERIFY(!search.understood && search.recordings.empty());
    }
    QVERIFY(musicbrainz::readSearch(R"({"recordings": []})").understood);
}

void TestSearch::theAnswerIsBounded()
{
    nlohmann::json release = {{"title", ""}};
    nlohmann::json recording = {
        {"id", id}, {"title", std::string(9999, 'x')}, {"releases", nlohmann::json::array()}};
    nlohmann::json aliases;
    for (int i = 0; i < 200; ++i) {
        release["title"] = std::to_string(i);
        recording["releases"].push_back(release);
        aliases.push_back({{"name", std::to_string(i)}});
    }
    recording["artist-credit"] = {{{"name", "A"}, {"artist", {{"aliases", aliases}}}}};
    nlohmann::json answer;
    for (int i = 0; i < 70; ++i)
        answer["recordings"].push_back(recording);
    const musicbrainz::Search search = musicbrainz::readSearch(answer.dump());
    QCOMPARE(search.recordings.size(), std::size_t(50));
    QCOMPARE(search.recordings[0].title.size(), std::size_t(1000));
    QCOMPARE(search.recordings[0].albums.size(), std::size_t(100));
    QCOMPARE(search.recordings[0].artists.size(), std::size_t(20));
}

QTEST_APPLESS_MAIN(TestSearch)
#include "tst_search.moc"
