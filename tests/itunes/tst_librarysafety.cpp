#include "songlibrary.h"

#include <QFileInfo>
#include <QSet>
#include <QtTest>

#include <csignal>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

using Fixtures::ITunesPlaylist;
using LibraryCalls::contentOf;
using LibraryCalls::Edit;
using LibraryCalls::Reading;

class TestLibrarySafety : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void changesShowBeforeTheyAreWritten();
    void theFileIsWrittenWhenTheChangesPause();
    void oneBackupHoldsTheFileAsItWas();
    void aBackupIsOnlyReadAgain();
    void whatIsNoLibraryIsNoOlderBackup();
    void theBackupTakesThePlaceOfLinksAndPipes();
    void aFolderAtTheBackupsNameFailsTheChange();
    void aChangeThatFailsLeavesTheOthersWaiting();
    void anotherProgramsVersionIsTheBase();
    void aBrokenFileIsLeftAloneAndTheChangesWait();
    void aBrokenFileIsNoBackup_data();
    void aBrokenFileIsNoBackup();
    void aFailedWritingIsTriedAgain();
    void aReadOnlyLibraryFailsEveryChange();
    void aFullDiskFailsTheChange();
    void aFailingReadIsNotTheEndOfTheLibrary();
    void whatWeWroteIsNotReadAgain();
    void aLinkToTheLibraryStaysALink();
    void manyDeletionsWriteTheFileAFewTimes();
    void callsFromManyThreadsAllArrive();
    void closingIsAlwaysAllowed();

private:
    std::unique_ptr<SongLibrary> m_songs;
};

void TestLibrarySafety::init()
{
    m_songs = std::make_unique<SongLibrary>();
}

void TestLibrarySafety::cleanup()
{
    closeITunesLibrary();
    QVERIFY2(m_songs->temporaries().isEmpty(), qPrintable(m_songs->temporaries().join(' ')));
    m_songs.reset();
}

void TestLibrarySafety::changesShowBeforeTheyAreWritten()
{
    m_songs->makeSongs(3, 1);
    const QByteArray before = m_songs->content();
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), Edit()), 0);
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 1);
    QCOMPARE(m_songs->content(), before);
    const Reading reading = LibraryCalls::read();
    QCOMPARE(LibraryCalls::names(reading),
             QStringList({"New name", QString::fromUtf8(m_songs->tracks.at(2).name)}));
    QCOMPARE(quint64(reading.records[0].year), Q_UINT64_C(2001));
}

void TestLibrarySafety::theFileIsWrittenWhenTheChangesPause()
{
    m_songs->makeSongs(3);
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 1);
    QVERIFY(QFile::exists(m_songs->journal()));
    QTRY_VERIFY(!QFile::exists(m_songs->journal()));
    m_songs->playlists[0].trackIds.removeAll(m_songs->tracks.at(1).trackId);
    m_songs->playlists[1].trackIds.clear();
    m_songs->tracks.removeAt(1);
    const QByteArray written = m_songs->content();
    QVERIFY(!written.contains(Fixtures::itunesIdentifier(m_songs->id(1))));
    QCOMPARE(LibraryCalls::read().count, 2);
    // And again, with a new journal.
    QCOMPARE(int(deleteMusic(m_songs->id(2))), 1);
    QTRY_VERIFY(m_songs->content() != written);
}

void TestLibrarySafety::oneBackupHoldsTheFileAsItWas()
{
    m_songs->makeSongs(4);
    const QByteArray before = m_songs->content();
    QVERIFY(m_songs->originals().isEmpty());
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    QCOMPARE(contentOf(m_songs->originals().value(0)), before);
    QTRY_VERIFY(!QFile::exists(m_songs->journal()));
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 1);
    closeITunesLibrary();
    QCOMPARE(contentOf(m_songs->originals().value(0)), before);
    QCOMPARE(QDir(m_songs->folder()).entryList(QDir::Files | QDir::Hidden).size(), 2);
}

/// What was open to be written is taken for changed, as by programs that copy what changes.
void TestLibrarySafety::aBackupIsOnlyReadAgain()
{
    m_songs->makeSongs(4);
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    closeITunesLibrary();
    QFile closings;
    QVERIFY(closings.open(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC), QIODevice::ReadOnly,
                          QFileDevice::AutoCloseHandle));
    const QByteArray original = QFile::encodeName(m_songs->originals().value(0));
    QVERIFY(::inotify_add_watch(closings.handle(), original.constData(), IN_CLOSE) >= 0);
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 1);
    closeITunesLibrary();
    inotify_event closing = {};
    QCOMPARE(::read(closings.handle(), &closing, sizeof closing), ssize_t(sizeof closing));
    QCOMPARE(closing.mask, uint32_t(IN_CLOSE_NOWRITE)); // equal ones that follow are one
    QCOMPARE(::read(closings.handle(), &closing, sizeof closing), ssize_t(-1));
}

