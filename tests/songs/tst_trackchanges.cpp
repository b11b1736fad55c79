#include "audiofile.h"
#include "filebytes.h"
#include "fixtures.h"
#include "itunes/delmusiclib.h"
#include "itunes/itunesmusiclibrary.h"
#include "itunes/takeback.h"
#include "itunes/tunesedit.h"
#include "itunesfixture.h"
#include "qmusicinfo.h"
#include "songfixtures.h"
#include "songs/trackchanges.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using Kind = TakenBack::Kind;

class TestTrackChanges : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { Fixtures::genericCover(); }
    void init();
    void cleanup();
    void theNewestChangeComesBackFirst();
    void whatCannotComeBackHasAReason();
    void whatChangedNothingIsNone();

private:
    static quint64 id(int song) { return Fixtures::itunesTrack(song).persistentId; }
    void edit(const char* name);
    void remove(const QVector<quint64>& tracks);
    void read();
    QByteArray content() const { return Fixtures::readBytes(m_library); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_library;
    iTunesTrackRecord* m_records = nullptr;
    int m_count = 0;
    std::unique_ptr<QMusicInfo> m_song; ///< of the first track
    ChangeHistory m_history;
};

void TestTrackChanges::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    const QString song = Fixtures::copyTone("mp3", m_folder->path(), "song");
    m_library = Fixtures::writeLibrary(
        m_folder->filePath("Library.xml"),
        Fixtures::itunesLibrary({Fixtures::itunesTrack(0, song), Fixtures::itunesTrack(1),
                                 Fixtures::itunesTrack(2), Fixtures::itunesTrack(3)}));
    setITunesLibraryOption(m_library.toUtf8().constData());
    read();
    QCOMPARE(m_count, 4);
}

void TestTrackChanges::cleanup()
{
    m_history.forget();
    closeITunesLibrary();
    AudioFile::takeLog();
    m_folder.reset();
}

void TestTrackChanges::read()
{
    GetMusicInfo(&m_records, &m_count);
    m_song = std::make_unique<QMusicInfo>();
    m_song->track = m_records;
}

void TestTrackChanges::edit(const char* name)
{
    QCOMPARE(set_trackWithPresistentID(EyeTunes::sharedInstance(), id(0), name, "", "", "", 0, nullptr), 0);
    m_history.add(TrackChanges::edit({name, "", "", "", 0, 0, QString()}, m_song.get()));
}

void TestTrackChanges::remove(const QVector<quint64>& tracks)
{
    for (const quint64 track : tracks)
        QCOMPARE(int(deleteMusic(track)), 1);
    m_history.add(TrackChanges::deletion(tracks, {}));
}

void TestTrackChanges::theNewestChangeComesBackFirst()
{
    const QByteArray before = content();
    edit("One");
    remove({id(1), id(3)});
    edit("Two");
    remove({id(0)});
    QCOMPARE(m_history.steps(), 4);
    QCOMPARE(m_history.name(), QString("the deletion of 1 track"));
    for (const Kind kind : {Kind::TakingOut, Kind::Edit, Kind::TakingOut, Kind::Edit}) {
        m_song->truth.reset();
        const TakenBack back = m_history.takeBack();
        QCOMPARE(back.kind, kind);
        QVERIFY(back.failed.isEmpty() && back.whyNoTrack.isEmpty());
        QCOMPARE(m_song->truth != nullptr, kind == Kind::Edit);
    }
    QCOMPARE(QByteArray(m_song->truth->name), QByteArray("One"));
    QVERIFY(m_history.isEmpty());
    closeITunesLibrary();
    QCOMPARE(content(), before);
}

void TestTrackChanges::whatCannotComeBackHasAReason()
{
    remove({id(1)});
    edit("One");
    AudioFile::write(m_folder->filePath("song.mp3"), {{0, "By another program"}});
    const TakenBack edit = m_history.takeBack();
    QCOMPARE(edit.kind, Kind::Edit);
    QCOMPARE(edit.failed.size(), 1);
    QCOMPARE(edit.failed.first().reason, QString("another program made changes since"));
    QVERIFY(edit.paths.isEmpty() && !m_song->truth);
    QCOMPARE(m_history.steps(), 1);
    read(); // the library forgets with a new reading
    QCOMPARE(m_count, 3);
    const TakenBack deletion = m_history.takeBack();
    QCOMPARE(deletion.kind, Kind::TakingOut);
    QCOMPARE(deletion.tracks, 1);
    QCOMPARE(deletion.whyNoTrack, QString("it is too long ago"));
    QVERIFY(m_history.isEmpty());
    read();
    QCOMPARE(m_count, 3);
}

void TestTrackChanges::whatChangedNothingIsNone()
{
    QVERIFY(!TrackChanges::deletion({}, {}));
    const auto edited = [this](const char* name) {
        const iTunesTrackRecord& track = *m_song->track;
        set_trackWithPresistentID(EyeTunes::sharedInstance(), id(0), name, track.album, track.artist,
                                  track.genre, int(track.year), nullptr);
        return TrackChanges::edit({name, "", "", "", 0, 0, QString()}, m_song.get()) != nullptr;
    };
    QVERIFY(!edited(m_song->track->name));
    QVERIFY(edited("One"));
    QVERIFY(!edited("One"));
    QCOMPARE(int(takeBackEdit(id(0))), 1);
    QVERIFY(QFile::remove(m_folder->filePath("song.mp3")));
    QVERIFY(!edited("Two"));
}

QTEST_MAIN(TestTrackChanges)
#include "tst_trackchanges.moc"
