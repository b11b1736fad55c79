#include "audiocore/tagitem.h"
#include "songlibrary.h"

#include <QtTest>

#include <memory>
#include <unistd.h>

using LibraryCalls::contentOf;
using LibraryCalls::Edit;

namespace {

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

/// What a killed run left, and what others put into its place.
class TestLibraryRecovery : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void anEditThatWasBegunIsDone_data();
    void anEditThatWasBegunIsDone();
    void anEditThatCannotBeDoneIsKeptAside_data();
    void anEditThatCannotBeDoneIsKeptAside();
    void nothingFollowsAnEditThatWaits_data();
    void nothingFollowsAnEditThatWaits();
    void anEditThatFailedIsNotDoneLater();
    void aJournalOfAnotherUserIsLeftAlone();
    void textsAreCheckedLikeAnyInput();
    void onlyTheUserMayOpenIt();
    void manyBrokenLinesCostNothing();
    void whatIsTooLargeIsNoJournal();
    void aFullJournalGoesIntoTheLibrary();

private:
    void leaveBegun(const Edit& edit);

    std::unique_ptr<SongLibrary> m_songs;
};

void TestLibraryRecovery::init()
{
    m_songs = std::make_unique<SongLibrary>();
}

void TestLibraryRecovery::cleanup()
{
    closeITunesLibrary();
    QVERIFY2(m_songs->temporaries().isEmpty(), qPrintable(m_songs->temporaries().join(' ')));
    m_songs.reset();
}

/// As a kill leaves everything that comes before the media file is written.
void TestLibraryRecovery::leaveBegun(const Edit& edit)
{
    m_songs->makeSongs(3, 1);
    m_songs->before = m_songs->content();
    const QByteArray song = contentOf(m_songs->media(0));
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 1);
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), edit), 0);
    QByteArray left = m_songs->journalContent();
    closeITunesLibrary();
    left[left.lastIndexOf("\n+") + 1] = '?';
    Fixtures::writeLibrary(m_songs->path(), m_songs->before);
    Fixtures::writeLibrary(m_songs->media(0), song);
    Fixtures::writeLibrary(m_songs->journal(), left);
    AudioFile::takeLog();
}

void TestLibraryRecovery::anEditThatWasBegunIsDone_data()
{
    QTest::addColumn<bool>("withCover");
    QTest::addColumn<bool>("mediaIsWritten");
    QTest::newRow("texts") << false << false;
    QTest::newRow("texts, the media file is written") << false << true;
    QTest::newRow("artwork") << true << false;
    QTest::newRow("artwork, the media file is written") << true << true;
}

void TestLibraryRecovery::anEditThatWasBegunIsDone()
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
    QTRY_VERIFY(!QFile::exists(m_songs->journal()));
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

void TestLibraryRecovery::anEditThatCannotBeDoneIsKeptAside_data()
{
    QTest::addColumn<QString>("missing");
    QTest::addColumn<QString>("title");
    QTest::newRow("the media file") << "song0.mp3"
                                    << "";
    QTest::newRow("the picture") << "cover.jpg"
                                 << "New name";
}

void TestLibraryRecovery::anEditThatCannotBeDoneIsKeptAside()
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
    QTRY_VERIFY(!QFile::exists(m_songs->journal()));
    QCOMPARE(AudioFile::read(m_songs->media(0)).texts.value(TAG_TITLE), title);
    QCOMPARE(m_songs->keptJournals().size(), 1);
    QCOMPARE(contentOf(m_songs->keptJournals().first()), left);
    QVERIFY(!AudioFile::takeLog().filter(m_songs->keptJournals().first()).isEmpty());
}

void TestLibraryRecovery::nothingFollowsAnEditThatWaits_data()
{
    QTest::addColumn<bool>("canBeDone");
    QTest::newRow("one that can be done") << true;
    QTest::newRow("one that is to be kept aside") << false;
}

/// Behind an edit that was begun there is none: one with others behind it counts as failed.
void TestLibraryRecovery::nothingFollowsAnEditThatWaits()
{
    QFETCH(bool, canBeDone);
    const Interposed::Guard guard;
    int writes = 0;
    for (int failing = 0; failing <= writes; ++failing) {
        m_songs = nullptr;
        m_songs = std::make_unique<SongLibrary>();
        leaveBegun(Edit());
        const QByteArray left = contentOf(m_songs->journal());
        QFile::remove(m_songs->journal());
        QCOMPARE(LibraryCalls::read(m_songs->path()).count, 3);
        Fixtures::writeLibrary(m_songs->journal(), left);
        if (!canBeDone)
            QVERIFY(QFile::remove(m_songs->media(0)));
        Interposed::copiesInKernel = [](size_t) { return 0; };
        writes = 0;
        Interposed::writeFails = [&writes, failing] { return writes++ == failing; };
        deleteMusic(m_songs->id(2));
        Interposed::writeFails = nullptr;
        const QByteArray journal = m_songs->journalContent();
        const int begun = journal.indexOf("\n?");
        QVERIFY(begun < 0 || journal.lastIndexOf("delete") < begun);
        closeITunesLibrary();
    }
    AudioFile::takeLog();
}

