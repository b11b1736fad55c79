#include "audiofile.h"
#include "filebytes.h"
#include "fixtures.h"
#include "itunes/delmusiclib.h"
#include "itunes/itunesmusiclibrary.h"
#include "itunes/tunesedit.h"
#include "itunesfixture.h"
#include "songs/trackhistory.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using Kind = TrackHistory::TakenBack::Kind;

class TestTrackHistory : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void theNewestStepComesBackFirst();
    void aStepThatCannotComeBackIsForgotten();
    void aHundredStepsAreKept();
    void nothingIsNoStep();

private:
    static quint64 id(int song) { return Fixtures::itunesTrack(song).persistentId; }
    void edit(const char* name);
    void remove(const QVector<quint64>& tracks);
    static int count();
    QByteArray content() const { return Fixtures::readBytes(m_library); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_library;
    TrackHistory m_history;
};

void TestTrackHistory::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    const QString song = Fixtures::copyTone("mp3", m_folder->path(), "song");
    m_library = Fixtures::writeLibrary(
        m_folder->filePath("Library.xml"),
        Fixtures::itunesLibrary({Fixtures::itunesTrack(0, song), Fixtures::itunesTrack(1),
                                 Fixtures::itunesTrack(2), Fixtures::itunesTrack(3)}));
    setITunesLibraryOption(m_library.toUtf8().constData());
    QCOMPARE(count(), 4);
}

void TestTrackHistory::cleanup()
{
    m_history.forget();
    QVERIFY(m_history.isEmpty());
    closeITunesLibrary();
    AudioFile::takeLog();
    m_folder.reset();
}

void TestTrackHistory::edit(const char* name)
{
    QCOMPARE(set_trackWithPresistentID(EyeTunes::sharedInstance(), id(0), name, "", "", "", 0, nullptr), 0);
    m_history.addEdit(id(0));
}

void TestTrackHistory::remove(const QVector<quint64>& tracks)
{
    for (const quint64 track : tracks)
        QCOMPARE(int(deleteMusic(track)), 1);
    m_history.addDeletion(tracks);
}

int TestTrackHistory::count()
{
    iTunesTrackRecord* records = nullptr;
    int count = 0;
    GetMusicInfo(&records, &count);
    return count;
}

void TestTrackHistory::theNewestStepComesBackFirst()
{
    const QByteArray before = content();
    edit("One");
    remove({id(1), id(3)});
    edit("Two");
    remove({id(0)});
    QCOMPARE(m_history.steps(), 4);
    for (const auto& [kind, tracks] :
         {std::pair(Kind::Deletion, QVector<quint64>{id(0)}), std::pair(Kind::Edit, QVector<quint64>{id(0)}),
          std::pair(Kind::Deletion, QVector<quint64>{id(1), id(3)}),
          std::pair(Kind::Edit, QVector<quint64>{id(0)})}) {
        const TrackHistory::TakenBack back = m_history.takeBack();
        QCOMPARE(back.kind, kind);
        QCOMPARE(back.tracks, tracks);
        QCOMPARE(back.problem, ITUNES_EDIT_DONE);
    }
    QVERIFY(m_history.isEmpty());
    QCOMPARE(m_history.takeBack().kind, Kind::Nothing);
    closeITunesLibrary();
    QCOMPARE(content(), before);
}

void TestTrackHistory::aStepThatCannotComeBackIsForgotten()
{
    remove({id(1)});
    edit("One");
    const QString song = m_folder->filePath("song.mp3");
    QCOMPARE(AudioFile::write(song, {{0, "By another program"}}), 0);
    const TrackHistory::TakenBack back = m_history.takeBack();
    QCOMPARE(back.kind, Kind::Edit);
    QCOMPARE(back.problem, ITUNES_CHANGED_SINCE);
    QCOMPARE(m_history.steps(), 1);
    QCOMPARE(m_history.takeBack().problem, ITUNES_EDIT_DONE);
    QCOMPARE(count(), 4);
    // The library forgets with a new reading.
    remove({id(1)});
    count();
    QCOMPARE(m_history.takeBack().problem, ITUNES_NOT_KEPT);
    QCOMPARE(count(), 3);
}

void TestTrackHistory::aHundredStepsAreKept()
{
    for (int i = 0; i <= TrackHistory::mostSteps; ++i)
        m_history.addEdit(id(0));
    QCOMPARE(m_history.steps(), int(TrackHistory::mostSteps));
}

void TestTrackHistory::nothingIsNoStep()
{
    m_history.addDeletion({});
    QVERIFY(m_history.isEmpty());
}

QTEST_GUILESS_MAIN(TestTrackHistory)
#include "tst_trackhistory.moc"
