#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "itunesfixture.h"
#include "librarycalls.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

#include <csignal>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using Fixtures::ITunesPlaylist;
using Fixtures::ITunesTrack;
using LibraryCalls::contentOf;
using LibraryCalls::Edit;
using LibraryCalls::Reading;

namespace {
constexpr int writingPause = 10000; // the longest wait for a writing in the background

ino_t fileNumber(const QString& path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_ino : 0;
}

/// A document as another Unicode encoding has it.
QByteArray inCodec(const QByteArray& utf8, const char* codec)
{
    QTextCodec::ConverterState plain(QTextCodec::IgnoreHeader);
    const QString text = QString::fromUtf8(utf8);
    return QTextCodec::codecForName(codec)->fromUnicode(text.constData(), text.size(), &plain);
}
} // namespace

class TestLibraryChanges : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void anEditChangesTheTagsAndTheEntryAndNothingElse();
    void editsOfEveryFormatAreInTheFile_data();
    void editsOfEveryFormatAreInTheFile();
    void fieldsComeAndGo();
    void theEntryKeepsItsOddForms();
    void anEditThatSaysNothingNewLeavesTheFile();
    void aDeletionTakesTheEntryAndItsPlaces();
    void playlistsMayComeFirst();
    void utf16StaysUtf16_data();
    void utf16StaysUtf16();
    void changesShowBeforeTheyAreWritten();
    void theFileIsWrittenWhenTheChangesPause();
    void oneBackupHoldsTheFileAsItWas();
    void aJournalThatIsLeftIsApplied();
    void aTornLineIsNoChange();
    void anotherProgramsVersionIsTheBase();
    void aBrokenFileIsLeftAloneAndTheChangesWait();
    void tracksThatAreNotThereCannotChange();
    void aMediaFileThatCannotBeWrittenFailsTheEdit();
    void aReadOnlyLibraryFailsEveryChange();
    void aFullDiskFailsTheChange();
    void anotherProcessKeepsItsJournal();
    void aLinkToTheLibraryStaysALink();
    void coversAreWrittenUnlessTheyAreTheSame();
    void manyDeletionsWriteTheFileAFewTimes();
    void callsFromManyThreadsAllArrive();
    void closingIsAlwaysAllowed();

private:
    QString library() const { return m_folder->filePath("Library.xml"); }
    QString journal() const { return library() + ".melodrift-journal"; }
    void make(const QByteArray& bytes);
    /// A library of songs of which the first few have a real file.
    void makeSongs(int count, int real = 0);
    quint64 id(int number) const { return Fixtures::itunesTrack(number).persistentId; }
    QString media(int number) const { return m_folder->filePath(QString("song%1.mp3").arg(number)); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QVector<ITunesTrack> m_tracks;
    QVector<ITunesPlaylist> m_playlists;
};

void TestLibraryChanges::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    AudioFile::takeLog();
}

void TestLibraryChanges::cleanup()
{
    closeITunesLibrary();
    const QStringList left = QDir(m_folder->path()).entryList({".melodrift*"}, QDir::Files | QDir::Hidden);
    QVERIFY2(left.isEmpty(), qPrintable(left.join(' ')));
    m_folder.reset();
}

void TestLibraryChanges::make(const QByteArray& bytes)
{
    Fixtures::writeLibrary(library(), bytes);
    LibraryCalls::read(library());
}

void TestLibraryChanges::makeSongs(int count, int real)
{
    m_tracks.clear();
    ITunesPlaylist all{"All", {}};
    ITunesPlaylist odd{"Odd", {}};
    for (int i = 0; i < count; ++i) {
        if (i < real)
            Fixtures::copyTone("mp3", m_folder->path(), QString("song%1").arg(i));
        m_tracks.append(Fixtures::itunesTrack(i, media(i)));
        all.trackIds.append(m_tracks.last().trackId);
        if (i % 2 == 1)
            odd.trackIds.append(m_tracks.last().trackId);
    }
    m_playlists = {all, odd};
    make(Fixtures::itunesLibrary(m_tracks, m_playlists));
}

