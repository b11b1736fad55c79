#include "collection/keptfiles.h"
#include "loggedlines.h"
#include "qmusicinfo.h"
#include "removalfixture.h"
#include "songfixtures.h"
#include "songs/songremoval.h"

#include <QTemporaryDir>
#include <QtTest>

#include <filesystem>
#include <functional>

#ifdef Q_OS_LINUX
#include "ownmount.h"

#include <sys/mount.h>
#endif

/// Which files may go, and which stay.
class TestSongRemoval : public RemovalFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepare(); }

    void aKeptFileIsKnownByEveryPath_data();
    void aKeptFileIsKnownByEveryPath();
    void whatIsNotKeptMayGo_data();
    void whatIsNotKeptMayGo();
    void aKeptFileIsKnownThroughAMount_data();
    void aKeptFileIsKnownThroughAMount();
    void theLastNameOfAKeptFileStays();
    void aHardLinkOfAKeptFileMayGo();
    void tracksNeedNoFiles();
    void noKeptFilesKeepNothing();
    void aFileIsRemoved();
    void withoutATrashAFileIsDeletedForGood();
    void whatComesBackTakesNoOthersPlace();
    void aLinkIsRemovedItself();
    void whatTookTheFilesPlaceStays_data();
    void whatTookTheFilesPlaceStays();
    void aHardLinkOrAnotherModeChangesNothing();
    void aFolderIsNeverRemoved();
    void aSharedFileStays();
};

void TestSongRemoval::aKeptFileIsKnownByEveryPath_data()
{
    QTest::addColumn<QString>("kept");
    QTest::addColumn<QString>("removed");
    QTest::newRow("twice") << "f/a.mp3"
                           << "f/a.mp3";
    QTest::newRow("dots") << "f/a.mp3"
                          << "f/../f/./a.mp3";
    QTest::newRow("through a linked folder") << "f/a.mp3"
                                             << "folderlink/a.mp3";
    QTest::newRow("kept through a linked folder") << "folderlink/a.mp3"
                                                  << "f/a.mp3";
    QTest::newRow("kept link, removed target") << "link.mp3"
                                               << "f/a.mp3";
    QTest::newRow("kept link to a link") << "link2.mp3"
                                         << "link.mp3";
    QTest::newRow("target of a kept link to a link") << "link2.mp3"
                                                     << "f/a.mp3";
    QTest::newRow("the link itself") << "link.mp3"
                                     << "link.mp3";
    QTest::newRow("kept relative link in a linked folder") << "folderlink2/up.mp3"
                                                           << "real/a.mp3";
    QTest::newRow("a loop") << "loop1"
                            << "loop2";
    QTest::newRow("in a folder that is gone") << "gone/a.mp3"
                                              << "gone/./a.mp3";
}

static void makeLinks(const QTemporaryDir& folder)
{
    QDir(folder.path()).mkdir("f");
    Fixtures::saveBytes("a", folder.filePath("f/a.mp3"));
    Fixtures::saveBytes("b", folder.filePath("f/b.mp3"));
    QFile::link(folder.filePath("f"), folder.filePath("folderlink"));
    QFile::link("f/a.mp3", folder.filePath("link.mp3"));
    QFile::link(folder.filePath("link.mp3"), folder.filePath("link2.mp3"));
    QDir(folder.path()).mkpath("real/deep");
    Fixtures::saveBytes("c", folder.filePath("real/a.mp3"));
    QFile::link("../a.mp3", folder.filePath("real/deep/up.mp3"));
    QFile::link(folder.filePath("real/deep"), folder.filePath("folderlink2"));
    QFile::link("loop2", folder.filePath("loop1"));
    QFile::link("loop1", folder.filePath("loop2"));
}

void TestSongRemoval::aKeptFileIsKnownByEveryPath()
{
    QFETCH(QString, kept);
    QFETCH(QString, removed);
    makeLinks(*m_folder);
    KeptFiles files;
    files.add(m_folder->filePath(kept));
    QVERIFY(files.wouldLose(m_folder->filePath(removed)));
}

