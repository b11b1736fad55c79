#include "base/trashfolder_posix.h"
#include "trashfixture.h"

#include <QtTest>

#include <fcntl.h>
#include <functional>
#include <unistd.h>

#ifdef Q_OS_LINUX
#include "ownmount.h"

#include <sys/mount.h>
#endif

using base::Trash;
using base::TrashedFile;
using base::TrashFolder;

/// Which trash a file goes to, and which folders are none.
class TestTrashPlaces : public TrashFixture
{
    Q_OBJECT

private slots:
    void init();
    void theUsersTrashIsFoundByTheEnvironment_data();
    void theUsersTrashIsFoundByTheEnvironment();
    void theUsersTrashMayBeALinkOfTheirs();
    void whatIsNoTrashOfTheUser_data();
    void whatIsNoTrashOfTheUser();
    void aDiskWithAFolderForAllIsUsedAsTheAdministratorWants_data();
    void aDiskWithAFolderForAllIsUsedAsTheAdministratorWants();
    void whatIsNoTrashAtTheTop_data();
    void whatIsNoTrashAtTheTop();
    void notesAtTheTopAreRelative();
    void anotherDiskHasATrashOfItsOwn();
    void aDiskThatNobodyMayWriteHasNone();

private:
    QByteArray topFolder() const { return m_files + "disk/"; }
    static void giveAway(const QByteArray& path);
    static void spoil(const QString& how, const QByteArray& path, const QByteArray& elsewhere);
};

namespace {
constexpr uid_t another = 12345;
const QByteArray ownId = QByteArray::number(uint(::geteuid()));

int modeOf(const QByteArray& path)
{
    struct stat status = {};
    return ::lstat(path.constData(), &status) == 0 ? int(status.st_mode & 07777) : -1;
}

void makeFolder(const QByteArray& path, mode_t mode = 0700)
{
    if (::mkdir(path.constData(), mode) != 0 || ::chmod(path.constData(), mode) != 0)
        qFatal("cannot make %s", path.constData());
}

#ifdef Q_OS_LINUX
/// What a process answers that alone sees another disk at the folder. Negative where that cannot be had.
int withADisk(const QByteArray& folder, const std::function<int()>& work)
{
    const auto mount = [&folder] { return ::mount("none", folder.constData(), "tmpfs", 0, "size=1m") == 0; };
    return withOwnMount(mount, work);
}
#endif
} // namespace

void TestTrashPlaces::init()
{
    prepare();
    begin();
    makeFolder(topFolder());
}

void TestTrashPlaces::giveAway(const QByteArray& path)
{
    if (::geteuid() != 0)
        QSKIP("only root can make another user's folder");
    QCOMPARE(::chown(path.constData(), another, another), 0);
}

void TestTrashPlaces::theUsersTrashIsFoundByTheEnvironment_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QByteArray>("home");
    QTest::addColumn<QByteArray>("trash");
    QTest::newRow("where data goes") << QByteArray("%/data/deep") << QByteArray("%/home")
                                     << QByteArray("%/data/deep/Trash");
    QTest::newRow("at home") << QByteArray() << QByteArray("%/home")
                             << QByteArray("%/home/.local/share/Trash");
    QTest::newRow("no path") << QByteArray("data") << QByteArray("%/home")
                             << QByteArray("%/home/.local/share/Trash");
}

void TestTrashPlaces::theUsersTrashIsFoundByTheEnvironment()
{
    QFETCH(QByteArray, data);
    QFETCH(QByteArray, home);
    QFETCH(QByteArray, trash);
    const QByteArray formerHome = qgetenv("HOME");
    const QByteArray folder = QFile::encodeName(m_folder->path());
    qputenv("XDG_DATA_HOME", data.replace('%', folder));
    qputenv("HOME", home.replace('%', folder));
    TrashedFile taken;
    const Trash::Taking taking = take(write("a.mp3", "music"), taken);
    qputenv("HOME", formerHome);
    QCOMPARE(taking, Trash::Taking::Done);
    QCOMPARE(QByteArray::fromStdString(taken.trash), trash.replace('%', folder));
    QCOMPARE(read(inTrash(taken)), QByteArray("music"));
    QCOMPARE(pathInNote(taken), m_files + "a.mp3");
    QCOMPARE(modeOf(trash.left(trash.lastIndexOf('/'))), 0700);
}

