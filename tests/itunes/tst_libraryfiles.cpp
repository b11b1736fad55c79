// The files that the library's calls make, in folders where other users make files, too.
#include "interposed.h"
#include "songlibrary.h"

#include <QFileInfo>
#include <QtTest>

#include <sys/xattr.h>

using LibraryCalls::contentOf;

class TestLibraryFiles : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void aSwappedNameChangesNoOtherFile_data();
    void aSwappedNameChangesNoOtherFile();
    void artworkIsWrittenThroughNoLink();
    void whatTheFolderHandsOnGivesNobodyRights();

private:
    QStringList newFiles() const
    {
        return QDir(m_songs->folder()).entryList({".melodrift*"}, QDir::Files | QDir::Hidden | QDir::System);
    }

    std::unique_ptr<SongLibrary> m_songs;
    QString m_precious; ///< a file of the user that nobody asked to change
};

void TestLibraryFiles::init()
{
    m_songs = std::make_unique<SongLibrary>();
    m_precious = Fixtures::writeLibrary(m_songs->inFolder("precious"), "precious");
}

void TestLibraryFiles::cleanup()
{
    closeITunesLibrary();
    m_songs.reset();
}

void TestLibraryFiles::aSwappedNameChangesNoOtherFile_data()
{
    QTest::addColumn<bool>("ofTheLibrary");
    QTest::newRow("of the library") << true;
    QTest::newRow("of its backup") << false;
}

/// Another user of the folder puts a link in the place of a file that was just made.
void TestLibraryFiles::aSwappedNameChangesNoOtherFile()
{
    QFETCH(bool, ofTheLibrary);
    m_songs->makeSongs(3);
    const Interposed::Guard guard;
    int swapped = 0;
    if (ofTheLibrary)
        QCOMPARE(int(deleteMusic(m_songs->id(0))), 1); // which makes the backup
    Interposed::beforeLock = [&] {
        const QStringList made = newFiles();
        if (made.isEmpty() || swapped > 0)
            return;
        ++swapped;
        QFile::rename(m_songs->inFolder(made.first()), m_songs->inFolder("aside"));
        QFile::link(m_precious, m_songs->inFolder(made.first()));
    };
    deleteMusic(m_songs->id(1));
    closeITunesLibrary();
    Interposed::beforeLock = nullptr;
    QCOMPARE(swapped, 1);
    QCOMPARE(contentOf(m_precious), QByteArray("precious"));
    for (const QString& path : {m_songs->path(), m_songs->backup()})
        QVERIFY2(!QFileInfo(path).isSymLink(), qPrintable(path));
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, ofTheLibrary ? 1 : 3);
}

void TestLibraryFiles::artworkIsWrittenThroughNoLink()
{
    m_songs->makeSongs(1, 1);
    const QByteArray picture = Fixtures::jpeg(60, 60, 1);
    QCOMPARE(AudioFile::write(m_songs->media(0), {}, &picture), 0);
    const QString cover = m_songs->inFolder("cover");
    for (int i = 0; i < 100; ++i)
        QFile::link(m_precious, QString("%1.part%2").arg(cover).arg(i));
    QFile::link(m_precious, cover);
    QCOMPARE(LibraryCalls::writeArtwork(m_songs->id(0), cover), 0);
    QCOMPARE(contentOf(m_precious), QByteArray("precious"));
    QVERIFY(!QFileInfo(cover).isSymLink());
    QCOMPARE(contentOf(cover), picture);
    QCOMPARE(newFiles(), QStringList());
}

void TestLibraryFiles::whatTheFolderHandsOnGivesNobodyRights()
{
    m_songs->makeSongs(3);
    // Owner, one more user, group, the most for these two, others.
    const QByteArray list = QByteArray::fromHex("02000000"
                                                "01000600ffffffff"
                                                "02000600feff0000"
                                                "04000600ffffffff"
                                                "10000600ffffffff"
                                                "20000000ffffffff");
    if (::setxattr(qPrintable(m_songs->folder()), "system.posix_acl_default", list.constData(),
                   size_t(list.size()), 0) != 0)
        QSKIP("the file system of the temporary folder knows no access lists");
    QVERIFY(QFile::setPermissions(m_songs->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup));
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    const auto hasList = [](const QString& path) {
        return ::getxattr(qPrintable(path), "system.posix_acl_access", nullptr, 0) > 0;
    };
    QVERIFY(QFile::exists(m_songs->journal()));
    QVERIFY(!hasList(m_songs->journal()));
    QVERIFY(!hasList(m_songs->backup()));
    closeITunesLibrary();
    QVERIFY(!hasList(m_songs->path()));
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 2);
}

QTEST_GUILESS_MAIN(TestLibraryFiles)
#include "tst_libraryfiles.moc"
