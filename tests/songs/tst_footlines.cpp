#include "audiocore/iaudioidentifier.h"
#include "songs/footlines.h"
#include "songs/identifywords.h"

#include <QtTest>

using FootLines::SideEffect;

namespace {
const QString ferry = QStringLiteral("Midnight Ferry");
}

/// The words themselves.
class TestFootLines : public QObject
{
    Q_OBJECT

private slots:
    void aSavedSong();
    void whatElseASaveChanged_data();
    void whatElseASaveChanged();
    void longTextsAreCutShort();
    void aSongThatWasLeft();
    void aCoverThatIsNotTaken();
    void whatIsTakenBack();
    void aSaveThatFailed_data();
    void aSaveThatFailed();
    void aTrackThatWasNotSaved_data();
    void aTrackThatWasNotSaved();
    void deletions_data();
    void deletions();
    void tracksTakenOut();
    void intakes_data();
    void intakes();
    void intakesThatTheUserEnded();
    void whatCannotBeOpened();
    void scansThatFoundNothing();
    void identifications_data();
    void identifications();
    void whatAKeyAddsIsSaidOnce();
};

void TestFootLines::aSavedSong()
{
    QCOMPARE(FootLines::saved(ferry), QString("Saved \"Midnight Ferry\"."));
    QCOMPARE(FootLines::savedWithoutCover(ferry),
             QString("Saved \"Midnight Ferry\" without the new cover: it is too large for the file."));
}

void TestFootLines::whatElseASaveChanged_data()
{
    QTest::addColumn<int>("field");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("line");
    QTest::newRow("cover") << int(SideEffect::Cover) << ""
                           << ""
                           << "its cover was taken out";
    QTest::newRow("another picture") << int(SideEffect::OtherPictures) << "1"
                                     << ""
                                     << "its other picture was taken out";
    QTest::newRow("other pictures") << int(SideEffect::OtherPictures) << "1,200"
                                    << ""
                                    << "its 1,200 other pictures were taken out";
    QTest::newRow("genre") << int(SideEffect::Genre) << "Électro"
                           << "Pop"
                           << "its genre changed from Électro to Pop";
    QTest::newRow("genre that went") << int(SideEffect::Genre) << "Électro"
                                     << ""
                                     << "its genre Électro was taken out";
    QTest::newRow("genre that came") << int(SideEffect::Genre) << ""
                                     << "Pop"
                                     << "its genre was set to Pop";
    QTest::newRow("title") << int(SideEffect::Title) << "A"
                           << "B"
                           << "its title changed from A to B";
    QTest::newRow("artist") << int(SideEffect::Artist) << "A"
                            << "B"
                            << "its artist changed from A to B";
    QTest::newRow("album") << int(SideEffect::Album) << "A"
                           << "B"
                           << "its album changed from A to B";
    QTest::newRow("year") << int(SideEffect::Year) << "1999"
                          << "2001"
                          << "its year changed from 1999 to 2001";
    QTest::newRow("track") << int(SideEffect::Track) << "3"
                           << "4"
                           << "its track number changed from 3 to 4";
}

void TestFootLines::whatElseASaveChanged()
{
    QFETCH(int, field);
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(QString, line);
    const SideEffect effect{SideEffect::Field(field), before, after};
    QCOMPARE(FootLines::saved(ferry, {effect}), QString("Saved \"Midnight Ferry\"; %1.").arg(line));
    const SideEffect cover{SideEffect::Cover, {}, {}};
    QCOMPARE(FootLines::saved(ferry, {cover, effect}),
             QString("Saved \"Midnight Ferry\"; its cover was taken out, %1.").arg(line));
}

void TestFootLines::longTextsAreCutShort()
{
    const QString longText(200, QLatin1Char('x'));
    QCOMPARE(FootLines::saved(longText), QString("Saved \"%1...\".").arg(QString(57, QLatin1Char('x'))));
    QCOMPARE(FootLines::saved(ferry, {{SideEffect::Genre, longText, "Pop"}}),
             QString("Saved \"Midnight Ferry\"; its genre changed from %1... to Pop.")
                 .arg(QString(27, QLatin1Char('x'))));
}

void TestFootLines::aSongThatWasLeft()
{
    QCOMPARE(FootLines::leftWithoutSaving(ferry), QString("Left \"Midnight Ferry\" without saving."));
}

void TestFootLines::aCoverThatIsNotTaken()
{
    QCOMPARE(FootLines::coverNotTaken("big.png", "it is too large"),
             QString("\"big.png\" is not taken as the cover: it is too large."));
}

