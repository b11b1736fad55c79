// Saving where others work on the same files and folders at the same time, and on disks that fail.
#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "interposed.h"

#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>

#include <QDir>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

#include <csignal>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {
constexpr uid_t ordinaryUser = 65534;
constexpr const char* accessList = "system.posix_acl_access";

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::string native(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}

struct stat statusOf(const QString& path)
{
    struct stat status = {};
    ::lstat(native(path).c_str(), &status);
    return status;
}

QStringList newFilesIn(const QString& folder)
{
    return QDir(folder).entryList({QStringLiteral(".melodrift*")}, QDir::Files | QDir::Hidden | QDir::System);
}

QString textOf(const QString& path, int type)
{
    return AudioFile::read(path).texts.value(type);
}

/// As another program does, in the file itself.
void writeAlbum(const QString& path, const char* album)
{
    TagLib::MPEG::File file(native(path).c_str());
    file.ID3v2Tag(true)->setAlbum(album);
    file.save();
}

/// The result of what a process of its own does.
int inAnotherProcess(const std::function<int()>& work)
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(work());
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
} // namespace

class TestSafeSave : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void aSwappedNameChangesNoOtherFile();
    void whatTheFolderHandsOnGivesNobodyRights();
    void aListOfAccessStays();
    void aGroupThatCannotBeKeptLosesItsRights();
    void whatAnotherProgramWritesMeanwhileStays_data();
    void whatAnotherProgramWritesMeanwhileStays();
    void aFileThatNeverRestsIsLeftAlone();
    void editsOfTwoThreadsAreBothKept();
    void editsOfTwoProcessesAreBothKept();
    void aHeldLockHoldsNoSaveForEver();
    void aFailingReadLeavesTheOldFile();
    void aCopyThatEndsEarlyIsNone();
    void anUnreadableTagIsNotAnEmptyOne();
    void holesStayHoles_data();
    void holesStayHoles();
    void aLeaseIsWaitedFor();