void TestSongRemoval::whatIsNotKeptMayGo_data()
{
    QTest::addColumn<QString>("kept");
    QTest::addColumn<QString>("removed");
    QTest::newRow("another file") << "f/a.mp3"
                                  << "f/b.mp3";
    QTest::newRow("the same name elsewhere") << "f/a.mp3"
                                             << "a.mp3";
    QTest::newRow("a link to the kept file") << "f/a.mp3"
                                             << "link.mp3";
    QTest::newRow("a link to a kept link") << "link.mp3"
                                           << "link2.mp3";
    QTest::newRow("what only the link's text names") << "folderlink2/up.mp3"
                                                     << "a.mp3";
}

void TestSongRemoval::whatIsNotKeptMayGo()
{
    QFETCH(QString, kept);
    QFETCH(QString, removed);
    makeLinks(*m_folder);
    KeptFiles files;
    files.add(m_folder->filePath(kept));
    QVERIFY(!files.wouldLose(m_folder->filePath(removed)));
}

#ifdef Q_OS_LINUX
/// What a process finds whose second view of the folder "f" is "mounted": no other process sees it. Negative
/// where that cannot be had.
static int withAMount(const QTemporaryDir& folder, const std::function<int()>& find)
{
    QDir(folder.path()).mkdir("mounted");
    const QByteArray f = QFile::encodeName(folder.filePath("f"));
    const QByteArray mounted = QFile::encodeName(folder.filePath("mounted"));
    const auto mount = [&f, &mounted] {
        return ::mount(f.constData(), mounted.constData(), nullptr, MS_BIND, nullptr) == 0;
    };
    return withOwnMount(mount, find);
}
#endif

void TestSongRemoval::aKeptFileIsKnownThroughAMount_data()
{
    QTest::addColumn<bool>("furtherName");
    QTest::newRow("with one name") << false;
    QTest::newRow("with a further hard link") << true;
}

void TestSongRemoval::aKeptFileIsKnownThroughAMount()
{
#ifdef Q_OS_LINUX
    QFETCH(bool, furtherName);
    makeLinks(*m_folder);
    std::error_code failure;
    if (furtherName)
        std::filesystem::create_hard_link(m_folder->filePath("f/a.mp3").toStdString(),
                                          m_folder->filePath("f/hard.mp3").toStdString(), failure);
    QVERIFY(!failure);
    const int found = withAMount(*m_folder, [this] {
        const auto lost = [this](const char* kept, const char* removed) {
            KeptFiles files;
            files.add(m_folder->filePath(kept));
            return int(files.wouldLose(m_folder->filePath(removed)));
        };
        return lost("mounted/a.mp3", "f/a.mp3") + 2 * lost("f/a.mp3", "mounted/a.mp3") +
               4 * lost("mounted/a.mp3", "f/b.mp3") + 8 * lost("f/a.mp3", "mounted/hard.mp3");
    });
    if (found < 0)
        QSKIP("folders cannot be mounted here, not even in a private name space");
    QCOMPARE(found, 3);
#endif
}

/// What had another name when it was kept may have none any more when that is its turn.
void TestSongRemoval::theLastNameOfAKeptFileStays()
{
    makeLinks(*m_folder);
    std::error_code failure;
    std::filesystem::create_hard_link(m_folder->filePath("f/a.mp3").toStdString(),
                                      m_folder->filePath("hard.mp3").toStdString(), failure);
    QVERIFY(!failure);
    KeptFiles files;
    files.add(m_folder->filePath("f/a.mp3"));
    QVERIFY(QFile::remove(m_folder->filePath("f/a.mp3")));
    QVERIFY(files.wouldLose(m_folder->filePath("hard.mp3")));
}

