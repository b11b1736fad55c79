#include "itunes/editproblem.h"
#include "itunes/takeback.h"
#include "songlibrary.h"

#include <QTextCodec>
#include <QtTest>

#include <algorithm>
#include <csignal>
#include <memory>
#include <sys/resource.h>
#include <thread>
#include <utility>
#include <vector>

using Fixtures::ITunesTrack;
using LibraryCalls::contentOf;
using LibraryCalls::Edit;
using Songs = QList<int>;

class TestLibraryTakeBack : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void deletionsThatWaitLeaveTheJournal();
    void writtenDeletionsComeBackByteForByte_data();
    void writtenDeletionsComeBackByteForByte();
    void everyEncodingIsKept_data();
    void everyEncodingIsKept();
    void oneStepMayHaveWaitedInPart();
    void stepsComeBackInAnyOrder();
    void otherChangesStay();
    void anEditBeforeTheDeletionComesBackToo_data();
    void anEditBeforeTheDeletionComesBackToo();
    void whatCameBackCanGoAgain();
    void whatNobodyDeletedIsThere();
    void anotherProgramsLibraryIsLeftAlone_data();
    void anotherProgramsLibraryIsLeftAlone();
    void whatWaitsComesBackInAnotherProgramsLibrary();
    void aNewReadingForgets();
    void aFullDiskLeavesTheLibrary();
    void aBusyLibraryIsLeft();
    void atEveryStepTheLibraryIsTheOldOrTheNewOne_data();
    void atEveryStepTheLibraryIsTheOldOrTheNewOne();
    void whatIsKeptIsTold();
    void otherThreadsGoOn();
    void aChangeInBetweenKeepsTheJournal();

private:
    void remove(const Songs& songs);
    void removeAndWrite(const Songs& songs);
    static bool takeBack(const Songs& songs);
    void isLeftAs(const QByteArray& bytes);

    std::unique_ptr<SongLibrary> m_songs;
};

void TestLibraryTakeBack::init()
{
    m_songs = std::make_unique<SongLibrary>();
}

void TestLibraryTakeBack::cleanup()
{
    closeITunesLibrary();
    QVERIFY2(m_songs->temporaries().isEmpty(), qPrintable(m_songs->temporaries().join(' ')));
    m_songs.reset();
    AudioFile::takeLog();
}

void TestLibraryTakeBack::remove(const Songs& songs)
{
    for (const int song : songs)
        QCOMPARE(int(deleteMusic(SongLibrary::id(song))), 1);
}

void TestLibraryTakeBack::removeAndWrite(const Songs& songs)
{
    remove(songs);
    launchiTunes(); // does not wait for a pause
    QTRY_VERIFY(!QFile::exists(m_songs->journal()));
}

bool TestLibraryTakeBack::takeBack(const Songs& songs)
{
    std::vector<uint64_t> ids;
    for (const int song : songs)
        ids.push_back(SongLibrary::id(song));
    return takeBackDeletions(ids.data(), ids.size()) == 1;
}

/// At once, and once everything is written.
void TestLibraryTakeBack::isLeftAs(const QByteArray& bytes)
{
    QVERIFY(m_songs->content() == bytes);
    closeITunesLibrary();
    QVERIFY(m_songs->content() == bytes);
    QVERIFY(!QFile::exists(m_songs->journal()));
}

void TestLibraryTakeBack::deletionsThatWaitLeaveTheJournal()
{
    m_songs->makeSongs(5);
    const QByteArray before = m_songs->content();
    const ino_t file = fileNumber(m_songs->path());
    remove({1, 3, 4});
    QVERIFY(takeBack({1, 4}));
    QCOMPARE(iTunesLastEditProblem(), ITUNES_EDIT_DONE);
    QCOMPARE(LibraryCalls::read().count, 4);
    const QByteArray left = m_songs->journalContent();
    closeITunesLibrary();
    QVERIFY(m_songs->content() != before);
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 4);
    closeITunesLibrary();
    // As a kill leaves it.
    m_songs->before = before;
    QCOMPARE(m_songs->countWith(left), 4);
    closeITunesLibrary();
    // When nothing is left to write, nothing is.
    m_songs->makeSongs(5);
    const ino_t fresh = fileNumber(m_songs->path());
    QVERIFY(fresh != 0 && file != 0);
    remove({0, 1, 2, 3, 4});
    QVERIFY(takeBack({4, 3, 2, 1, 0}));
    isLeftAs(before);
    QCOMPARE(fileNumber(m_songs->path()), fresh);
    QVERIFY(AudioFile::takeLog().isEmpty());
}

