// Which of the recordings that a search found is the one in the file.
#include "identify/judging.h"
#include "identify/songtitle.h"

#include <QtTest>

using audiocore::SongHints;
using audiocore::musicbrainz::FoundRecording;
using audiocore::musicbrainz::Release;
Q_DECLARE_METATYPE(SongHints)
Q_DECLARE_METATYPE(FoundRecording)

namespace {
constexpr int unknown = 0;

/// @param album of its one release.
FoundRecording recording(const char* artist, const char* title, int seconds, const char* album = "",
                         const char* comment = "", double score = 1)
{
    FoundRecording found;
    found.id = title;
    found.title = title;
    found.credit = artist;
    found.artists = {std::string(artist).substr(0, std::string(artist).find(" feat."))};
    found.comment = comment;
    found.score = score;
    found.milliseconds = seconds * 1000;
    if (*album)
        found.albums = {album};
    return found;
}

FoundRecording onConcertAlbum(FoundRecording found)
{
    found.isLive = true;
    return found;
}

FoundRecording on(FoundRecording found, const char* id, const Release::Rank& rank)
{
    found.id = id;
    found.release = Release();
    found.release->rank = rank;
    return found;
}

SongHints song(const char* artist, const char* title, int seconds, const char* album = "")
{
    return {{title, artist, album}, std::int64_t(seconds) * 1000};
}

QString chosen(const std::vector<FoundRecording>& recordings, const SongHints& hints)
{
    const FoundRecording* const found = audiocore::chooseFitting(recordings, hints);
    return found ? QString::fromStdString(found->id) : QString("none");
}

QString plain(const char* title)
{
    return QString::fromStdU32String(audiocore::songTitle(title).plain);
}

const Release::Rank album = {false, 0, "1975-11-21"};
const Release::Rank laterAlbum = {false, 0, "1991-01-01"};
const Release::Rank compilation = {false, 3, "1970-01-01"};
const Release::Rank bootleg = {true, 0, "1960-01-01"};

const FoundRecording ferry = recording("Ida Marlowe", "Midnight Ferry", 200, "Paper Lanterns");
const SongHints own = song("Ida Marlowe", "Midnight Ferry", 200, "Paper Lanterns");

FoundRecording unmeasuredFerry()
{
    FoundRecording unmeasured = ferry;
    unmeasured.milliseconds = unknown;
    return unmeasured;
}

void add(const char* name, const SongHints& hints, const FoundRecording& found, bool isTheOne)
{
    QTest::newRow(name) << hints << found << isTheOne;
}

void addSpellings()
{
    add("the same", own, ferry, true);
    add("without an album", song("Ida Marlowe", "Midnight Ferry", 203), ferry, true);
    add("a typo in the title", song("Ida Marlowe", "Midnigth Ferry", 201), ferry, true);
    add("a letter missing everywhere", song("Ida Marlow", "Midnight Fery", 200, "Paper Lantern"), ferry,
        true);
    add("other capitals and signs", song("IDA MARLOWE", "midnight_ferry!", 200), ferry, true);
    add("accents", song("Ida Marlowé", "Mídnight Ferry", 200), ferry, true);
    add("the sorted name", song("Marlowes, The", "Midnight Ferry", 200),
        recording("The Marlowes", "Midnight Ferry", 200), true);
    add("with its guest", song("Ida Marlowe ft. The Salt Choir", "Midnight Ferry", 200), ferry, true);
    add("without its guest", song("Ida Marlowe", "Midnight Ferry", 200),
        recording("Ida Marlowe feat. The Salt Choir", "Midnight Ferry", 200), true);
    add("with one more", song("Ida Marlowe, Otto Quist", "Midnight Ferry", 200), ferry, true);
    FoundRecording together =
        recording("Ida Marlowe & Otto Quist feat. The Salt Choir", "Midnight Ferry", 200);
    together.artists = {"Ida Marlowe", "Ida Marlowe Otto Quist", "Ida Marlowe Otto Quist The Salt Choir"};
    add("two of three", song("Ida Marlowe and Otto Quist", "Midnight Ferry", 200), together, true);
    add("the guest alone", song("The Salt Choir", "Midnight Ferry", 200), together, false);
    add("a name that begins alike", song("Ida", "Midnight Ferry", 200), ferry, false);
    add("the guest in the title", song("Ida Marlowe", "Midnight Ferry (feat. The Salt Choir)", 200), ferry,
        true);
    add("a remaster", song("Ida Marlowe", "Midnight Ferry (2011 Remaster)", 200), ferry, true);
    add("too far from it", song("Ida Marlow", "Midnigt Fery", 206), ferry, false);
    add("another word", song("Ida Marlowe", "Midnight Train", 200), ferry, false);
    add("a short title like it", song("Ida Marlowe", "Hurts", 200), recording("Ida Marlowe", "Hurt", 200),
        false);
    add("another part", song("Ida Marlowe", "Ferry, Part 1", 200),
        recording("Ida Marlowe", "Ferry, Part II", 200), false);
    add("sung anew", song("Ida Marlowe", "Midnight Ferry", 200),
        recording("Ida Marlowe", "Midnight Ferry (Ida's Version)", 200), false);
}

void addLengths()
{
    add("another length", song("Ida Marlowe", "Midnight Ferry", 208), ferry, false);
    add("just within", song("Ida Marlowe", "Midnight Ferry", 207), ferry, true);
    add("shorter", song("Ida Marlowe", "Midnight Ferry", 192), ferry, false);
    add("a length that nobody knows, all else fits", own, unmeasuredFerry(), true);
    add("a length that nobody knows", song("Ida Marlowe", "Midnight Ferry", 200), unmeasuredFerry(), false);
    add("a file of unknown length", song("Ida Marlowe", "Midnight Ferry", unknown, "Paper Lanterns"), ferry,
        true);
    add("a file of unknown length, no album", song("Ida Marlowe", "Midnight Ferry", unknown), ferry, false);
}

void addOtherArtists()
{
    add("by somebody else", song("Otto Quist", "Midnight Ferry", 200, "Paper Lanterns"), ferry, false);
    add("a tribute", own, recording("The Lantern Tribute Band", "Midnight Ferry", 200, "Paper Lanterns"),
        false);
    add("by nobody, on its album", song("", "Midnight Ferry", 200, "Paper Lanterns"), ferry, true);
    add("by nobody, on another", song("", "Midnight Ferry", 200, "Ferries"), ferry, false);
    add("by nobody, of no length", song("", "Midnight Ferry", unknown, "Paper Lanterns"), ferry, false);
    add("title and artist swapped", song("Midnight Ferry", "Ida Marlowe", 200, "Paper Lanterns"), ferry,
        false);
    add("a title that says nothing", song("Ida Marlowe", "Song", 200, "Paper Lanterns"), ferry, false);
}

void addOtherAlbums()
{
    add("on a compilation", song("Ida Marlowe", "Midnight Ferry", 201, "Best of the Decade"), ferry, true);
    add("on a compilation called a mix", song("Ida Marlowe", "Midnight Ferry", 201, "The Summer Mix"), ferry,
        true);
    add("a typo on a compilation", song("Ida Marlow", "Midnight Fery", 205, "Best of the Decade"), ferry,
        false);
    add("an edition of the album",
        song("Ida Marlowe", "Midnight Ferry", 200, "Paper Lanterns (Deluxe Edition) [Disc 1]"),
        unmeasuredFerry(), true);
}

void addConcerts()
{
    const FoundRecording live =
        recording("Ida Marlowe", "Midnight Ferry", 200, "Lanterns at the Pier", "live, 2013-06-01: Pier");
    const SongHints liveSong = song("Ida Marlowe", "Midnight Ferry (Live)", 200, "Lanterns at the Pier");
    add("live is not the studio's", own, live, false);
    add("the studio's is not live", liveSong, ferry, false);
    add("the concert of the album", liveSong, live, true);
    add("a concert of an album that says nothing",
        song("Ida Marlowe", "Midnight Ferry", 200, "Lanterns at the Pier"),
        onConcertAlbum(recording("Ida Marlowe", "Midnight Ferry", 200, "Lanterns at the Pier")), true);
    add("a concert by its release alone", own,
        onConcertAlbum(recording("Ida Marlowe", "Midnight Ferry", 200, "Lanterns at the Pier")), false);
    add("some concert", song("Ida Marlowe", "Midnight Ferry (Live)", 200), live, false);
    add("another concert", song("Ida Marlowe", "Midnight Ferry (Live)", 200, "Live in Oslo"), live, false);
    add("the studio's on an album called live", song("Ida Marlowe", "Midnight Ferry", 200, "Live in Oslo"),
        ferry, false);
    add("a live album of the same name", song("Ida Marlowe", "Midnight Ferry", 200, "Paper Lanterns (Live)"),
        ferry, false);
}

void addOtherVersions()
{
    const FoundRecording remix = recording("Ida Marlowe", "Midnight Ferry (Sailor Remix)", 200, "Remixes");
    add("the remix", song("Ida Marlowe", "Midnight Ferry (Sailor remix)", 200), remix, true);
    add("a remix is not the song", own, remix, false);
    add("the song is not a remix", song("Ida Marlowe", "Midnight Ferry (Sailor Remix)", 200), ferry, false);
    add("another's remix", song("Ida Marlowe", "Midnight Ferry (Captain Remix)", 200), remix, false);
    add("a demo", own, recording("Ida Marlowe", "Midnight Ferry", 200, "", "demo"), false);
    add("the demo", song("Ida Marlowe", "Midnight Ferry (Demo)", 200),
        recording("Ida Marlowe", "Midnight Ferry", 200, "", "demo"), true);
    add("karaoke", own, recording("Ida Marlowe", "Midnight Ferry (karaoke)", 200), false);
    add("a comment that says nothing", own,
        recording("Ida Marlowe", "Midnight Ferry", 200, "Paper Lanterns", "stereo mix"), true);
}

void addOtherScripts()
{
    add("another script", song("Чайковский", "Вальс цветов", 400),
        recording("Чайковский", "Вальс цветов", 400), true);
    FoundRecording known = recording("Пётр Ильич Чайковский", "Вальс цветов", 400);
    known.artists.emplace_back("Tchaikovsky");
    add("by an alias", song("Tchaikovsky", "Вальс цветов", 400), known, true);
    add("signs alone", song("!!!", "?", 200), recording("!!!", "?", 200), true);
}
} // namespace