/// The file outlives the loss of one of its names.
void TestSongRemoval::aHardLinkOfAKeptFileMayGo()
{
    makeLinks(*m_folder);
    std::error_code failure;
    std::filesystem::create_hard_link(m_folder->filePath("f/a.mp3").toStdString(),
                                      m_folder->filePath("hard.mp3").toStdString(), failure);
    QVERIFY(!failure);
    KeptFiles files;
    files.add(m_folder->filePath("f/a.mp3"));
    QVERIFY(!files.wouldLose(m_folder->filePath("hard.mp3")));
}

void TestSongRemoval::tracksNeedNoFiles()
{
    QMusicInfo* a = song("a");
    QVERIFY(SongRemoval::filesOf({a}).wouldLose(fileOf(a)));
    const Fixtures::ModeGuard tracks(false);
    QVERIFY(!SongRemoval::filesOf({a}).wouldLose(fileOf(a)));
}

void TestSongRemoval::noKeptFilesKeepNothing()
{
    QVERIFY(!KeptFiles().wouldLose(m_folder->filePath("a")));
    QVERIFY(!KeptFiles().wouldLose(QString()));
}

void TestSongRemoval::aFileIsRemoved()
{
    const QMusicInfo* a = song("a");
    SongRemoval::removeFile(*a, nullptr, KeptFiles(), *m_removal);
    QVERIFY(!QFile::exists(fileOf(a)));
    QCOMPARE(m_removal->removed().trashed.size(), 1);
    QCOMPARE(m_removal->removed().trashed.first().path, fileOf(a));
    QCOMPARE(m_bin.files(), QStringList("a.mp3"));
    const LoggedLines lines;
    SongRemoval::removeFile(*a, nullptr, KeptFiles(), *m_removal);
    const QStringList log = LoggedLines::take();
    QCOMPARE(log.size(), 1);
    QVERIFY(log.first().contains(fileOf(a)));
    QCOMPARE(m_removal->removed().failed.size(), 1);
}

/// The path is free either way.
void TestSongRemoval::withoutATrashAFileIsDeletedForGood()
{
    m_bin.spoil();
    const QList<QMusicInfo*> songs = {song("a"), song("b"), song("c")};
    QFile::remove(fileOf(songs[2]));
    const LoggedLines lines;
    for (const QMusicInfo* each : songs)
        SongRemoval::removeFile(*each, nullptr, KeptFiles(), *m_removal);
    QCOMPARE(LoggedLines::take().size(), 2); // the first that is deleted, and the one that was gone
    QVERIFY(!QFile::exists(fileOf(songs[0])) && !QFile::exists(fileOf(songs[1])));
    const RemovedFiles& removed = m_removal->removed();
    QVERIFY(removed.trashed.isEmpty());
    QCOMPARE(removed.deleted.size(), 2);
    QCOMPARE(removed.deleted[1].path, fileOf(songs[1]));
    QVERIFY(!removed.deleted[1].reason.isEmpty());
    QCOMPARE(removed.failed.size(), 1);
    QCOMPARE(removed.failed.first().path, fileOf(songs[2]));
}

void TestSongRemoval::whatComesBackTakesNoOthersPlace()
{
    const QMusicInfo* a = song("a");
    SongRemoval::removeFile(*a, nullptr, KeptFiles(), *m_removal);
    const RemovedFiles::Trashed gone = m_removal->removed().trashed.value(0);
    Fixtures::saveBytes("other", fileOf(a));
    FileReturn undo;
    QVERIFY(!undo.bringBack(gone).isEmpty());
    QCOMPARE(Fixtures::readBytes(fileOf(a)), QByteArray("other"));
    QCOMPARE(m_bin.files(), QStringList("a.mp3"));
    QVERIFY(QFile::remove(fileOf(a)));
    QCOMPARE(undo.bringBack(gone), QString());
    QCOMPARE(Fixtures::readBytes(fileOf(a)), QByteArray("a"));
    QCOMPARE(FileState::ofEntry(fileOf(a)), a->localInfo->file);
    QVERIFY(!undo.bringBack(gone).isEmpty());
}