void TestLibraryTakeBack::writtenDeletionsComeBackByteForByte_data()
{
    QTest::addColumn<Songs>("gone");
    QTest::newRow("the first") << Songs{0};
    QTest::newRow("one in between") << Songs{2};
    QTest::newRow("the last") << Songs{5};
    QTest::newRow("neighbours") << Songs{2, 3};
    QTest::newRow("both ends") << Songs{0, 5};
    QTest::newRow("all of a playlist") << Songs{1, 3, 5};
    QTest::newRow("all") << Songs{0, 1, 2, 3, 4, 5};
}

void TestLibraryTakeBack::writtenDeletionsComeBackByteForByte()
{
    QFETCH(Songs, gone);
    m_songs->makeSongs(6);
    const QByteArray before = m_songs->content();
    removeAndWrite(gone);
    QVERIFY(m_songs->content() != before);
    QVERIFY(takeBack(gone));
    QCOMPARE(iTunesLastEditProblem(), ITUNES_EDIT_DONE);
    isLeftAs(before);
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 6);
    QVERIFY(AudioFile::takeLog().isEmpty());
}

void TestLibraryTakeBack::everyEncodingIsKept_data()
{
    QTest::addColumn<QByteArray>("codec");
    QTest::addColumn<QByteArray>("name"); ///< of a song, as the file has it
    QTest::newRow("UTF-8") << QByteArray() << QByteArray("\xE5\xA4\x9C &#38; &#x1F600; \xFF\xFE <!-- -->");
    QTest::newRow("Latin 1") << QByteArray("ISO-8859-1") << QByteArray("Caf\xE9");
    QTest::newRow("UTF-16, little") << QByteArray("UTF-16LE") << QByteArray("L\xC3\xB6we");
    QTest::newRow("UTF-16, big") << QByteArray("UTF-16BE") << QByteArray("\xF0\x9F\x98\x80");
}

void TestLibraryTakeBack::everyEncodingIsKept()
{
    QFETCH(QByteArray, codec);
    QFETCH(QByteArray, name);
    m_songs->makeSongs(4);
    QByteArray bytes = m_songs->content();
    bytes.replace(m_songs->tracks.at(1).name, name);
    bytes.replace("\n", "\r\n");
    if (codec == "ISO-8859-1") {
        bytes.replace("UTF-8", codec);
    } else if (!codec.isEmpty()) {
        QTextCodec::ConverterState plain(QTextCodec::IgnoreHeader);
        const QString text =
            QChar(QChar::ByteOrderMark) + QString::fromUtf8(bytes.replace("UTF-8", "UTF-16"));
        bytes = QTextCodec::codecForName(codec)->fromUnicode(text.constData(), text.size(), &plain);
    }
    m_songs->make(bytes);
    removeAndWrite({1, 2});
    QVERIFY(takeBack({1, 2}));
    isLeftAs(bytes);
}

void TestLibraryTakeBack::oneStepMayHaveWaitedInPart()
{
    m_songs->makeSongs(8);
    const QByteArray before = m_songs->content();
    removeAndWrite({1, 2, 7});
    remove({0, 3, 5});
    QVERIFY(takeBack({0, 1, 2, 3, 5, 7}));
    isLeftAs(before);
}