void TestLibraryChanges::anEditChangesTheTagsAndTheEntryAndNothingElse()
{
    makeSongs(3, 3);
    const QByteArray silence = contentOf(media(0));
    Edit edit;
    edit.name = "L\xC3\xB6we & <M\xC3\xA4us>";
    QCOMPARE(LibraryCalls::edit(id(1), edit), 0);
    closeITunesLibrary();

    m_tracks[1].name = edit.name;
    m_tracks[1].album = edit.album;
    m_tracks[1].artist = edit.artist;
    m_tracks[1].genre = edit.genre;
    m_tracks[1].year = quint64(edit.year);
    QCOMPARE(contentOf(library()), Fixtures::itunesLibrary(m_tracks, m_playlists));
    const auto texts = AudioFile::read(media(1)).texts;
    QCOMPARE(texts.value(TAG_TITLE), QString::fromUtf8(edit.name));
    QCOMPARE(texts.value(TAG_ALBUM), QString::fromUtf8(edit.album));
    QCOMPARE(texts.value(TAG_ARTIST), QString::fromUtf8(edit.artist));
    QCOMPARE(texts.value(TAG_GENRE), QString::fromUtf8(edit.genre));
    QCOMPARE(texts.value(TAG_YEAR), QString("2001"));
    QCOMPARE(contentOf(media(0)), silence);
    QVERIFY(!QFile::exists(journal()));
    QVERIFY(AudioFile::takeLog().isEmpty());
}

void TestLibraryChanges::editsOfEveryFormatAreInTheFile_data()
{
    QTest::addColumn<QString>("kind");
    for (const QString& kind : Fixtures::formats())
        QTest::newRow(qPrintable(kind)) << kind;
}

void TestLibraryChanges::editsOfEveryFormatAreInTheFile()
{
    QFETCH(QString, kind);
    const QString file = Fixtures::copyTone(kind, m_folder->path(), QStringLiteral("a b#100% 夜"));
    make(Fixtures::itunesLibrary({Fixtures::itunesTrack(0, file)}));
    Edit edit;
    edit.cover = Fixtures::writeLibrary(m_folder->filePath("cover.jpg"), Fixtures::jpeg(80, 80, 1));
    QCOMPARE(LibraryCalls::edit(id(0), edit), 0);
    const auto content = AudioFile::read(file);
    QCOMPARE(content.texts.value(TAG_TITLE), QString("New name"));
    QCOMPARE(content.texts.value(TAG_ARTIST), QString("New artist"));
    QCOMPARE(content.picture, Fixtures::jpeg(80, 80, 1));
}

void TestLibraryChanges::fieldsComeAndGo()
{
    ITunesTrack track = Fixtures::itunesTrack(0, Fixtures::copyTone("mp3", m_folder->path(), "song0"));
    make(Fixtures::itunesLibrary({track}));
    Edit none;
    none.name = none.album = none.artist = none.genre = QByteArray();
    none.year = 0;
    QCOMPARE(LibraryCalls::edit(id(0), none), 0);
    closeITunesLibrary();
    track.name = track.album = track.artist = track.genre = QByteArray();
    track.year = 0;
    QCOMPARE(contentOf(library()), Fixtures::itunesLibrary({track}));
    QVERIFY(AudioFile::read(media(0)).texts.isEmpty());

    const Edit back;
    QCOMPARE(LibraryCalls::edit(id(0), back), 0);
    closeITunesLibrary();
    track.name = back.name;
    track.album = back.album;
    track.artist = back.artist;
    track.genre = back.genre;
    track.year = quint64(back.year);
    QCOMPARE(contentOf(library()), Fixtures::itunesLibrary({track}));
}

