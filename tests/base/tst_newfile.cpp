#include "base/descriptor_posix.h"
#include "base/newfile.h"
#include "base/newfilename.h"
#include "interposed.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using base::NewFile;

class TestNewFile : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void aFileThatTakesNoPlaceGoes();
    void aNewFileIsNobodyElses();
    void aTakenNameIsPassedOver();
    void whatKeepsANewFileAwayIsTold();
    void aFolderThatCannotBeListedTakesANewFile();
    void aFolderIsOpenWhateverFailedBefore();
    void aCopyIsWholeOrNone_data();
    void aCopyIsWholeOrNone();
    void theOriginalIsReplacedWhileItIsAsItWas();
    void anyNameIsTaken_data();
    void anyNameIsTaken();
    void aFreeNameIsNoOthers_data();
    void aFreeNameIsNoOthers();
    void aFreeNameNeedsNoFurtherNames();
    void aFurtherNameIsOneOfTheSameFile();
    void anotherFileGetsNoFurtherName();
    void aFileIsRenamedOverAnother();
    void onlyWhatASaveMadeIsALeftover();

private:
    std::string at(const char* name) const { return m_folder->filePath(name).toStdString(); }
    void write(const char* name, const QByteArray& bytes) const
    {
        QFile file(m_folder->filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
    QByteArray read(const char* name) const
    {
        QFile file(m_folder->filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("nothing");
    }
    QStringList names() const
    {
        return QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
    }
    std::unique_ptr<NewFile> written(const char* beside, const char* bytes)
    {
        auto file = NewFile::beside(at(beside), NewFile::Content::Empty, m_error);
        if (file)
            base::writeAt(file->file(), 0, bytes, qstrlen(bytes));
        return file;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    base::Failure m_error;
};

void TestNewFile::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_error = {};
    write("file", "old");
}

void TestNewFile::aFileThatTakesNoPlaceGoes()
{
    QVERIFY(written("file", "new"));
    QCOMPARE(names(), QStringList("file"));
    QCOMPARE(read("file"), QByteArray("old"));
    QVERIFY(!written("no such file", "new"));
    QVERIFY(!m_error.text.empty());
}

void TestNewFile::aNewFileIsNobodyElses()
{
    const auto file = NewFile::forName(at("name"), m_error);
    QVERIFY(file);
    QCOMPARE(names().size(), 2);
    struct stat status = {};
    QCOMPARE(::stat(at(names().first().toUtf8().constData()).c_str(), &status), 0);
    QCOMPARE(int(status.st_mode & 07777), 0600);
}

void TestNewFile::aTakenNameIsPassedOver()
{
    const Interposed::Guard guard;
    int tried = 0;
    Interposed::makingFails = [&tried] { return ++tried < 3 ? EEXIST : 0; };
    QVERIFY(NewFile::forName(at("name"), m_error));
    QCOMPARE(tried, 3);
    QVERIFY(m_error.text.empty());
    Interposed::makingFails = [] { return EEXIST; };
    QVERIFY(!NewFile::forName(at("name"), m_error));
    QVERIFY(m_error.text.find("all names are taken") != std::string::npos);
    QCOMPARE(names(), QStringList("file"));
}

void TestNewFile::whatKeepsANewFileAwayIsTold()
{
    const Interposed::Guard guard;
    int tried = 0;
    Interposed::makingFails = [&tried] { return ++tried, ENOSPC; };
    QVERIFY(!NewFile::forName(at("name"), m_error));
    QCOMPARE(tried, 1);
    QVERIFY(m_error.kind == base::Failure::Kind::DiskFull);
}

/// Root lists everything, and is somebody else meanwhile.
void TestNewFile::aFolderThatCannotBeListedTakesANewFile()
{
    constexpr uid_t somebody = 65534;
    const uid_t user = ::geteuid();
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_folder->path()));
    QCOMPARE(::chmod(".", 0333), 0);
    const bool isOrdinary = user != 0 || ::seteuid(somebody) == 0;
    const bool isMade = NewFile::forName("name", m_error) != nullptr;
    const bool isUserAgain = ::seteuid(user) == 0;
    QCOMPARE(::chmod(".", 0700), 0);
    QVERIFY(QDir::setCurrent(before) && isUserAgain);
    if (!isOrdinary)
        QSKIP("root cannot be somebody else here");
    QVERIFY2(isMade, m_error.text.c_str());
    QCOMPARE(names(), QStringList("file"));
}

void TestNewFile::aFolderIsOpenWhateverFailedBefore()
{
    errno = EACCES;
    const base::Descriptor folder = base::openFolderOf(at("file"));
    QCOMPARE(::fsync(folder.fd), 0);
}

void TestNewFile::aCopyIsWholeOrNone_data()
{
    QTest::addColumn<int>("hole");
    QTest::newRow("all data") << 0;
    QTest::newRow("a hole in the middle") << (1 << 20);
}

