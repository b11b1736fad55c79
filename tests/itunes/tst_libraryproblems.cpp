// What a change that was not made answers to whoever asks why.
#include "audiocore/saveproblem.h"
#include "itunes/editproblem.h"
#include "songlibrary.h"

#include <QtTest>

#include <cerrno>
#include <memory>
#include <thread>

#include <sys/file.h>

#include <fcntl.h>
#include <unistd.h>

using LibraryCalls::Edit;

class TestLibraryProblems : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aChangeHasNoProblem();
    void aTrackThatIsGoneIsNamed();
    void aTrackWithoutAFileIsNamed();
    void theMediaFilesReasonIsHandedOn();
    void aPictureThatCannotBeReadIsNamed();
    void aPictureThatIsTooLargeKeepsTheTexts();
    void whatIsReadOnlyIsNamed();
    void aReadOnlyDiskIsNamed();
    void whoMayNotWriteHearsSo();
    void aFullDiskIsNamed();
    void aBusyLibraryIsNamed();
    void aBrokenLibraryIsNamed();
    void aLibraryThatIsGoneIsNamed();
    void everyThreadHasItsOwnAnswer();
    void whatCannotBeReadIsNotBroken();
    void aReadingTellsWhatItFound();
    void aReadingTellsWhereTheFileIsBroken();

private:
    /// Both changes fail for the reason, and the second call answers.
    void bothFailFor(iTunesEditProblem problem)
    {
        QCOMPARE(int(deleteMusic(SongLibrary::id(1))), 0);
        QCOMPARE(iTunesLastEditProblem(), problem);
        QVERIFY(LibraryCalls::edit(SongLibrary::id(0), Edit()) != 0);
        QCOMPARE(iTunesLastEditProblem(), problem);
        QCOMPARE(iTunesMediaProblem(), int(SAVE_NO_PROBLEM));
    }

    std::unique_ptr<SongLibrary> m_songs;
};

static void setMode(const QString& path, mode_t mode)
{
    QCOMPARE(::chmod(QFile::encodeName(path).constData(), mode), 0);
}

void TestLibraryProblems::init()
{
    m_songs = std::make_unique<SongLibrary>();
    m_songs->makeSongs(3, 2);
}

void TestLibraryProblems::cleanup()
{
    setMode(m_songs->folder(), 0755);
    m_songs.reset();
    AudioFile::takeLog();
}

void TestLibraryProblems::aChangeHasNoProblem()
{
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), Edit()), 0);
    QCOMPARE(iTunesLastEditProblem(), ITUNES_EDIT_DONE);
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    QCOMPARE(iTunesLastEditProblem(), ITUNES_EDIT_DONE);
}

void TestLibraryProblems::aTrackThatIsGoneIsNamed()
{
    QCOMPARE(int(deleteMusic(12345)), 0);
    QCOMPARE(iTunesLastEditProblem(), ITUNES_TRACK_GONE);
    QVERIFY(LibraryCalls::edit(12345, Edit()) != 0);
    QCOMPARE(iTunesLastEditProblem(), ITUNES_TRACK_GONE);
    m_songs->tracks.removeFirst();
    m_songs->playlists.clear();
    Fixtures::writeLibrary(m_songs->path(), m_songs->document()); // by another program
    QVERIFY(LibraryCalls::edit(m_songs->id(0), Edit()) != 0);
    QCOMPARE(iTunesLastEditProblem(), ITUNES_TRACK_GONE);
    m_songs->tracks.append(m_songs->tracks.first());
    m_songs->make(m_songs->document());
    QVERIFY(LibraryCalls::edit(m_songs->id(1), Edit()) != 0);
    QCOMPARE(iTunesLastEditProblem(), ITUNES_TRACK_AMBIGUOUS);
}

void TestLibraryProblems::aTrackWithoutAFileIsNamed()
{
    m_songs->tracks[0].location.clear();
    m_songs->make(m_songs->document());
    QVERIFY(LibraryCalls::edit(m_songs->id(0), Edit()) != 0);
    QCOMPARE(iTunesLastEditProblem(), ITUNES_TRACK_WITHOUT_FILE);
}

