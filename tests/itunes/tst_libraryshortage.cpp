#include "shortage.h"
#include "songlibrary.h"

#include <QtTest>

using Shortage::Whose;

/// The music library on a machine that has no threads or no memory left: what was answered is not lost.
class TestLibraryShortage : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void withoutAThreadChangesWaitInTheJournal();
    void theNextChangeFindsAThread();
    void withoutMemoryChangesWaitInTheJournal();

private:
    std::unique_ptr<SongLibrary> m_songs;
};

void TestLibraryShortage::init()
{
    m_songs = std::make_unique<SongLibrary>();
    Interposed::beforeSync = nullptr; // it would want memory at the wrong moment
    m_songs->makeSongs(3);
}

void TestLibraryShortage::cleanup()
{
    m_songs.reset();
}

void TestLibraryShortage::withoutAThreadChangesWaitInTheJournal()
{
    const QByteArray before = m_songs->content();
    {
        const Shortage::OfThreads none;
        QVERIFY(deleteMusic(SongLibrary::id(0)) != 0);
        QVERIFY(deleteMusic(SongLibrary::id(1)) != 0);
        QVERIFY(QFile::exists(m_songs->journal()));
        QCOMPARE(m_songs->content(), before);
        QCOMPARE(AudioFile::takeLog().size(), 1);
    }
    closeITunesLibrary();
    QVERIFY(!QFile::exists(m_songs->journal()));
    QCOMPARE(LibraryCalls::read().count, 1);
}

void TestLibraryShortage::theNextChangeFindsAThread()
{
    {
        const Shortage::OfThreads none;
        QVERIFY(deleteMusic(SongLibrary::id(0)) != 0);
    }
    QVERIFY(deleteMusic(SongLibrary::id(1)) != 0);
    QTRY_VERIFY(!QFile::exists(m_songs->journal()));
    QCOMPARE(LibraryCalls::read().count, 1);
}

void TestLibraryShortage::withoutMemoryChangesWaitInTheJournal()
{
    const QByteArray before = m_songs->content();
    {
        const Shortage::OfMemory little(Whose::Others, 4000);
        QVERIFY(deleteMusic(SongLibrary::id(0)) != 0);
        QTRY_COMPARE(Shortage::OfMemory::refused(), 1);
        QCOMPARE(m_songs->content(), before);
        QStringList log;
        const auto isLogged = [&log] {
            log += AudioFile::takeLog();
            return !log.isEmpty();
        };
        QTRY_VERIFY(isLogged());
        QCOMPARE(log.size(), 1);
    }
    QTRY_VERIFY(!QFile::exists(m_songs->journal())); // tried again by itself
    QCOMPARE(LibraryCalls::read().count, 2);
}

QTEST_GUILESS_MAIN(TestLibraryShortage)
#include "tst_libraryshortage.moc"
