#include "songlibrary.h"

#include <expat.h>

#include <QHash>
#include <QProcess>
#include <QRandomGenerator>
#include <QSet>
#include <QtTest>

#include <unistd.h>

using LibraryCalls::contentOf;
using LibraryCalls::Reading;

namespace {
constexpr int editedSongs = 3; // those with a media file

/// What an independent parser says.
bool isWellFormed(const QByteArray& document)
{
    const XML_Parser parser = XML_ParserCreate(nullptr);
    const bool sound = XML_Parse(parser, document.constData(), document.size(), 1) == XML_STATUS_OK;
    XML_ParserFree(parser);
    return sound;
}
} // namespace

/// Another process changes the library and is killed; what it answered is known from its output.
class TestLibraryKill : public QObject
{
    Q_OBJECT

private slots:
    void aKillLosesNoAnsweredChangeAndNoLibrary();

private:
    void makeFresh();
    QByteArray outputOfKilledChanger(int seed);
    void noteAnswers(const QByteArray& output);
    void everyAnswerHolds();
    void everythingIsWritten();

    SongLibrary m_songs;
    QSet<QByteArray> m_left;               ///< identifiers
    QHash<QByteArray, QByteArray> m_names; ///< by identifier
    QRandomGenerator m_random{11};
    int m_changes = 0;
};

void TestLibraryKill::makeFresh()
{
    constexpr int songs = 2000;
    m_songs.makeSongs(songs, editedSongs);
    for (const Fixtures::ITunesTrack& track : qAsConst(m_songs.tracks)) {
        m_left.insert(Fixtures::itunesIdentifier(track.persistentId));
        m_names.insert(Fixtures::itunesIdentifier(track.persistentId), track.name);
    }
    closeITunesLibrary();
}

QByteArray TestLibraryKill::outputOfKilledChanger(int seed)
{
    QProcess changer;
    changer.start(QCoreApplication::applicationDirPath() + "/library_changer",
                  {m_songs.path(), QString::number(seed)});
    if (!changer.waitForReadyRead(30000)) // it is at work
        return QByteArray();
    ::usleep(useconds_t(m_random.bounded(40000)));
    changer.kill();
    changer.waitForFinished();
    const QByteArray output = changer.readAllStandardOutput();
    return output.left(output.lastIndexOf('\n') + 1);
}

void TestLibraryKill::noteAnswers(const QByteArray& output)
{
    for (const QByteArray& line : output.trimmed().split('\n')) {
        QVERIFY2(line.startsWith("D ") || line.startsWith("E "), line.constData());
        ++m_changes;
        const QByteArray id = line.mid(2, 16);
        if (line.startsWith("D "))
            m_left.remove(id);
        else
            m_names.insert(id, line.mid(19));
    }
}

/// The one change that was not answered any more may have happened or not.
void TestLibraryKill::everyAnswerHolds()
{
    QVERIFY(isWellFormed(m_songs.content()));
    QVERIFY(isWellFormed(contentOf(m_songs.backup())));
    const Reading reading = LibraryCalls::read(m_songs.path());
    QSet<QByteArray> there;
    int unanswered = m_left.size() - reading.count;
    for (int i = 0; i < reading.count; ++i) {
        const iTunesTrackRecord& record = reading.records[i];
        const QByteArray id = record.persistentId;
        QVERIFY(m_left.contains(id));
        QVERIFY(record.location);
        there.insert(id);
        unanswered += m_names.value(id) != record.name;
        m_names.insert(id, record.name);
    }
    QCOMPARE(there.size(), reading.count);
    QVERIFY2(unanswered == 0 || unanswered == 1, qPrintable(QString::number(unanswered)));
    m_left = there;
    closeITunesLibrary();
}

/// What the journal held is in the file now.
void TestLibraryKill::everythingIsWritten()
{
    QVERIFY(!QFile::exists(m_songs.journal()));
    const QByteArray written = m_songs.content();
    QVERIFY(isWellFormed(written));
    QCOMPARE(written.count("<key>Persistent ID</key>"), m_left.size());
    int places = m_left.size(); // each in its entry
    for (const Fixtures::ITunesPlaylist& playlist : qAsConst(m_songs.playlists))
        for (const int track : playlist.trackIds)
            places += m_left.contains(Fixtures::itunesIdentifier(SongLibrary::id((track - 1000) / 2)));
    QCOMPARE(written.count("<key>Track ID</key>"), places);
    const Reading reading = LibraryCalls::read(m_songs.path());
    QCOMPARE(reading.count, m_left.size());
    for (int i = 0; i < reading.count; ++i)
        QCOMPARE(m_names.value(reading.records[i].persistentId), QByteArray(reading.records[i].name));
    closeITunesLibrary();
}

void TestLibraryKill::aKillLosesNoAnsweredChangeAndNoLibrary()
{
    constexpr int kills = 200;
    int journals = 0;
    int writings = 0;
    for (int i = 0; i < kills; ++i) {
        if (m_left.size() < 200)
            makeFresh();
        const QByteArray output = outputOfKilledChanger(i);
        noteAnswers(output);
        journals += QFile::exists(m_songs.journal());
        writings += !m_songs.temporaries().isEmpty();
        everyAnswerHolds();
        everythingIsWritten();
        if (QTest::currentTestFailed())
            return;
    }
    qInfo("%d answered changes; %d of %d kills left a journal, %d came in the middle of a writing", m_changes,
          journals, kills, writings);
    QVERIFY(journals > kills / 4);
    QVERIFY(writings > 0);

    // New writings take away what the killed ones left.
    LibraryCalls::read(m_songs.path());
    for (int song = 0; song < editedSongs; ++song) {
        QCOMPARE(LibraryCalls::edit(SongLibrary::id(song), LibraryCalls::Edit()), 0);
        QVERIFY(AudioFile::properties(m_songs.media(song)).duration > 2900);
    }
    closeITunesLibrary();
    QVERIFY2(m_songs.temporaries().isEmpty(), qPrintable(m_songs.temporaries().join(' ')));
}

QTEST_GUILESS_MAIN(TestLibraryKill)
#include "tst_librarykill.moc"
