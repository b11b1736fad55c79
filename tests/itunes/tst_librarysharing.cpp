#include "audiocore/tagitem.h"
#include "songlibrary.h"

#include <QProcess>
#include <QtTest>

#include <functional>
#include <memory>

using LibraryCalls::contentOf;
using LibraryCalls::Edit;

/// Other programs, and other copies of this one, write the library and its media files as well.
class TestLibrarySharing : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void fieldsThatWereLeftStayAsOthersMadeThem();
    void aFieldThatIsPutBackIsWritten();
    void anEditThatFailedIsNoReading();
    void aTrackThatIsGoneIsNotEdited();
    void anEditWhoseTrackGoesIsKeptAside();
    void withoutAnotherWriterNothingIsReadAgain();
    void theOriginalIsKeptForGood();
    void theLastThreeVersionsAreKept();
    void theOldestBackupThereIsTheOriginal();
    void aBackupThatCannotBeReadIsNotPassedOver();
    void aCopyThatCannotBeReadIsNotBroken();
    void twoCopiesKeepOneOriginal();

private:
    Edit asRead(int song) const;
    void otherProgramWrites() const { Fixtures::writeLibrary(m_songs->path(), m_songs->document()); }
    QByteArray changeAndClose(int song);
    QByteArray leaveOlderBackup();

    std::unique_ptr<SongLibrary> m_songs;
};

void TestLibrarySharing::init()
{
    m_songs = std::make_unique<SongLibrary>();
}

void TestLibrarySharing::cleanup()
{
    closeITunesLibrary();
    QVERIFY2(m_songs->temporaries().isEmpty(), qPrintable(m_songs->temporaries().join(' ')));
    m_songs.reset();
}

/// Whether the file that is open has such a path.
static bool isOpen(int fd, const std::function<bool(const QString& path)>& wanted)
{
    return wanted(QFile::symLinkTarget(QString("/proc/self/fd/%1").arg(fd)));
}

/// What a caller sends that changes nothing.
Edit TestLibrarySharing::asRead(int song) const
{
    const Fixtures::ITunesTrack& track = m_songs->tracks.at(song);
    return {track.name, track.album, track.artist, track.genre, int(track.year), QString()};
}

void TestLibrarySharing::fieldsThatWereLeftStayAsOthersMadeThem()
{
    m_songs->makeSongs(3, 3);
    Edit ours = asRead(1);
    ours.artist = "Ours";
    m_songs->tracks[1].name = "Theirs";
    m_songs->tracks[1].year = 1901;
    otherProgramWrites();
    QCOMPARE(AudioFile::write(m_songs->media(1), {{TAG_TITLE, "Theirs"}, {TAG_GENRE, "Their genre"}}), 0);
    QCOMPARE(LibraryCalls::edit(m_songs->id(1), ours), 0);
    closeITunesLibrary();

    m_songs->tracks[1].artist = ours.artist;
    QCOMPARE(m_songs->content(), m_songs->document());
    const auto texts = AudioFile::read(m_songs->media(1)).texts;
    QCOMPARE(texts.value(TAG_TITLE), QString("Theirs"));
    QCOMPARE(texts.value(TAG_GENRE), QString("Their genre"));
    QCOMPARE(texts.value(TAG_ARTIST), QString("Ours"));
}

void TestLibrarySharing::aFieldThatIsPutBackIsWritten()
{
    m_songs->makeSongs(1, 1);
    const Edit before = asRead(0);
    Edit other = before;
    other.name = "Other";
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), other), 0);
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), before), 0);
    QCOMPARE(AudioFile::read(m_songs->media(0)).texts.value(TAG_TITLE), QString::fromUtf8(before.name));
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), m_songs->document());
}

void TestLibrarySharing::anEditThatFailedIsNoReading()
{
    m_songs->makeSongs(1, 1);
    const QByteArray song = contentOf(m_songs->media(0));
    Edit other = asRead(0);
    other.name = "Other";
    Fixtures::writeLibrary(m_songs->media(0), "no music at all");
    QVERIFY(LibraryCalls::edit(m_songs->id(0), other) != 0);
    Fixtures::writeLibrary(m_songs->media(0), song);
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), other), 0);
    QCOMPARE(AudioFile::read(m_songs->media(0)).texts.value(TAG_TITLE), QString("Other"));
    closeITunesLibrary();
    m_songs->tracks[0].name = "Other";
    QCOMPARE(m_songs->content(), m_songs->document());
}

