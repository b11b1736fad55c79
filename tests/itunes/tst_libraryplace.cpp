// Where the library is looked for, and what is told of it before it is read.
#include "audiofile.h"
#include "fixtures.h"
#include "itunes/delmusiclib.h"
#include "itunes/librarysearch.h"
#include "itunesfixture.h"
#include "librarycalls.h"
#include "slowdisk.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <thread>

using Fixtures::ITunesTrack;

class TestLibraryPlace : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void theOptionWinsOverTheVariable();
    void theUsualPlacesAreLookedAt_data();
    void theUsualPlacesAreLookedAt();
    void aNamedFileThatIsMissingIsNotReplaced();
    void aSearchTellsWhatWillBeRead();
    void aSearchTellsWhereNothingWasFound();
    void aDiskThatDoesNotAnswerHoldsUpTheSearchAlone();

private:
    QString inFolder(const QString& name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestLibraryPlace::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    AudioFile::takeLog();
}

void TestLibraryPlace::cleanup()
{
    closeITunesLibrary();
    setITunesLibraryOption(nullptr);
    qunsetenv("MELODRIFT_ITUNES_LIBRARY");
}

void TestLibraryPlace::theOptionWinsOverTheVariable()
{
    ITunesTrack track = Fixtures::itunesTrack(0);
    for (const char* name : {"option", "variable"}) {
        track.name = name;
        Fixtures::writeLibrary(inFolder(name), Fixtures::itunesLibrary({track}));
    }
    qputenv("MELODRIFT_ITUNES_LIBRARY", QFile::encodeName(inFolder("variable")));
    QCOMPARE(LibraryCalls::names(LibraryCalls::read()), QStringList("variable"));
    QCOMPARE(LibraryCalls::names(LibraryCalls::read(inFolder("option"))), QStringList("option"));
    setITunesLibraryOption("");
    QCOMPARE(LibraryCalls::names(LibraryCalls::read()), QStringList("variable"));
}

void TestLibraryPlace::theUsualPlacesAreLookedAt_data()
{
    QTest::addColumn<QString>("place");
    QTest::addColumn<QByteArray>("settings");
    for (const char* place : {"Music/iTunes/iTunes Music Library.xml", "Music/iTunes/iTunes Library.xml",
                              "Music/Music/Library.xml", "Music/Library.xml"})
        QTest::newRow(place) << QString(place) << QByteArray();
    QTest::newRow("a folder of another name")
        << QString("Musik/iTunes/iTunes Library.xml")
        << QByteArray("# folders\nXDG_DESKTOP_DIR=\"$HOME/Tisch\"\nXDG_MUSIC_DIR=\"$HOME/Musik\"\n");
}

void TestLibraryPlace::theUsualPlacesAreLookedAt()
{
#if defined(Q_OS_WIN) || defined(Q_OS_MACOS)
    QSKIP("the folders are the system's");
#endif
    QFETCH(QString, place);
    QFETCH(QByteArray, settings);
    const QByteArray home = qgetenv("HOME");
    const QByteArray configuration = qgetenv("XDG_CONFIG_HOME");
    qputenv("HOME", QFile::encodeName(m_folder->path()));
    qunsetenv("XDG_CONFIG_HOME");
    QDir(m_folder->path()).mkdir(".config");
    Fixtures::writeLibrary(inFolder(".config/user-dirs.dirs"), settings);
    // A folder of the name is none.
    const QString first = place.section('/', 0, 0) + "/iTunes/iTunes Music Library.xml";
    if (place != first)
        QDir(m_folder->path()).mkpath(first);
    QCOMPARE(LibraryCalls::read().count, 0);
    QVERIFY(AudioFile::takeLog().isEmpty()); // no library is nothing unusual
    QDir(m_folder->path()).mkpath(QFileInfo(place).path());
    Fixtures::writeLibrary(inFolder(place), Fixtures::itunesLibrary({Fixtures::itunesTrack(0)}));
    QCOMPARE(LibraryCalls::read().count, 1);
    closeITunesLibrary();
    qputenv("HOME", home);
    if (!configuration.isNull())
        qputenv("XDG_CONFIG_HOME", configuration);
}

void TestLibraryPlace::aNamedFileThatIsMissingIsNotReplaced()
{
    // Nobody wants the songs of another library in place of those he named.
    Fixtures::writeLibrary(inFolder("variable"), Fixtures::itunesLibrary({Fixtures::itunesTrack(0)}));
    qputenv("MELODRIFT_ITUNES_LIBRARY", QFile::encodeName(inFolder("variable")));
    QCOMPARE(LibraryCalls::read(inFolder("missing")).count, 0);
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY(log.first().contains("missing"));
}

void TestLibraryPlace::aSearchTellsWhatWillBeRead()
{
    qputenv("MELODRIFT_ITUNES_LIBRARY", QFile::encodeName(inFolder("variable")));
    const auto before = iTunesLibrarySearch();
    setITunesLibraryOption(inFolder("option").toUtf8().constData());
    QCOMPARE(QString::fromStdString(iTunesLibrarySearch()().file), inFolder("option"));
    QCOMPARE(QString::fromStdString(before().file), inFolder("variable")); // as things were named then
    QVERIFY(before().folders.empty());
}

void TestLibraryPlace::aSearchTellsWhereNothingWasFound()
{
#if defined(Q_OS_WIN) || defined(Q_OS_MACOS)
    QSKIP("the folders are the system's");
#endif
    SlowDisk disk(m_folder->path()); // has a home of its own
    const auto search = iTunesLibrarySearch();
    disk.answer();
    QStringList folders;
    for (const std::string& folder : search().folders)
        folders.append(QString::fromStdString(folder));
    QCOMPARE(folders, QStringList({inFolder("Music/iTunes"), inFolder("Music/Music"), inFolder("Music")}));
    QCOMPARE(search().file, std::string());
    QDir(m_folder->path()).mkpath("Music/Music");
    Fixtures::writeLibrary(inFolder("Music/Music/Library.xml"), "");
    QCOMPARE(QString::fromStdString(search().file), inFolder("Music/Music/Library.xml"));
}

/// Another library can be named and read meanwhile, and the calls end.
void TestLibraryPlace::aDiskThatDoesNotAnswerHoldsUpTheSearchAlone()
{
#ifndef Q_OS_LINUX
    QSKIP("the folders are the system's");
#endif
    const QString named =
        Fixtures::writeLibrary(inFolder("Named.xml"), Fixtures::itunesLibrary({Fixtures::itunesTrack(0)}));
    SlowDisk disk(m_folder->path());
    launchiTunes();
    std::thread searching(iTunesLibrarySearch());
    QCOMPARE(LibraryCalls::read(named).count, 1);
    closeITunesLibrary();
    disk.answer();
    searching.join();
}

QTEST_GUILESS_MAIN(TestLibraryPlace)
#include "tst_libraryplace.moc"
