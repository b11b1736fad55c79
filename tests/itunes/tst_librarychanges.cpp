#include "audiocore/tagitem.h"
#include "songlibrary.h"

#include <QTextCodec>
#include <QtTest>

#include <cerrno>
#include <thread>
#include <vector>

using Fixtures::ITunesTrack;
using LibraryCalls::contentOf;
using LibraryCalls::Edit;

namespace {
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
    void whatOnlyLooksLikePlaylistsStays();
    void tracksOfOneIdentifierCannotChange();
    void aNumberThatAnotherTrackHasStaysInThePlaylists();
    void utf16StaysUtf16_data();
    void utf16StaysUtf16();
    void tracksThatAreNotThereCannotChange();
    void manyTracksGoAtOneStroke();
    void ofOneStrokeAllTracksGoOrNone();
    void aMediaFileThatCannotBeWrittenFailsTheEdit();
    void coversAreWrittenUnlessTheyAreTheSame();

private:
    std::unique_ptr<SongLibrary> m_songs;
};

void TestLibraryChanges::init()
{
    m_songs = std::make_unique<SongLibrary>();
}

void TestLibraryChanges::cleanup()
{
    closeITunesLibrary();
    QVERIFY2(m_songs->temporaries().isEmpty(), qPrintable(m_songs->temporaries().join(' ')));
    m_songs.reset();
}

void TestLibraryChanges::anEditChangesTheTagsAndTheEntryAndNothingElse()
{
    m_songs->makeSongs(3, 3);
    const QByteArray silence = contentOf(m_songs->media(0));
    Edit edit;
    edit.name = "L\xC3\xB6we & <M\xC3\xA4us>";
    QCOMPARE(LibraryCalls::edit(m_songs->id(1), edit), 0);
    closeITunesLibrary();

    m_songs->tracks[1].name = edit.name;
    m_songs->tracks[1].album = edit.album;
    m_songs->tracks[1].artist = edit.artist;
    m_songs->tracks[1].genre = edit.genre;
    m_songs->tracks[1].year = quint64(edit.year);
    QCOMPARE(m_songs->content(), m_songs->document());
    const auto texts = AudioFile::read(m_songs->media(1)).texts;
    QCOMPARE(texts.value(TAG_TITLE), QString::fromUtf8(edit.name));
    QCOMPARE(texts.value(TAG_ALBUM), QString::fromUtf8(edit.album));
    QCOMPARE(texts.value(TAG_ARTIST), QString::fromUtf8(edit.artist));
    QCOMPARE(texts.value(TAG_GENRE), QString::fromUtf8(edit.genre));
    QCOMPARE(texts.value(TAG_YEAR), QString("2001"));
    QCOMPARE(contentOf(m_songs->media(0)), silence);
    QVERIFY(!QFile::exists(m_songs->journal()));
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
    const QString file = Fixtures::copyTone(kind, m_songs->folder(), QStringLiteral("a b#100% 夜"));
    m_songs->make(Fixtures::itunesLibrary({Fixtures::itunesTrack(0, file)}));
    Edit edit;
    edit.cover = Fixtures::writeLibrary(m_songs->inFolder("cover.jpg"), Fixtures::jpeg(80, 80, 1));
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), edit), 0);
    const auto content = AudioFile::read(file);
    QCOMPARE(content.texts.value(TAG_TITLE), QString("New name"));
    QCOMPARE(content.texts.value(TAG_ARTIST), QString("New artist"));
    QCOMPARE(content.picture, Fixtures::jpeg(80, 80, 1));
}

void TestLibraryChanges::fieldsComeAndGo()
{
    ITunesTrack track = Fixtures::itunesTrack(0, Fixtures::copyTone("mp3", m_songs->folder(), "song0"));
    m_songs->make(Fixtures::itunesLibrary({track}));
    Edit none;
    none.name = none.album = none.artist = none.genre = QByteArray();
    none.year = 0;
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), none), 0);
    closeITunesLibrary();
    track.name = track.album = track.artist = track.genre = QByteArray();
    track.year = 0;
    QCOMPARE(m_songs->content(), Fixtures::itunesLibrary({track}));
    QVERIFY(AudioFile::read(m_songs->media(0)).texts.isEmpty());

    const Edit back;
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), back), 0);
    closeITunesLibrary();
    track.name = back.name;
    track.album = back.album;
    track.artist = back.artist;
    track.genre = back.genre;
    track.year = quint64(back.year);
    QCOMPARE(m_songs->content(), Fixtures::itunesLibrary({track}));
}