void TestLibrarySafety::whatIsNoLibraryIsNoOlderBackup()
{
    m_songs->makeSongs(4);
    const QByteArray before = m_songs->content();
    Fixtures::writeLibrary(m_songs->backup(), "someone's notes");
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    QCOMPARE(m_songs->originals().size(), 1);
    QCOMPARE(contentOf(m_songs->originals().first()), before);
    QCOMPARE(contentOf(m_songs->backup()), QByteArray("someone's notes"));
}

void TestLibrarySafety::theBackupTakesThePlaceOfLinksAndPipes()
{
    const QString precious = Fixtures::writeLibrary(m_songs->inFolder("precious"), "precious");
    for (const bool link : {true, false}) {
        m_songs->makeSongs(link ? 4 : 5);
        QCOMPARE(int(deleteMusic(m_songs->id(3))), 1);
        closeITunesLibrary(); // it had its first backup
        const QByteArray before = m_songs->content();
        QFile::remove(m_songs->backup());
        if (link)
            QVERIFY(QFile::link(precious, m_songs->backup()));
        else
            QCOMPARE(::mkfifo(QFile::encodeName(m_songs->backup()).constData(), 0600), 0);
        QCOMPARE(int(deleteMusic(m_songs->id(1))), 1);
        closeITunesLibrary();
        const QFileInfo backup(m_songs->backup());
        QVERIFY(backup.isFile() && !backup.isSymLink());
        QCOMPARE(contentOf(m_songs->backup()), before);
        QCOMPARE(contentOf(precious), QByteArray("precious"));
        QCOMPARE(LibraryCalls::read(m_songs->path()).count, link ? 2 : 3);
    }
}

void TestLibrarySafety::aFolderAtTheBackupsNameFailsTheChange()
{
    m_songs->makeSongs(4);
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    closeITunesLibrary();
    const QByteArray before = m_songs->content();
    QVERIFY(QDir().mkdir(m_songs->backup()));
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 0);
    QCOMPARE(AudioFile::takeLog().size(), 1);
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), before);
    QVERIFY(QDir(m_songs->backup()).exists());
    QVERIFY(!QFile::exists(m_songs->journal()));
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 3);
}

void TestLibrarySafety::aChangeThatFailsLeavesTheOthersWaiting()
{
    const QByteArray left = m_songs->leftBy([this] { QCOMPARE(int(deleteMusic(m_songs->id(0))), 1); });
    // Another program's version wants a backup of its own, and there is no room for it.
    Fixtures::writeLibrary(m_songs->path(), m_songs->before + "\n");
    Fixtures::writeLibrary(m_songs->journal(), left);
    QVERIFY(QDir().mkpath(m_songs->backup() + "/full"));
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 0);
    QVERIFY(QFile::exists(m_songs->journal()) ||
            !m_songs->content().contains(Fixtures::itunesIdentifier(m_songs->id(0))));
    QVERIFY(QDir(m_songs->backup()).removeRecursively());
    closeITunesLibrary();
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 5);
    AudioFile::takeLog();
}

void TestLibrarySafety::anotherProgramsVersionIsTheBase()
{
    m_songs->makeSongs(4);
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    // Meanwhile: another title, a track more, and the deleted one in a new playlist.
    m_songs->tracks[2].name = "By another program";
    m_songs->tracks.append(Fixtures::itunesTrack(9));
    m_songs->playlists.append({"New", {1000, 1002}});
    Fixtures::writeLibrary(m_songs->path(), m_songs->document());
    closeITunesLibrary();
    m_songs->tracks.removeFirst();
    for (ITunesPlaylist& playlist : m_songs->playlists)
        playlist.trackIds.removeAll(1000);
    QCOMPARE(m_songs->content(), m_songs->document());
}

void TestLibrarySafety::aBrokenFileIsLeftAloneAndTheChangesWait()
{
    m_songs->makeSongs(4);
    const QByteArray before = m_songs->content();
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    const QByteArray broken = before.left(before.size() / 2);
    Fixtures::writeLibrary(m_songs->path(), broken);
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), broken);
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().contains("line "), qPrintable(log.first()));
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 0);
    Fixtures::writeLibrary(m_songs->path(), before);
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 3);
    closeITunesLibrary();
    QVERIFY(!QFile::exists(m_songs->journal()));
}

