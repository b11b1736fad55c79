#include "itunes/takeback.h"
#include "songlibrary.h"

#include <QFileInfo>
#include <QtTest>

#include <fcntl.h>
#include <functional>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using LibraryCalls::contentOf;
using LibraryCalls::Edit;

/// Puts something at the journal's name; `precious` is a file that must not suffer.
using Obstacle = std::function<bool(const QString& journal, const QString& precious)>;
Q_DECLARE_METATYPE(Obstacle)

class TestLibraryJournal : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void aJournalThatIsLeftIsApplied();
    void aTornLineIsNoChange();
    void aTornLineIsForgottenByTheNextChange();
    void aTornReturnBringsNothingBack();
    void ofATornStrokeWholeLinesCount();
    void earlierJournalsCount();
    void aDamagedLineIsToldAndKept();
    void aJournalThatCannotBeReadWaits();
    void anEditThatFailedIsNoDamage();
    void whatIsNoJournalIsLeftAlone_data();
    void whatIsNoJournalIsLeftAlone();
    void whatIsEmptyBecomesTheJournal_data();
    void whatIsEmptyBecomesTheJournal();
    void anotherProcessKeepsItsJournal();
    void aJournalThatAnotherTookThePlaceOfStays();

private:
    std::unique_ptr<SongLibrary> m_songs;
};

void TestLibraryJournal::init()
{
    m_songs = std::make_unique<SongLibrary>();
}

void TestLibraryJournal::cleanup()
{
    closeITunesLibrary();
    QVERIFY2(m_songs->temporaries().isEmpty(), qPrintable(m_songs->temporaries().join(' ')));
    m_songs.reset();
}

void TestLibraryJournal::aJournalThatIsLeftIsApplied()
{
    m_songs->makeSongs(4, 1);
    const QByteArray before = m_songs->content();
    Edit edit;
    edit.name = "Tab\tand\nline \\n & \xC3\xA9";
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), edit), 0);
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 1);
    const QByteArray left = m_songs->journalContent();
    closeITunesLibrary();
    const QByteArray after = m_songs->content();

    // As a kill before the writing leaves it; read, then prepared only.
    for (const bool reading : {true, false}) {
        Fixtures::writeLibrary(m_songs->path(), before);
        Fixtures::writeLibrary(m_songs->journal(), left);
        if (reading)
            QCOMPARE(LibraryCalls::read(m_songs->path()).count, 3);
        else
            launchiTunes();
        QTRY_VERIFY(!QFile::exists(m_songs->journal()));
        QCOMPARE(m_songs->content(), after);
        closeITunesLibrary();
    }
}

void TestLibraryJournal::aTornLineIsNoChange()
{
    m_songs->makeSongs(4);
    const QByteArray before = m_songs->content();
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    const QByteArray whole = m_songs->journalContent().trimmed();
    closeITunesLibrary();
    for (int size = 0; size <= whole.size(); ++size) {
        Fixtures::writeLibrary(m_songs->path(), before);
        Fixtures::writeLibrary(m_songs->journal(), whole.left(size));
        const bool counts = size == whole.size();
        QCOMPARE(LibraryCalls::read(m_songs->path()).count, counts ? 3 : 4);
        // The next change does not suffer.
        if (size % 7 == 0) {
            QCOMPARE(int(deleteMusic(m_songs->id(3))), 1);
            closeITunesLibrary();
            QCOMPARE(LibraryCalls::read(m_songs->path()).count, counts ? 2 : 3);
        }
        closeITunesLibrary();
        QVERIFY(!QFile::exists(m_songs->journal()));
    }
}

void TestLibraryJournal::anotherProcessKeepsItsJournal()
{
    const QByteArray theirs = m_songs->leftBy([this] { deleteMusic(m_songs->id(1)); });
    m_songs->makeSongs(3);
    Fixtures::writeLibrary(m_songs->journal(), theirs);
    const int lock = ::open(QFile::encodeName(m_songs->journal()).constData(), O_RDWR | O_CLOEXEC);
    QCOMPARE(::flock(lock, LOCK_EX | LOCK_NB), 0);
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 0);
    QCOMPARE(AudioFile::takeLog().size(), 1);
    QCOMPARE(LibraryCalls::read().count, 3);
    closeITunesLibrary();
    QCOMPARE(contentOf(m_songs->journal()), theirs);
    ::close(lock);
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    QCOMPARE(LibraryCalls::read().count, 1); // without the other's, too
}

void TestLibraryJournal::aTornLineIsForgottenByTheNextChange()
{
    const QByteArray whole = m_songs->leftBy([this] { deleteMusic(m_songs->id(0)); });
    QCOMPARE(m_songs->countWith(whole.chopped(5)), 6);
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 1);
    const QByteArray next = m_songs->journalContent();
    closeITunesLibrary();
    // As if another kill had left that: nothing in it is damaged.
    QCOMPARE(m_songs->countWith(next), 5);
    closeITunesLibrary();
    QVERIFY(AudioFile::takeLog().isEmpty());
}