void TestLibraryChanges::theEntryKeepsItsOddForms()
{
    Fixtures::copyTone("mp3", m_folder->path(), "song0");
    const QByteArray head =
        "<?xml version='1.0'?><plist><dict><key>Tracks</key><dict><key>7</key><dict><!-- here -->";
    const QByteArray id = "<key>Persistent ID</key><string>" + Fixtures::itunesIdentifier(this->id(0)) +
                          "</string><key>Location</key><string>" + Fixtures::itunesLocation(media(0)) +
                          "</string>";
    const QByteArray tail =
        "</dict></dict><key>Rest</key>\r\n\x01<string>\xFF &bad</string></dict></plist>\r\n<!-- end -->";
    make(head + "\r\n <key >Name</key> <string><![CDATA[Old]]></string\n><key>Artist</key><string/>" +
         "<key>Genre</key><string>P&#111;p</string><key>Name</key><string>Twice</string>" + id + tail);
    QCOMPARE(LibraryCalls::edit(this->id(0), Edit()), 0);
    closeITunesLibrary();
    QCOMPARE(
        contentOf(library()),
        head +
            "\r\n <key >Name</key> <string><![CDATA[Old]]></string\n><key>Artist</key><string>New "
            "artist</string>" +
            "<key>Genre</key><string>P&#111;p</string><key>Name</key><string>New name</string>"
            "\r\n <key>Album</key><string>New album</string>\r\n <key>Year</key><integer>2001</integer>" +
            id + tail);
    QCOMPARE(LibraryCalls::names(LibraryCalls::read()), QStringList("New name"));
}

void TestLibraryChanges::anEditThatSaysNothingNewLeavesTheFile()
{
    makeSongs(1, 1);
    const ino_t before = fileNumber(library());
    const ITunesTrack& track = m_tracks.first();
    QCOMPARE(LibraryCalls::edit(
                 id(0), {track.name, track.album, track.artist, track.genre, int(track.year), QString()}),
             0);
    closeITunesLibrary();
    QCOMPARE(fileNumber(library()), before);
    QVERIFY(!QFile::exists(journal()));
}

void TestLibraryChanges::aDeletionTakesTheEntryAndItsPlaces()
{
    makeSongs(6, 2);
    for (const int gone : {1, 5, 0})
        QCOMPARE(int(deleteMusic(id(gone))), 1);
    closeITunesLibrary();
    for (const int gone : {5, 1, 0}) {
        m_playlists[0].trackIds.removeAll(m_tracks.at(gone).trackId);
        m_playlists[1].trackIds.removeAll(m_tracks.at(gone).trackId);
        m_tracks.removeAt(gone);
    }
    QCOMPARE(contentOf(library()), Fixtures::itunesLibrary(m_tracks, m_playlists));
    QVERIFY(QFile::exists(media(0)));
    QVERIFY(QFile::exists(media(1)));
}

void TestLibraryChanges::playlistsMayComeFirst()
{
    const QByteArray item = "<dict><key>Other</key><true/><key>Track ID</key><integer>2</integer></dict>";
    const auto document = [&](const QByteArray& items, const QByteArray& entry) {
        return "<plist><dict><key>Playlists</key><array><dict><key>Playlist Items</key><array> "
               "<dict><key>Track "
               "ID</key><integer>1</integer></dict>" +
               items + "</array></dict></array><key>Tracks</key><dict><key>1</key><dict/>" + entry +
               "</dict></dict></plist>";
    };
    make(document("\n" + item + " <!-- stays -->\n" + item,
                  "\n<key>2</key><dict><key>Persistent ID</key><string>00000000000000ab</string></dict>"));
    QCOMPARE(int(deleteMusic(0xAB)), 1);
    closeITunesLibrary();
    QCOMPARE(contentOf(library()), document(" <!-- stays -->", ""));
}

void TestLibraryChanges::utf16StaysUtf16_data()
{
    QTest::addColumn<QByteArray>("codec");
    QTest::newRow("little") << QByteArray("UTF-16LE");
    QTest::newRow("big") << QByteArray("UTF-16BE");
}