class TestJudging : public QObject
{
    Q_OBJECT

private slots:
    void titlesAreTakenApart();
    void aRecordingIsTheOneOrNot_data();
    void aRecordingIsTheOneOrNot();
    void theBestOneIsChosen();
    void tiesAreForTheBestRelease();
    void noRecordingIsNone();
};

void TestJudging::titlesAreTakenApart()
{
    QCOMPARE(plain("Midnight Ferry (2011 Remaster)"), QString("midnight ferry"));
    QCOMPARE(plain("Midnight Ferry - Remastered 2011"), QString("midnight ferry"));
    QCOMPARE(plain("Midnight Ferry [Explicit] (feat. X)"), QString("midnight ferry"));
    QCOMPARE(plain("Midnight Ferry ft. Somebody"), QString("midnight ferry"));
    QCOMPARE(plain("Midnight Ferry (Original Mix)"), QString("midnight ferry"));
    QCOMPARE(plain("Midnight Ferry (Live at the Pier)"), QString("midnight ferry"));
    QCOMPARE(plain("Midnight Ferry (Sailor Remix)"), QString("midnight ferry sailor remix"));
    QCOMPARE(plain("(I Can't Find No) Midnight Ferry"), QString("i cant find no midnight ferry"));
    QCOMPARE(plain("Midnight Ferry - The Way Home"), QString("midnight ferry the way home"));
    QCOMPARE(plain("Midnight Ferry (Ida's Version)"), QString("midnight ferry idas version"));
    QCOMPARE(plain("Midnight Ferry, Part II"), QString("midnight ferry part 2"));
    QCOMPARE(plain("Live and Let Ferry"), QString("live and let ferry"));
    QCOMPARE(plain("(Live)"), QString("live"));
    QCOMPARE(plain("Feat"), QString("feat"));
    QCOMPARE(plain("Half (a bracket"), QString("half a bracket"));
    QCOMPARE(plain(""), QString());
    using audiocore::Version;
    QCOMPARE(audiocore::songTitle("A (Acoustic) - Live").versions,
             (std::set<Version>{Version::Live, Version::Acoustic}));
    QVERIFY(audiocore::songTitle("Live and Let Ferry").versions.empty());
    QVERIFY(audiocore::songTitle("A (Stereo Mix)").versions.empty());
}