void TestLibraryTakeBack::stepsComeBackInAnyOrder()
{
    m_songs->makeSongs(6);
    const QByteArray before = m_songs->content();
    removeAndWrite({2, 4});
    const QByteArray between = m_songs->content();
    removeAndWrite({1, 3});
    removeAndWrite({0, 5});
    QVERIFY(takeBack({1, 3}));
    QVERIFY(takeBack({0, 5}));
    QVERIFY(m_songs->content() == between);
    QVERIFY(takeBack({4}));
    QVERIFY(takeBack({2}));
    isLeftAs(before);
}

void TestLibraryTakeBack::otherChangesStay()
{
    m_songs->makeSongs(6, 1);
    removeAndWrite({1, 4});
    remove({5});
    Edit edit;
    edit.name = "Longer than it was before, or shorter";
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), edit), 0);
    QVERIFY(takeBack({1, 4}));
    closeITunesLibrary();
    Fixtures::ITunesTrack& edited = m_songs->tracks[0];
    edited.name = edit.name;
    edited.artist = edit.artist;
    edited.album = edit.album;
    edited.genre = edit.genre;
    edited.year = quint64(edit.year);
    for (Fixtures::ITunesPlaylist& playlist : m_songs->playlists)
        playlist.trackIds.removeAll(m_songs->tracks.at(5).trackId);
    m_songs->tracks.removeAt(5);
    QVERIFY(m_songs->content() == m_songs->document());
}

void TestLibraryTakeBack::anEditBeforeTheDeletionComesBackToo_data()
{
    QTest::addColumn<bool>("written");
    QTest::newRow("both wait") << false;
    QTest::newRow("both are written at once") << true;
}

void TestLibraryTakeBack::anEditBeforeTheDeletionComesBackToo()
{
    QFETCH(bool, written);
    m_songs->makeSongs(3, 1);
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), Edit()), 0);
    closeITunesLibrary();
    const QByteArray edited = m_songs->content();
    m_songs->makeSongs(3, 1);
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), Edit()), 0);
    if (written)
        removeAndWrite({0, 1});
    else
        remove({0, 1});
    QVERIFY(takeBack({0, 1}));
    closeITunesLibrary();
    QVERIFY(m_songs->content() == edited);
}

void TestLibraryTakeBack::whatCameBackCanGoAgain()
{
    m_songs->makeSongs(4, 1);
    const QByteArray before = m_songs->content();
    for (int round = 0; round < 3; ++round) {
        removeAndWrite({0, 2});
        QCOMPARE(int(deleteMusic(m_songs->id(2))), 0);
        QVERIFY(takeBack({0, 2}));
        QCOMPARE(m_songs->content(), before);
        LibraryCalls::Buffers<1024> buffers;
        QCOMPARE(buffers.call(m_songs->id(0)), 0); // its location
    }
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), Edit()), 0);
    closeITunesLibrary();
    QCOMPARE(LibraryCalls::names(LibraryCalls::read(m_songs->path())).value(0), QString("New name"));
}

void TestLibraryTakeBack::whatNobodyDeletedIsThere()
{
    m_songs->makeSongs(3);
    const QByteArray before = m_songs->content();
    QVERIFY(takeBack({}));
    QVERIFY(takeBack({1}));
    AudioFile::takeLog();
    QVERIFY(!takeBack({1, 77}));
    QCOMPARE(iTunesLastEditProblem(), ITUNES_NOT_KEPT);
    QCOMPARE(AudioFile::takeLog().size(), 1);
    isLeftAs(before);
}

void TestLibraryTakeBack::anotherProgramsLibraryIsLeftAlone_data()
{
    QTest::addColumn<bool>("writesOnce");
    QTest::newRow("and is the file") << false;
    QTest::newRow("and we wrote it since") << true;
}

