#include "audiocore/tagitem.h"
#include "sanitized.h"
#include "songlibrary.h"

#include <expat.h>

#include <QHash>
#include <QProcess>
#include <QRandomGenerator>
#include <QSet>
#include <QtTest>

#include <algorithm>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <unistd.h>
#include <vector>

using LibraryCalls::contentOf;
using LibraryCalls::Reading;

namespace {
constexpr int editedSongs = 3; // those with a media file

/// What the changer puts into songs.
QByteArray pictureOf(int cover)
{
    return Fixtures::jpeg(60 + cover, 60, 3);
}

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
    void programsThatBeginAtOnceLoseNoAnsweredChange();
    void deletionsThatAreTakenBackAreBackOrNot_data();
    void deletionsThatAreTakenBackAreBackOrNot();

private:
    void makeFresh();
    QList<QByteArray> outputsOfKilledChangers(const QStringList& seeds, bool atWork);
    void noteAnswers(const QList<QByteArray>& outputs);
    void everyAnswerHolds(int killed);
    void theSongSays(int song, const QByteArray& name);
    void everythingIsWritten();
    QByteArray expectedDocument() const;

    SongLibrary m_songs;
    QSet<QByteArray> m_left; ///< identifiers
    /// By identifier: of those that were answered last by several copies at once one holds.
    QHash<QByteArray, QSet<QByteArray>> m_names;
    QByteArray m_original; ///< whose form was looked at
    QRandomGenerator m_random{11};
    int m_changes = 0;
};

void TestLibraryKill::makeFresh()
{
    constexpr int songs = 1000;
    m_songs.makeSongs(songs, editedSongs);
    for (const Fixtures::ITunesTrack& track : qAsConst(m_songs.tracks)) {
        m_left.insert(Fixtures::itunesIdentifier(track.persistentId));
        m_names.insert(Fixtures::itunesIdentifier(track.persistentId), {track.name});
    }
    for (int cover = 0; cover < 2; ++cover)
        Fixtures::writeLibrary(m_songs.inFolder(QString("cover%1.jpg").arg(cover)), pictureOf(cover));
    closeITunesLibrary();
}

/// What the programs said that ran at once and were killed: at work, or not long after their start.
QList<QByteArray> TestLibraryKill::outputsOfKilledChangers(const QStringList& seeds, bool atWork)
{
    std::vector<std::unique_ptr<QProcess>> changers;
    for (const QString& seed : seeds) {
        changers.push_back(std::make_unique<QProcess>());
        changers.back()->start(QCoreApplication::applicationDirPath() + "/library_changer",
                               {m_songs.path(), seed});
    }
    for (const auto& changer : changers)
        if (atWork ? !changer->waitForReadyRead(patience) : !changer->waitForStarted(patience))
            return {};
    ::usleep(useconds_t(m_random.bounded(atWork ? 40000 : 80000)));
    QList<QByteArray> outputs;
    for (const auto& changer : changers)
        changer->kill();
    for (const auto& changer : changers) {
        changer->waitForFinished(patience);
        const QByteArray output = changer->readAllStandardOutput();
        outputs.append(output.left(output.lastIndexOf('\n') + 1));
    }
    return outputs;
}

void TestLibraryKill::noteAnswers(const QList<QByteArray>& outputs)
{
    QHash<QByteArray, QSet<QByteArray>> names;
    for (const QByteArray& output : outputs) {
        QHash<QByteArray, QByteArray> last;
        for (const QByteArray& line : output.split('\n')) {
            if (line.isEmpty())
                continue;
            QVERIFY2(line.startsWith("D ") || line.startsWith("E "), line.constData());
            ++m_changes;
            const QByteArray id = line.mid(2, 16);
            if (line.startsWith("D "))
                m_left.remove(id);
            else
                last.insert(id, line.mid(19));
        }
        for (auto name = last.cbegin(); name != last.cend(); ++name)
            names[name.key()].insert(name.value());
    }
    for (auto name = names.cbegin(); name != names.cend(); ++name)
        m_names.insert(name.key(), name.value());
}

/// An edit that was begun is in both or in neither, all of it.
void TestLibraryKill::theSongSays(int song, const QByteArray& name)
{
    const AudioFile::Content content = AudioFile::read(m_songs.media(song));
    const bool edited = name.startsWith("Edit ");
    QCOMPARE(content.texts.value(TAG_TITLE), edited ? QString::fromUtf8(name) : QString());
    QCOMPARE(content.texts.value(TAG_ALBUM), edited ? QString(LibraryCalls::Edit().album) : QString());
    const int number = name.mid(name.lastIndexOf('-') + 1).toInt();
    if (edited && number % 3 != 0)
        QCOMPARE(content.picture, pictureOf(number % 2));
}

