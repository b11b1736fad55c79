#include "audiocore/tagitem.h"
#include "songlibrary.h"

#include <QFileInfo>
#include <QtTest>

#include <fcntl.h>
#include <functional>
#include <memory>
#include <sys/file.h>
#include <unistd.h>

using LibraryCalls::contentOf;
using LibraryCalls::Edit;

/// Puts something at the journal's name; `precious` is a file that must not suffer.
using Obstacle = std::function<bool(const QString& journal, const QString& precious)>;
Q_DECLARE_METATYPE(Obstacle)

namespace {
constexpr int writingPause = 10000; // the longest wait for a writing in the background

/// A line as whoever may write beside the library can make it.
QByteArray lineOf(char state, const QByteArray& record)
{
    quint64 hash = 0xcbf29ce484222325u;
    for (const char c : record)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3u;
    return state + record + '\t' + QByteArray::number(hash, 16).rightJustified(16, '0').toUpper() + '\n';
}

/// Calls of this process so far that wrote.
qint64 writeCalls()
{
    const QByteArray counts = contentOf("/proc/self/io");
    const int at = counts.indexOf("syscw: ");
    return counts.mid(at + 7, counts.indexOf('\n', at) - at - 7).toLongLong();
}
} // namespace

class TestLibraryJournal : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void aJournalThatIsLeftIsApplied();
    void aTornLineIsNoChange();
    void aTornLineIsForgottenByTheNextChange();
    void aDamagedLineIsToldAndKept();
    void anEditThatFailedIsNoDamage();
    void whatIsNoJournalIsLeftAlone_data();
    void whatIsNoJournalIsLeftAlone();
    void whatIsEmptyBecomesTheJournal_data();
    void whatIsEmptyBecomesTheJournal();
    void anotherProcessKeepsItsJournal();
    void aJournalThatAnotherTookThePlaceOfStays();
    void anEditThatWasBegunIsDone_data();
    void anEditThatWasBegunIsDone();
    void anEditThatCannotBeDoneIsKeptAside_data();
    void anEditThatCannotBeDoneIsKeptAside();
    void anEditThatFailedIsNotDoneLater();
    void aJournalOfAnotherUserIsLeftAlone();
    void textsAreCheckedLikeAnyInput();
    void onlyTheUserMayOpenIt();
    void manyBrokenLinesCostNothing();
    void whatIsTooLargeIsNoJournal();
    void aFullJournalGoesIntoTheLibrary();

private:
    QByteArray leftBy(const std::function<void()>& changes);
    void leaveBegun(const Edit& edit);
    int countWith(const QByteArray& journal);

    std::unique_ptr<SongLibrary> m_songs;
    QByteArray m_before; ///< the library as no change has seen it
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

/// The journal as a kill after the changes leaves it, without the line feeds that lie ready behind its end.
QByteArray TestLibraryJournal::leftBy(const std::function<void()>& changes)
{
    m_songs->makeSongs(6, 1);
    m_before = m_songs->content();
    changes();
    QByteArray left = contentOf(m_songs->journal());
    while (left.endsWith("\n\n"))
        left.chop(1);
    closeITunesLibrary();
    return left;
}

/// How many songs the library has with this journal beside it.
int TestLibraryJournal::countWith(const QByteArray& journal)
{
    Fixtures::writeLibrary(m_songs->path(), m_before);
    Fixtures::writeLibrary(m_songs->journal(), journal);
    return LibraryCalls::read(m_songs->path()).count;
}

void TestLibraryJournal::aJournalThatIsLeftIsApplied()
{
    m_songs->makeSongs(4, 1);
    const QByteArray before = m_songs->content();
    Edit edit;
    edit.name = "Tab\tand\nline \\n & \xC3\xA9";
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), edit), 0);
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 1);
    const QByteArray left = contentOf(m_songs->journal());
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
        QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(m_songs->journal()), writingPause);
        QCOMPARE(m_songs->content(), after);
        closeITunesLibrary();
    }
}

void TestLibraryJournal::aTornLineIsNoChange()
{
    m_songs->makeSongs(4);
    const QByteArray before = m_songs->content();
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    const QByteArray whole = contentOf(m_songs->journal()).trimmed();
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
    const QByteArray theirs = leftBy([this] { deleteMusic(m_songs->id(1)); });
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
    const QByteArray whole = leftBy([this] { deleteMusic(m_songs->id(0)); });
    QCOMPARE(countWith(whole.chopped(5)), 6);
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 1);
    const QByteArray next = contentOf(m_songs->journal());
    closeITunesLibrary();
    // As if another kill had left that: nothing in it is damaged.
    QCOMPARE(countWith(next), 5);
    closeITunesLibrary();
    QVERIFY(AudioFile::takeLog().isEmpty());
}