void TestFootLines::whatIsTakenBack()
{
    QCOMPARE(FootLines::nameOfEdit(ferry), QString("the edit of \"Midnight Ferry\""));
    QCOMPARE(FootLines::nameOfDeletion(2000), QString("the deletion of 2,000 songs"));
    QCOMPARE(FootLines::editTakenBack(ferry), QString("Took back the edit of \"Midnight Ferry\"."));
    QCOMPARE(FootLines::editTakenBack(ferry, 1),
             QString("Took back the edit of \"Midnight Ferry\"; 1 of its pictures stays out."));
    QCOMPARE(FootLines::editTakenBack(ferry, 2),
             QString("Took back the edit of \"Midnight Ferry\"; 2 of its pictures stay out."));
    QCOMPARE(FootLines::editNotTakenBack(ferry, "the file is gone"),
             QString("The edit of \"Midnight Ferry\" cannot be taken back: the file is gone."));
    QCOMPARE(FootLines::tracksBack(1), QString("1 track is back in the library."));
    QCOMPARE(FootLines::tracksBack(1200), QString("1,200 tracks are back in the library."));
    QCOMPARE(FootLines::takingOutNotTakenBack(2, "it is too long ago"),
             QString("The deletion of 2 tracks cannot be taken back: it is too long ago."));
    QCOMPARE(FootLines::broughtBack({1, 0, {}, {}}), QString("1 song is back from the trash."));
    QCOMPARE(FootLines::broughtBack({1200, 0, {}, {}}), QString("1,200 songs are back from the trash."));
    QCOMPARE(FootLines::broughtBack({0, 1, "b.mp3", "it is gone"}),
             QString("1 file could not be brought back: \"b.mp3\" (it is gone)."));
    QCOMPARE(FootLines::broughtBack({2, 3, "b.mp3", "it is gone"}),
             QString("2 songs are back from the trash. 3 files could not be brought back: \"b.mp3\" (it is "
                     "gone) and 2 more."));
}

void TestFootLines::aSaveThatFailed_data()
{
    QTest::addColumn<int>("problem");
    QTest::addColumn<QString>("reason");
    const auto row = [](SaveProblem problem, const char* reason) {
        QTest::newRow(reason) << int(problem) << reason;
    };
    row(SAVE_FILE_READ_ONLY, "the file is read-only");
    row(SAVE_FOLDER_READ_ONLY, "the folder is read-only");
    row(SAVE_DISK_READ_ONLY, "the disk is read-only");
    row(SAVE_NO_PERMISSION, "you have no permission to write it");
    row(SAVE_DISK_FULL, "the disk is full");
    row(SAVE_CHANGED_MEANWHILE, "another program changed it meanwhile");
    row(SAVE_FILE_GONE, "the file is gone");
    row(SAVE_NOT_SAFE, "the file cannot be written safely");
    row(SAVE_PICTURE_TOO_LARGE, "the new cover is too large for the file");
    row(SAVE_OTHER_PROBLEM, "the log tells why");
}

void TestFootLines::aSaveThatFailed()
{
    QFETCH(int, problem);
    QFETCH(QString, reason);
    QCOMPARE(FootLines::notSaved(ferry, SaveProblem(problem)),
             QString("\"Midnight Ferry\" could not be saved: %1.").arg(reason));
}

void TestFootLines::aTrackThatWasNotSaved_data()
{
    QTest::addColumn<int>("problem");
    QTest::addColumn<QString>("reason");
    const auto row = [](iTunesEditProblem problem, const char* reason) {
        QTest::newRow(reason) << int(problem) << reason;
    };
    row(ITUNES_TRACK_GONE, "the track is no longer in the library");
    row(ITUNES_TRACK_AMBIGUOUS, "several tracks of the library have its identifier");
    row(ITUNES_TRACK_WITHOUT_FILE, "the track has no file on this computer");
    row(ITUNES_PICTURE_UNREADABLE, "the chosen picture cannot be read");
    row(ITUNES_MEDIA_NOT_SAVED, "the file is gone");
    row(ITUNES_LIBRARY_IN_USE, "another program is changing the library");
    row(ITUNES_LIBRARY_BROKEN, "the library file is broken");
    row(ITUNES_LIBRARY_READ_ONLY, "the library file is read-only");
    row(ITUNES_LIBRARY_FOLDER_READ_ONLY, "the folder of the library is read-only");
    row(ITUNES_LIBRARY_DISK_READ_ONLY, "the disk of the library is read-only");
    row(ITUNES_LIBRARY_NO_PERMISSION, "you have no permission to change the library");
    row(ITUNES_LIBRARY_DISK_FULL, "the disk of the library is full");
    row(ITUNES_LIBRARY_GONE, "the library file is gone");
    row(ITUNES_CHANGED_SINCE, "another program made changes since");
    row(ITUNES_NOT_KEPT, "it is too long ago");
    row(ITUNES_LIBRARY_OTHER_PROBLEM, "the log tells why");
}

