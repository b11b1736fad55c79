// MusicBrainz's answers: which release and genre are chosen, and that no answer does harm.
#include "identify/coverart.h"
#include "identify/genre.h"
#include "identify/musicbrainz.h"
#include "identifyserver.h"

#include <QtTest>

namespace musicbrainz = audiocore::musicbrainz;
using musicbrainz::Recording;

namespace {
QString text(const std::string& utf8)
{
    return QString::fromStdString(utf8);
}

/// A release in the service's form; its title tells it apart.
struct Release
{
    QByteArray title;
    QByteArray date;
    QByteArray status = "Official";
    QByteArray primary = "Album";
    QByteArray secondary = "";

    QByteArray toJson() const
    {
        const QByteArray types = secondary.isEmpty() ? "" : '"' + secondary + '"';
        return R"({"id": "22d6b8a1-2b5b-4fd5-a0c8-2b4a0b9f4a4e", "title": ")" + title + R"(", "status": ")" +
               status + R"(", "date": ")" + date + R"(", "release-group": {"primary-type": ")" + primary +
               R"(", "secondary-types": [)" + types + "]}}";
    }
};

Recording read(const QByteArray& answer)
{
    return musicbrainz::readRecording(answer.toStdString());
}

QString albumOf(const QVector<Release>& releases)
{
    QByteArrayList objects;
    for (const Release& release : releases)
        objects.append(release.toJson());
    return text(read(R"({"title": "Song", "releases": [)" + objects.join(',') + "]}").album);
}

QString genreOf(const QByteArray& genres)
{
    return text(read(R"({"title": "Song", "genres": )" + genres + "}").genre);
}
} // namespace

class TestRecording : public QObject
{
    Q_OBJECT

private slots:
    void theAnswersFormIsRead();
    void officialReleasesComeBeforeOthers();
    void albumsComeBeforeCompilations();
    void theEarliestOfEqualsWins();
    void theYearIsTheReleasesOrTheNextBest();
    void theTrackIsThePlaceOnItsMedium();
    void creditsAreJoinedAsTheServiceJoinsThem();
    void theMostVotedGenreWins();
    void genresAreCapitalisedAsTitles_data();
    void genresAreCapitalisedAsTitles();
    void whatMakesNoSenseIsNotUnderstood();
    void whatIsOfAnotherTypeIsAbsent();
    void picturesAreToldByTheirBeginning();
};

void TestRecording::theAnswersFormIsRead()
{
    const Recording recording = read(IdentifyServer::recordingAnswer());
    QVERIFY(recording.understood);
    QCOMPARE(text(recording.title), QString("Midnight Ferry"));
    QCOMPARE(text(recording.artist), QString("Ida Marlowe feat. The Salt Choir"));
    QCOMPARE(text(recording.album), QString("Paper Lanterns"));
    QCOMPARE(text(recording.release), QString("22d6b8a1-2b5b-4fd5-a0c8-2b4a0b9f4a4e"));
    QCOMPARE(text(recording.year), QString("2012"));
    QCOMPARE(text(recording.track), QString("4"));
    QCOMPARE(text(recording.genre), QString("Pop"));
}

void TestRecording::officialReleasesComeBeforeOthers()
{
    QCOMPARE(
        albumOf({{"bootleg", "1990", "Bootleg"}, {"official", "1999"}, {"promotion", "1991", "Promotion"}}),
        QString("official"));
    QCOMPARE(
        albumOf({{"bootleg", "1990", "Bootleg"}, {"official", "1999", "Official", "Album", "Compilation"}}),
        QString("official"));
    QCOMPARE(albumOf({{"bootleg", "1990", "Bootleg"}}), QString("bootleg"));
}

