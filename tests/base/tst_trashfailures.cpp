#include "trashfixture.h"

#include <QtTest>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <fcntl.h>
#include <functional>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

using base::Trash;
using base::TrashedFile;

namespace {
/// Each makes the call fail with the number that it answers; 0 lets it happen.
std::function<int()> whenOpening; ///< a new file
std::function<int()> whenOpeningFolder;
std::function<int()> whenRenaming;
std::function<int()> whenLinking;

bool fails(const std::function<int()>& answer)
{
    const int failure = answer ? answer() : 0;
    if (failure != 0)
        errno = failure;
    return failure != 0;
}
} // namespace

// In front of the system's, as in interposed.h.
extern "C" {
int openat(int folder, const char* name, int flags, ...)
{
    va_list further;
    va_start(further, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(further, mode_t) : 0;
    va_end(further);
    if (((flags & O_CREAT) && fails(whenOpening)) || ((flags & O_DIRECTORY) && fails(whenOpeningFolder)))
        return -1;
    return int(::syscall(SYS_openat, folder, name, flags, mode));
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept
{
    return fails(whenRenaming) ? -1 : int(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept
{
    return fails(whenLinking) ? -1 : int(::syscall(SYS_linkat, fromFolder, from, toFolder, to, flags));
}
}

/// Nothing is lost where a move does not go as it should.
class TestTrashFailures : public TrashFixture
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void whatStandsAtThePathIsNotTouched_data();
    void whatStandsAtThePathIsNotTouched();
    void aNameTakenTenThousandTimesIsSoonFree();
    void onlyTheExpectedFileGoes_data();
    void onlyTheExpectedFileGoes();
    void aFileExchangedInBetweenComesBack();
    void aTrashThatTakesNothingIsNone_data();
    void aTrashThatTakesNothingIsNone();
    void aShortageIsNoReasonToDelete();
    void aHalfNoteGoes();
    void whereAFileGoesIsToldBefore();
    void whatMayNotGoStays();
    void disksWithoutSafeRenamingUseLinks();
    void disksWithoutEitherHaveNoTrash();

private:
    void nothingHappened();
};

void TestTrashFailures::init()
{
    prepare();
    begin();
}

void TestTrashFailures::cleanup()
{
    whenOpening = whenOpeningFolder = whenRenaming = whenLinking = nullptr;
}

/// The one file of the test is where it was, and the trash is as empty as ever.
void TestTrashFailures::nothingHappened()
{
    QCOMPARE(read(at("a.mp3")), QByteArray("music"));
    QCOMPARE(trashed(), QStringList());
    QCOMPARE(notes(), QStringList());
    QVERIFY(!m_error.empty());
}

void TestTrashFailures::whatStandsAtThePathIsNotTouched_data()
{
    QTest::addColumn<QString>("there");
    for (const char* there : {"a file", "a link to nowhere", "a folder"})
        QTest::newRow(there) << QString(there);
}

void TestTrashFailures::whatStandsAtThePathIsNotTouched()
{
    QFETCH(QString, there);
    TrashedFile taken;
    const std::string path = write("a.mp3", "music");
    QCOMPARE(take(path, taken), Trash::Taking::Done);
    if (there == "a file")
        write("a.mp3", "other");
    else if (there == "a folder")
        QCOMPARE(::mkdir(path.c_str(), 0700), 0);
    else
        QCOMPARE(::symlink("nowhere", path.c_str()), 0);
    struct stat before = {};
    struct stat after = {};
    QCOMPARE(::lstat(path.c_str(), &before), 0);
    for (const bool byLinks : {false, true}) {
        whenRenaming = [byLinks] { return byLinks ? EINVAL : 0; };
        QCOMPARE(m_bin->restore(taken, m_error), Trash::Restoring::PathTaken);
        QVERIFY(!m_error.empty());
        QCOMPARE(::lstat(path.c_str(), &after), 0);
        QCOMPARE(after.st_ino, before.st_ino);
        QCOMPARE(read(inTrash(taken)), QByteArray("music"));
        QCOMPARE(pathInNote(taken), QByteArray::fromStdString(path));
    }
}

void TestTrashFailures::aNameTakenTenThousandTimesIsSoonFree()
{
    constexpr int equal = 10000;
    constexpr int runs = 50;
    TrashedFile taken;
    QCOMPARE(take(write("a.mp3", "music"), taken), Trash::Taking::Done);
    for (int i = 2; i <= equal; ++i) { // as if they had gone there
        const std::string note = taken.trash + "/info/a." + std::to_string(i) + ".mp3.trashinfo";
        QCOMPARE(::link(noteOf(taken).c_str(), note.c_str()), 0);
    }
    int opened = 0;
    whenOpening = [&opened] {
        ++opened;
        return 0;
    };
    for (int i = 0; i < runs; ++i) {
        begin();
        QCOMPARE(take(write("a.mp3", "music"), taken), Trash::Taking::Done);
    }
    QVERIFY2(opened < 12 * runs, qPrintable(QString::number(opened)));
    opened = 0;
    for (int i = 0; i < runs; ++i)
        QCOMPARE(take(write("a.mp3", "music"), taken), Trash::Taking::Done);
    QVERIFY2(opened < 3 * runs, qPrintable(QString::number(opened)));
    QCOMPARE(trashed().size(), 2 * runs + 1);
}

void TestTrashFailures::onlyTheExpectedFileGoes_data()
{
    QTest::addColumn<QString>("what");
    for (const char* what : {"vanished", "written since", "another file", "a folder", "no folder"})
        QTest::newRow(what) << QString(what);
}

void TestTrashFailures::onlyTheExpectedFileGoes()
{
    QFETCH(QString, what);
    std::string path = write("a.mp3", "music");
    base::FileState expected = stateOf(path);
    if (what == "vanished")
        path = at("b.mp3");
    else if (what == "written since")
        ++expected.modified;
    else if (what == "another file")
        ++expected.inode;
    else if (what == "no folder")
        path = at("gone/a.mp3");
    else
        path = m_files.chopped(1).toStdString();
    TrashedFile taken;
    QCOMPARE(m_bin->take(path, what == "a folder" ? stateOf(path) : expected, taken, m_error),
             Trash::Taking::Failed);
    nothingHappened();
}

void TestTrashFailures::aFileExchangedInBetweenComesBack()
{
    TrashedFile taken;
    const std::string path = write("a.mp3", "old");
    const base::FileState expected = stateOf(path);
    whenRenaming = [this] {
        whenRenaming = nullptr;
        write("b", "music");
        return ::rename(at("b").c_str(), at("a.mp3").c_str());
    };
    QCOMPARE(m_bin->take(path, expected, taken, m_error), Trash::Taking::Failed);
    nothingHappened();
}

void TestTrashFailures::aTrashThatTakesNothingIsNone_data()
{
    QTest::addColumn<int>("failure");
    QTest::newRow("the disk is full") << ENOSPC;
    QTest::newRow("the user has no more room") << EDQUOT;
    QTest::newRow("read-only") << EROFS;
    QTest::newRow("not allowed") << EACCES;
}

void TestTrashFailures::aTrashThatTakesNothingIsNone()
{
    QFETCH(int, failure);
    TrashedFile taken;
    const std::string path = write("a.mp3", "music");
    whenOpening = [failure] { return failure; };
    QCOMPARE(take(path, taken), Trash::Taking::NoTrash);
    nothingHappened();
}

void TestTrashFailures::aShortageIsNoReasonToDelete()
{
    TrashedFile taken;
    const std::string path = write("a.mp3", "music");
    for (const int shortage : {EMFILE, ENFILE, ENOMEM, EIO, EINTR}) {
        whenOpeningFolder = [shortage] { return shortage; };
        QCOMPARE(take(path, taken), Trash::Taking::Failed);
        nothingHappened();
    }
    whenOpeningFolder = nullptr;
    whenOpening = [] { return EMFILE; };
    QCOMPARE(take(path, taken), Trash::Taking::Failed);
    nothingHappened();
    whenOpening = nullptr;
    whenRenaming = [] { return EIO; };
    QCOMPARE(take(path, taken), Trash::Taking::Failed);
    nothingHappened();
    whenRenaming = [] { return EXDEV; };
    QCOMPARE(take(path, taken), Trash::Taking::NoTrash);
    nothingHappened();
}

void TestTrashFailures::aHalfNoteGoes()
{
    TrashedFile taken;
    const std::string path = write("a.mp3", "music");
    ::signal(SIGXFSZ, SIG_IGN);
    // A limit on file sizes ends writes as a full disk does.
    rlimit limit = {};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small = {20, limit.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    const Trash::Taking taking = take(path, taken);
    ::setrlimit(RLIMIT_FSIZE, &limit);
    QCOMPARE(taking, Trash::Taking::NoTrash);
    nothingHappened();
}

void TestTrashFailures::whereAFileGoesIsToldBefore()
{
    TrashedFile taken;
    QCOMPARE(take(write("a.mp3", "older"), taken), Trash::Taking::Done);
    QCOMPARE(::unlink(noteOf(taken).c_str()), 0); // its name is found to be taken late
    const std::string path = write("a.mp3", "music");
    const base::FileState state = stateOf(path);
    std::vector<TrashedFile> told;
    const auto announce = [&](const TrashedFile& planned, std::string&) {
        told.push_back(planned);
        return read(path) == "music" && QFile::exists(QString::fromStdString(noteOf(planned)));
    };
    QCOMPARE(m_bin->take(path, state, taken, m_error, announce), Trash::Taking::Done);
    QCOMPARE(told.size(), std::size_t(2));
    QCOMPARE(told.at(0).name, std::string("a.mp3"));
    QCOMPARE(told.at(1).name, taken.name);
    QCOMPARE(told.at(1).trash, taken.trash);
    QCOMPARE(told.at(1).path, path);
    QVERIFY(told.at(1).state.looksLike(taken.state));
    QCOMPARE(m_bin->restore(told.at(1), m_error), Trash::Restoring::Done);
}

void TestTrashFailures::whatMayNotGoStays()
{
    TrashedFile taken;
    const std::string path = write("a.mp3", "music");
    const auto refuse = [](const TrashedFile&, std::string& error) {
        error = "not now";
        return false;
    };
    QCOMPARE(m_bin->take(path, stateOf(path), taken, m_error, refuse), Trash::Taking::Failed);
    QCOMPARE(m_error, std::string("not now"));
    nothingHappened();
}

void TestTrashFailures::disksWithoutSafeRenamingUseLinks()
{
    TrashedFile taken;
    whenRenaming = [] { return EINVAL; };
    QCOMPARE(take(write("a.mp3", "music"), taken), Trash::Taking::Done);
    QCOMPARE(read(at("a.mp3")), QByteArray("nothing"));
    QCOMPARE(read(inTrash(taken)), QByteArray("music"));
    QCOMPARE(m_bin->restore(taken, m_error), Trash::Restoring::Done);
    QCOMPARE(read(at("a.mp3")), QByteArray("music"));
    QCOMPARE(trashed(), QStringList());
}

void TestTrashFailures::disksWithoutEitherHaveNoTrash()
{
    TrashedFile taken;
    const std::string path = write("a.mp3", "music");
    whenRenaming = [] { return EINVAL; };
    whenLinking = [] { return EPERM; };
    QCOMPARE(take(path, taken), Trash::Taking::NoTrash);
    nothingHappened();
}

QTEST_GUILESS_MAIN(TestTrashFailures)
#include "tst_trashfailures.moc"