void TestTrashPlaces::theUsersTrashMayBeALinkOfTheirs()
{
    makeFolder(m_files + "bin");
    makeFolder(QFile::encodeName(m_folder->path()) + "/data");
    QCOMPARE(::symlink((m_files + "bin").constData(), m_trash.constData()), 0);
    TrashedFile taken;
    QCOMPARE(take(write("a.mp3", "music"), taken), Trash::Taking::Done);
    QCOMPARE(namesIn(m_files + "bin/files"), QStringList("a.mp3"));
    QCOMPARE(m_bin->restore(taken, m_error), Trash::Restoring::Done);
}

/// What somebody may have put where a folder of a trash would be.
void TestTrashPlaces::spoil(const QString& how, const QByteArray& path, const QByteArray& elsewhere)
{
    if (how == "a link") {
        QCOMPARE(::symlink(elsewhere.constData(), path.constData()), 0);
        return;
    }
    if (how == "a file") {
        const int file = ::open(path.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        QVERIFY(file >= 0);
        ::close(file);
        return;
    }
    makeFolder(path, how == "read-only" ? 0500 : 0700);
    if (how == "another user's")
        giveAway(path);
}

static void addSpoilers(const QStringList& ofTheTrashItself)
{
    QTest::addColumn<QString>("place");
    QTest::addColumn<QString>("how");
    for (const QString& how : ofTheTrashItself)
        QTest::addRow("trash: %s", qPrintable(how)) << QString() << how;
    for (const char* place : {"files", "info"})
        for (const char* how : {"a link", "a file", "read-only", "another user's"})
            QTest::addRow("%s: %s", place, how) << QString(place) << QString(how);
}

void TestTrashPlaces::whatIsNoTrashOfTheUser_data()
{
    addSpoilers({"a file", "read-only", "another user's"});
    QTest::newRow("its folder: another user's") << "above"
                                                << "another user's";
}

void TestTrashPlaces::whatIsNoTrashOfTheUser()
{
    QFETCH(QString, place);
    QFETCH(QString, how);
    const std::string path = write("a.mp3", "music");
    const QByteArray data = QFile::encodeName(m_folder->path()) + "/data";
    makeFolder(m_files + "elsewhere");
    if (place == "above") {
        spoil(how, data, QByteArray());
    } else {
        makeFolder(data);
        if (!place.isEmpty())
            makeFolder(m_trash);
        spoil(how, place.isEmpty() ? m_trash : m_trash + '/' + place.toUtf8(), m_files + "elsewhere");
    }
    if (QTest::currentTestFailed())
        return;
    TrashedFile taken;
    QCOMPARE(take(path, taken), Trash::Taking::NoTrash);
    QVERIFY(!m_error.empty());
    QCOMPARE(read(path), QByteArray("music"));
    QCOMPARE(namesIn(m_files + "elsewhere"), QStringList());
}

void TestTrashPlaces::aDiskWithAFolderForAllIsUsedAsTheAdministratorWants_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QByteArray>("trash");
    QTest::newRow("none") << QString() << QByteArray(".Trash-" + ownId);
    QTest::newRow("for all") << QString("sticky") << QByteArray(".Trash/" + ownId);
    QTest::newRow("where all remove all") << QString("not sticky") << QByteArray(".Trash-" + ownId);
    QTest::newRow("a link") << QString("link") << QByteArray(".Trash-" + ownId);
    QTest::newRow("with a link in it") << QString("inner link") << QByteArray(".Trash-" + ownId);
    QTest::newRow("with another user's in it") << QString("inner other") << QByteArray(".Trash-" + ownId);
}

void TestTrashPlaces::aDiskWithAFolderForAllIsUsedAsTheAdministratorWants()
{
    QFETCH(QString, folder);
    QFETCH(QByteArray, trash);
    const QByteArray forAll = topFolder() + ".Trash";
    makeFolder(m_files + "elsewhere", 01777);
    if (folder == "link")
        QCOMPARE(::symlink((m_files + "elsewhere").constData(), forAll.constData()), 0);
    else if (!folder.isEmpty())
        makeFolder(forAll, folder == "not sticky" ? 0777 : 01777);
    if (folder.startsWith("inner"))
        spoil(folder == "inner link" ? "a link" : "another user's", forAll + '/' + ownId,
              m_files + "elsewhere");
    if (QTest::currentTestFailed())
        return;
    TrashFolder::Refusal refusal;
    QVERIFY2(TrashFolder::atTop(topFolder().toStdString(), refusal), refusal.reason.c_str());
    QCOMPARE(namesIn(topFolder() + trash), QStringList({"files", "info"}));
    QCOMPARE(modeOf(topFolder() + trash), 0700);
    QCOMPARE(namesIn(m_files + "elsewhere"), QStringList());
}

