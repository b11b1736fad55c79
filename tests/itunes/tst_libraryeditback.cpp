#include "audiocore/saveproblem.h"
#include "audiocore/tagitem.h"
#include "itunes/editproblem.h"
#include "itunes/takeback.h"
#include "library/keptedits.h"
#include "songlibrary.h"

#include <QtTest>

#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

using Fixtures::ITunesTrack;
using itunes::KeptEdit;
using itunes::KeptEdits;
using LibraryCalls::contentOf;
using LibraryCalls::Edit;

class TestLibraryEditBack : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void valuesAndArtworkComeBack_data();
    void valuesAndArtworkComeBack();
    void everyFormatHasItsOwnBack_data();
    void everyFormatHasItsOwnBack();
    void fieldsThatWereNotThereGoAgain();
    void editsComeBackOneAfterTheOther();
    void editAndDeletionComeBack();
    void anEditOfNothingIsNone();
    void theNextEditKnowsTheValues();
    void whatOthersWroteStays_data();
    void whatOthersWroteStays();
    void aMediaFileThatCannotBeWrittenKeepsTheEdit();
    void whatIsNotKnownStays();
    void aReversalThatWasBegunIsDoneOrNot_data();
    void aReversalThatWasBegunIsDoneOrNot();
    void aHundredEditsAreKept();
    void picturesAreKeptUpToABound();

private:
    Edit editWithCover(int number);
    void writeNow();

    std::unique_ptr<SongLibrary> m_songs;
};

void TestLibraryEditBack::init()
{
    m_songs = std::make_unique<SongLibrary>();
}

void TestLibraryEditBack::cleanup()
{
    closeITunesLibrary();
    QVERIFY2(m_songs->temporaries().isEmpty(), qPrintable(m_songs->temporaries().join(' ')));
    m_songs.reset();
    AudioFile::takeLog();
}

Edit TestLibraryEditBack::editWithCover(int number)
{
    Edit edit;
    edit.name = "Name " + QByteArray::number(number);
    edit.cover = Fixtures::writeLibrary(m_songs->inFolder(QString("cover%1.jpg").arg(number)),
                                        Fixtures::jpeg(50 + number, 50, 3));
    return edit;
}

void TestLibraryEditBack::writeNow()
{
    launchiTunes();
    QTRY_VERIFY(!QFile::exists(m_songs->journal()));
}

void TestLibraryEditBack::valuesAndArtworkComeBack_data()
{
    QTest::addColumn<bool>("hadPicture");
    QTest::addColumn<bool>("written");
    QTest::newRow("a picture, waiting") << true << false;
    QTest::newRow("a picture, written") << true << true;
    QTest::newRow("no picture, waiting") << false << false;
    QTest::newRow("no picture, written") << false << true;
}

/// The media file says something else than the library, and has that back.
void TestLibraryEditBack::valuesAndArtworkComeBack()
{
    QFETCH(bool, hadPicture);
    QFETCH(bool, written);
    m_songs->makeSongs(3, 1);
    const QByteArray picture = Fixtures::jpeg(90, 90, 5);
    QCOMPARE(AudioFile::write(m_songs->media(0), {{TAG_TITLE, "Its own"}, {TAG_YEAR, "1987-05-01"}},
                              hadPicture ? &picture : nullptr),
             0);
    const AudioFile::Content media = AudioFile::read(m_songs->media(0));
    const QByteArray before = m_songs->content();
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), editWithCover(1)), 0);
    if (written)
        writeNow();
    QVERIFY(AudioFile::read(m_songs->media(0)).picture != media.picture);
    QCOMPARE(int(takeBackEdit(m_songs->id(0))), 1);
    QCOMPARE(iTunesLastEditProblem(), ITUNES_EDIT_DONE);
    const AudioFile::Content after = AudioFile::read(m_songs->media(0));
    QCOMPARE(after.texts, media.texts);
    QCOMPARE(after.picture, hadPicture ? picture : QByteArray());
    QCOMPARE(LibraryCalls::names(LibraryCalls::read()).value(0), QString::fromUtf8(m_songs->tracks[0].name));
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), before);
    QVERIFY(!QFile::exists(m_songs->journal()));
    QVERIFY(AudioFile::takeLog().isEmpty());
}