void TestFootLines::aTrackThatWasNotSaved()
{
    QFETCH(int, problem);
    QFETCH(QString, reason);
    QCOMPARE(FootLines::notSaved(ferry, iTunesEditProblem(problem), SAVE_FILE_GONE),
             QString("\"Midnight Ferry\" could not be saved: %1.").arg(reason));
}

void TestFootLines::deletions_data()
{
    QTest::addColumn<int>("toTrash");
    QTest::addColumn<int>("forGood");
    QTest::addColumn<QString>("why");
    QTest::addColumn<int>("stayed");
    QTest::addColumn<QString>("line");
    const QString noTrash = "there is no trash on that disk";
    const QString stays = "\"Midnight Ferry\" (it is gone)";
    QTest::newRow("nothing") << 0 << 0 << "" << 0 << "";
    QTest::newRow("trash") << 3 << 0 << "" << 0 << "3 songs moved to the trash.";
    QTest::newRow("one") << 1 << 0 << "" << 0 << "1 song moved to the trash.";
    QTest::newRow("for good") << 0 << 2 << noTrash << 0
                              << "2 songs deleted for good: there is no trash on that disk.";
    QTest::newRow("for good, no more said") << 0 << 2000 << "" << 0 << "2,000 songs deleted for good.";
    QTest::newRow("stayed") << 0 << 0 << "" << 1 << "1 file could not be deleted: " + stays + '.';
    QTest::newRow("more stayed") << 0 << 0 << "" << 4
                                 << "4 files could not be deleted: " + stays + " and 3 more.";
    QTest::newRow("all at once") << 3 << 1 << noTrash << 1
                                 << "3 songs moved to the trash. 1 song deleted for good: there is no trash "
                                    "on that disk. 1 file could not be deleted: " +
                                        stays + '.';
}

void TestFootLines::deletions()
{
    QFETCH(int, toTrash);
    QFETCH(int, forGood);
    QFETCH(QString, why);
    QFETCH(int, stayed);
    QFETCH(QString, line);
    QCOMPARE(FootLines::deleted({toTrash, forGood, why, stayed, ferry, "it is gone"}), line);
}

void TestFootLines::tracksTakenOut()
{
    QCOMPARE(FootLines::takenOut({}), QString());
    QCOMPARE(FootLines::takenOut({12, 0, {}}),
             QString("12 tracks taken out of the library; their files stay."));
    QCOMPARE(FootLines::takenOut({1, 0, {}}), QString("1 track taken out of the library; its file stays."));
    QCOMPARE(
        FootLines::takenOut({1, 1, ferry, ITUNES_LIBRARY_IN_USE}),
        QString("1 track taken out of the library; its file stays. 1 track could not be taken out of the "
                "library: \"Midnight Ferry\" (another program is changing the library)."));
    QCOMPARE(FootLines::takenOut({0, 3, ferry, ITUNES_TRACK_GONE}),
             QString("3 tracks could not be taken out of the library: \"Midnight Ferry\" (the track is no "
                     "longer in the library) and 2 more."));
}

void TestFootLines::intakes_data()
{
    QTest::addColumn<int>("files");
    QTest::addColumn<int>("unreadable");
    QTest::addColumn<int>("windowsMedia");
    QTest::addColumn<QString>("line");
    QTest::newRow("all well") << 2000 << 0 << 0 << "";
    QTest::newRow("both") << 2000 << 3 << 87
                          << "3 of 2,000 files could not be read, 87 WMA files were left out (add them with "
                             "Ctrl+O).";
    QTest::newRow("unreadable") << 2000 << 1 << 0 << "1 of 2,000 files could not be read.";
    QTest::newRow("the only one") << 1 << 1 << 0 << "1 of 1 file could not be read.";
    QTest::newRow("WMA") << 0 << 0 << 1 << "1 WMA file was left out (add it with Ctrl+O).";
}

void TestFootLines::intakes()
{
    QFETCH(int, files);
    QFETCH(int, unreadable);
    QFETCH(int, windowsMedia);
    QFETCH(QString, line);
    QCOMPARE(FootLines::takenIn({files, unreadable, windowsMedia}), line);
}