private:
    QString copyTone(const QString& kind, const QString& name = QStringLiteral("song")) const
    {
        return Fixtures::copyTone(kind, m_folder->path(), name);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

/// Another user of the folder puts a link in the place of the file that a save has just made.
void TestSafeSave::aSwappedNameChangesNoOtherFile()
{
    const QString song = copyTone(QStringLiteral("mp3"));
    const QString other = copyTone(QStringLiteral("mp3"), QStringLiteral("other"));
    const QByteArray before = contentOf(other);
    const Interposed::Guard guard;
    int swapped = 0;
    Interposed::beforeLock = [&] {
        const QStringList made = newFilesIn(m_folder->path());
        if (made.isEmpty() || swapped > 0)
            return;
        ++swapped;
        const QString name = m_folder->filePath(made.first());
        QFile::rename(name, m_folder->filePath(QStringLiteral("aside")));
        QFile::link(other, name);
    };
    const int result = AudioFile::write(song, {{TAG_TITLE, QStringLiteral("New")}});
    QCOMPARE(swapped, 1);
    QCOMPARE(contentOf(other), before);
    QVERIFY(S_ISREG(statusOf(song).st_mode));
    QCOMPARE(result, 0);
    QCOMPARE(textOf(song, TAG_TITLE), QStringLiteral("New"));
}

/// A list that gives one more user the rights `user`, and the group `group`.
static QByteArray accessListWith(uchar user, uchar group)
{
    const auto entry = [](ushort tag, ushort rights, uint id) {
        return QByteArray(reinterpret_cast<const char*>(&tag), 2) +
               QByteArray(reinterpret_cast<const char*>(&rights), 2) +
               QByteArray(reinterpret_cast<const char*>(&id), 4);
    };
    constexpr uint nobody = 0xFFFFFFFF;
    return QByteArray("\2\0\0\0", 4) + entry(1, 6, nobody) + entry(2, user, ordinaryUser) +
           entry(4, group, nobody) + entry(0x10, 6, nobody) + entry(0x20, 0, nobody);
}

void TestSafeSave::whatTheFolderHandsOnGivesNobodyRights()
{
    const QString song = copyTone(QStringLiteral("mp3"));
    const QByteArray list = accessListWith(6, 6);
    if (::setxattr(native(m_folder->path()).c_str(), "system.posix_acl_default", list.constData(),
                   size_t(list.size()), 0) != 0)
        QSKIP("the file system of the temporary folder knows no access lists");
    QCOMPARE(::chmod(native(song).c_str(), 0640), 0);
    const Interposed::Guard guard;
    QStringList readable;
    const auto look = [&] {
        for (const QString& made : newFilesIn(m_folder->path()))
            if (::getxattr(native(m_folder->filePath(made)).c_str(), accessList, nullptr, 0) > 0 &&
                statusOf(m_folder->filePath(made)).st_size > 0)
                readable.append(made);
    };
    Interposed::beforeSync = look;
    QCOMPARE(AudioFile::write(song, {{TAG_TITLE, QStringLiteral("New")}}), 0);
    QVERIFY(::getxattr(native(song).c_str(), accessList, nullptr, 0) < 0);
    QCOMPARE(int(statusOf(song).st_mode & 07777), 0640);
    QCOMPARE(readable, QStringList());
}

void TestSafeSave::aListOfAccessStays()
{
    const QString song = copyTone(QStringLiteral("mp3"));
    const QByteArray list = accessListWith(4, 0);
    if (::setxattr(native(song).c_str(), accessList, list.constData(), size_t(list.size()), 0) != 0)
        QSKIP("the file system of the temporary folder knows no access lists");
    QCOMPARE(AudioFile::write(song, {{TAG_TITLE, QStringLiteral("New")}}), 0);
    QByteArray kept(list.size(), 0);
    QCOMPARE(int(::getxattr(native(song).c_str(), accessList, kept.data(), size_t(kept.size()))),
             list.size());
    QCOMPARE(kept, list);
}

void TestSafeSave::aGroupThatCannotBeKeptLosesItsRights()
{
    constexpr int outOfReach = 77;
    if (::geteuid() != 0)
        QSKIP("only root can give a file to a group that its owner is not in");
    const QString song = copyTone(QStringLiteral("mp3"));
    QCOMPARE(::chown(native(m_folder->path()).c_str(), ordinaryUser, ordinaryUser), 0);
    QCOMPARE(::chown(native(song).c_str(), ordinaryUser, 0), 0);
    QCOMPARE(::chmod(native(song).c_str(), 0664), 0);
    const int result = inAnotherProcess([&] {
        if (::setgid(ordinaryUser) != 0 || ::setuid(ordinaryUser) != 0)
            return 2;
        if (::access(native(song).c_str(), R_OK) != 0)
            return outOfReach;
        return AudioFile::write(song, {{TAG_TITLE, QStringLiteral("New")}});
    });
    if (result == outOfReach)
        QSKIP("an ordinary user cannot come to the temporary folder");
    QCOMPARE(result, 0);
    QCOMPARE(statusOf(song).st_gid, gid_t(ordinaryUser));
    QCOMPARE(int(statusOf(song).st_mode & 07777), 0604);
    QCOMPARE(textOf(song, TAG_TITLE), QStringLiteral("New"));
}

void TestSafeSave::whatAnotherProgramWritesMeanwhileStays_data()
{
    QTest::addColumn<QString>("way");
    QTest::newRow("in the file") << "in place";
    QTest::newRow("as a new file") << "renamed";
    QTest::newRow("in as many bytes, with the old time") << "unseen";
    QTest::newRow("in the file, while it is copied") << "early";
}

void TestSafeSave::whatAnotherProgramWritesMeanwhileStays()
{
    QFETCH(QString, way);
    const QString song = copyTone(QStringLiteral("mp3"));
    writeAlbum(song, "Old album");
    const Interposed::Guard guard;
    int written = 0;
    const auto write = [&] {
        if (written++ > 0)
            return;
        const struct stat before = statusOf(song);
        const QString own =
            way == QLatin1String("renamed") ? m_folder->filePath(QStringLiteral("own.mp3")) : song;
        if (own != song)
            QFile::copy(song, own);
        writeAlbum(own, "New album");
        if (own != song)
            ::rename(native(own).c_str(), native(song).c_str());
        if (way == QLatin1String("unseen")) {
            const timespec times[] = {before.st_atim, before.st_mtim};
            ::utimensat(AT_FDCWD, native(song).c_str(), times, 0);
        }
    };
    if (way == QLatin1String("early"))
        Interposed::copiesInKernel = [&](size_t wanted) {
            write();
            return ssize_t(wanted);
        };
    else
        Interposed::beforeSync = write;
    QCOMPARE(AudioFile::write(song, {{TAG_TITLE, QStringLiteral("Title")}}), 0);
    QVERIFY(written > 0);
    QCOMPARE(textOf(song, TAG_ALBUM), QStringLiteral("New album"));
    QCOMPARE(textOf(song, TAG_TITLE), QStringLiteral("Title"));
    QCOMPARE(newFilesIn(m_folder->path()), QStringList());
}

void TestSafeSave::aFileThatNeverRestsIsLeftAlone()
{
    const QString song = copyTone(QStringLiteral("mp3"));
    const Interposed::Guard guard;
    int written = 0;
    Interposed::beforeSync = [&] { writeAlbum(song, std::to_string(++written).c_str()); };
    AudioFile::takeLog();
    QVERIFY(AudioFile::write(song, {{TAG_TITLE, QStringLiteral("Title")}}) != 0);
    QCOMPARE(AudioFile::takeLog().size(), 1);
    QVERIFY(written > 1);
    QCOMPARE(textOf(song, TAG_ALBUM), QString::number(written));
    QCOMPARE(textOf(song, TAG_TITLE), QString());
    QCOMPARE(newFilesIn(m_folder->path()), QStringList());
}

void TestSafeSave::editsOfTwoThreadsAreBothKept()
{
    const QString song = copyTone(QStringLiteral("mp3"));
    for (int round = 0; round < 40; ++round) {
        const QString text = QString::number(round);
        int results[] = {-1, -1};
        std::thread title([&] { results[0] = AudioFile::write(song, {{TAG_TITLE, text}}); });
        std::thread artist([&] { results[1] = AudioFile::write(song, {{TAG_ARTIST, text}}); });
        title.join();
        artist.join();
        QCOMPARE(results[0], 0);
        QCOMPARE(results[1], 0);
        QCOMPARE(textOf(song, TAG_TITLE), text);
        QCOMPARE(textOf(song, TAG_ARTIST), text);
    }
}

void TestSafeSave::editsOfTwoProcessesAreBothKept()
{
    const QString song = copyTone(QStringLiteral("mp3"));
    for (int round = 0; round < 40; ++round) {
        const QString text = QString::number(round);
        QVector<pid_t> children;
        for (const int type : {TAG_TITLE, TAG_ARTIST, TAG_ALBUM}) {
            children.append(::fork());
            if (children.last() == 0)
                ::_exit(AudioFile::write(song, {{type, text}}));
        }
        for (const pid_t child : qAsConst(children)) {
            int status = -1;
            QCOMPARE(::waitpid(child, &status, 0), child);
            QCOMPARE(status, 0);
        }
        for (const int type : {TAG_TITLE, TAG_ARTIST, TAG_ALBUM})
            QCOMPARE(textOf(song, type), text);
    }
}

/// Whoever may read a file can lock it.
void TestSafeSave::aHeldLockHoldsNoSaveForEver()
{
    const QString song = copyTone(QStringLiteral("mp3"));
    const int held = ::open(native(song).c_str(), O_RDONLY);
    QCOMPARE(::flock(held, LOCK_EX), 0);
    QCOMPARE(AudioFile::write(song, {{TAG_TITLE, QStringLiteral("New")}}), 0);
    ::close(held);
    QCOMPARE(textOf(song, TAG_TITLE), QStringLiteral("New"));
}

/// A block of the copy cannot be read while the music is moved behind a larger tag.
void TestSafeSave::aFailingReadLeavesTheOldFile()
{
    for (const char* kind : {"flac", "wav"}) {
        const QString song = copyTone(QString::fromLatin1(kind));
        const QByteArray before = contentOf(song);
        const QByteArray cover = Fixtures::jpeg(300, 300, 1);
        const Interposed::Guard guard;
        int failed = 0;
        Interposed::readFails = [&](int fd, off_t offset) {
            const bool writing = (::fcntl(fd, F_GETFL) & O_ACCMODE) == O_RDWR;
            return writing && offset > before.size() / 4 && failed++ == 0;
        };
        AudioFile::takeLog();
        QVERIFY2(AudioFile::write(song, {{TAG_TITLE, QString(20000, QLatin1Char('x'))}}, &cover) != 0, kind);
        QCOMPARE(AudioFile::takeLog().size(), 1);
        QVERIFY(failed > 0);
        QCOMPARE(contentOf(song), before);
        QCOMPARE(newFilesIn(m_folder->path()), QStringList());
    }
}

void TestSafeSave::aCopyThatEndsEarlyIsNone()
{
    const QString song = copyTone(QStringLiteral("flac"));
    const QByteArray before = contentOf(song);
    const Interposed::Guard guard;
    int copies = 0;
    Interposed::copiesInKernel = [&](size_t wanted) {
        return copies++ == 0 ? ssize_t(wanted / 2) : ssize_t(-1);
    };
    Interposed::readFails = [&](int, off_t offset) { return copies > 0 && offset >= before.size() / 2; };
    AudioFile::takeLog();
    QVERIFY(AudioFile::write(song, {{TAG_TITLE, QStringLiteral("New")}}) != 0);
    QCOMPARE(AudioFile::takeLog().size(), 1);
    QCOMPARE(copies, 2);
    QCOMPARE(contentOf(song), before);
    QCOMPARE(newFilesIn(m_folder->path()), QStringList());
}

/// What cannot be read is not replaced by what the edit alone says.
void TestSafeSave::anUnreadableTagIsNotAnEmptyOne()
{
    const QString song = copyTone(QStringLiteral("flac"));
    QCOMPARE(AudioFile::write(song, {{TAG_ALBUM, QStringLiteral("Album")}}), 0);
    const QByteArray before = contentOf(song);
    const Interposed::Guard guard;
    bool failing = true;
    Interposed::readFails = [&](int, off_t) { return failing; };
    AudioFile::takeLog();
    QVERIFY(AudioFile::read(song).texts.isEmpty());
    QVERIFY(AudioFile::takeLog().first().contains(QLatin1String("cannot be read to its end")));
    QVERIFY(AudioFile::write(song, {{TAG_TITLE, QStringLiteral("New")}}) != 0);
    failing = false;
    QCOMPARE(contentOf(song), before);
}

namespace {
/// Makes room behind the sound count as sound: what stands there with no name is not written over.
void countAsSound(const QString& wav, qint64 bytes)
{
    QFile file(wav);
    QVERIFY(file.open(QIODevice::ReadWrite));
    const QByteArray head = file.read(4096);
    for (const int place : {4, head.indexOf("data") + 4}) {
        QByteArray size(4, '\0');
        qToLittleEndian(qFromLittleEndian<quint32>(head.constData() + place) + quint32(bytes), size.data());
        file.seek(place);
        QCOMPARE(file.write(size), qint64(size.size()));
    }
}
} // namespace

void TestSafeSave::holesStayHoles_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("mp3") << "mp3";
    QTest::newRow("flac") << "flac";
    QTest::newRow("wav") << "wav";
}