void TestLibraryChanges::utf16StaysUtf16()
{
    QFETCH(QByteArray, codec);
    const QString file = Fixtures::copyTone("mp3", m_folder->path(), "song0");
    ITunesTrack track = Fixtures::itunesTrack(0, file);
    const ITunesTrack gone = Fixtures::itunesTrack(1);
    ITunesTrack odd = Fixtures::itunesTrack(2);
    odd.name = "\xF0\x9F\x98\x80";
    const QByteArray mark = inCodec("\xEF\xBB\xBF", codec.constData());
    // A lone surrogate half stays what it is, too.
    const QByteArray half = codec == "UTF-16LE" ? QByteArray("\x00\xD8", 2) : QByteArray("\xD8\x00", 2);
    make(mark + inCodec(Fixtures::itunesLibrary({track, gone, odd}, {{"All", {1000, 1002, 1004}}}), codec) +
         inCodec("<!--", codec) + half + inCodec("-->", codec));
    Edit edit;
    edit.name = "\xF0\x9F\x8E\xB5 \xE5\xA4\x9C";
    QCOMPARE(LibraryCalls::edit(id(0), edit), 0);
    QCOMPARE(int(deleteMusic(id(1))), 1);
    closeITunesLibrary();
    track.name = edit.name;
    track.album = edit.album;
    track.artist = edit.artist;
    track.genre = edit.genre;
    track.year = quint64(edit.year);
    QCOMPARE(contentOf(library()),
             mark + inCodec(Fixtures::itunesLibrary({track, odd}, {{"All", {1000, 1004}}}), codec) +
                 inCodec("<!--", codec) + half + inCodec("-->", codec));
}

void TestLibraryChanges::changesShowBeforeTheyAreWritten()
{
    makeSongs(3, 1);
    const QByteArray before = contentOf(library());
    QCOMPARE(LibraryCalls::edit(id(0), Edit()), 0);
    QCOMPARE(int(deleteMusic(id(1))), 1);
    QCOMPARE(contentOf(library()), before);
    const Reading reading = LibraryCalls::read();
    QCOMPARE(LibraryCalls::names(reading), QStringList({"New name", QString::fromUtf8(m_tracks.at(2).name)}));
    QCOMPARE(quint64(reading.records[0].year), Q_UINT64_C(2001));
}

void TestLibraryChanges::theFileIsWrittenWhenTheChangesPause()
{
    makeSongs(3);
    QCOMPARE(int(deleteMusic(id(1))), 1);
    QVERIFY(QFile::exists(journal()));
    QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(journal()), writingPause);
    m_playlists[0].trackIds.removeAll(m_tracks.at(1).trackId);
    m_playlists[1].trackIds.clear();
    m_tracks.removeAt(1);
    const QByteArray written = contentOf(library());
    QVERIFY(!written.contains(Fixtures::itunesIdentifier(id(1))));
    QCOMPARE(LibraryCalls::read().count, 2);
    // And again, with a new journal.
    QCOMPARE(int(deleteMusic(id(2))), 1);
    QTRY_VERIFY_WITH_TIMEOUT(contentOf(library()) != written, writingPause);
}

void TestLibraryChanges::oneBackupHoldsTheFileAsItWas()
{
    makeSongs(4);
    const QByteArray before = contentOf(library());
    QVERIFY(!QFile::exists(library() + ".melodrift-backup"));
    QCOMPARE(int(deleteMusic(id(0))), 1);
    QCOMPARE(contentOf(library() + ".melodrift-backup"), before);
    QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(journal()), writingPause);
    QCOMPARE(int(deleteMusic(id(1))), 1);
    closeITunesLibrary();
    QCOMPARE(contentOf(library() + ".melodrift-backup"), before);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden).size(), 2);
}

void TestLibraryChanges::aJournalThatIsLeftIsApplied()
{
    makeSongs(4, 1);
    const QByteArray before = contentOf(library());
    Edit edit;
    edit.name = "Tab\tand\nline \\n & \xC3\xA9";
    QCOMPARE(LibraryCalls::edit(id(0), edit), 0);
    QCOMPARE(int(deleteMusic(id(1))), 1);
    const QByteArray left = contentOf(journal());
    closeITunesLibrary();
    const QByteArray after = contentOf(library());

    // As a kill before the writing leaves it; read, then prepared only.
    for (const bool reading : {true, false}) {
        Fixtures::writeLibrary(library(), before);
        Fixtures::writeLibrary(journal(), left);
        if (reading)
            QCOMPARE(LibraryCalls::read(library()).count, 3);
        else
            launchiTunes();
        QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(journal()), writingPause);
        QCOMPARE(contentOf(library()), after);
        closeITunesLibrary();
    }
}