void TestLibraryProblems::theMediaFilesReasonIsHandedOn()
{
    setMode(m_songs->media(0), 0444);
    QVERIFY(LibraryCalls::edit(m_songs->id(0), Edit()) != 0);
    QCOMPARE(iTunesLastEditProblem(), ITUNES_MEDIA_NOT_SAVED);
    QCOMPARE(iTunesMediaProblem(), int(SAVE_FILE_READ_ONLY));
    QVERIFY(LibraryCalls::edit(m_songs->id(2), Edit()) != 0);
    QCOMPARE(iTunesLastEditProblem(), ITUNES_MEDIA_NOT_SAVED);
    QCOMPARE(iTunesMediaProblem(), int(SAVE_FILE_GONE));
    Fixtures::writeLibrary(m_songs->media(2), "no music at all");
    QVERIFY(LibraryCalls::edit(m_songs->id(2), Edit()) != 0);
    QCOMPARE(iTunesMediaProblem(), int(SAVE_NOT_SAFE));
    setMode(m_songs->media(0), 0644);
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), Edit()), 0);
    QCOMPARE(iTunesLastEditProblem(), ITUNES_EDIT_DONE);
    QCOMPARE(iTunesMediaProblem(), int(SAVE_NO_PROBLEM));
}

void TestLibraryProblems::aPictureThatCannotBeReadIsNamed()
{
    constexpr qint64 tooLarge = qint64(65) * 1024 * 1024;
    Edit edit;
    edit.cover = Fixtures::writeLibrary(m_songs->inFolder("cover.jpg"), Fixtures::jpeg(90, 90, 1));
    QVERIFY(QFile::resize(edit.cover, tooLarge));
    QVERIFY(LibraryCalls::edit(m_songs->id(0), edit) != 0);
    QCOMPARE(iTunesLastEditProblem(), ITUNES_PICTURE_UNREADABLE);
}

/// An edit is made whole or not at all.
void TestLibraryProblems::aPictureThatIsTooLargeKeepsTheTexts()
{
    constexpr int tooLarge = 33 * 1024 * 1024;
    const QByteArray library = m_songs->content();
    const QByteArray media = LibraryCalls::contentOf(m_songs->media(0));
    Edit edit;
    edit.cover = Fixtures::writeLibrary(m_songs->inFolder("cover.jpg"),
                                        Fixtures::jpeg(40, 40, 1).append(tooLarge, 'x'));
    AudioFile::takeLog();
    QVERIFY(LibraryCalls::edit(m_songs->id(0), edit) != 0);
    QCOMPARE(iTunesLastEditProblem(), ITUNES_MEDIA_NOT_SAVED);
    QCOMPARE(iTunesMediaProblem(), int(SAVE_PICTURE_TOO_LARGE));
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().contains("song0.mp3") && log.first().contains("at the most"),
             qPrintable(log.first()));
    QCOMPARE(LibraryCalls::contentOf(m_songs->media(0)), media);
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), library);
    QVERIFY(!QFile::exists(m_songs->journal()));
}

void TestLibraryProblems::whatIsReadOnlyIsNamed()
{
    setMode(m_songs->path(), 0444);
    bothFailFor(ITUNES_LIBRARY_READ_ONLY);
    setMode(m_songs->path(), 0644);
    setMode(m_songs->folder(), 0555);
    if (::geteuid() == 0) // who makes the journal in such a folder all the same
        bothFailFor(ITUNES_LIBRARY_FOLDER_READ_ONLY);
    else
        bothFailFor(ITUNES_LIBRARY_NO_PERMISSION);
}

void TestLibraryProblems::aReadOnlyDiskIsNamed()
{
    const Interposed::Guard guard;
    Interposed::accessFails = [](const char*) { return EROFS; };
    bothFailFor(ITUNES_LIBRARY_DISK_READ_ONLY);
}

void TestLibraryProblems::whoMayNotWriteHearsSo()
{
    const Interposed::Guard guard;
    Interposed::accessFails = [](const char*) { return EACCES; };
    bothFailFor(ITUNES_LIBRARY_NO_PERMISSION);
}

void TestLibraryProblems::aFullDiskIsNamed()
{
    const Interposed::Guard guard;
    Interposed::writeFails = [] { return true; };
    Interposed::copiesInKernel = [](size_t) { return ssize_t(-1); };
    bothFailFor(ITUNES_LIBRARY_DISK_FULL);
    QVERIFY(!QFile::exists(m_songs->journal()));
}

void TestLibraryProblems::aBusyLibraryIsNamed()
{
    Fixtures::writeLibrary(m_songs->journal(), QByteArray());
    const int held = ::open(QFile::encodeName(m_songs->journal()).constData(), O_RDWR);
    QCOMPARE(::flock(held, LOCK_EX), 0);
    bothFailFor(ITUNES_LIBRARY_IN_USE);
    ::close(held);
}