void TestLibrarySharing::aTrackThatIsGoneIsNotEdited()
{
    m_songs->makeSongs(3, 3);
    const QByteArray song = contentOf(m_songs->media(1));
    m_songs->tracks.removeAt(1);
    otherProgramWrites();
    AudioFile::takeLog();
    QVERIFY(LibraryCalls::edit(m_songs->id(1), Edit()) != 0);
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().contains("no longer"), qPrintable(log.first()));
    QCOMPARE(contentOf(m_songs->media(1)), song);
    closeITunesLibrary();
    QCOMPARE(m_songs->content(), m_songs->document());
    QVERIFY(!QFile::exists(m_songs->journal()));
    // The others are as good as before.
    QCOMPARE(LibraryCalls::edit(m_songs->id(2), Edit()), 0);
    closeITunesLibrary();
    QVERIFY(m_songs->content().contains("New name"));
}

/// Between the answer and the writing another program takes the track out.
void TestLibrarySharing::anEditWhoseTrackGoesIsKeptAside()
{
    m_songs->makeSongs(3, 3);
    QCOMPARE(LibraryCalls::edit(m_songs->id(1), Edit()), 0);
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    const QByteArray journal = contentOf(m_songs->journal());
    m_songs->tracks.removeAt(1);
    otherProgramWrites();
    AudioFile::takeLog();
    closeITunesLibrary();
    QVERIFY(!QFile::exists(m_songs->journal()));
    const QStringList kept = m_songs->keptJournals();
    QCOMPARE(kept.size(), 1);
    QCOMPARE(contentOf(kept.first()), journal);
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().contains(kept.first()), qPrintable(log.first()));
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 1);
}

void TestLibrarySharing::withoutAnotherWriterNothingIsReadAgain()
{
    const auto bytesRead = [] { return contentOf("/proc/self/io").split('\n').value(0).mid(7).toLongLong(); };
    m_songs->makeSongs(5000, 2);
    QCOMPARE(LibraryCalls::edit(m_songs->id(0), Edit()), 0);
    QTRY_VERIFY(!QFile::exists(m_songs->journal()));
    const qint64 before = bytesRead();
    QCOMPARE(LibraryCalls::edit(m_songs->id(1), Edit()), 0);
    const qint64 read = bytesRead() - before;
    QVERIFY2(read < m_songs->content().size() / 2, qPrintable(QString::number(read)));
}

/// A run of its own with one deletion; the library that it found.
QByteArray TestLibrarySharing::changeAndClose(int song)
{
    const QByteArray before = m_songs->content();
    LibraryCalls::read(m_songs->path());
    if (deleteMusic(m_songs->id(song)) != 1)
        return QByteArray();
    closeITunesLibrary();
    return before;
}

void TestLibrarySharing::theOriginalIsKeptForGood()
{
    m_songs->makeSongs(10);
    const QByteArray first = m_songs->content();
    for (int run = 0; run < 6; ++run)
        QVERIFY(!changeAndClose(run).isEmpty());
    const QStringList originals = m_songs->originals();
    QCOMPARE(originals.size(), 1);
    QCOMPARE(contentOf(originals.first()), first);
    const QString today = QDate::currentDate().toString(Qt::ISODate);
    QVERIFY2(originals.first().endsWith(today), qPrintable(originals.first()));
}

void TestLibrarySharing::theLastThreeVersionsAreKept()
{
    m_songs->makeSongs(10);
    QList<QByteArray> found;
    for (int run = 0; run < 6; ++run)
        found.append(changeAndClose(run));
    QCOMPARE(contentOf(m_songs->backup()), found.at(5));
    QCOMPARE(contentOf(m_songs->backup() + "-2"), found.at(4));
    QCOMPARE(contentOf(m_songs->backup() + "-3"), found.at(3));
    QCOMPARE(QDir(m_songs->folder()).entryList(QDir::Files | QDir::Hidden).size(), 5);
    // What is kept already pushes nothing out.
    Fixtures::writeLibrary(m_songs->path(), found.at(4));
    QVERIFY(!changeAndClose(9).isEmpty());
    QCOMPARE(contentOf(m_songs->backup()), found.at(5));
    QCOMPARE(contentOf(m_songs->backup() + "-3"), found.at(3));
}