void TestLibraryChanges::aTornLineIsNoChange()
{
    makeSongs(4);
    const QByteArray before = contentOf(library());
    QCOMPARE(int(deleteMusic(id(0))), 1);
    const QByteArray whole = contentOf(journal()).trimmed();
    closeITunesLibrary();
    for (int size = 0; size <= whole.size(); ++size) {
        Fixtures::writeLibrary(library(), before);
        Fixtures::writeLibrary(journal(), whole.left(size));
        const bool counts = size == whole.size();
        QCOMPARE(LibraryCalls::read(library()).count, counts ? 3 : 4);
        // The next change does not suffer.
        if (size % 7 == 0) {
            QCOMPARE(int(deleteMusic(id(3))), 1);
            closeITunesLibrary();
            QCOMPARE(LibraryCalls::read(library()).count, counts ? 2 : 3);
        }
        closeITunesLibrary();
        QVERIFY(!QFile::exists(journal()));
    }
    Fixtures::writeLibrary(library(), before);
    Fixtures::writeLibrary(journal(),
                           "rubbish\n+delete\t1\t0\n" + QByteArray(1000, '\0') + "\n+\n+\t\n\n" + whole);
    QCOMPARE(LibraryCalls::read(library()).count, 3);
}

void TestLibraryChanges::anotherProgramsVersionIsTheBase()
{
    makeSongs(4);
    QCOMPARE(int(deleteMusic(id(0))), 1);
    // Meanwhile: another title, a track more, and the deleted one in a new playlist.
    m_tracks[2].name = "By another program";
    m_tracks.append(Fixtures::itunesTrack(9));
    m_playlists.append({"New", {1000, 1002}});
    Fixtures::writeLibrary(library(), Fixtures::itunesLibrary(m_tracks, m_playlists));
    closeITunesLibrary();
    m_tracks.removeFirst();
    for (ITunesPlaylist& playlist : m_playlists)
        playlist.trackIds.removeAll(1000);
    QCOMPARE(contentOf(library()), Fixtures::itunesLibrary(m_tracks, m_playlists));
}

void TestLibraryChanges::aBrokenFileIsLeftAloneAndTheChangesWait()
{
    makeSongs(4);
    const QByteArray before = contentOf(library());
    QCOMPARE(int(deleteMusic(id(0))), 1);
    const QByteArray broken = before.left(before.size() / 2);
    Fixtures::writeLibrary(library(), broken);
    closeITunesLibrary();
    QCOMPARE(contentOf(library()), broken);
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().contains("line "), qPrintable(log.first()));
    QCOMPARE(LibraryCalls::read(library()).count, 0);
    Fixtures::writeLibrary(library(), before);
    QCOMPARE(LibraryCalls::read(library()).count, 3);
    closeITunesLibrary();
    QVERIFY(!QFile::exists(journal()));
}

void TestLibraryChanges::tracksThatAreNotThereCannotChange()
{
    makeSongs(2, 1);
    const QByteArray before = contentOf(library());
    QCOMPARE(int(deleteMusic(0)), 0);
    QCOMPARE(int(deleteMusic(12345)), 0);
    QVERIFY(LibraryCalls::edit(0, Edit()) != 0);
    QVERIFY(LibraryCalls::edit(12345, Edit()) != 0);
    QVERIFY(!QFile::exists(journal()));
    QVERIFY(!QFile::exists(library() + ".melodrift-backup"));
    QCOMPARE(int(deleteMusic(id(0))), 1);
    QCOMPARE(int(deleteMusic(id(0))), 0);
    QVERIFY(LibraryCalls::edit(id(0), Edit()) != 0);
    QVERIFY(contentOf(library()) == before);
}

