// Tracks of a library as songs, and what is wrong with them.
#include "collection/libraryproblems.h"
#include "filebytes.h"
#include "itunesfixture.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

#include <unistd.h>

using Media = LibraryTracks::Media;

class TestLibraryTracks : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void aTrackIsASong();
    void whereItsFileIs();
    void whatIsNoSongIsTold();
    void copiesForAPlanKnowWhatStays();
    void whatCannotBeReadSaysWhy_data();
    void whatCannotBeReadSaysWhy();
    void everyProblemIsFound();
    void lookingForProblemsCanBeEnded();

private:
    QString at(const QString& name) const { return m_folder->filePath(name); }
    Fixtures::ITunesTrack add(int number, const QString& name);
    std::string write(const QByteArray& bytes) const
    {
        return QFile::encodeName(Fixtures::writeLibrary(at("Library.xml"), bytes)).toStdString();
    }
    std::string write() const { return write(Fixtures::itunesLibrary(m_tracks)); }
    QStringList problems() const;

    std::unique_ptr<QTemporaryDir> m_folder;
    QVector<Fixtures::ITunesTrack> m_tracks;
};

void TestLibraryTracks::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_tracks.clear();
}

/// A track whose file has ten bytes, and the library says so.
Fixtures::ITunesTrack TestLibraryTracks::add(int number, const QString& name)
{
    Fixtures::saveBytes(QByteArray(10, 'x'), at(name));
    Fixtures::ITunesTrack track = Fixtures::itunesTrack(number, at(name));
    track.size = 10;
    m_tracks.append(track);
    return track;
}

void TestLibraryTracks::aTrackIsASong()
{
    add(0, "a.mp3");
    m_tracks[0].name = "Halo";
    m_tracks[0].artist = "Zo\xC3\xA9";
    m_tracks[0].album = "First";
    m_tracks[0].genre.clear();
    m_tracks[0].year = 2004;
    m_tracks[0].duration = 4321;
    LibraryTracks tracks(write());
    QCOMPARE(tracks.problem(), std::string());
    QCOMPARE(tracks.count(), 1);
    const SongFile song = tracks.at(0).song;
    QCOMPARE(song.title, QString("Halo"));
    QCOMPARE(song.artist, QString::fromUtf8("Zo\xC3\xA9"));
    QCOMPARE(song.album, QString("First"));
    QCOMPARE(song.genre, QString());
    QCOMPARE(song.year, 2004);
    QCOMPARE(song.milliseconds, std::uint64_t(4321));
    QCOMPARE(song.bitRate, std::uint64_t(128000));
    QCOMPARE(song.kind, QString("MPEG audio file"));
    QCOMPARE(song.persistentId, std::uint64_t(m_tracks[0].persistentId));
    QCOMPARE(QString::fromStdString(song.path), at("a.mp3"));
    QVERIFY(song.state == FileState::ofEntry(song.path));
}

void TestLibraryTracks::whereItsFileIs()
{
    add(0, "a.mp3");
    add(1, "gone.mp3");
    add(2, "link.mp3");
    add(3, "dangling.mp3");
    m_tracks.append(Fixtures::itunesTrack(4, at("folder.mp3")));
    m_tracks.append(Fixtures::itunesTrack(5));
    m_tracks.last().location.clear();
    m_tracks.append(Fixtures::itunesTrack(6, at("a.mp3")));
    m_tracks.last().type = "URL";
    QVERIFY(QDir().mkdir(at("folder.mp3")));
    for (const char* name : {"gone.mp3", "link.mp3", "dangling.mp3"})
        QVERIFY(QFile::remove(at(name)));
    QVERIFY(QFile::link(at("a.mp3"), at("link.mp3")) && QFile::link(at("nowhere"), at("dangling.mp3")));
    LibraryTracks tracks(write());
    const QVector<Media> expected = {Media::There,   Media::Missing, Media::There, Media::Missing,
                                     Media::Missing, Media::None,    Media::None};
    for (int i = 0; i < expected.size(); ++i)
        QVERIFY2(tracks.at(i).media == expected.at(i), qPrintable(QString::number(i)));
}