void TestLibraryEditBack::everyFormatHasItsOwnBack_data()
{
    QTest::addColumn<QString>("kind");
    for (const QString& kind : Fixtures::formats())
        QTest::newRow(qPrintable(kind)) << kind;
}

void TestLibraryEditBack::everyFormatHasItsOwnBack()
{
    QFETCH(QString, kind);
    const QString file = Fixtures::copyTone(kind, m_songs->folder(), "song");
    const QByteArray picture = Fixtures::jpeg(70, 70, 2);
    QCOMPARE(AudioFile::write(file, {{TAG_TITLE, "Own"}, {TAG_GENRE, "Own genre"}}, &picture), 0);
    const AudioFile::Content media = AudioFile::read(file);
    m_songs->make(Fixtures::itunesLibrary({Fixtures::itunesTrack(0, file)}));
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), editWithCover(2)), 0);
    QVERIFY(AudioFile::read(file).texts != media.texts);
    QCOMPARE(int(takeBackEdit(m_songs->id(0))), 1);
    QCOMPARE(AudioFile::read(file).texts, media.texts);
    QCOMPARE(AudioFile::read(file).picture, picture);
}

void TestLibraryEditBack::fieldsThatWereNotThereGoAgain()
{
    ITunesTrack track = Fixtures::itunesTrack(0, Fixtures::copyTone("mp3", m_songs->folder(), "song0"));
    track.genre = track.album = QByteArray();
    track.year = 0;
    const QByteArray before = Fixtures::itunesLibrary({track});
    m_songs->make(before);
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), Edit()), 0);
    writeNow();
    QVERIFY(m_songs->content().contains("<key>Genre</key>"));
    QCOMPARE(int(takeBackEdit(m_songs->id(0))), 1);
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), before);
    QVERIFY(AudioFile::read(m_songs->media(0)).texts.isEmpty());
}

void TestLibraryEditBack::editsComeBackOneAfterTheOther()
{
    m_songs->makeSongs(3, 2);
    const QByteArray before = m_songs->content();
    for (const int number : {1, 2, 3})
        QCOMPARE(LibraryCalls::edit(m_songs->id(0), editWithCover(number)), 0);
    QCOMPARE(LibraryCalls::edit(m_songs->id(1), editWithCover(4)), 0);
    for (const int number : {2, 1}) {
        QCOMPARE(int(takeBackEdit(m_songs->id(0))), 1);
        const AudioFile::Content media = AudioFile::read(m_songs->media(0));
        QCOMPARE(media.texts.value(TAG_TITLE), QString("Name %1").arg(number));
        QCOMPARE(media.picture, Fixtures::jpeg(50 + number, 50, 3));
    }
    writeNow();
    QCOMPARE(int(takeBackEdit(m_songs->id(1))), 1);
    QCOMPARE(int(takeBackEdit(m_songs->id(0))), 1);
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), before);
    for (const int song : {0, 1}) {
        QVERIFY(AudioFile::read(m_songs->media(song)).texts.isEmpty());
        QVERIFY(AudioFile::read(m_songs->media(song)).picture.isEmpty());
    }
}

void TestLibraryEditBack::editAndDeletionComeBack()
{
    m_songs->makeSongs(3, 1);
    const QByteArray before = m_songs->content();
    const uint64_t id = m_songs->id(0);
    QCOMPARE(LibraryCalls::edit(id, editWithCover(1)), 0);
    QCOMPARE(int(deleteMusic(id)), 1);
    writeNow();
    QCOMPARE(int(takeBackDeletions(&id, 1)), 1);
    QCOMPARE(int(takeBackEdit(id)), 1);
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), before);
    QVERIFY(AudioFile::read(m_songs->media(0)).texts.isEmpty());
}