/// The one change of each program that was not answered any more may have happened or not.
void TestLibraryKill::everyAnswerHolds(int killed)
{
    QVERIFY(isWellFormed(m_songs.content()));
    if (const QByteArray original = contentOf(m_songs.originals().value(0)); original != m_original) {
        QVERIFY(isWellFormed(original));
        m_original = original;
    }
    QHash<QByteArray, int> songs;
    for (int song = 0; song < editedSongs; ++song)
        songs.insert(Fixtures::itunesIdentifier(SongLibrary::id(song)), song);
    const Reading reading = LibraryCalls::read(m_songs.path());
    QSet<QByteArray> there;
    int unanswered = m_left.size() - reading.count;
    for (int i = 0; i < reading.count; ++i) {
        const iTunesTrackRecord& record = reading.records[i];
        const QByteArray id = record.persistentId;
        QVERIFY(m_left.contains(id));
        QVERIFY(record.location);
        there.insert(id);
        unanswered += !m_names.value(id).contains(record.name);
        m_names.insert(id, {record.name});
        if (const auto song = songs.constFind(id); song != songs.constEnd())
            theSongSays(*song, record.name);
    }
    QCOMPARE(there.size(), reading.count);
    QVERIFY2(unanswered >= 0 && unanswered <= killed, qPrintable(QString::number(unanswered)));
    QVERIFY(m_songs.keptJournals().isEmpty());
    m_left = there;
    closeITunesLibrary();
}

/// The library as the changes leave it, byte for byte.
QByteArray TestLibraryKill::expectedDocument() const
{
    const LibraryCalls::Edit edit;
    QVector<Fixtures::ITunesTrack> tracks;
    QSet<int> gone;
    for (Fixtures::ITunesTrack track : m_songs.tracks) {
        const QByteArray id = Fixtures::itunesIdentifier(track.persistentId);
        if (!m_left.contains(id)) {
            gone.insert(track.trackId);
            continue;
        }
        const QByteArray name = *m_names.value(id).constBegin();
        if (name != track.name) {
            track.name = name;
            track.album = edit.album;
            track.artist = edit.artist;
            track.genre = edit.genre;
            track.year = quint64(edit.year);
        }
        tracks.append(track);
    }
    QVector<Fixtures::ITunesPlaylist> playlists = m_songs.playlists;
    for (Fixtures::ITunesPlaylist& playlist : playlists)
        playlist.trackIds.erase(std::remove_if(playlist.trackIds.begin(), playlist.trackIds.end(),
                                               [&](int track) { return gone.contains(track); }),
                                playlist.trackIds.end());
    return Fixtures::itunesLibrary(tracks, playlists);
}

/// What the journal held is in the file now.
void TestLibraryKill::everythingIsWritten()
{
    QVERIFY(!QFile::exists(m_songs.journal()));
    const QByteArray written = m_songs.content();
    QVERIFY(isWellFormed(written));
    QVERIFY(written == expectedDocument());
    const Reading reading = LibraryCalls::read(m_songs.path());
    QCOMPARE(reading.count, m_left.size());
    for (int i = 0; i < reading.count; ++i)
        QVERIFY(m_names.value(reading.records[i].persistentId).contains(reading.records[i].name));
    closeITunesLibrary();
}

void TestLibraryKill::aKillLosesNoAnsweredChangeAndNoLibrary()
{
    const int kills = sanitized ? 12 : 140;
    int journals = 0;
    int writings = 0;
    for (int i = 0; i < kills; ++i) {
        if (m_left.size() < 100)
            makeFresh();
        // Alone, two at once, and one that is killed when it takes over what the first one left.
        const QString seed = QString::number(i);
        noteAnswers(outputsOfKilledChangers(
            i % 4 == 1 ? QStringList({seed, seed + "000"}) : QStringList(seed), true));
        if (i % 4 == 3)
            noteAnswers(outputsOfKilledChangers({seed + "000"}, false));
        journals += QFile::exists(m_songs.journal());
        writings += !m_songs.temporaries().isEmpty();
        everyAnswerHolds(i % 2 + 1);
        everythingIsWritten();
        if (QTest::currentTestFailed())
            return;
    }
    qInfo("%d answered changes; %d of %d kills left a journal, %d came in the middle of a writing", m_changes,
          journals, kills, writings);
    QVERIFY(journals > kills / 4);
    QVERIFY(writings > 0 || sanitized); // one of five, or fewer

    // New writings take away what the killed ones left.
    LibraryCalls::read(m_songs.path());
    for (int song = 0; song < editedSongs; ++song) {
        QCOMPARE(LibraryCalls::edit(SongLibrary::id(song), LibraryCalls::Edit()), 0);
        QVERIFY(AudioFile::properties(m_songs.media(song)).duration > 2900);
    }
    closeITunesLibrary();
    QVERIFY2(m_songs.temporaries().isEmpty(), qPrintable(m_songs.temporaries().join(' ')));
}