void TestLibrarySafety::aBrokenFileIsNoBackup_data()
{
    QTest::addColumn<bool>("readBefore");
    QTest::newRow("broken after it was read") << true;
    QTest::newRow("not read any more") << false;
}

void TestLibrarySafety::aBrokenFileIsNoBackup()
{
    QFETCH(bool, readBefore);
    m_songs->makeSongs(4);
    const QByteArray first = m_songs->content();
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    closeITunesLibrary();
    const QByteArray second = m_songs->content();
    // A new run.
    if (readBefore)
        QCOMPARE(LibraryCalls::read(m_songs->path()).count, 3);
    const QByteArray broken = second.left(second.size() / 2);
    Fixtures::writeLibrary(m_songs->path(), broken);
    AudioFile::takeLog();
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 1);
    QCOMPARE(int(deleteMusic(m_songs->id(2))), 1);
    closeITunesLibrary();
    QVERIFY(!QFile::exists(m_songs->backup()));
    QCOMPARE(contentOf(m_songs->originals().value(0)), first);
    QCOMPARE(m_songs->content(), broken);
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().contains("line "), qPrintable(log.first()));
    // Made whole, it is kept before it changes.
    Fixtures::writeLibrary(m_songs->path(), second);
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 1);
    closeITunesLibrary();
    QVERIFY(!QFile::exists(m_songs->journal()));
    QCOMPARE(contentOf(m_songs->backup()), second);
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 1);
}

void TestLibrarySafety::aFailedWritingIsTriedAgain()
{
    m_songs->makeSongs(4);
    const QByteArray before = m_songs->content();
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    Fixtures::writeLibrary(m_songs->path(), before.left(before.size() / 2));
    QStringList log;
    const auto isLogged = [&log] {
        log += AudioFile::takeLog();
        return !log.isEmpty();
    };
    QTRY_VERIFY(isLogged());
    Fixtures::writeLibrary(m_songs->path(), before);
    QTRY_VERIFY(!QFile::exists(m_songs->journal()));
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 3);
    log += AudioFile::takeLog();
    QVERIFY2(log.size() == 1, qPrintable(log.join('\n')));
}

void TestLibrarySafety::aReadOnlyLibraryFailsEveryChange()
{
    m_songs->makeSongs(2, 2);
    const QByteArray before = m_songs->content();
    const QByteArray song = contentOf(m_songs->media(0));
    QCOMPARE(::chmod(QFile::encodeName(m_songs->path()).constData(), 0444), 0);
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 0);
    QVERIFY(LibraryCalls::edit(m_songs->id(0), Edit()) != 0);
    QCOMPARE(AudioFile::takeLog().size(), 2);
    QCOMPARE(LibraryCalls::read().count, 2);
    QCOMPARE(m_songs->content(), before);
    QCOMPARE(contentOf(m_songs->media(0)), song);
    QVERIFY(!QFile::exists(m_songs->journal()));
}

void TestLibrarySafety::aFullDiskFailsTheChange()
{
    // A limit on file sizes ends writes as a full disk does.
    std::signal(SIGXFSZ, SIG_IGN);
    m_songs->makeSongs(200, 1);
    const QByteArray before = m_songs->content();
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    // No room for a backup; then for that, but not for the new library's lines.
    const rlimit small{rlim_t(before.size() / 2), limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 0);
    QVERIFY(LibraryCalls::edit(m_songs->id(0), Edit()) != 0);
    setrlimit(RLIMIT_FSIZE, &limit);
    QCOMPARE(AudioFile::takeLog().size(), 2);
    QVERIFY(!QFile::exists(m_songs->journal()));
    QVERIFY(AudioFile::read(m_songs->media(0)).texts.isEmpty());

    QCOMPARE(int(deleteMusic(m_songs->id(1))), 1);
    setrlimit(RLIMIT_FSIZE, &small);
    closeITunesLibrary();
    setrlimit(RLIMIT_FSIZE, &limit);
    QCOMPARE(m_songs->content(), before);
    QVERIFY(QFile::exists(m_songs->journal()));
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 199);
}