void TestSafeSave::holesStayHoles()
{
    QFETCH(QString, kind);
    const QString song = copyTone(kind);
    constexpr qint64 hole = qint64(48) * 1024 * 1024;
    QCOMPARE(::truncate(native(song).c_str(), statusOf(song).st_size + hole), 0);
    if (kind == "wav")
        countAsSound(song, hole);
    constexpr qint64 bytesABlock = 512;
    const qint64 room = statusOf(song).st_blocks * bytesABlock;
    if (room > hole)
        QSKIP("the file system of the temporary folder knows no holes");
    const QByteArray cover = Fixtures::jpeg(300, 300, 1);
    QCOMPARE(AudioFile::write(song, {{TAG_TITLE, QString(5000, QLatin1Char('x'))}}, &cover), 0);
    QVERIFY(statusOf(song).st_size > hole);
    const qint64 after = statusOf(song).st_blocks * bytesABlock;
    QVERIFY2(after < room + 2 * 1024 * 1024, qPrintable(QString::number(after)));
    QCOMPARE(AudioFile::read(song).picture, cover);
}

namespace {
void tell(int news, char what)
{
    (void)!::write(news, &what, 1);
}

/// Holds a lease on the file until somebody wants the file. The signal is asked for, not handled: the thread
/// sanitizer keeps it from a handler for as long as the process pauses.
[[noreturn]] void holdLease(const QString& path, int news)
{
    sigset_t wanted;
    sigemptyset(&wanted);
    sigaddset(&wanted, SIGIO);
    sigprocmask(SIG_BLOCK, &wanted, nullptr);
    const int leased = ::open(native(path).c_str(), O_RDWR);
    tell(news, ::fcntl(leased, F_SETLEASE, F_WRLCK) == 0 ? 'l' : 'n');
    int got = 0;
    sigwait(&wanted, &got);
    ::fcntl(leased, F_SETLEASE, F_UNLCK);
    tell(news, 'f');
    for (;;)
        ::pause();
}
} // namespace

void TestSafeSave::aLeaseIsWaitedFor()
{
    const QString song = copyTone(QStringLiteral("mp3"));
    QCOMPARE(AudioFile::write(song, {{TAG_TITLE, QStringLiteral("Title")}}), 0);
    int ends[2] = {};
    QCOMPARE(::pipe(ends), 0);
    const pid_t holder = ::fork();
    if (holder == 0)
        holdLease(song, ends[1]);
    ::close(ends[1]);
    char answer = 0;
    QCOMPARE(::read(ends[0], &answer, 1), ssize_t(1));
    const bool held = answer == 'l';
    const Interposed::Guard guard;
    Interposed::pauses = [&] { (void)!::read(ends[0], &answer, 1); };
    const QString title = held ? textOf(song, TAG_TITLE) : QString();
    ::kill(holder, SIGKILL);
    ::waitpid(holder, nullptr, 0);
    ::close(ends[0]);
    if (!held)
        QSKIP("the file system of the temporary folder knows no leases");
    QCOMPARE(answer, 'f');
    QCOMPARE(title, QStringLiteral("Title"));
}

QTEST_GUILESS_MAIN(TestSafeSave)
#include "tst_safesave.moc"