void TestNewFile::aCopyIsWholeOrNone()
{
    QFETCH(int, hole);
    write("song", QByteArray(100000, 'a'));
    QFile song(m_folder->filePath("song"));
    QVERIFY(song.open(QIODevice::ReadWrite) && song.seek(song.size() + hole) && song.write("end") == 3);
    song.close();
    const auto copy = NewFile::beside(at("song"), NewFile::Content::Copied, m_error);
    QVERIFY(copy);
    std::string bytes(std::size_t(song.size()) + 1, '-');
    bytes.resize(base::readAt(copy->file(), 0, bytes.data(), bytes.size()));
    QVERIFY(QByteArray::fromStdString(bytes) == read("song"));

    std::signal(SIGXFSZ, SIG_IGN); // a limit on file sizes ends writes as a full disk does
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{rlim_t(50000), limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const auto none = NewFile::beside(at("song"), NewFile::Content::Copied, m_error);
    setrlimit(RLIMIT_FSIZE, &limit);
    QVERIFY(!none);
}

void TestNewFile::theOriginalIsReplacedWhileItIsAsItWas()
{
    auto file = written("file", "new");
    QCOMPARE(file->replaceOriginal(m_error), NewFile::Taking::Done);
    file.reset();
    QCOMPARE(read("file"), QByteArray("new"));

    file = written("file", "newer");
    write("file", "by another program");
    QCOMPARE(file->replaceOriginal(m_error), NewFile::Taking::ChangedMeanwhile);
    QVERIFY(!m_error.text.empty());
    file.reset();
    QCOMPARE(read("file"), QByteArray("by another program"));
    QCOMPARE(names(), QStringList("file"));
}

static void addObstacles()
{
    QTest::addColumn<QString>("there");
    QTest::newRow("a file") << "file";
    QTest::newRow("a link to a file") << "link";
    QTest::newRow("a link to nowhere") << "broken link";
}

static bool putInTheWay(const QString& there, const QString& path)
{
    QFile file(path);
    if (there == "file")
        return file.open(QIODevice::WriteOnly) && file.write("there") == 5;
    return QFile::link(there == "link" ? "file" : "nowhere", path);
}

void TestNewFile::anyNameIsTaken_data()
{
    addObstacles();
}

void TestNewFile::anyNameIsTaken()
{
    QFETCH(QString, there);
    QVERIFY(putInTheWay(there, m_folder->filePath("kept")));
    QCOMPARE(written("file", "new")->takeName(at("kept"), m_error), NewFile::Taking::Done);
    QVERIFY(!QFileInfo(m_folder->filePath("kept")).isSymLink());
    QCOMPARE(read("kept"), QByteArray("new"));
    QCOMPARE(read("file"), QByteArray("old"));
    QCOMPARE(names(), QStringList({"file", "kept"}));
}

void TestNewFile::aFreeNameIsNoOthers_data()
{
    addObstacles();
}

void TestNewFile::aFreeNameIsNoOthers()
{
    QFETCH(QString, there);
    QVERIFY(putInTheWay(there, m_folder->filePath("kept")));
    const QByteArray before = read("kept");
    {
        const auto file = written("file", "new");
        QCOMPARE(file->takeFreeName(at("kept"), m_error), NewFile::Taking::NameTaken);
        QCOMPARE(file->takeFreeName(at("kept-2"), m_error), NewFile::Taking::Done);
    }
    QCOMPARE(read("kept"), before);
    QCOMPARE(read("kept-2"), QByteArray("new"));
    QVERIFY(!names().first().startsWith('.'));
}

/// Not every disk knows them.
void TestNewFile::aFreeNameNeedsNoFurtherNames()
{
    const Interposed::Guard guard;
    Interposed::linkFails = [] { return EPERM; };
    write("kept", "kept");
    {
        const auto file = written("file", "new");
        QCOMPARE(file->takeFreeName(at("kept"), m_error), NewFile::Taking::NameTaken);
        QCOMPARE(file->takeFreeName(at("kept-2"), m_error), NewFile::Taking::Done);
    }
    QCOMPARE(names(), QStringList({"file", "kept", "kept-2"}));
    QCOMPARE(read("kept"), QByteArray("kept"));
    QCOMPARE(read("kept-2"), QByteArray("new"));
}

void TestNewFile::aFurtherNameIsOneOfTheSameFile()
{
    for (int round = 0; round < 2; ++round) { // also over itself
        std::FILE* open = base::openFile(at("file"), false);
        const auto link = NewFile::linkOf(open, at("file"), at("other"), m_error);
        std::fclose(open);
        QVERIFY(link);
        QCOMPARE(link->takeName(at("other"), m_error), NewFile::Taking::Done);
    }
    QCOMPARE(names(), QStringList({"file", "other"}));
    base::FileState file;
    base::FileState other;
    QVERIFY(base::stateOf(at("file"), file) && base::stateOf(at("other"), other));
    QVERIFY(file.isOf(other));
}

void TestNewFile::anotherFileGetsNoFurtherName()
{
    std::FILE* open = base::openFile(at("file"), false);
    QFile::remove(m_folder->filePath("file"));
    write("file", "another");
    QVERIFY(!NewFile::linkOf(open, at("file"), at("other"), m_error));
    std::fclose(open);
    QVERIFY(!m_error.text.empty());
    QCOMPARE(names(), QStringList("file"));
}

void TestNewFile::aFileIsRenamedOverAnother()
{
    write("other", "other");
    QVERIFY(base::renameFile(at("file"), at("other"), m_error));
    QCOMPARE(names(), QStringList("other"));
    QCOMPARE(read("other"), QByteArray("old"));
    QVERIFY(!base::renameFile(at("file"), at("other"), m_error));
    QVERIFY(!m_error.text.empty());
}

void TestNewFile::onlyWhatASaveMadeIsALeftover()
{
    const std::string made = base::newFileNameFor("file");
    QVERIFY(made != base::newFileNameFor("file"));
    const QString leftover = QString::fromStdString(made);
    QStringList others = {leftover + "-notes", leftover.chopped(1), leftover.chopped(1) + 'G',
                          QString::fromStdString(base::newFileNameFor("other.mp3"))};
    for (const QString& name : others + QStringList{leftover, "file"})
        write(qPrintable(name), "bytes");
    base::removeLeftovers(at("file"));
    others.append("file");
    others.sort();
    QStringList left = names();
    left.sort();
    QCOMPARE(left, others);
}

QTEST_GUILESS_MAIN(TestNewFile)
#include "tst_newfile.moc"