void TestTrashPlaces::whatIsNoTrashAtTheTop_data()
{
    addSpoilers({"a link", "a file", "read-only", "another user's"});
}

void TestTrashPlaces::whatIsNoTrashAtTheTop()
{
    QFETCH(QString, place);
    QFETCH(QString, how);
    const QByteArray own = topFolder() + ".Trash-" + ownId;
    makeFolder(m_files + "elsewhere");
    if (!place.isEmpty())
        makeFolder(own);
    spoil(how, place.isEmpty() ? own : own + '/' + place.toUtf8(), m_files + "elsewhere");
    if (QTest::currentTestFailed())
        return;
    TrashFolder::Refusal refusal;
    QVERIFY(!TrashFolder::atTop(topFolder().toStdString(), refusal));
    QVERIFY(!refusal.reason.empty());
    QVERIFY(!refusal.isPassing);
    QCOMPARE(namesIn(m_files + "elsewhere"), QStringList());
}

void TestTrashPlaces::notesAtTheTopAreRelative()
{
    makeFolder(topFolder() + "in");
    const std::string path = write("disk/in/a.mp3", "music");
    TrashFolder::Refusal refusal;
    const auto trash = TrashFolder::atTop(topFolder().toStdString(), refusal);
    QVERIFY(trash);
    const base::Descriptor folder = base::openFolderOf(path);
    TrashedFile taken;
    QCOMPARE(trash->take({folder.fd, base::folderOf(path), "a.mp3"}, stateOf(path), taken, m_error),
             Trash::Taking::Done);
    QCOMPARE(pathInNote(taken), QByteArray("in/a.mp3"));
    QCOMPARE(taken.path, path);
    QCOMPARE(m_bin->restore(taken, m_error), Trash::Restoring::Done);
    QCOMPARE(read(path), QByteArray("music"));
}

void TestTrashPlaces::anotherDiskHasATrashOfItsOwn()
{
#ifdef Q_OS_LINUX
    const int answer = withADisk(topFolder(), [this] {
        TrashedFile here;
        TrashedFile there;
        makeFolder(topFolder() + "in");
        if (take(write("a.mp3", "here"), here) != Trash::Taking::Done ||
            take(write("disk/in/a.mp3", "there"), there) != Trash::Taking::Done)
            return 1;
        if (here.trash != m_trash.toStdString() ||
            there.trash != (topFolder() + ".Trash-" + QByteArray::number(uint(::geteuid()))).toStdString())
            return 2;
        if (pathInNote(there) != "in/a.mp3" || read(inTrash(there)) != "there")
            return 3;
        return m_bin->restore(there, m_error) == Trash::Restoring::Done &&
                       read(at("disk/in/a.mp3")) == "there" &&
                       m_bin->restore(here, m_error) == Trash::Restoring::Done && read(at("a.mp3")) == "here"
                   ? 0
                   : 4;
    });
    if (answer < 0)
        QSKIP("no disk can be mounted here, not even in a private name space");
    QCOMPARE(answer, 0);
#endif
}

void TestTrashPlaces::aDiskThatNobodyMayWriteHasNone()
{
#ifdef Q_OS_LINUX
    const int answer = withADisk(topFolder(), [this] {
        const std::string path = write("disk/a.mp3", "there");
        if (::mount(nullptr, topFolder().constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0)
            return 98;
        TrashedFile taken;
        return take(path, taken) == Trash::Taking::NoTrash && read(path) == "there" ? 0 : 1;
    });
    if (answer < 0 || answer == 98)
        QSKIP("no disk can be mounted here, not even in a private name space");
    QCOMPARE(answer, 0);
#endif
}

QTEST_GUILESS_MAIN(TestTrashPlaces)
#include "tst_trashplaces.moc"
