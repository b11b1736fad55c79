// MusicBrainz's answers: which release and genre are chosen, and that no answer does harm. And what counts as
// a picture.
#include "identify/coverart.h"
#include "identify/genre.h"
#include "identify/musicbrainz.h"
#include "identifyserver.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>
#include <QtTest>

namespace musicbrainz = audiocore::musicbrainz;
using audiocore::coverart::isPicture;
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

QString albumOf(const Recording& recording)
{
    return recording.release ? text(recording.release->title) : QString();
}

QString trackOf(const Recording& recording)
{
    return recording.release ? text(recording.release->track) : QString();
}

QString albumOf(const QVector<Release>& releases)
{
    QByteArrayList objects;
    for (const Release& release : releases)
        objects.append(release.toJson());
    const QByteArray list = R"("releases": [)" + objects.join(',') + ']';
    const auto page = musicbrainz::readReleases(("{" + list + "}").toStdString());
    const QString album = text(page.best->title);
    return album == albumOf(read(R"({"title": "Song", )" + list + '}')) ? album : "the lists differ";
}

QString genreOf(const QByteArray& genres)
{
    return text(read(R"({"title": "Song", "genres": )" + genres + "}").genre());
}

std::string pictureOf(const char* format, bool progressive)
{
    QImage image(40, 30, QImage::Format_RGB32);
    for (int i = 0; i < image.width() * image.height(); ++i)
        image.setPixel(i % 40, i / 40, QRgb(i * 7919));
    QBuffer file;
    QImageWriter writer(&file, format);
    writer.setProgressiveScanWrite(progressive);
    return writer.write(image) ? file.data().toStdString() : std::string();
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
    void theTrackOfAReleaseIsToldByItsRecording();
    void listsOfReleasesAreRead();
    void errorsAreTold();
    void genresAreCapitalisedAsTitles_data();
    void genresAreCapitalisedAsTitles();
    void whatMakesNoSenseIsNotUnderstood();
    void whatIsOfAnotherTypeIsAbsent();
    void wholePicturesAreTold();
    void partsOfPicturesAreNone();
    void whatOnlyBeginsAsAPictureIsNone();
};

void TestRecording::theAnswersFormIsRead()
{
    const Recording recording = read(IdentifyServer::recordingAnswer());
    QVERIFY(recording.understood);
    QCOMPARE(text(recording.title), QString("Midnight Ferry"));
    QCOMPARE(text(recording.artist), QString("Ida Marlowe feat. The Salt Choir"));
    QCOMPARE(albumOf(recording), QString("Paper Lanterns"));
    QCOMPARE(text(recording.release->id), QString("22d6b8a1-2b5b-4fd5-a0c8-2b4a0b9f4a4e"));
    QCOMPARE(text(recording.year()), QString("2012"));
    QCOMPARE(trackOf(recording), QString("4"));
    QCOMPARE(text(recording.genre()), QString("Pop"));
    QVERIFY(!recording.hasMoreReleases);
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
    QCOMPARE(text(read(begin + R"(, "date": "1999-01"}]})").year()), QString("1999"));
    QCOMPARE(text(read(begin + R"(, "date": "", "release-group": {"first-release-date": "1998"}}]})").year()),
             QString("1998"));
    QCOMPARE(text(read(begin + "}]}").year()), QString("1997"));
    QCOMPARE(text(read(R"({"title": "Song"})").year()), QString());
}

void TestRecording::theTrackIsThePlaceOnItsMedium()
{
    const auto track = [](const QByteArray& media) {
        return trackOf(
            read(R"({"title": "Song", "releases": [{"title": "Album", "media": )" + media + "}]}"));
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
    QCOMPARE(artist(R"([{"name": "A", "joinphrase": ")" + QByteArray(100000, 'x') + R"("}])"),
             'A' + QString(999, 'x'));
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
    // Without one of its own: the release's, then its group's, then the artist's.
    const auto genreWith = [](const QByteArray& release) {
        return text(read(R"({"title": "Song", "genres": [], "artist-credit": [{"name": "A", "artist":
            {"genres": [{"name": "blues", "count": 1}]}}], "releases": [{"title": "Album")" +
                         release + "}]}")
                        .genre());
    };
    const QByteArray group = R"(, "release-group": {"genres": [{"name": "ska", "count": 1}]})";
    QCOMPARE(genreWith(R"(, "genres": [{"name": "soul", "count": 1}])" + group), QString("Soul"));
    QCOMPARE(genreWith(R"(, "genres": [])" + group), QString("Ska"));
    QCOMPARE(genreWith(""), QString("Blues"));
    QCOMPARE(text(read(R"({"title": "Song", "artist-credit": [{"artist": {"genres": []}},
                 {"artist": {"genres": [{"name": "jazz", "count": 1}]}}]})")
                      .genre()),
             QString("Jazz"));
}