/// Behind what XML needs nobody misses anything, and it is the file's all the same.
void TestLibrarySafety::aFailingReadIsNotTheEndOfTheLibrary()
{
    const QByteArray behind(400000, '\n');
    m_songs->makeSongs(3);
    m_songs->make(m_songs->content() + behind);
    const QByteArray before = m_songs->content();
    {
        const Interposed::Guard guard;
        const ino_t library = fileNumber(m_songs->path());
        Interposed::readFails = [library](int fd, off_t offset) {
            struct stat read = {};
            return offset > 0 && ::fstat(fd, &read) == 0 && read.st_ino == library;
        };
        QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
        closeITunesLibrary();
        QCOMPARE(LibraryCalls::read(m_songs->path()).count, 0);
        closeITunesLibrary();
        const QStringList log = AudioFile::takeLog();
        QVERIFY(!log.isEmpty());
        for (const QString& line : log)
            QVERIFY2(line.contains(QLatin1String("it cannot be read to its end")), qPrintable(line));
    }
    QCOMPARE(m_songs->content(), before);
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 2);
    closeITunesLibrary();
    QVERIFY(m_songs->content().endsWith("</plist>\n" + behind));
}

/// Taking its name is a change of a file, too; nobody else made it.
void TestLibrarySafety::whatWeWroteIsNotReadAgain()
{
    m_songs->makeSongs(3, 1);
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), Edit()), 0);
    QTRY_VERIFY(!QFile::exists(m_songs->journal()));
    const Interposed::Guard guard;
    const ino_t library = fileNumber(m_songs->path());
    const std::thread::id self = std::this_thread::get_id();
    int reads = 0;
    Interposed::readFails = [&](int fd, off_t) {
        struct stat read = {};
        if (std::this_thread::get_id() == self && ::fstat(fd, &read) == 0 && read.st_ino == library)
            ++reads;
        return false;
    };
    Edit other;
    other.name = "Another name";
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), other), 0);
    QCOMPARE(reads, 0);
    closeITunesLibrary();
}

void TestLibrarySafety::aLinkToTheLibraryStaysALink()
{
    m_songs->makeSongs(3);
    closeITunesLibrary();
    QDir(m_songs->folder()).mkdir("elsewhere");
    const QString link = m_songs->inFolder("elsewhere/Library.xml");
    QVERIFY(QFile::link(m_songs->path(), link));
    QCOMPARE(LibraryCalls::read(link).count, 3);
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    closeITunesLibrary();
    QVERIFY(QFileInfo(link).isSymLink());
    QVERIFY(!QFileInfo(m_songs->path()).isSymLink());
    QCOMPARE(LibraryCalls::read(link).count, 2);
}

void TestLibrarySafety::manyDeletionsWriteTheFileAFewTimes()
{
    constexpr int count = 3000;
    m_songs->makeSongs(count);
    QSet<ino_t> versions;
    for (int i = 0; i < count; i += 2) {
        QCOMPARE(int(deleteMusic(m_songs->id(i))), 1);
        versions.insert(fileNumber(m_songs->path()));
    }
    closeITunesLibrary();
    QVERIFY2(versions.size() <= 5, qPrintable(QString::number(versions.size())));
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, count / 2);
}

void TestLibrarySafety::callsFromManyThreadsAllArrive()
{
    constexpr int count = 120;
    m_songs->makeSongs(count, 3);
    std::thread deleting([&] {
        for (int i = 10; i < count; i += 2)
            deleteMusic(m_songs->id(i));
    });
    std::thread asking([&] {
        for (int i = 0; i < count; ++i)
            LibraryCalls::writeArtwork(m_songs->id(i), m_songs->inFolder("cover"));
    });
    for (int i = 0; i < 30; ++i)
        QCOMPARE(LibraryCalls::edit(m_songs->id(i % 3),
                                    {"N" + QByteArray::number(i), "A", "B", "Pop", 2000, QString()}),
                 0);
    deleting.join();
    asking.join();
    const Reading reading = LibraryCalls::read();
    QCOMPARE(reading.count, count - (count - 10) / 2);
    QCOMPARE(LibraryCalls::names(reading).mid(0, 3), QStringList({"N27", "N28", "N29"}));
    closeITunesLibrary();
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, reading.count);
}

void TestLibrarySafety::closingIsAlwaysAllowed()
{
    closeITunesLibrary();
    closeITunesLibrary();
    m_songs->makeSongs(2);
    closeITunesLibrary();
    // The records live on, and changes are possible again.
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    closeITunesLibrary();
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 1);
}

QTEST_GUILESS_MAIN(TestLibrarySafety)
#include "tst_librarysafety.moc"