void TestLibraryJournal::aTornReturnBringsNothingBack()
{
    const std::vector<uint64_t> ids = {SongLibrary::id(1), SongLibrary::id(2), SongLibrary::id(4)};
    const QByteArray whole = m_songs->leftBy([&] {
        for (const uint64_t id : ids)
            QCOMPARE(int(deleteMusic(id)), 1);
        QCOMPARE(int(takeBackDeletions(ids.data(), ids.size())), 1);
    });
    const int begin = whole.lastIndexOf('+');
    QVERIFY(whole.mid(begin).startsWith("+return\t"));
    for (int size = begin; size <= whole.size(); ++size) {
        QCOMPARE(m_songs->countWith(whole.left(size)), size < whole.trimmed().size() ? 3 : 6);
        closeITunesLibrary();
    }
    QVERIFY(m_songs->keptJournals().isEmpty());
}

/// Nobody was answered yet.
void TestLibraryJournal::ofATornStrokeWholeLinesCount()
{
    const std::vector<uint64_t> ids = {SongLibrary::id(1), SongLibrary::id(2), SongLibrary::id(4)};
    std::vector<iTunesEditProblem> problems(ids.size());
    const QByteArray whole =
        m_songs->leftBy([&] { deleteTracks(ids.data(), ids.size(), problems.data()); }).trimmed();
    const int begin = whole.indexOf('\n') + 1;
    for (int size = begin; size <= whole.size(); ++size) {
        const QByteArray left = whole.left(size);
        const bool atLinesEnd = size == whole.size() || whole.at(size) == '\n';
        const int lines = left.mid(begin).count('\n') + (atLinesEnd && size > begin ? 1 : 0);
        QCOMPARE(m_songs->countWith(left), 6 - lines);
        closeITunesLibrary();
    }
    QVERIFY(m_songs->keptJournals().isEmpty());
}

void TestLibraryJournal::earlierJournalsCount()
{
    const QByteArray left = m_songs->leftBy([this] { deleteMusic(m_songs->id(1)); });
    for (const char version : {'1', '2'}) {
        QByteArray earlier = left;
        earlier[int(qstrlen("melodrift journal "))] = version;
        QCOMPARE(m_songs->countWith(earlier), 5);
        closeITunesLibrary();
        QVERIFY(!QFile::exists(m_songs->journal()));
    }
    QByteArray later = left;
    later[int(qstrlen("melodrift journal "))] = '4';
    QCOMPARE(m_songs->countWith(later), 6);
    closeITunesLibrary();
    QCOMPARE(contentOf(m_songs->journal()), later);
    AudioFile::takeLog();
}

/// Whoever takes what a failing disk gives for the whole journal loses the changes in it.
void TestLibraryJournal::aJournalThatCannotBeReadWaits()
{
    const QByteArray left = m_songs->leftBy([this] { deleteMusic(m_songs->id(0)); });
    Fixtures::writeLibrary(m_songs->journal(), left);
    struct stat journal = {};
    QCOMPARE(::stat(QFile::encodeName(m_songs->journal()).constData(), &journal), 0);
    {
        const Interposed::Guard guard;
        Interposed::readFails = [&journal](int fd, off_t) {
            struct stat read = {};
            return ::fstat(fd, &read) == 0 && read.st_ino == journal.st_ino;
        };
        QCOMPARE(m_songs->countWith(left), 6);
        QCOMPARE(int(deleteMusic(m_songs->id(1))), 0);
        for (const QString& line : AudioFile::takeLog())
            QVERIFY2(line.contains(QLatin1String("the journal cannot be read")), qPrintable(line));
        closeITunesLibrary();
    }
    QCOMPARE(contentOf(m_songs->journal()), left);
    QCOMPARE(m_songs->countWith(left), 5);
}

void TestLibraryJournal::aDamagedLineIsToldAndKept()
{
    const QByteArray whole = m_songs->leftBy([this] {
        for (const int song : {1, 2, 3})
            deleteMusic(m_songs->id(song));
    });
    QByteArray damaged = whole;
    const int at = damaged.indexOf(Fixtures::itunesIdentifier(m_songs->id(2)));
    damaged[at] = damaged.at(at) == '7' ? '8' : '7';
    QCOMPARE(m_songs->countWith(damaged), 4);
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().contains("(1)"), qPrintable(log.first()));
    const QString kept = m_songs->keptJournals().value(0);
    QCOMPARE(contentOf(kept), damaged);
    // Not told again, nor taken for something else.
    const QByteArray next = m_songs->journalContent();
    closeITunesLibrary();
    QVERIFY(!QFile::exists(m_songs->journal()));
    QCOMPARE(m_songs->countWith(next), 4);
    closeITunesLibrary();
    QVERIFY(AudioFile::takeLog().isEmpty());
    QCOMPARE(contentOf(kept), damaged);
}