void TestLibraryChanges::theEntryKeepsItsOddForms()
{
    Fixtures::copyTone("mp3", m_songs->folder(), "song0");
    const QByteArray head =
        "<?xml version='1.0'?><plist><dict><key>Tracks</key><dict><key>7</key><dict><!-- here -->";
    const QByteArray id = "<key>Persistent ID</key><string>" + Fixtures::itunesIdentifier(m_songs->id(0)) +
                          "</string><key>Location</key><string>" +
                          Fixtures::itunesLocation(m_songs->media(0)) + "</string>";
    const QByteArray tail =
        "</dict></dict><key>Rest</key>\r\n\x01<string>\xFF &bad</string></dict></plist>\r\n<!-- end -->";
    m_songs->make(
        head + "\r\n <key >Name</key> <string><![CDATA[Old]]></string\n><key>Artist</key><string/>" +
        "<key>Genre</key><string>P&#111;p</string><key>Name</key><string>Twice</string>" + id + tail);
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), Edit()), 0);
    closeITunesLibrary();
    QCOMPARE(
        m_songs->content(),
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
    m_songs->makeSongs(1, 1);
    const ino_t before = fileNumber(m_songs->path());
    const ITunesTrack& track = m_songs->tracks.first();
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), {track.name, track.album, track.artist, track.genre,
                                                 int(track.year), QString()}),
             0);
    closeITunesLibrary();
    QCOMPARE(fileNumber(m_songs->path()), before);
    QVERIFY(!QFile::exists(m_songs->journal()));
}

void TestLibraryChanges::aDeletionTakesTheEntryAndItsPlaces()
{
    m_songs->makeSongs(6, 2);
    for (const int gone : {1, 5, 0})
        QCOMPARE(int(deleteMusic(m_songs->id(gone))), 1);
    closeITunesLibrary();
    for (const int gone : {5, 1, 0}) {
        m_songs->playlists[0].trackIds.removeAll(m_songs->tracks.at(gone).trackId);
        m_songs->playlists[1].trackIds.removeAll(m_songs->tracks.at(gone).trackId);
        m_songs->tracks.removeAt(gone);
    }
    QCOMPARE(m_songs->content(), m_songs->document());
    QVERIFY(QFile::exists(m_songs->media(0)));
    QVERIFY(QFile::exists(m_songs->media(1)));
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
    m_songs->make(
        document("\n" + item + " <!-- stays -->\n" + item,
                 "\n<key>2</key><dict><key>Persistent ID</key><string>00000000000000ab</string></dict>"));
    QCOMPARE(int(deleteMusic(0xAB)), 1);
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), document(" <!-- stays -->", ""));
}

void TestLibraryChanges::whatOnlyLooksLikePlaylistsStays()
{
    const auto document = [](const QByteArray& entry) {
        return "<plist><dict><key>Own</key><array><dict><key>Playlist Items</key><array>"
               "<dict><key>Track ID</key><integer>2</integer></dict></array></dict></array>"
               "<key>Tracks</key><dict>" +
               entry + "</dict></dict></plist>";
    };
    m_songs->make(
        document("<key>2</key><dict><key>Persistent ID</key><string>00000000000000ab</string></dict>"));
    QCOMPARE(int(deleteMusic(0xAB)), 1);
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), document(""));
}

void TestLibraryChanges::tracksOfOneIdentifierCannotChange()
{
    m_songs->makeSongs(4, 3);
    m_songs->tracks[1].persistentId = m_songs->tracks.at(0).persistentId;
    m_songs->make(m_songs->document());
    const QByteArray song = contentOf(m_songs->media(0));
    AudioFile::takeLog();
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 0);
    QCOMPARE(AudioFile::takeLog().size(), 1);
    QVERIFY(LibraryCalls::edit(m_songs->id(0), Edit()) != 0);
    QCOMPARE(AudioFile::takeLog().size(), 1);
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), m_songs->document());
    QCOMPARE(contentOf(m_songs->media(0)), song);
    // They can be asked all the same, and the others are not concerned.
    LibraryCalls::Buffers<1024> first;
    QCOMPARE(first.call(m_songs->id(0)), 0);
    QVERIFY(QByteArray(first.bytes[5].data()).contains(QFileInfo(m_songs->media(0)).fileName().toUtf8()));
    for (const int other : {2, 3})
        QCOMPARE(int(deleteMusic(m_songs->id(other))), 1);
    QCOMPARE(LibraryCalls::read().count, 2);
}