/// The one before it is the last one still.
void TestLibraryEditBack::anEditOfNothingIsNone()
{
    m_songs->makeSongs(2, 1);
    const QByteArray before = m_songs->content();
    const ITunesTrack& track = m_songs->tracks.at(0);
    const Edit same{track.name, track.album, track.artist, track.genre, int(track.year), QString()};
    Edit picture = same;
    picture.cover = editWithCover(1).cover;
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), picture), 0);
    QVERIFY(canTakeBackEdit());
    for (const Edit& nothing : {same, picture}) {
        QCOMPARE(LibraryCalls::edit(m_songs->id(0), nothing), 0);
        QVERIFY(!canTakeBackEdit());
    }
    QCOMPARE(int(takeBackEdit(m_songs->id(0))), 1);
    QVERIFY(!canTakeBackEdit());
    QCOMPARE(int(takeBackEdit(m_songs->id(0))), 0);
    QVERIFY(AudioFile::read(m_songs->media(0)).picture.isEmpty());
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), before);
}

void TestLibraryEditBack::theNextEditKnowsTheValues()
{
    m_songs->makeSongs(2, 1);
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), Edit()), 0);
    QCOMPARE(int(takeBackEdit(m_songs->id(0))), 1);
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), Edit()), 0);
    closeITunesLibrary();
    QCOMPARE(LibraryCalls::names(LibraryCalls::read(m_songs->path())).value(0), QString("New name"));
    QCOMPARE(AudioFile::read(m_songs->media(0)).texts.value(TAG_TITLE), QString("New name"));
}

void TestLibraryEditBack::whatOthersWroteStays_data()
{
    QTest::addColumn<bool>("media");
    QTest::newRow("the media file") << true;
    QTest::newRow("the library") << false;
}

void TestLibraryEditBack::whatOthersWroteStays()
{
    QFETCH(bool, media);
    m_songs->makeSongs(3, 1);
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), editWithCover(1)), 0);
    writeNow();
    if (media) {
        QCOMPARE(AudioFile::write(m_songs->media(0), {{TAG_TITLE, "By another program"}}, nullptr), 0);
    } else {
        QByteArray theirs = m_songs->content();
        theirs.replace(m_songs->tracks.at(2).name, "By another program");
        Fixtures::writeLibrary(m_songs->path(), theirs);
    }
    const QByteArray library = m_songs->content();
    const QByteArray song = contentOf(m_songs->media(0));
    AudioFile::takeLog();
    QCOMPARE(int(takeBackEdit(m_songs->id(0))), 0);
    QCOMPARE(iTunesLastEditProblem(), ITUNES_CHANGED_SINCE);
    QCOMPARE(AudioFile::takeLog().size(), 1);
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), library);
    QCOMPARE(contentOf(m_songs->media(0)), song);
}

void TestLibraryEditBack::aMediaFileThatCannotBeWrittenKeepsTheEdit()
{
    m_songs->makeSongs(3, 1);
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), editWithCover(1)), 0);
    writeNow();
    const QByteArray library = m_songs->content();
    const QByteArray song = contentOf(m_songs->media(0));
    AudioFile::takeLog();
    {
        const Interposed::Guard guard;
        Interposed::accessFails = [](const char* name) {
            return QByteArray(name).endsWith(".mp3") ? EROFS : 0;
        };
        QCOMPARE(int(takeBackEdit(m_songs->id(0))), 0);
    }
    QCOMPARE(iTunesLastEditProblem(), ITUNES_MEDIA_NOT_SAVED);
    QVERIFY(iTunesMediaProblem() != SAVE_NO_PROBLEM);
    QCOMPARE(AudioFile::takeLog().size(), 1);
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), library);
    QCOMPARE(contentOf(m_songs->media(0)), song);
    QVERIFY(!QFile::exists(m_songs->journal()));
}