void TestLibraryTakeBack::anotherProgramsLibraryIsLeftAlone()
{
    QFETCH(bool, writesOnce);
    m_songs->makeSongs(5, 1);
    removeAndWrite({1, 3});
    QByteArray theirs = m_songs->content();
    theirs.replace(m_songs->tracks.at(2).name, "By another program");
    Fixtures::writeLibrary(m_songs->path(), theirs);
    if (writesOnce) {
        removeAndWrite({4});
        theirs = m_songs->content();
    }
    AudioFile::takeLog();
    QVERIFY(!takeBack({1, 3}));
    QCOMPARE(iTunesLastEditProblem(), ITUNES_CHANGED_SINCE);
    QCOMPARE(AudioFile::takeLog().size(), 1);
    isLeftAs(theirs);
}

/// The journal alone has them.
void TestLibraryTakeBack::whatWaitsComesBackInAnotherProgramsLibrary()
{
    m_songs->makeSongs(5);
    remove({1, 3});
    QByteArray theirs = m_songs->content();
    theirs.replace(m_songs->tracks.at(2).name, "By another program");
    Fixtures::writeLibrary(m_songs->path(), theirs);
    QVERIFY(takeBack({1, 3}));
    isLeftAs(theirs);
}

void TestLibraryTakeBack::aNewReadingForgets()
{
    m_songs->makeSongs(4);
    removeAndWrite({1});
    const QByteArray left = m_songs->content();
    QCOMPARE(LibraryCalls::read().count, 3);
    QCOMPARE(takeBackBytes(), uint64_t(0));
    QVERIFY(!takeBack({1}));
    QCOMPARE(iTunesLastEditProblem(), ITUNES_NOT_KEPT);
    isLeftAs(left);
}