void TestLibraryTracks::whatIsNoSongIsTold()
{
    add(0, "a.mp3");
    add(1, "b.mp4");
    m_tracks[1].further = "<key>Movie</key><true/>";
    LibraryTracks tracks(write());
    QVERIFY(tracks.at(0).isSong);
    QVERIFY(!tracks.at(1).isSong);
}

void TestLibraryTracks::copiesForAPlanKnowWhatStays()
{
    add(0, "a.mp3");
    add(1, "letter.txt");
    add(2, "c.mp3");
    add(3, "d.mp3");
    m_tracks[3].persistentId = m_tracks[2].persistentId;
    LibraryTracks tracks(write());
    const auto whyItStays = [&](int i) { return LibraryTracks::copyOf(tracks.at(i).song).whyItStays; };
    QCOMPARE(whyItStays(0), QString());
    QCOMPARE(whyItStays(1), QString("no music by its name"));
    QCOMPARE(whyItStays(2), QString("the library cannot tell its track from others"));
    QCOMPARE(LibraryTracks::copyOf(tracks.at(0).song).track, std::uint64_t(m_tracks[0].persistentId));
    QCOMPARE(LibraryTracks::copyOf(tracks.at(3).song).track, std::uint64_t(0));
}

void TestLibraryTracks::whatCannotBeReadSaysWhy_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray whole = Fixtures::itunesLibrary({Fixtures::itunesTrack(0)});
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("truncated") << whole.left(whole.size() / 2);
    QTest::newRow("no XML") << QByteArray(1000, '\0');
    QTest::newRow("another document") << QByteArray("<html><body/></html>");
}

void TestLibraryTracks::whatCannotBeReadSaysWhy()
{
    QFETCH(QByteArray, bytes);
    const LibraryTracks tracks(write(bytes));
    QVERIFY(!tracks.problem().empty());
    QCOMPARE(tracks.count(), 0);
    QVERIFY(!LibraryTracks(QFile::encodeName(at("nothing")).toStdString()).problem().empty());
    QVERIFY(!LibraryTracks(QFile::encodeName(m_folder->path()).toStdString()).problem().empty());
}

/// "kind number" for each, without a number for those of the library.
QStringList TestLibraryTracks::problems() const
{
    LibraryTracks tracks(write());
    QStringList found;
    const auto tell = [&](const LibraryProblems::Problem& problem) {
        const QString title = problem.song.title.section(' ', -1);
        found.append(QString(problem.kind) + (title.isEmpty() ? QString() : ' ' + title));
        QVERIFY(!problem.more.isEmpty());
    };
    LibraryProblems::find(tracks, tell, [](int) { return true; });
    return found;
}

void TestLibraryTracks::everyProblemIsFound()
{
    for (int i = 0; i < 7; ++i) {
        add(i, QString("%1.mp3").arg(i));
        m_tracks[i].name = "Song " + QByteArray::number(i);
    }
    QCOMPARE(problems(), QStringList());
    QVERIFY(QFile::remove(at("1.mp3")));
    m_tracks[2].location.clear();
    m_tracks[3].size = 11;
    QVERIFY(QFile::remove(at("4.mp3")));
    QCOMPARE(::link(QFile::encodeName(at("0.mp3")).constData(), QFile::encodeName(at("4.mp3")).constData()),
             0);
    m_tracks[5].location = m_tracks[0].location;
    m_tracks[6].persistentId = 0;
    Fixtures::saveBytes("no journal", at("Library.xml.melodrift-journal"));
    QCOMPARE(problems(), QStringList({"journal", "missing 1", "no-file 2", "changed 3", "shared 4",
                                      "shared 5", "identifier 6"}));
    QCOMPARE(Fixtures::readBytes(at("Library.xml.melodrift-journal")), QByteArray("no journal"));
}

void TestLibraryTracks::lookingForProblemsCanBeEnded()
{
    for (int i = 0; i < 3; ++i)
        m_tracks.append(Fixtures::itunesTrack(i));
    LibraryTracks tracks(write());
    int told = 0;
    const auto tell = [&told](const LibraryProblems::Problem&) { ++told; };
    QVERIFY(!LibraryProblems::find(tracks, tell, [](int done) { return done < 2; }));
    QCOMPARE(told, 2);
}

QTEST_GUILESS_MAIN(TestLibraryTracks)
#include "tst_librarytracks.moc"