void TestRecording::theTrackOfAReleaseIsToldByItsRecording()
{
    const std::string wanted = IdentifyServer::identifier(2).toStdString();
    const auto track = [&wanted](const QByteArray& media) {
        musicbrainz::Release release;
        const QByteArray answer =
            R"({"title": "Album", "genres": [{"name": "soul", "count": 1}], "media": )" + media + "}";
        return musicbrainz::readTracks(release, answer.toStdString(), wanted) && release.genre == "soul"
                   ? text(release.track)
                   : "not understood";
    };
    const auto entry = [](int position, int recording) {
        return R"({"position": )" + QByteArray::number(position) + R"(, "recording": {"id": ")" +
               IdentifyServer::identifier(recording) + R"("}})";
    };
    QCOMPARE(track("[{\"tracks\": [" + entry(1, 1) + ',' + entry(2, 2) + ',' + entry(3, 2) + "]}]"),
             QString("2"));
    QCOMPARE(track("[{\"tracks\": [" + entry(1, 1) + "]}, {\"tracks\": [" + entry(5, 2) + "]}]"),
             QString("5"));
    QCOMPARE(track("[{\"tracks\": [" + entry(1, 1) + ", {\"position\": 2}, 7]}]"), QString());
    musicbrainz::Release release;
    for (const char* nonsense : {"", "[]", "{}", "{\"title\": 7}"})
        QVERIFY(!musicbrainz::readTracks(release, nonsense, wanted));
}

void TestRecording::listsOfReleasesAreRead()
{
    const auto page = musicbrainz::readReleases(
        R"({"release-count": 60, "release-offset": 25, "releases": [{"title": "A"}, 7, {"title": ""}]})");
    QVERIFY(page.understood);
    QCOMPARE(page.releases, size_t(3));
    QCOMPARE(page.all, 60.0);
    QCOMPARE(text(page.best->title), QString("A"));
    for (const char* nonsense : {"", "[]", "{}", R"({"releases": {}})", R"({"error": "Not Found"})"})
        QVERIFY(!musicbrainz::readReleases(nonsense).understood);
    for (const char* none : {R"({"releases": []})", R"({"releases": [[], null, {"title": 7}]})"})
        QVERIFY(!musicbrainz::readReleases(none).best);
}

void TestRecording::errorsAreTold()
{
    QCOMPARE(text(musicbrainz::readError(R"({"error": "Not\nFound", "help": "..."})")), QString("Not Found"));
    for (const char* none : {"", "<html>", "[]", R"({"error": 7})"})
        QCOMPARE(text(musicbrainz::readError(none)), QString());
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
    QCOMPARE(albumOf(recording), QString("Album"));
    for (const std::string& absent : {recording.artist, recording.genre(), recording.year(),
                                      recording.release->track, recording.release->id, recording.id})
        QCOMPARE(text(absent), QString());
}

void TestRecording::wholePicturesAreTold()
{
    for (const char* format : {"jpg", "png"})
        for (const bool progressive : {false, true}) {
            const std::string bytes = pictureOf(format, progressive);
            QVERIFY(isPicture(bytes));
            QVERIFY(isPicture(bytes + "more"));
            QVERIFY(isPicture(bytes + std::string(1000, '\0')));
        }
    QVERIFY(isPicture(IdentifyServer::picture().toStdString()));
}

void TestRecording::partsOfPicturesAreNone()
{
    for (const char* format : {"jpg", "png"})
        for (const bool progressive : {false, true}) {
            const std::string bytes = pictureOf(format, progressive);
            for (std::size_t length = 0; length < bytes.size(); ++length)
                QVERIFY2(!isPicture(bytes.substr(0, length)), qPrintable(QString::number(length)));
        }
}

void TestRecording::whatOnlyBeginsAsAPictureIsNone()
{
    for (const char* none : {"", "\xFF\xD8", "\xFF\xD8\xFF", "\xFF\xD8\xFF<html></html>", "\xFF\xD8\xFF\xD9",
                             "\xFF\xD8\xFF\xDA\xFF\xD9", "\x89PNG\r\n\x1A\n....", "GIF89a", "<html>", "{}"})
        QVERIFY2(!isPicture(none), none);
    // Larger than anyone shows, or of no size at all.
    for (const char* size : {"\xFF\xFF\xFF\xFF", "\x00\x00\x00\x10"}) {
        std::string jpeg = pictureOf("jpg", false);
        jpeg.replace(jpeg.find("\xFF\xC0") + 5, 4, size, 4);
        QVERIFY(!isPicture(jpeg));
        std::string png = pictureOf("png", false);
        png.replace(16, 4, size, 4);
        QVERIFY(!isPicture(png) || size[0] == '\0');
    }
    std::string png = pictureOf("png", false);
    png.replace(16, 8, 8, '\0');
    QVERIFY(!isPicture(png));
}

QTEST_GUILESS_MAIN(TestRecording)
#include "tst_recording.moc"