void TestLibraryEditBack::whatIsNotKnownStays()
{
    m_songs->makeSongs(2, 1);
    QVERIFY(LibraryCalls::edit(m_songs->id(1), Edit()) != 0); // there is no such file
    AudioFile::takeLog();
    for (const uint64_t id : {m_songs->id(0), m_songs->id(1), Q_UINT64_C(77)}) {
        QCOMPARE(int(takeBackEdit(id)), 0);
        QCOMPARE(iTunesLastEditProblem(), ITUNES_NOT_KEPT);
        QCOMPARE(AudioFile::takeLog().size(), 1);
    }
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), Edit()), 0);
    QVERIFY(takeBackBytes() > 0);
    LibraryCalls::read();
    QCOMPARE(takeBackBytes(), uint64_t(0));
    QCOMPARE(int(takeBackEdit(m_songs->id(0))), 0);
    QCOMPARE(AudioFile::read(m_songs->media(0)).texts.value(TAG_TITLE), QString("New name"));
}

void TestLibraryEditBack::aReversalThatWasBegunIsDoneOrNot_data()
{
    QTest::addColumn<bool>("mediaIsWritten");
    QTest::newRow("the media file is written") << true;
    QTest::newRow("it is not") << false;
}

/// As a kill in between leaves it.
void TestLibraryEditBack::aReversalThatWasBegunIsDoneOrNot()
{
    QFETCH(bool, mediaIsWritten);
    m_songs->makeSongs(3, 1);
    const QByteArray before = m_songs->content();
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), editWithCover(1)), 0);
    writeNow();
    const QByteArray edited = m_songs->content();
    const QString song = m_songs->media(0);
    const QByteArray media = contentOf(song);
    struct stat written = {};
    QCOMPARE(::stat(QFile::encodeName(song).constData(), &written), 0);
    QCOMPARE(int(takeBackEdit(m_songs->id(0))), 1);
    QByteArray left = m_songs->journalContent();
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), before);

    const int line = left.lastIndexOf("\n+revert") + 1;
    QVERIFY(line > 0);
    left[line] = '?';
    Fixtures::writeLibrary(m_songs->path(), edited);
    Fixtures::writeLibrary(m_songs->journal(), left);
    if (!mediaIsWritten) {
        Fixtures::writeLibrary(song, media);
        const timespec times[] = {written.st_atim, written.st_mtim};
        QCOMPARE(::utimensat(AT_FDCWD, QFile::encodeName(song).constData(), times, 0), 0);
    }
    AudioFile::takeLog();
    LibraryCalls::read(m_songs->path());
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), mediaIsWritten ? before : edited);
    QCOMPARE(AudioFile::read(song).texts.value(TAG_TITLE), mediaIsWritten ? QString() : QString("Name 1"));
    QCOMPARE(AudioFile::takeLog().size(), mediaIsWritten ? 0 : 1);
    QVERIFY(!QFile::exists(m_songs->journal()));
    QVERIFY(m_songs->keptJournals().isEmpty());
}

void TestLibraryEditBack::aHundredEditsAreKept()
{
    KeptEdits edits;
    for (std::uint64_t id = 1; id <= KeptEdits::most + 1; ++id) {
        KeptEdit edit;
        edit.id = id;
        edits.add(edit);
    }
    QVERIFY(!edits.take(1));
    for (std::uint64_t id = 2; id <= KeptEdits::most + 1; ++id)
        QVERIFY(edits.take(id));
    QCOMPARE(edits.bytes(), std::size_t(0));
}

void TestLibraryEditBack::picturesAreKeptUpToABound()
{
    KeptEdits edits;
    const auto add = [&edits](std::uint64_t id, std::size_t size) {
        KeptEdit edit;
        edit.id = id;
        edit.tags.picture = std::vector<char>(size);
        edits.add(edit);
    };
    add(1, KeptEdits::mostPictureBytes / 2);
    add(2, KeptEdits::mostPictureBytes / 2);
    add(2, 100);
    QVERIFY(!edits.take(1));
    QCOMPARE(edits.take(2)->tags.picture->size(), std::size_t(100));
    QCOMPARE(edits.take(2)->tags.picture->size(), KeptEdits::mostPictureBytes / 2);
    QVERIFY(!edits.take(2));
    add(3, KeptEdits::mostPictureBytes + 1);
    QVERIFY(!edits.take(3));
}

QTEST_GUILESS_MAIN(TestLibraryEditBack)
#include "tst_libraryeditback.moc"