void TestLibraryJournal::aDamagedLineIsToldAndKept()
{
    const QByteArray whole = leftBy([this] {
        for (const int song : {1, 2, 3})
            deleteMusic(m_songs->id(song));
    });
    QByteArray damaged = whole;
    const int at = damaged.indexOf(Fixtures::itunesIdentifier(m_songs->id(2)));
    damaged[at] = damaged.at(at) == '7' ? '8' : '7';
    QCOMPARE(countWith(damaged), 4);
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().contains("(1)"), qPrintable(log.first()));
    const QString kept = m_songs->keptJournals().value(0);
    QCOMPARE(contentOf(kept), damaged);
    // Not told again, nor taken for something else.
    const QByteArray next = contentOf(m_songs->journal());
    closeITunesLibrary();
    QVERIFY(!QFile::exists(m_songs->journal()));
    QCOMPARE(countWith(next), 4);
    closeITunesLibrary();
    QVERIFY(AudioFile::takeLog().isEmpty());
    QCOMPARE(contentOf(kept), damaged);
}

void TestLibraryJournal::anEditThatFailedIsNoDamage()
{
    const QByteArray whole = leftBy([this] {
        QVERIFY(LibraryCalls::edit(m_songs->id(5), Edit()) != 0); // there is no such file
        deleteMusic(m_songs->id(1));
    });
    AudioFile::takeLog();
    QCOMPARE(countWith(whole), 5);
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
    const QByteArray left = contentOf(m_songs->journal());
    QVERIFY(!left.contains('\0'));
    m_before = m_songs->content();
    closeITunesLibrary();
    QCOMPARE(countWith(left), 2);
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

/// As a kill leaves everything that comes before the media file is written.
void TestLibraryJournal::leaveBegun(const Edit& edit)
{
    m_songs->makeSongs(3, 1);
    m_before = m_songs->content();
    const QByteArray song = contentOf(m_songs->media(0));
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 1);
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), edit), 0);
    QByteArray left = contentOf(m_songs->journal());
    closeITunesLibrary();
    left[left.lastIndexOf("\n+") + 1] = '?';
    Fixtures::writeLibrary(m_songs->path(), m_before);
    Fixtures::writeLibrary(m_songs->media(0), song);
    Fixtures::writeLibrary(m_songs->journal(), left);
    AudioFile::takeLog();
}

void TestLibraryJournal::anEditThatWasBegunIsDone_data()
{
    QTest::addColumn<bool>("withCover");
    QTest::addColumn<bool>("mediaIsWritten");
    QTest::newRow("texts") << false << false;
    QTest::newRow("texts, the media file is written") << false << true;
    QTest::newRow("artwork") << true << false;
    QTest::newRow("artwork, the media file is written") << true << true;
}

void TestLibraryJournal::anEditThatWasBegunIsDone()
{
    QFETCH(bool, withCover);
    QFETCH(bool, mediaIsWritten);
    const QByteArray picture = Fixtures::jpeg(60, 60, 3);
    Edit edit;
    if (withCover)
        edit.cover = Fixtures::writeLibrary(m_songs->inFolder("cover.jpg"), picture);
    leaveBegun(edit);
    if (mediaIsWritten) {
        QCOMPARE(AudioFile::write(m_songs->media(0), {{TAG_TITLE, "New name"}, {TAG_ARTIST, "New artist"}},
                                  withCover ? &picture : nullptr),
                 0);
        QFile::remove(edit.cover); // with the folder of the program that was killed
    }
    launchiTunes();
    QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(m_songs->journal()), writingPause);
    const auto content = AudioFile::read(m_songs->media(0));
    QCOMPARE(content.texts.value(TAG_TITLE), QString("New name"));
    QCOMPARE(content.texts.value(TAG_YEAR), QString("2001"));
    QCOMPARE(content.picture, withCover ? picture : QByteArray());
    closeITunesLibrary();
    const LibraryCalls::Reading reading = LibraryCalls::read(m_songs->path());
    QCOMPARE(reading.count, 2);
    QCOMPARE(QByteArray(reading.records[0].name), QByteArray("New name"));
    QVERIFY(m_songs->keptJournals().isEmpty());
    QVERIFY(AudioFile::takeLog().isEmpty());
}