void TestSongRemoval::aLinkIsRemovedItself()
{
    const QMusicInfo* a = song("a");
    QMusicInfo* link = song("link");
    QFile::remove(fileOf(link));
    QVERIFY(QFile::link(fileOf(a), fileOf(link)));
    list(link);
    KeptFiles kept;
    kept.add(fileOf(a));
    SongRemoval::removeFile(*link, nullptr, kept, *m_removal);
    QVERIFY(!QFileInfo(fileOf(link)).isSymLink());
    QVERIFY(QFile::exists(fileOf(a)));
}

/// What lies at the path is not what the user saw in the list.
void TestSongRemoval::whatTookTheFilesPlaceStays_data()
{
    QTest::addColumn<QString>("what");
    for (const char* what :
         {"another file", "another link", "the file written anew", "a file where none was"})
        QTest::newRow(what) << QString(what);
}

void TestSongRemoval::whatTookTheFilesPlaceStays()
{
    QFETCH(QString, what);
    QMusicInfo* a = song("a");
    QMusicInfo* b = song("b");
    if (what == "another file") {
        QVERIFY(QFile::rename(fileOf(a), fileOf(a) + ".old"));
        QVERIFY(QFile::rename(fileOf(b), fileOf(a)));
    } else if (what == "another link") {
        QVERIFY(QFile::remove(fileOf(a)));
        QVERIFY(QFile::link(fileOf(b), fileOf(a)));
        list(a);
        QVERIFY(QFile::link(m_folder->filePath("elsewhere"), fileOf(a) + ".new"));
        QCOMPARE(std::rename(qPrintable(fileOf(a) + ".new"), qPrintable(fileOf(a))), 0);
    } else if (what == "the file written anew") {
        Fixtures::saveBytes("other", fileOf(a));
    } else {
        a->localInfo->file = FileState();
    }
    const LoggedLines lines;
    SongRemoval::removeFile(*a, nullptr, KeptFiles(), *m_removal);
    const QStringList log = LoggedLines::take();
    QCOMPARE(log.size(), 1);
    QVERIFY(log.first().contains(fileOf(a)));
    QVERIFY(QFileInfo(fileOf(a)).isSymLink() || QFile::exists(fileOf(a)));
}

void TestSongRemoval::aHardLinkOrAnotherModeChangesNothing()
{
    QMusicInfo* a = song("a");
    std::filesystem::create_hard_link(fileOf(a).toStdString(), m_folder->filePath("hard").toStdString());
    QVERIFY(QFile::setPermissions(fileOf(a), QFile::ReadOwner));
    SongRemoval::removeFile(*a, nullptr, KeptFiles(), *m_removal);
    QVERIFY(!QFile::exists(fileOf(a)));
}

void TestSongRemoval::aFolderIsNeverRemoved()
{
    QMusicInfo* folder = song("folder");
    QFile::remove(fileOf(folder));
    QDir().mkdir(fileOf(folder));
    const LoggedLines lines;
    SongRemoval::removeFile(*folder, nullptr, KeptFiles(), *m_removal);
    QCOMPARE(LoggedLines::take().size(), 1);
    QVERIFY(QFileInfo(fileOf(folder)).isDir());
}

void TestSongRemoval::aSharedFileStays()
{
    QMusicInfo* a = song("a");
    QMusicInfo* again = song("b");
    again->localInfo->filePath = fileOf(a);
    list(again);
    group({a, again});
    KeptFiles kept;
    kept.add(fileOf(a));
    const LoggedLines lines;
    QVERIFY(SongRemoval::removeOne(lists(), again, 0, kept, *m_removal));
    const QStringList log = LoggedLines::take();
    QVERIFY(QFile::exists(fileOf(a)));
    QCOMPARE(log.size(), 1);
    QCOMPARE(m_all, QList<QMusicInfo*>({a}));
    QVERIFY(m_groups.isEmpty());
}

QTEST_MAIN(TestSongRemoval)
#include "tst_songremoval.moc"