void TestLibraryChanges::aMediaFileThatCannotBeWrittenFailsTheEdit()
{
    makeSongs(3, 2);
    const QByteArray before = contentOf(library());
    const QByteArray song = contentOf(media(1));
    QCOMPARE(::chmod(QFile::encodeName(media(1)).constData(), 0444), 0);
    QVERIFY(LibraryCalls::edit(id(1), Edit()) != 0); // read-only
    QCOMPARE(AudioFile::takeLog().size(), 1);
    QVERIFY(LibraryCalls::edit(id(2), Edit()) != 0); // not there
    QCOMPARE(AudioFile::takeLog().size(), 1);
    Fixtures::writeLibrary(media(2), "no music at all");
    QVERIFY(LibraryCalls::edit(id(2), Edit()) != 0);
    QVERIFY(!AudioFile::takeLog().isEmpty());
    QCOMPARE(LibraryCalls::names(LibraryCalls::read()).at(1), QString::fromUtf8(m_tracks.at(1).name));
    closeITunesLibrary();
    QCOMPARE(contentOf(library()), before);
    QCOMPARE(contentOf(media(1)), song);
    QCOMPARE(contentOf(media(2)), QByteArray("no music at all"));
    QVERIFY(!QFile::exists(journal()));
}

void TestLibraryChanges::aReadOnlyLibraryFailsEveryChange()
{
    makeSongs(2, 2);
    const QByteArray before = contentOf(library());
    const QByteArray song = contentOf(media(0));
    QCOMPARE(::chmod(QFile::encodeName(library()).constData(), 0444), 0);
    QCOMPARE(int(deleteMusic(id(0))), 0);
    QVERIFY(LibraryCalls::edit(id(0), Edit()) != 0);
    QCOMPARE(AudioFile::takeLog().size(), 2);
    QCOMPARE(LibraryCalls::read().count, 2);
    QCOMPARE(contentOf(library()), before);
    QCOMPARE(contentOf(media(0)), song);
    QVERIFY(!QFile::exists(journal()));
}