void TestLibraryJournal::anEditThatCannotBeDoneIsKeptAside_data()
{
    QTest::addColumn<QString>("missing");
    QTest::addColumn<QString>("title");
    QTest::newRow("the media file") << "song0.mp3"
                                    << "";
    QTest::newRow("the picture") << "cover.jpg"
                                 << "New name";
}

void TestLibraryJournal::anEditThatCannotBeDoneIsKeptAside()
{
    QFETCH(QString, missing);
    QFETCH(QString, title);
    Edit edit;
    edit.cover = Fixtures::writeLibrary(m_songs->inFolder("cover.jpg"), Fixtures::jpeg(60, 60, 3));
    leaveBegun(edit);
    const QByteArray left = contentOf(m_songs->journal());
    QVERIFY(QFile::remove(m_songs->inFolder(missing)));
    const LibraryCalls::Reading reading = LibraryCalls::read(m_songs->path());
    QCOMPARE(reading.count, 2);
    const QByteArray before = m_songs->tracks.first().name;
    QCOMPARE(QByteArray(reading.records[0].name), title.isEmpty() ? before : title.toUtf8());
    QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(m_songs->journal()), writingPause);
    QCOMPARE(AudioFile::read(m_songs->media(0)).texts.value(TAG_TITLE), title);
    QCOMPARE(m_songs->keptJournals().size(), 1);
    QCOMPARE(contentOf(m_songs->keptJournals().first()), left);
    QVERIFY(!AudioFile::takeLog().filter(m_songs->keptJournals().first()).isEmpty());
}

void TestLibraryJournal::anEditThatFailedIsNotDoneLater()
{
    const QByteArray left = leftBy([this] {
        deleteMusic(m_songs->id(1));
        Edit edit;
        Fixtures::writeLibrary(m_songs->media(0), "no music at all");
        QVERIFY(LibraryCalls::edit(m_songs->id(0), edit) != 0);
    });
    Fixtures::copyTone("mp3", m_songs->folder(), "song0");
    const QByteArray song = contentOf(m_songs->media(0));
    AudioFile::takeLog();
    QCOMPARE(countWith(left), 5);
    closeITunesLibrary();
    QCOMPARE(contentOf(m_songs->media(0)), song);
    QVERIFY(AudioFile::takeLog().isEmpty());
    QVERIFY(m_songs->keptJournals().isEmpty());
}

void TestLibraryJournal::aJournalOfAnotherUserIsLeftAlone()
{
    if (::geteuid() != 0)
        QSKIP("only root can give a file to another user");
    const QByteArray left = leftBy([this] { deleteMusic(m_songs->id(1)); });
    const auto give = [](const QString& path, uid_t user) {
        return ::chown(QFile::encodeName(path).constData(), user, gid_t(-1)) == 0;
    };
    Fixtures::writeLibrary(m_songs->path(), m_before);
    Fixtures::writeLibrary(m_songs->journal(), left);
    QVERIFY(give(m_songs->journal(), 12345));
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 6);
    QCOMPARE(int(deleteMusic(m_songs->id(2))), 0);
    const QStringList log = AudioFile::takeLog();
    QVERIFY(!log.isEmpty());
    QVERIFY2(log.first().contains("another user"), qPrintable(log.first()));
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), m_before);
    QCOMPARE(contentOf(m_songs->journal()), left);
    // The library's owner is trusted with the library, not with anybody's media files.
    QVERIFY(give(m_songs->path(), 12345));
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 5);
    closeITunesLibrary();
    leaveBegun(Edit());
    const QByteArray song = contentOf(m_songs->media(0));
    QVERIFY(give(m_songs->path(), 12345) && give(m_songs->journal(), 12345));
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 2);
    closeITunesLibrary();
    QCOMPARE(contentOf(m_songs->media(0)), song);
    QCOMPARE(m_songs->keptJournals().size(), 1);
}