/// Beside a library without an original, as earlier versions left it; what it holds.
QByteArray TestLibrarySharing::leaveOlderBackup()
{
    m_songs->makeSongs(5);
    const QByteArray first = m_songs->content();
    m_songs->tracks.removeLast();
    otherProgramWrites();
    Fixtures::writeLibrary(m_songs->backup(), first);
    return first;
}

void TestLibrarySharing::theOldestBackupThereIsTheOriginal()
{
    const QByteArray first = leaveOlderBackup();
    const QByteArray second = m_songs->content();
    QCOMPARE(changeAndClose(0), second);
    QCOMPARE(m_songs->originals().size(), 1);
    QCOMPARE(contentOf(m_songs->originals().first()), first);
    QCOMPARE(contentOf(m_songs->backup()), second);
}

/// It may be the only copy of how all began.
void TestLibrarySharing::aBackupThatCannotBeReadIsNotPassedOver()
{
    const QByteArray first = leaveOlderBackup();
    const QByteArray second = m_songs->content();
    {
        const Interposed::Guard guard;
        Interposed::copiesInKernel = [](size_t) { return ssize_t(-1); };
        Interposed::readFails = [this](int fd, off_t) {
            return isOpen(fd, [this](const QString& path) { return path == m_songs->backup(); });
        };
        AudioFile::takeLog();
        QVERIFY(changeAndClose(0).isEmpty());
        const QStringList log = AudioFile::takeLog();
        QCOMPARE(log.size(), 1);
        QVERIFY2(log.first().contains("its former backup cannot be kept"), qPrintable(log.first()));
    }
    QVERIFY(m_songs->originals().isEmpty());
    QCOMPARE(contentOf(m_songs->backup()), first);
    QCOMPARE(m_songs->content(), second);
    QCOMPARE(changeAndClose(0), second);
    QCOMPARE(contentOf(m_songs->originals().value(0)), first);
}

/// The library that it was made of may be whole, and the next look finds it so.
void TestLibrarySharing::aCopyThatCannotBeReadIsNotBroken()
{
    m_songs->makeSongs(5);
    otherProgramWrites(); // no longer as it was read
    const QByteArray before = m_songs->content();
    {
        const Interposed::Guard guard;
        Interposed::readFails = [](int fd, off_t) {
            return isOpen(fd, [](const QString& path) { return path.contains("/.melodrift"); });
        };
        QCOMPARE(int(deleteMusic(m_songs->id(0))), 0);
    }
    QVERIFY(!QFile::exists(m_songs->journal()));
    QCOMPARE(m_songs->content(), before);
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1);
    closeITunesLibrary();
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 4);
    QCOMPARE(contentOf(m_songs->originals().value(0)), before);
}

void TestLibrarySharing::twoCopiesKeepOneOriginal()
{
    m_songs->makeSongs(6);
    const QByteArray first = m_songs->content();
    QCOMPARE(int(deleteMusic(m_songs->id(0))), 1); // waits in the journal of this copy
    QProcess other;
    const QString gate = Fixtures::writeLibrary(m_songs->inFolder("gate"), "");
    other.start(QCoreApplication::applicationDirPath() + "/library_starter",
                {m_songs->path(), gate, Fixtures::itunesIdentifier(m_songs->id(1))});
    QVERIFY(other.waitForStarted(patience));
    closeITunesLibrary();
    QVERIFY(other.waitForReadyRead(patience));
    other.closeWriteChannel();
    QVERIFY(other.waitForFinished(patience));
    QVERIFY(!changeAndClose(2).isEmpty());
    QCOMPARE(m_songs->originals().size(), 1);
    QCOMPARE(contentOf(m_songs->originals().first()), first);
}

QTEST_GUILESS_MAIN(TestLibrarySharing)
#include "tst_librarysharing.moc"