void TestLibraryChanges::aNumberThatAnotherTrackHasStaysInThePlaylists()
{
    m_songs->makeSongs(4);
    m_songs->tracks[1].trackId = m_songs->tracks.at(0).trackId;
    m_songs->make(m_songs->document());
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 1);
    closeITunesLibrary();
    m_songs->tracks.removeAt(1);
    QCOMPARE(m_songs->content(), m_songs->document());
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1); // now there is no doubt
    closeITunesLibrary();
    m_songs->playlists[0].trackIds.removeAll(m_songs->tracks.takeFirst().trackId);
    QCOMPARE(m_songs->content(), m_songs->document());
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
    const QString file = Fixtures::copyTone("mp3", m_songs->folder(), "song0");
    ITunesTrack track = Fixtures::itunesTrack(0, file);
    const ITunesTrack gone = Fixtures::itunesTrack(1);
    ITunesTrack odd = Fixtures::itunesTrack(2);
    odd.name = "\xF0\x9F\x98\x80";
    const QByteArray mark = inCodec("\xEF\xBB\xBF", codec.constData());
    // A lone surrogate half stays what it is, too.
    const QByteArray half = codec == "UTF-16LE" ? QByteArray("\x00\xD8", 2) : QByteArray("\xD8\x00", 2);
    m_songs->make(mark +
                  inCodec(Fixtures::itunesLibrary({track, gone, odd}, {{"All", {1000, 1002, 1004}}}), codec) +
                  inCodec("<!--", codec) + half + inCodec("-->", codec));
    Edit edit;
    edit.name = "\xF0\x9F\x8E\xB5 \xE5\xA4\x9C";
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), edit), 0);
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 1);
    closeITunesLibrary();
    track.name = edit.name;
    track.album = edit.album;
    track.artist = edit.artist;
    track.genre = edit.genre;
    track.year = quint64(edit.year);
    QCOMPARE(m_songs->content(),
             mark + inCodec(Fixtures::itunesLibrary({track, odd}, {{"All", {1000, 1004}}}), codec) +
                 inCodec("<!--", codec) + half + inCodec("-->", codec));
}

void TestLibraryChanges::tracksThatAreNotThereCannotChange()
{
    m_songs->makeSongs(2, 1);
    const QByteArray before = m_songs->content();
    QCOMPARE(int(deleteMusic(0)), 0);
    QCOMPARE(int(deleteMusic(12345)), 0);
    QVERIFY(LibraryCalls::edit(0, Edit()) != 0);
    QVERIFY(LibraryCalls::edit(12345, Edit()) != 0);
    QVERIFY(!QFile::exists(m_songs->journal()));
    QVERIFY(!QFile::exists(m_songs->backup()));
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 0);
    QVERIFY(LibraryCalls::edit(m_songs->id(0), Edit()) != 0);
    QVERIFY(m_songs->content() == before);
}

void TestLibraryChanges::aMediaFileThatCannotBeWrittenFailsTheEdit()
{
    m_songs->makeSongs(3, 2);
    const QByteArray before = m_songs->content();
    const QByteArray song = contentOf(m_songs->media(1));
    QCOMPARE(::chmod(QFile::encodeName(m_songs->media(1)).constData(), 0444), 0);
    QVERIFY(LibraryCalls::edit(m_songs->id(1), Edit()) != 0); // read-only
    QCOMPARE(AudioFile::takeLog().size(), 1);
    QVERIFY(LibraryCalls::edit(m_songs->id(2), Edit()) != 0); // not there
    QCOMPARE(AudioFile::takeLog().size(), 1);
    Fixtures::writeLibrary(m_songs->media(2), "no music at all");
    QVERIFY(LibraryCalls::edit(m_songs->id(2), Edit()) != 0);
    QVERIFY(!AudioFile::takeLog().isEmpty());
    QCOMPARE(LibraryCalls::names(LibraryCalls::read()).at(1), QString::fromUtf8(m_songs->tracks.at(1).name));
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), before);
    QCOMPARE(contentOf(m_songs->media(1)), song);
    QCOMPARE(contentOf(m_songs->media(2)), QByteArray("no music at all"));
    QVERIFY(!QFile::exists(m_songs->journal()));
}