void TestLibraryJournal::textsAreCheckedLikeAnyInput()
{
    leftBy([] {});
    const auto edit = [this](int song, const QByteArray& name, const QByteArray& year) {
        return lineOf('+', "edit\t" + Fixtures::itunesIdentifier(m_songs->id(song)) + '\t' + name +
                               "\ta\tb\tc\t" + year);
    };
    const QByteArray control = QByteArray("x\x01y\0z\xFFv", 7);
    QCOMPARE(countWith("melodrift journal 1\n" + edit(1, control, "1999") + edit(2, "n", "4294967295") +
                       edit(3, "n", "-1") + edit(4, "n", "2147483647") +
                       lineOf('+', "delete\t0000000000000000") + lineOf('+', "unknown\t1") +
                       edit(5, "n", "0")),
             6);
    LibraryCalls::Reading reading = LibraryCalls::read();
    QCOMPARE(QByteArray(reading.records[1].name), QByteArray("xyz\xEF\xBF\xBDv"));
    for (const int song : {2, 3})
        QCOMPARE(quint64(reading.records[song].year), m_songs->tracks.at(song).year);
    QCOMPARE(quint64(reading.records[4].year), Q_UINT64_C(2147483647));
    QVERIFY(!AudioFile::takeLog().filter("(4)").isEmpty());
    QCOMPARE(m_songs->keptJournals().size(), 1);
    closeITunesLibrary();
    QVERIFY(!m_songs->content().contains('\x01'));
    reading = LibraryCalls::read(m_songs->path());
    QCOMPARE(QByteArray(reading.records[1].name), QByteArray("xyz\xEF\xBF\xBDv"));
}

void TestLibraryJournal::onlyTheUserMayOpenIt()
{
    const auto mode = [this] { return QFile(m_songs->journal()).permissions(); };
    const QFile::Permissions others =
        QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    m_songs->makeSongs(3);
    QCOMPARE(::chmod(QFile::encodeName(m_songs->path()).constData(), 0666), 0);
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    QCOMPARE(mode() & others, QFile::Permissions());
    const QByteArray left = contentOf(m_songs->journal());
    closeITunesLibrary();
    // One that an earlier version left.
    Fixtures::writeLibrary(m_songs->journal(), left);
    QCOMPARE(::chmod(QFile::encodeName(m_songs->journal()).constData(), 0666), 0);
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 1);
    QCOMPARE(mode() & others, QFile::Permissions());
}

void TestLibraryJournal::manyBrokenLinesCostNothing()
{
    const QByteArray left = leftBy([this] { deleteMusic(m_songs->id(1)); });
    const QByteArray broken = left + QByteArray("x\n").repeated(2000000) + left.mid(left.indexOf('+'));
    const qint64 before = writeCalls();
    QCOMPARE(countWith(broken), 5);
    closeITunesLibrary();
    QVERIFY2(writeCalls() - before < 1000, qPrintable(QString::number(writeCalls() - before)));
    QVERIFY(!AudioFile::takeLog().filter("(2000000)").isEmpty());
    QVERIFY(!QFile::exists(m_songs->journal()));
    QCOMPARE(contentOf(m_songs->keptJournals().value(0)), broken);
}

void TestLibraryJournal::whatIsTooLargeIsNoJournal()
{
    const QByteArray left = leftBy([this] { deleteMusic(m_songs->id(1)); });
    const QByteArray line = left.mid(left.indexOf('+'));
    for (const QByteArray& large : {left + QByteArray(17000000, '\n'), left + line.repeated(200000)}) {
        QCOMPARE(countWith(large), 6);
        QCOMPARE(AudioFile::takeLog().size(), 1);
        QCOMPARE(int(deleteMusic(m_songs->id(2))), 0);
        closeITunesLibrary();
        QVERIFY(contentOf(m_songs->journal()) == large);
        AudioFile::takeLog();
    }
}

void TestLibraryJournal::aFullJournalGoesIntoTheLibrary()
{
    const QByteArray left = leftBy([this] { deleteMusic(m_songs->id(1)); });
    const QByteArray line = left.mid(left.indexOf('+'));
    QCOMPARE(countWith(left + line.repeated(99999)), 5);
    QCOMPARE(int(deleteMusic(m_songs->id(2))), 1);
    QCOMPARE(int(deleteMusic(m_songs->id(3))), 1);
    QVERIFY(contentOf(m_songs->journal()).size() < 1000000);
    QVERIFY(AudioFile::takeLog().isEmpty());
    closeITunesLibrary();
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 3);
}

QTEST_GUILESS_MAIN(TestLibraryJournal)
#include "tst_libraryjournal.moc"