void TestJudging::aRecordingIsTheOneOrNot_data()
{
    QTest::addColumn<SongHints>("hints");
    QTest::addColumn<FoundRecording>("found");
    QTest::addColumn<bool>("isTheOne");
    addSpellings();
    addLengths();
    addOtherArtists();
    addOtherAlbums();
    addConcerts();
    addOtherVersions();
    addOtherScripts();
}

void TestJudging::aRecordingIsTheOneOrNot()
{
    QFETCH(SongHints, hints);
    QFETCH(FoundRecording, found);
    QFETCH(bool, isTheOne);
    const double fit = audiocore::fitOf(found, hints);
    QVERIFY(fit >= 0 && fit <= 1);
    QVERIFY2((audiocore::chooseFitting({found}, hints) != nullptr) == isTheOne,
             qPrintable(QString::number(fit)));
}

void TestJudging::theBestOneIsChosen()
{
    const SongHints hints = song("Ida Marlowe", "Midnight Ferry", 200, "Paper Lanterns");
    const auto found = [](const char* id, int seconds, const char* album, const Release::Rank& rank) {
        return on(recording("Ida Marlowe", "Midnight Ferry", seconds, album), id, rank);
    };
    QCOMPARE(
        chosen({found("far", 206, "Paper Lanterns", album), found("near", 200, "Paper Lanterns", laterAlbum)},
               hints),
        QString("near"));
    QCOMPARE(
        chosen({found("elsewhere", 200, "Ferries", album), found("here", 200, "Paper Lanterns", bootleg)},
               hints),
        QString("here"));
    // The service's own order counts for little.
    FoundRecording first = found("first", 206, "Ferries", album);
    FoundRecording last = found("last", 200, "Paper Lanterns", laterAlbum);
    last.score = 0.5;
    QCOMPARE(chosen({first, last}, hints), QString("last"));
}