void TestLibraryJournal::anEditThatFailedIsNoDamage()
{
    const QByteArray whole = m_songs->leftBy([this] {
        QVERIFY(LibraryCalls::edit(m_songs->id(5), Edit()) != 0); // there is no such file
        deleteMusic(m_songs->id(1));
    });
    AudioFile::takeLog();
    QCOMPARE(m_songs->countWith(whole), 5);
    closeITunesLibrary();
    QVERIFY(AudioFile::takeLog().isEmpty());
    QVERIFY(m_songs->keptJournals().isEmpty());
}

void TestLibraryJournal::whatIsNoJournalIsLeftAlone_data()
{
    const auto encoded = [](const QString& path) { return QFile::encodeName(path); };
    QTest::addColumn<Obstacle>("make");
    QTest::newRow("a link") << Obstacle(
        [](auto& journal, auto& precious) { return QFile::link(precious, journal); });
    QTest::newRow("a link to a link") << Obstacle([](auto& journal, auto& precious) {
        return QFile::link(precious, journal + "2") && QFile::link(journal + "2", journal);
    });
    QTest::newRow("a link to nothing")
        << Obstacle([](auto& journal, auto& precious) { return QFile::link(precious + "2", journal); });
    QTest::newRow("a hard link") << Obstacle([encoded](auto& journal, auto& precious) {
        return ::link(encoded(precious).constData(), encoded(journal).constData()) == 0;
    });
    QTest::newRow("a pipe") << Obstacle(
        [encoded](auto& journal, auto&) { return ::mkfifo(encoded(journal).constData(), 0600) == 0; });
    QTest::newRow("a folder") << Obstacle([](auto& journal, auto&) { return QDir().mkdir(journal); });
    QTest::newRow("another file") << Obstacle(
        [](auto& journal, auto& precious) { return QFile::copy(precious, journal); });
    QTest::newRow("another file that begins blank") << Obstacle([](auto& journal, auto&) {
        return !Fixtures::writeLibrary(journal, QByteArray(100000, '\n') + "precious").isEmpty();
    });
}

void TestLibraryJournal::whatIsNoJournalIsLeftAlone()
{
    QFETCH(Obstacle, make);
    m_songs->makeSongs(3, 1);
    const QByteArray before = m_songs->content();
    const QString precious = Fixtures::writeLibrary(m_songs->inFolder("precious"), "+delete\tprecious\n");
    QVERIFY(make(m_songs->journal(), precious));
    const bool readable = QFileInfo(m_songs->journal()).isFile(); // a pipe has no content to wait for
    const QByteArray there = readable ? contentOf(m_songs->journal()) : QByteArray();
    const ino_t number = fileNumber(m_songs->journal());
    AudioFile::takeLog();
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 0);
    QVERIFY(LibraryCalls::edit(m_songs->id(0), Edit()) != 0);
    QCOMPARE(AudioFile::takeLog().size(), 2);
    QCOMPARE(LibraryCalls::read().count, 3);
    closeITunesLibrary();
    QCOMPARE(contentOf(precious), QByteArray("+delete\tprecious\n"));
    QVERIFY(!QFile::exists(precious + "2"));
    QCOMPARE(fileNumber(m_songs->journal()), number);
    if (readable)
        QCOMPARE(contentOf(m_songs->journal()), there);
    QCOMPARE(m_songs->content(), before);
    QVERIFY(AudioFile::read(m_songs->media(0)).texts.isEmpty());
    // Out of the way, it costs nothing.
    QVERIFY(QDir().rename(m_songs->journal(), m_songs->inFolder("moved")));
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 1);
}

void TestLibraryJournal::whatIsEmptyBecomesTheJournal_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("line feeds") << QByteArray(70000, '\n');
    QTest::newRow("what a power cut leaves") << QByteArray(70000, '\0');
    QTest::newRow("a beginning") << "melodrift jou" + QByteArray(1000, '\n');
}

void TestLibraryJournal::whatIsEmptyBecomesTheJournal()
{
    QFETCH(QByteArray, bytes);
    m_songs->makeSongs(3);
    Fixtures::writeLibrary(m_songs->journal(), bytes);
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 1);
    const QByteArray left = m_songs->journalContent();
    QVERIFY(!left.contains('\0'));
    m_songs->before = m_songs->content();
    closeITunesLibrary();
    QCOMPARE(m_songs->countWith(left), 2);
    QVERIFY(AudioFile::takeLog().isEmpty());
}

void TestLibraryJournal::aJournalThatAnotherTookThePlaceOfStays()
{
    m_songs->makeSongs(3);
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    QVERIFY(QFile::remove(m_songs->journal()));
    Fixtures::writeLibrary(m_songs->journal(), "of another program");
    closeITunesLibrary();
    QCOMPARE(contentOf(m_songs->journal()), QByteArray("of another program"));
    QVERIFY(QFile::remove(m_songs->journal()));
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 2);
}

QTEST_GUILESS_MAIN(TestLibraryJournal)
#include "tst_libraryjournal.moc"