void TestRecording::albumsComeBeforeCompilations()
{
    QCOMPARE(albumOf({{"compilation", "1990", "Official", "Album", "Compilation"},
                      {"single", "1991", "Official", "Single"},
                      {"live", "1992", "Official", "Album", "Live"},
                      {"album", "1999"}}),
             QString("album"));
    QCOMPARE(albumOf({{"compilation", "1990", "Official", "Album", "Compilation"},
                      {"single", "1991", "Official", "Single"},
                      {"live", "1992", "Official", "Album", "Live"}}),
             QString("live"));
    QCOMPARE(albumOf({{"compilation", "1990", "Official", "Album", "Compilation"},
                      {"mix", "1980", "Official", "Album", "DJ-mix"},
                      {"single", "1991", "Official", "Single"}}),
             QString("single"));
}

void TestRecording::theEarliestOfEqualsWins()
{
    QCOMPARE(albumOf({{"later", "1999-02-01"}, {"earlier", "1999-01-31"}, {"latest", "2001"}}),
             QString("earlier"));
    QCOMPARE(albumOf({{"none", ""}, {"some", "2020"}}), QString("some"));
    QCOMPARE(albumOf({{"year only", "1999"}, {"day", "1999-12-31"}}), QString("day"));
    QCOMPARE(albumOf({{"first", "1999-01-01"}, {"second", "1999-01-01"}}), QString("first"));
    QCOMPARE(albumOf({{"nonsense", "!"}, {"some", "2020"}}), QString("some"));
    QCOMPARE(albumOf({{"", "1990"}, {"titled", "2020"}}), QString("titled"));
}

void TestRecording::theYearIsTheReleasesOrTheNextBest()
{
    const QByteArray begin =
        R"({"title": "Song", "first-release-date": "1997-05", "releases": [{"title": "Album")";
    QCOMPARE(text(read(begin + R"(, "date": "1999-01"}]})").year), QString("1999"));
    QCOMPARE(text(read(begin + R"(, "date": "", "release-group": {"first-release-date": "1998"}}]})").year),
             QString("1998"));
    QCOMPARE(text(read(begin + "}]}").year), QString("1997"));
    QCOMPARE(text(read(R"({"title": "Song"})").year), QString());
}

void TestRecording::theTrackIsThePlaceOnItsMedium()
{
    const auto track = [](const QByteArray& media) {
        return text(
            read(R"({"title": "Song", "releases": [{"title": "Album", "media": )" + media + "}]}").track);
    };
    QCOMPARE(track(R"([{"tracks": [{"position": 7, "number": "B2"}]}])"), QString("7"));
    QCOMPARE(track(R"([{"track": [{"number": "12"}]}])"), QString("12"));
    QCOMPARE(track(R"([{"tracks": [{"number": "A1"}]}])"), QString());
    QCOMPARE(track(R"([{"tracks": []}, {"tracks": [{"position": 2}]}])"), QString("2"));
    for (const char* none :
         {"[]", "{}", "7", "[{\"tracks\": [{\"position\": -1}]}]", "[{\"tracks\": [{\"position\": 1e300}]}]",
          "[{\"tracks\": [{\"position\": \"4\"}]}]"})
        QCOMPARE(track(none), QString());
}

void TestRecording::creditsAreJoinedAsTheServiceJoinsThem()
{
    const auto artist = [](const QByteArray& credit) {
        return text(read(R"({"title": "Song", "artist-credit": )" + credit + "}").artist);
    };
    QCOMPARE(artist(R"([{"name": "m-flo", "joinphrase": "♥"}, {"name": "BoA", "joinphrase": ""}])"),
             QString::fromUtf8("m-flo♥BoA"));
    QCOMPARE(artist(R"([{"name": "A", "joinphrase": " & "}, {"artist": {"name": "B"}}])"), QString("A & B"));
    QCOMPARE(artist(R"([7, {"name": 7, "joinphrase": []}, {"name": "A"}])"), QString("A"));
    QCOMPARE(artist(R"([{"name": "A", "joinphrase": ")" + QByteArray(100000, 'x') + R"("}])"), QString());
}