void TestJudging::tiesAreForTheBestRelease()
{
    const SongHints hints = song("Ida Marlowe", "Midnight Ferry", 200);
    const auto found = [](const char* id, const Release::Rank& rank, int seconds = 200) {
        return on(recording("Ida Marlowe", "Midnight Ferry", seconds), id, rank);
    };
    FoundRecording unreleased = recording("Ida Marlowe", "Midnight Ferry", 200);
    QCOMPARE(chosen({unreleased, found("bootleg", bootleg)}, hints), QString("bootleg"));
    QCOMPARE(chosen({found("bootleg", bootleg), found("compilation", compilation)}, hints),
             QString("compilation"));
    QCOMPARE(
        chosen({found("compilation", compilation), found("later", laterAlbum), found("album", album)}, hints),
        QString("album"));
    QCOMPARE(chosen({found("later", laterAlbum), found("album", album, 202)}, hints), QString("album"));
    QCOMPARE(chosen({found("two seconds", album, 202), found("one", album, 201)}, hints), QString("one"));
    QCOMPARE(chosen({unreleased}, hints), QString("Midnight Ferry"));
}

void TestJudging::noRecordingIsNone()
{
    QCOMPARE(chosen({}, song("Ida Marlowe", "Midnight Ferry", 200)), QString("none"));
    QCOMPARE(chosen({FoundRecording()}, SongHints()), QString("none"));
}

QTEST_APPLESS_MAIN(TestJudging)
#include "tst_judging.moc"