void TestLibraryChanges::aFullDiskFailsTheChange()
{
    // A limit on file sizes ends writes as a full disk does.
    std::signal(SIGXFSZ, SIG_IGN);
    makeSongs(200, 1);
    const QByteArray before = contentOf(library());
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    // No room for a backup; then for that, but not for the new library's lines.
    const rlimit small{rlim_t(before.size() / 2), limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    QCOMPARE(int(deleteMusic(id(1))), 0);
    QVERIFY(LibraryCalls::edit(id(0), Edit()) != 0);
    setrlimit(RLIMIT_FSIZE, &limit);
    QCOMPARE(AudioFile::takeLog().size(), 2);
    QVERIFY(!QFile::exists(journal()));
    QVERIFY(AudioFile::read(media(0)).texts.isEmpty());

    QCOMPARE(int(deleteMusic(id(1))), 1);
    setrlimit(RLIMIT_FSIZE, &small);
    closeITunesLibrary();
    setrlimit(RLIMIT_FSIZE, &limit);
    QCOMPARE(contentOf(library()), before);
    QVERIFY(QFile::exists(journal()));
    QCOMPARE(LibraryCalls::read(library()).count, 199);
}

void TestLibraryChanges::anotherProcessKeepsItsJournal()
{
    makeSongs(3);
    const QByteArray theirs = "+delete\tof another process\t0\n";
    Fixtures::writeLibrary(journal(), theirs);
    const int lock = ::open(QFile::encodeName(journal()).constData(), O_RDWR | O_CLOEXEC);
    QCOMPARE(::flock(lock, LOCK_EX | LOCK_NB), 0);
    QCOMPARE(int(deleteMusic(id(0))), 0);
    QCOMPARE(AudioFile::takeLog().size(), 1);
    QCOMPARE(LibraryCalls::read().count, 3);
    closeITunesLibrary();
    QCOMPARE(contentOf(journal()), theirs);
    ::close(lock);
    QCOMPARE(int(deleteMusic(id(0))), 1);
}

void TestLibraryChanges::aLinkToTheLibraryStaysALink()
{
    makeSongs(3);
    closeITunesLibrary();
    QDir(m_folder->path()).mkdir("elsewhere");
    const QString link = m_folder->filePath("elsewhere/Library.xml");
    QVERIFY(QFile::link(library(), link));
    QCOMPARE(LibraryCalls::read(link).count, 3);
    QCOMPARE(int(deleteMusic(id(0))), 1);
    closeITunesLibrary();
    QVERIFY(QFileInfo(link).isSymLink());
    QVERIFY(!QFileInfo(library()).isSymLink());
    QCOMPARE(LibraryCalls::read(link).count, 2);
}

void TestLibraryChanges::coversAreWrittenUnlessTheyAreTheSame()
{
    makeSongs(1, 1);
    const QString cover = Fixtures::writeLibrary(m_folder->filePath("cover.jpg"), Fixtures::jpeg(90, 90, 1));
    Edit edit;
    edit.cover = cover;
    QCOMPARE(LibraryCalls::edit(id(0), edit), 0);
    QCOMPARE(AudioFile::read(media(0)).picture, Fixtures::jpeg(90, 90, 1));
    const ino_t before = fileNumber(media(0));
    for (const QString& same : {cover, m_folder->filePath("nowhere"), m_folder->path(), QString(),
                                Fixtures::writeLibrary(m_folder->filePath("empty"), QByteArray())}) {
        edit.cover = same;
        QCOMPARE(LibraryCalls::edit(id(0), edit), 0);
        QCOMPARE(fileNumber(media(0)), before); // not even written
    }
    edit.cover = Fixtures::writeLibrary(cover, Fixtures::jpeg(70, 70, 2));
    QCOMPARE(LibraryCalls::edit(id(0), edit), 0);
    QCOMPARE(AudioFile::read(media(0)).picture, Fixtures::jpeg(70, 70, 2));
}

void TestLibraryChanges::manyDeletionsWriteTheFileAFewTimes()
{
    constexpr int count = 3000;
    makeSongs(count);
    QSet<ino_t> versions;
    for (int i = 0; i < count; i += 2) {
        QCOMPARE(int(deleteMusic(id(i))), 1);
        versions.insert(fileNumber(library()));
    }
    closeITunesLibrary();
    QVERIFY2(versions.size() <= 5, qPrintable(QString::number(versions.size())));
    QCOMPARE(LibraryCalls::read(library()).count, count / 2);
}

void TestLibraryChanges::callsFromManyThreadsAllArrive()
{
    constexpr int count = 120;
    makeSongs(count, 3);
    std::thread deleting([&] {
        for (int i = 10; i < count; i += 2)
            deleteMusic(id(i));
    });
    std::thread asking([&] {
        for (int i = 0; i < count; ++i)
            LibraryCalls::writeArtwork(id(i), m_folder->filePath("cover"));
    });
    for (int i = 0; i < 30; ++i)
        QCOMPARE(
            LibraryCalls::edit(id(i % 3), {"N" + QByteArray::number(i), "A", "B", "Pop", 2000, QString()}),
            0);
    deleting.join();
    asking.join();
    const Reading reading = LibraryCalls::read();
    QCOMPARE(reading.count, count - (count - 10) / 2);
    QCOMPARE(LibraryCalls::names(reading).mid(0, 3), QStringList({"N27", "N28", "N29"}));
    closeITunesLibrary();
    QCOMPARE(LibraryCalls::read(library()).count, reading.count);
}

void TestLibraryChanges::closingIsAlwaysAllowed()
{
    closeITunesLibrary();
    closeITunesLibrary();
    makeSongs(2);
    closeITunesLibrary();
    // The records live on, and changes are possible again.
    QCOMPARE(int(deleteMusic(id(0))), 1);
    closeITunesLibrary();
    QCOMPARE(LibraryCalls::read(library()).count, 1);
}

QTEST_GUILESS_MAIN(TestLibraryChanges)
#include "tst_librarychanges.moc"