void TestRecording::theMostVotedGenreWins()
{
    QCOMPARE(
        genreOf(
            R"([{"name": "rock", "count": 2}, {"name": "jazz", "count": 9}, {"name": "pop", "count": 3}])"),
        QString("Jazz"));
    QCOMPARE(genreOf(R"([{"name": "rock", "count": 2}, {"name": "jazz", "count": 2}])"), QString("Rock"));
    QCOMPARE(genreOf(R"([{"name": "rock"}, {"name": 7, "count": 9}, {"name": "jazz", "count": -1}])"),
             QString("Rock"));
    QCOMPARE(genreOf("[]"), QString());
    // Without one of its own: the album's, then the artist's.
    const QByteArray artist =
        R"("artist-credit": [{"name": "A", "artist": {"genres": [{"name": "blues", "count": 1}]}}])";
    QCOMPARE(text(read(R"({"title": "Song", "releases": [{"title": "Album", "release-group":
                 {"genres": [{"name": "soul", "count": 1}]}}], )" +
                       artist + "}")
                      .genre),
             QString("Soul"));
    QCOMPARE(text(read(R"({"title": "Song", )" + artist + "}").genre), QString("Blues"));
}

void TestRecording::genresAreCapitalisedAsTitles_data()
{
    QTest::addColumn<QString>("genre");
    QTest::addColumn<QString>("title");
    const auto add = [](const char* genre, const char* title) {
        QTest::newRow(genre) << QString::fromUtf8(genre) << QString::fromUtf8(title);
    };
    add("rock", "Rock");
    add("alternative rock", "Alternative Rock");
    add("hip hop", "Hip Hop");
    add("r&b", "R&B");
    add("singer-songwriter", "Singer-Songwriter");
    add("drum and bass", "Drum and Bass");
    add("rock and roll", "Rock and Roll");
    add("a cappella", "A Cappella");
    add("children's music", "Children's Music");
    add("música popular", "Música Popular");
    add("éntekhno", "Éntekhno");
    add("2-step", "2-Step");
    add("EDM", "EDM");
    add("", "");
}

void TestRecording::genresAreCapitalisedAsTitles()
{
    QFETCH(QString, genre);
    QFETCH(QString, title);
    QCOMPARE(text(audiocore::capitalised(genre.toStdString())), title);
}

void TestRecording::whatMakesNoSenseIsNotUnderstood()
{
    for (const char* answer : {"", "null", "[]", "{}", "7", "<html>", "{\"title\": 7}", "{\"title\": \"\"}",
                               "{\"error\": \"Not Found\", \"help\": \"...\"}", "{\"title\": \"Song\""})
        QVERIFY2(!read(answer).understood, answer);
}

void TestRecording::whatIsOfAnotherTypeIsAbsent()
{
    const Recording recording = read(R"({"title": "Song", "artist-credit": {"name": "A"}, "genres": "rock",
        "first-release-date": 1999, "releases": [7, [], null, {"title": ["Album"]},
            {"title": "Album", "id": "../../x", "date": {"year": 1999}, "release-group": [], "media": [7, {"tracks": 7}],
             "status": []}]})");
    QVERIFY(recording.understood);
    QCOMPARE(text(recording.title), QString("Song"));
    QCOMPARE(text(recording.album), QString("Album"));
    for (const std::string& absent :
         {recording.artist, recording.genre, recording.year, recording.track, recording.release})
        QCOMPARE(text(absent), QString());
}

void TestRecording::picturesAreToldByTheirBeginning()
{
    using audiocore::coverart::isPicture;
    QVERIFY(isPicture(IdentifyServer::picture().toStdString()));
    QVERIFY(isPicture(std::string("\x89PNG\r\n\x1A\n....")));
    for (const char* none : {"", "\xFF\xD8", "\xFF\xD8\xFF", "GIF89a", "<html>", "{}"})
        QVERIFY(!isPicture(none));
}

QTEST_GUILESS_MAIN(TestRecording)
#include "tst_recording.moc"