void TestLibraryRecovery::anEditThatFailedIsNotDoneLater()
{
    const QByteArray left = m_songs->leftBy([this] {
        deleteMusic(m_songs->id(1));
        Edit edit;
        Fixtures::writeLibrary(m_songs->media(0), "no music at all");
        QVERIFY(LibraryCalls::edit(m_songs->id(0), edit) != 0);
    });
    Fixtures::copyTone("mp3", m_songs->folder(), "song0");
    const QByteArray song = contentOf(m_songs->media(0));
    AudioFile::takeLog();
    QCOMPARE(m_songs->countWith(left), 5);
    closeITunesLibrary();
    QCOMPARE(contentOf(m_songs->media(0)), song);
    QVERIFY(AudioFile::takeLog().isEmpty());
    QVERIFY(m_songs->keptJournals().isEmpty());
}

void TestLibraryRecovery::aJournalOfAnotherUserIsLeftAlone()
{
    if (::geteuid() != 0)
        QSKIP("only root can give a file to another user");
    const QByteArray left = m_songs->leftBy([this] { deleteMusic(m_songs->id(1)); });
    const auto give = [](const QString& path, uid_t user) {
        return ::chown(QFile::encodeName(path).constData(), user, gid_t(-1)) == 0;
    };
    Fixtures::writeLibrary(m_songs->path(), m_songs->before);
    Fixtures::writeLibrary(m_songs->journal(), left);
    QVERIFY(give(m_songs->journal(), 12345));
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 6);
    QCOMPARE(int(deleteMusic(m_songs->id(2))), 0);
    const QStringList log = AudioFile::takeLog();
    QVERIFY(!log.isEmpty());
    QVERIFY2(log.first().contains("another user"), qPrintable(log.first()));
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), m_songs->before);
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

void TestLibraryRecovery::textsAreCheckedLikeAnyInput()
{
    m_songs->leftBy([] {});
    const auto edit = [this](int song, const QByteArray& name, const QByteArray& year) {
        return lineOf('+', "edit\t" + Fixtures::itunesIdentifier(m_songs->id(song)) + '\t' + name +
                               "\ta\tb\tc\t" + year);
    };
    const QByteArray control = QByteArray("x\x01y\0z\xFFv", 7);
    QCOMPARE(m_songs->countWith("melodrift journal 1\n" + edit(1, control, "1999") +
                                edit(2, "n", "4294967295") + edit(3, "n", "-1") + edit(4, "n", "2147483647") +
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

void TestLibraryRecovery::onlyTheUserMayOpenIt()
{
    const auto mode = [this] { return QFile(m_songs->journal()).permissions(); };
    const QFile::Permissions others =
        QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    m_songs->makeSongs(3);
    QCOMPARE(::chmod(QFile::encodeName(m_songs->path()).constData(), 0666), 0);
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    QCOMPARE(mode() & others, QFile::Permissions());
    const QByteArray left = m_songs->journalContent();
    closeITunesLibrary();
    // One that an earlier version left.
    Fixtures::writeLibrary(m_songs->journal(), left);
    QCOMPARE(::chmod(QFile::encodeName(m_songs->journal()).constData(), 0666), 0);
    QCOMPARE(int(deleteMusic(m_songs->id(1))), 1);
    QCOMPARE(mode() & others, QFile::Permissions());
}

void TestLibraryRecovery::manyBrokenLinesCostNothing()
{
    const QByteArray left = m_songs->leftBy([this] { deleteMusic(m_songs->id(1)); });
    const QByteArray broken = left + QByteArray("x\n").repeated(2000000) + left.mid(left.indexOf('+'));
    const qint64 before = writeCalls();
    QCOMPARE(m_songs->countWith(broken), 5);
    closeITunesLibrary();
    QVERIFY2(writeCalls() - before < 1000, qPrintable(QString::number(writeCalls() - before)));
    QVERIFY(!AudioFile::takeLog().filter("(2000000)").isEmpty());
    QVERIFY(!QFile::exists(m_songs->journal()));
    QCOMPARE(contentOf(m_songs->keptJournals().value(0)), broken);
}

void TestLibraryRecovery::whatIsTooLargeIsNoJournal()
{
    const QByteArray left = m_songs->leftBy([this] { deleteMusic(m_songs->id(1)); });
    const QByteArray line = left.mid(left.indexOf('+'));
    for (const QByteArray& large : {left + QByteArray(17000000, '\n'), left + line.repeated(200000)}) {
        QCOMPARE(m_songs->countWith(large), 6);
        QCOMPARE(AudioFile::takeLog().size(), 1);
        QCOMPARE(int(deleteMusic(m_songs->id(2))), 0);
        closeITunesLibrary();
        QVERIFY(contentOf(m_songs->journal()) == large);
        AudioFile::takeLog();
    }
}

void TestLibraryRecovery::aFullJournalGoesIntoTheLibrary()
{
    const QByteArray left = m_songs->leftBy([this] { deleteMusic(m_songs->id(1)); });
    const QByteArray line = left.mid(left.indexOf('+'));
    QCOMPARE(m_songs->countWith(left + line.repeated(99999)), 5);
    QCOMPARE(int(deleteMusic(m_songs->id(2))), 1);
    QCOMPARE(int(deleteMusic(m_songs->id(3))), 1);
    QVERIFY(contentOf(m_songs->journal()).size() < 1000000);
    QVERIFY(AudioFile::takeLog().isEmpty());
    closeITunesLibrary();
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 3);
}

QTEST_GUILESS_MAIN(TestLibraryRecovery)
#include "tst_libraryrecovery.moc"