void TestFootLines::intakesThatTheUserEnded()
{
    FootLines::Intake intake;
    intake.ended = true;
    QCOMPARE(FootLines::takenIn(intake), QString("Stopped: no file was added."));
    intake.files = 1234;
    intake.wanted = 95650;
    QCOMPARE(FootLines::takenIn(intake), QString("Stopped: 1,234 of 95,650 files were added."));
    intake.windowsMedia = 2;
    QCOMPARE(FootLines::takenIn(intake),
             QString("Stopped: 1,234 of 95,650 files were added. 2 WMA files were "
                     "left out (add them with Ctrl+O)."));
}

void TestFootLines::whatCannotBeOpened()
{
    QCOMPARE(FootLines::noOpener(FootLines::Opened::Folder),
             QString("No program was found that opens folders."));
    QCOMPARE(FootLines::noOpener(FootLines::Opened::WebPage),
             QString("No program was found that opens web pages."));
    QCOMPARE(FootLines::noOpener(FootLines::Opened::HelpPage),
             QString("No program was found that opens help pages."));
    QCOMPARE(FootLines::noSoundDevice(), QString("There is no sound device: the song runs silently."));
}

void TestFootLines::scansThatFoundNothing()
{
    QCOMPARE(FootLines::nothingScanned(ITUNES_READ), QString());
    QCOMPARE(FootLines::nothingScanned(ITUNES_NO_LIBRARY), QString("No library file was found."));
    QCOMPARE(FootLines::nothingScanned(ITUNES_BROKEN, 1204),
             QString("The library file is broken (line 1,204)."));
    QCOMPARE(FootLines::nothingScanned(ITUNES_EMPTY), QString("The library file is empty."));
    QCOMPARE(FootLines::nothingScanned(ITUNES_UNREADABLE), QString("The library file cannot be read."));
}

void TestFootLines::identifications_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("says");
    QTest::newRow("no match") << int(IDENTIFY_NO_MATCH) << "no such recording";
    QTest::newRow("no file") << int(IDENTIFY_NO_FILE) << "cannot be read";
    QTest::newRow("no audio") << int(IDENTIFY_NO_AUDIO) << "no sound";
    QTest::newRow("too short") << int(IDENTIFY_TOO_SHORT) << "too short";
    QTest::newRow("no key") << int(IDENTIFY_NO_KEY) << "fits its tags";
    QTest::newRow("bad address") << int(IDENTIFY_BAD_ADDRESS) << "not safe";
    QTest::newRow("no network") << int(IDENTIFY_NO_CONNECTION) << "no connection";
    QTest::newRow("refused") << int(IDENTIFY_REFUSED) << "refused";
    QTest::newRow("not understood") << int(IDENTIFY_NOT_UNDERSTOOD) << "no sense";
    QTest::newRow("no memory") << int(IDENTIFY_NO_MEMORY) << "memory";
    QTest::newRow("not run") << int(IDENTIFY_NOT_RUN) << "nothing to identify songs with";
}

void TestFootLines::identifications()
{
    QFETCH(int, status);
    QFETCH(QString, says);
    const QString line = FootLines::notIdentified(status);
    QVERIFY2(line.startsWith("Not identified: ") && line.contains(says) && line.endsWith('.'),
             qPrintable(line));
    QCOMPARE(FootLines::identified(IDENTIFY_FOUND), QString("Identified by sound."));
    QCOMPARE(FootLines::identified(IDENTIFY_FOUND_BY_TAGS), QString("Identified by its tags: please check."));
    for (const int silent : {IDENTIFY_FOUND, IDENTIFY_FOUND_BY_TAGS, IDENTIFY_CANCELLED})
        QCOMPARE(FootLines::notIdentified(silent), QString());
}

void TestFootLines::whatAKeyAddsIsSaidOnce()
{
    const QString offer = FootLines::keyOffer();
    QVERIFY(offer.contains("https://acoustid.org/new-application") && offer.endsWith('.'));
    for (const int status : {IDENTIFY_FOUND_BY_TAGS, IDENTIFY_NO_KEY}) {
        IdentifyWords words;
        QCOMPARE(words.of(IDENTIFY_FOUND_BY_TAGS, true).text, FootLines::identified(IDENTIFY_FOUND_BY_TAGS));
        QVERIFY(!words.of(IDENTIFY_NO_CONNECTION, false).text.contains(offer));
        const FootText first = words.of(status, false);
        QVERIFY2(first.text.endsWith(' ' + offer), qPrintable(first.text));
        QCOMPARE(first.failed, status == IDENTIFY_NO_KEY);
        for (const int later : {IDENTIFY_FOUND_BY_TAGS, IDENTIFY_NO_KEY})
            QVERIFY(!words.of(later, false).text.contains(offer));
    }
}

QTEST_APPLESS_MAIN(TestFootLines)
#include "tst_footlines.moc"