/// Several programs delete one track each, at one moment and as their first change, and are killed.
void TestLibraryKill::programsThatBeginAtOnceLoseNoAnsweredChange()
{
    const int rounds = sanitized ? 4 : 30;
    constexpr int programs = 6;
    SongLibrary songs;
    const QString gatePath = Fixtures::writeLibrary(songs.inFolder("gate"), "");
    int answered = 0;
    for (int round = 0; round < rounds; ++round) {
        songs.makeSongs(programs);
        closeITunesLibrary();
        const int gate = ::open(QFile::encodeName(gatePath).constData(), O_RDWR | O_CLOEXEC);
        QCOMPARE(::flock(gate, LOCK_EX), 0);
        std::vector<std::unique_ptr<QProcess>> starters;
        for (int i = 0; i < programs; ++i) {
            starters.push_back(std::make_unique<QProcess>());
            starters.back()->start(QCoreApplication::applicationDirPath() + "/library_starter",
                                   {songs.path(), gatePath, Fixtures::itunesIdentifier(SongLibrary::id(i))});
        }
        for (const auto& starter : starters)
            QVERIFY(starter->waitForReadyRead(patience));
        ::close(gate);
        QSet<QByteArray> gone;
        for (int i = 0; i < programs; ++i) {
            QByteArray output = starters[i]->readAll();
            while (output.count('\n') < 2 && starters[i]->waitForReadyRead(patience))
                output += starters[i]->readAll();
            if (output == "ready\n1\n")
                gone.insert(Fixtures::itunesIdentifier(SongLibrary::id(i)));
            else
                QCOMPARE(output, QByteArray("ready\n0\n"));
        }
        for (const auto& starter : starters) {
            starter->kill();
            starter->waitForFinished(patience);
        }
        answered += gone.size();
        const Reading reading = LibraryCalls::read(songs.path());
        QCOMPARE(reading.count, programs - gone.size());
        for (int i = 0; i < reading.count; ++i)
            QVERIFY(!gone.contains(reading.records[i].persistentId));
        closeITunesLibrary();
        QCOMPARE(LibraryCalls::read(songs.path()).count, programs - gone.size());
    }
    QVERIFY2(answered >= rounds, qPrintable(QString::number(answered)));
}

void TestLibraryKill::deletionsThatAreTakenBackAreBackOrNot_data()
{
    QTest::addColumn<int>("written");
    QTest::newRow("from the file") << 300;
    QTest::newRow("from the journal") << 0;
    QTest::newRow("from both") << 200;
}

/// The library is the old one or the new one, whole; what was answered is the new one.
void TestLibraryKill::deletionsThatAreTakenBackAreBackOrNot()
{
    QFETCH(int, written);
    const int kills = sanitized ? 5 : 30;
    constexpr int songs = 2000;
    constexpr int gone = 300;
    SongLibrary library;
    library.makeSongs(songs);
    const QByteArray whole = library.content();
    QByteArrayList ids;
    for (int i = 0; i < songs; i += songs / gone)
        if (ids.size() < gone)
            ids.append(Fixtures::itunesIdentifier(SongLibrary::id(i)));
    for (const QByteArray& id : qAsConst(ids))
        QCOMPARE(int(deleteMusic(id.toULongLong(nullptr, 16))), 1);
    closeITunesLibrary();
    const QByteArray without = library.content();

    int back = 0;
    int answered = 0;
    for (int i = 0; i < kills; ++i) {
        Fixtures::writeLibrary(library.path(), whole);
        QProcess restorer;
        restorer.start(QCoreApplication::applicationDirPath() + "/library_restorer",
                       {library.path(), ids.join(','), QString::number(written)});
        QVERIFY(restorer.waitForReadyRead(patience));
        ::usleep(useconds_t(m_random.bounded(written > 0 ? 60000 : 3000)));
        restorer.kill();
        restorer.waitForFinished(patience);
        const QByteArray output = restorer.readAllStandardOutput();
        QVERIFY2(output.startsWith("deleted\n"), output.constData());
        const bool isAnswered = output.endsWith("back\n");
        const int count = LibraryCalls::read(library.path()).count;
        closeITunesLibrary();
        QVERIFY2(count == songs || (count == songs - gone && !isAnswered),
                 qPrintable(QString::number(count)));
        QVERIFY(library.content() == (count == songs ? whole : without));
        QVERIFY(!QFile::exists(library.journal()));
        QVERIFY(library.keptJournals().isEmpty());
        back += count == songs;
        answered += isAnswered;
    }
    qInfo("%d of %d kills left the tracks in the library, %d of them after the answer", back, kills,
          answered);
    LibraryCalls::read(library.path());
    QCOMPARE(int(deleteMusic(SongLibrary::id(1))), 1);
    closeITunesLibrary();
    QVERIFY2(library.temporaries().isEmpty(), qPrintable(library.temporaries().join(' ')));
}

QTEST_GUILESS_MAIN(TestLibraryKill)
#include "tst_librarykill.moc"