void TestLibraryChanges::coversAreWrittenUnlessTheyAreTheSame()
{
    m_songs->makeSongs(1, 1);
    const QString cover = Fixtures::writeLibrary(m_songs->inFolder("cover.jpg"), Fixtures::jpeg(90, 90, 1));
    Edit edit;
    edit.cover = cover;
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), edit), 0);
    QCOMPARE(AudioFile::read(m_songs->media(0)).picture, Fixtures::jpeg(90, 90, 1));
    const ino_t before = fileNumber(m_songs->media(0));
    for (const QString& same : {cover, m_songs->inFolder("nowhere"), m_songs->folder(), QString(),
                                Fixtures::writeLibrary(m_songs->inFolder("empty"), QByteArray())}) {
        edit.cover = same;
        QCOMPARE(LibraryCalls::edit(m_songs->id(0), edit), 0);
        QCOMPARE(fileNumber(m_songs->media(0)), before); // not even written
    }
    edit.cover = Fixtures::writeLibrary(cover, Fixtures::jpeg(70, 70, 2));
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), edit), 0);
    QCOMPARE(AudioFile::read(m_songs->media(0)).picture, Fixtures::jpeg(70, 70, 2));
}

/// Each has its answer; the journal is written once.
void TestLibraryChanges::manyTracksGoAtOneStroke()
{
    constexpr int count = 300;
    m_songs->makeSongs(count);
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1); // there is a journal now
    std::vector<uint64_t> ids = {m_songs->id(0), 12345, m_songs->id(1), m_songs->id(1)};
    for (int song = 2; song < count - 1; ++song)
        ids.push_back(m_songs->id(song));
    std::vector<iTunesEditProblem> problems(ids.size(), ITUNES_LIBRARY_BROKEN);
    int writes = 0;
    {
        const Interposed::Guard guard;
        Interposed::writeFails = [&writes, here = std::this_thread::get_id()] {
            writes += std::this_thread::get_id() == here ? 1 : 0;
            return false;
        };
        deleteTracks(ids.data(), ids.size(), problems.data());
    }
    QCOMPARE(writes, 1);
    for (std::size_t i = 0; i < ids.size(); ++i)
        QCOMPARE(problems[i], i == 0 || i == 1 || i == 3 ? ITUNES_TRACK_GONE : ITUNES_EDIT_DONE);
    QCOMPARE(LibraryCalls::read().count, 1);
    closeITunesLibrary();
    m_songs->tracks = {m_songs->tracks.last()};
    for (int playlist : {0, 1}) // it has an odd number
        m_songs->playlists[playlist].trackIds = {m_songs->tracks.first().trackId};
    QCOMPARE(m_songs->content(), m_songs->document());
}

void TestLibraryChanges::ofOneStrokeAllTracksGoOrNone()
{
    m_songs->makeSongs(4);
    const QByteArray before = m_songs->content();
    const std::vector<uint64_t> ids = {m_songs->id(0), m_songs->id(2)};
    std::vector<iTunesEditProblem> problems(ids.size(), ITUNES_EDIT_DONE);
    {
        const Interposed::Guard guard;
        Interposed::writeFails = [] {
            errno = ENOSPC;
            return true;
        };
        deleteTracks(ids.data(), ids.size(), problems.data());
    }
    for (const iTunesEditProblem problem : problems)
        QCOMPARE(problem, ITUNES_LIBRARY_DISK_FULL);
    QCOMPARE(LibraryCalls::read().count, 4);
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), before);
    AudioFile::takeLog();
    LibraryCalls::read();
    deleteTracks(ids.data(), ids.size(), problems.data());
    QCOMPARE(problems, std::vector<iTunesEditProblem>(2, ITUNES_EDIT_DONE));
    QCOMPARE(LibraryCalls::read().count, 2);
}

QTEST_GUILESS_MAIN(TestLibraryChanges)
#include "tst_librarychanges.moc"