void TestLibraryProblems::aBrokenLibraryIsNamed()
{
    const QByteArray whole = m_songs->content();
    Fixtures::writeLibrary(m_songs->path(), whole.left(whole.size() / 2));
    QVERIFY(LibraryCalls::edit(m_songs->id(0), Edit()) != 0);
    QCOMPARE(iTunesLastEditProblem(), ITUNES_LIBRARY_BROKEN);
    Fixtures::writeLibrary(m_songs->path(), whole);
}

void TestLibraryProblems::aLibraryThatIsGoneIsNamed()
{
    const QByteArray whole = m_songs->content();
    QVERIFY(QFile::remove(m_songs->path()));
    QVERIFY(LibraryCalls::edit(m_songs->id(0), Edit()) != 0);
    QCOMPARE(iTunesLastEditProblem(), ITUNES_LIBRARY_GONE);
    Fixtures::writeLibrary(m_songs->path(), whole);
}

void TestLibraryProblems::everyThreadHasItsOwnAnswer()
{
    QCOMPARE(int(deleteMusic(12345)), 0);
    iTunesEditProblem others = ITUNES_TRACK_GONE;
    std::thread other([&others] {
        deleteMusic(SongLibrary::id(0));
        others = iTunesLastEditProblem();
    });
    other.join();
    QCOMPARE(others, ITUNES_EDIT_DONE);
    QCOMPARE(iTunesLastEditProblem(), ITUNES_TRACK_GONE);
}

/// As on a disk that fails: the next change may find it well again.
void TestLibraryProblems::whatCannotBeReadIsNotBroken()
{
    struct stat library = {};
    QCOMPARE(::stat(QFile::encodeName(m_songs->path()).constData(), &library), 0);
    Fixtures::writeLibrary(m_songs->path(), m_songs->content()); // no longer as it was read
    {
        const Interposed::Guard guard;
        Interposed::readFails = [&library](int fd, off_t) {
            struct stat read = {};
            return ::fstat(fd, &read) == 0 && read.st_ino == library.st_ino;
        };
        for (int i = 0; i < 2; ++i) {
            QVERIFY(LibraryCalls::edit(m_songs->id(0), Edit()) != 0);
            QCOMPARE(iTunesLastEditProblem(), ITUNES_LIBRARY_OTHER_PROBLEM);
        }
        for (int i = 0; i < 2; ++i) {
            LibraryCalls::read(m_songs->path());
            QCOMPARE(iTunesLastReading(), ITUNES_UNREADABLE);
            QCOMPARE(iTunesBrokenLine(), quint64(0));
        }
    }
    LibraryCalls::read(m_songs->path());
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), Edit()), 0);
}

void TestLibraryProblems::aReadingTellsWhatItFound()
{
    QCOMPARE(iTunesLastReading(), ITUNES_READ);
    LibraryCalls::read(m_songs->inFolder("nowhere.xml"));
    QCOMPARE(iTunesLastReading(), ITUNES_NO_LIBRARY);
    m_songs->make(Fixtures::itunesLibrary({}, {}));
    QCOMPARE(iTunesLastReading(), ITUNES_EMPTY);
    m_songs->make(QByteArray());
    QCOMPARE(iTunesLastReading(), ITUNES_EMPTY);
    LibraryCalls::read(m_songs->folder());
    QCOMPARE(iTunesLastReading(), ITUNES_UNREADABLE);
    QCOMPARE(iTunesBrokenLine(), quint64(0));
    LibraryCalls::read(m_songs->path());
}

void TestLibraryProblems::aReadingTellsWhereTheFileIsBroken()
{
    const QByteArray whole = m_songs->content();
    const int line = 12;
    const QByteArray begin = whole.split('\n').mid(0, line - 1).join('\n') + '\n';
    m_songs->make(begin + "<dict></key>");
    QCOMPARE(iTunesLastReading(), ITUNES_BROKEN);
    QCOMPARE(iTunesBrokenLine(), quint64(line));
    m_songs->make(whole);
    QCOMPARE(iTunesLastReading(), ITUNES_READ);
    QCOMPARE(iTunesBrokenLine(), quint64(0));
}

QTEST_GUILESS_MAIN(TestLibraryProblems)
#include "tst_libraryproblems.moc"