void TestLibraryTakeBack::aFullDiskLeavesTheLibrary()
{
    std::signal(SIGXFSZ, SIG_IGN);
    m_songs->makeSongs(200);
    const QByteArray before = m_songs->content();
    removeAndWrite({1, 199});
    const QByteArray left = m_songs->content();
    AudioFile::takeLog();
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{rlim_t(before.size() / 2), limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    QVERIFY(!takeBack({1, 199}));
    setrlimit(RLIMIT_FSIZE, &limit);
    QCOMPARE(AudioFile::takeLog().size(), 1);
    QCOMPARE(m_songs->content(), left);
    QVERIFY(!QFile::exists(m_songs->journal()));
    // What hindered it is over.
    QVERIFY(takeBack({1, 199}));
    isLeftAs(before);
}

void TestLibraryTakeBack::aBusyLibraryIsLeft()
{
    m_songs->makeSongs(4);
    const QByteArray before = m_songs->content();
    removeAndWrite({1});
    const QByteArray left = m_songs->content();
    Fixtures::writeLibrary(m_songs->journal(), "of another program");
    AudioFile::takeLog();
    QVERIFY(!takeBack({1}));
    QVERIFY(iTunesLastEditProblem() != ITUNES_EDIT_DONE);
    QCOMPARE(AudioFile::takeLog().size(), 1);
    QCOMPARE(m_songs->content(), left);
    QVERIFY(QFile::remove(m_songs->journal()));
    QVERIFY(takeBack({1}));
    isLeftAs(before);
}

void TestLibraryTakeBack::atEveryStepTheLibraryIsTheOldOrTheNewOne_data()
{
    QTest::addColumn<Songs>("written");
    QTest::addColumn<Songs>("waiting");
    QTest::newRow("written") << Songs{0, 3, 4} << Songs{};
    QTest::newRow("waiting") << Songs{} << Songs{0, 3, 4};
    QTest::newRow("both") << Songs{0, 4} << Songs{3, 5};
}

/// What is there whenever something is handed to the disk is what a kill leaves.
void TestLibraryTakeBack::atEveryStepTheLibraryIsTheOldOrTheNewOne()
{
    QFETCH(Songs, written);
    QFETCH(Songs, waiting);
    m_songs->makeSongs(6);
    const QByteArray whole = m_songs->content();
    remove(written + waiting);
    closeITunesLibrary();
    const QByteArray without = m_songs->content();

    m_songs->make(whole);
    if (!written.isEmpty())
        removeAndWrite(written);
    remove(waiting);
    QList<QPair<QByteArray, QByteArray>> left;
    const auto note = [&] { left.append({m_songs->content(), contentOf(m_songs->journal())}); };
    note();
    {
        const Interposed::Guard guard;
        Interposed::beforeSync = note;
        QVERIFY(takeBack(written + waiting));
    }
    note();
    closeITunesLibrary();
    QVERIFY(left.size() >= 2);
    for (const auto& [library, journal] : qAsConst(left)) {
        Fixtures::writeLibrary(m_songs->path(), library);
        Fixtures::writeLibrary(m_songs->journal(), journal);
        const int count = LibraryCalls::read(m_songs->path()).count;
        closeITunesLibrary();
        const QByteArray& expected = count == 6 ? whole : without;
        QVERIFY(m_songs->content() == expected);
        QVERIFY(!QFile::exists(m_songs->journal()));
    }
    QVERIFY(m_songs->content() == whole);
    QVERIFY(m_songs->keptJournals().isEmpty());
}

void TestLibraryTakeBack::whatIsKeptIsTold()
{
    m_songs->makeSongs(50);
    QCOMPARE(takeBackBytes(), uint64_t(0));
    const int whole = m_songs->content().size();
    Songs songs;
    for (int i = 0; i < 50; i += 2)
        songs.append(i);
    removeAndWrite(songs);
    const int gone = whole - m_songs->content().size();
    QVERIFY(takeBackBytes() >= uint64_t(gone));
    QVERIFY(takeBackBytes() < uint64_t(gone) * 3);
    QVERIFY(takeBack(songs));
    QCOMPARE(takeBackBytes(), uint64_t(0));
}

/// Their changes come into the journal while tracks go back into the file.
void TestLibraryTakeBack::otherThreadsGoOn()
{
    constexpr int rounds = 8;
    constexpr int each = 20;
    m_songs->makeSongs(rounds * each + 10);
    for (int round = 0; round < rounds; ++round) {
        removeAndWrite({1, 3});
        const int first = 10 + round * each;
        std::thread deleting([first] {
            for (int i = first; i < first + each; ++i)
                deleteMusic(SongLibrary::id(i));
        });
        const bool isBack = takeBack({3, 1});
        deleting.join();
        QVERIFY(isBack);
    }
    closeITunesLibrary();
    m_songs->tracks.resize(10);
    for (Fixtures::ITunesPlaylist& playlist : m_songs->playlists) {
        const auto isGone = [](int track) { return track >= Fixtures::itunesTrack(10).trackId; };
        playlist.trackIds.erase(std::remove_if(playlist.trackIds.begin(), playlist.trackIds.end(), isGone),
                                playlist.trackIds.end());
    }
    QVERIFY(m_songs->content() == m_songs->document());
    QVERIFY(AudioFile::takeLog().isEmpty());
}

/// What waited is in the file by then, and in the journal still: it must not go once more.
void TestLibraryTakeBack::aChangeInBetweenKeepsTheJournal()
{
    m_songs->makeSongs(8);
    removeAndWrite({1, 2});
    remove({3, 5});
    bool isDeleted = false;
    {
        const Interposed::Guard guard;
        Interposed::beforeSync = [&isDeleted] {
            if (!std::exchange(isDeleted, true))
                deleteMusic(SongLibrary::id(7));
        };
        QVERIFY(takeBack({1, 2, 3, 5}));
    }
    QVERIFY(isDeleted);
    closeITunesLibrary();
    for (Fixtures::ITunesPlaylist& playlist : m_songs->playlists)
        playlist.trackIds.removeAll(m_songs->tracks.at(7).trackId);
    m_songs->tracks.removeAt(7);
    QVERIFY(m_songs->content() == m_songs->document());
    QVERIFY(!QFile::exists(m_songs->journal()));
}

QTEST_GUILESS_MAIN(TestLibraryTakeBack)
#include "tst_librarytakeback.moc"
