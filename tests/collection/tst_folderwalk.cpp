// What the walk does beyond that of the window, which tst_filecollection shows.
#include "collection/folderwalk.h"
#include "ownmount.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
constexpr uid_t ordinaryUser = 65534;
constexpr int unreachable = 98; // as an exit code

class Notes final : public FolderWalk::Visitor
{
public:
    void found(const std::string& path) override { files.append(QByteArray::fromStdString(path)); }
    void failed(const std::string& path, const std::string& reason) override
    {
        failures.append(QByteArray::fromStdString(path + ": " + reason));
    }
    void leftOut(const std::string& path) override { unwritable.append(QByteArray::fromStdString(path)); }
    bool goesOn() override { return files.size() < most; }

    QList<QByteArray> files;
    QList<QByteArray> failures;
    QList<QByteArray> unwritable;
    int most = 1000;
};
} // namespace

class TestFolderWalk : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void windowsMediaIsMusic();
    void hiddenEntriesAreTakenByTheRule();
    void namesThatAreNoTextKeepTheirBytes();
    void namesAreSortedAsTexts();
    void whatIsExcludedIsNotEntered();
    void severalWalksEnterAFolderOnce();
    void aFolderThatCannotBeReadIsTold();
    void whatCannotBeWrittenIsToldOrTaken();
    void anotherFileSystemIsEnteredByTheRule();
    void theEndIsAskedForAtEachFile();
    void slashesAtTheEndAreNoMatter();

private:
    QByteArray make(const QByteArray& name) const;
    QList<QByteArray> found(const FolderWalk::Rules& rules = {});

    QByteArray m_root;
    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestFolderWalk::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_root = m_folder->path().toUtf8() + '/';
}

QByteArray TestFolderWalk::make(const QByteArray& name) const
{
    const QByteArray path = m_root + name;
    QDir().mkpath(QString::fromUtf8(path.left(path.lastIndexOf('/'))));
    FILE* const file = std::fopen(path.constData(), "w");
    if (!file)
        qFatal("cannot make %s", path.constData());
    std::fclose(file);
    return path;
}

QList<QByteArray> TestFolderWalk::found(const FolderWalk::Rules& rules)
{
    Notes notes;
    FolderWalk(rules, notes).walk(m_root.toStdString());
    QList<QByteArray> names;
    for (const QByteArray& path : notes.files)
        names.append(path.mid(m_root.size()));
    return names;
}

void TestFolderWalk::windowsMediaIsMusic()
{
    make("a.WMA");
    make("b.mp3");
    make("c.txt");
    QCOMPARE(found(), QList<QByteArray>({"a.WMA", "b.mp3"}));
}

void TestFolderWalk::hiddenEntriesAreTakenByTheRule()
{
    make(".a.mp3");
    make(".b/c.mp3");
    make("d.mp3");
    FolderWalk::Rules rules;
    QCOMPARE(found(rules), QList<QByteArray>({".a.mp3", "d.mp3", ".b/c.mp3"}));
    rules.hidden = false;
    QCOMPARE(found(rules), QList<QByteArray>({"d.mp3"}));
}

void TestFolderWalk::namesThatAreNoTextKeepTheirBytes()
{
    const QByteArray path = make("bad\xFF.mp3");
    const QList<QByteArray> names = found();
    QCOMPARE(std::remove(path.constData()), 0); // the folder's own removal would leave it
    QCOMPARE(names, QList<QByteArray>({"bad\xFF.mp3"}));
}

void TestFolderWalk::namesAreSortedAsTexts()
{
    QStringList names = {
        "\u00E9.mp3", "z.mp3", "Z.mp3", "\uFB01.mp3", QString::fromUtf8("\xF0\x9F\x8E\xB5.mp3"),
        "a.mp3",      "aa.mp3"};
    for (const QString& name : names)
        make(name.toUtf8());
    std::sort(names.begin(), names.end());
    QStringList walked;
    for (const QByteArray& name : found())
        walked.append(QString::fromUtf8(name));
    QCOMPARE(walked, names);
}

void TestFolderWalk::whatIsExcludedIsNotEntered()
{
    make("old/a.mp3");
    make("new/a.mp3");
    make("new/b.wav");
    std::string wrong;
    FolderWalk::Rules rules;
    rules.excluded = {Glob("old", wrong), Glob("*.wav", wrong)};
    QCOMPARE(found(rules), QList<QByteArray>({"new/a.mp3"}));
    rules.excluded = {Glob("new/a*", wrong)};
    QCOMPARE(found(rules), QList<QByteArray>({"new/b.wav", "old/a.mp3"}));
}

void TestFolderWalk::severalWalksEnterAFolderOnce()
{
    make("a/x.mp3");
    QVERIFY(QFile::link(m_folder->filePath("a"), m_folder->filePath("b")));
    Notes notes;
    FolderWalk walk({}, notes);
    walk.walk((m_root + "b").toStdString());
    walk.walk((m_root + "a").toStdString());
    walk.walk(m_root.toStdString());
    QCOMPARE(notes.files, QList<QByteArray>({m_root + "b/x.mp3"}));
}

void TestFolderWalk::aFolderThatCannotBeReadIsTold()
{
    Notes notes;
    FolderWalk({}, notes).walk((m_root + "gone").toStdString());
    QCOMPARE(notes.failures.size(), 1);
    QVERIFY2(notes.failures.first().startsWith(m_root + "gone: "), notes.failures.first());
}

void TestFolderWalk::whatCannotBeWrittenIsToldOrTaken()
{
    make("open.mp3");
    const QByteArray locked = make("locked.mp3");
    const QByteArray closed = make("closed.mp3");
    ::chmod(m_root.constData(), 0777);
    ::chmod((m_root + "open.mp3").constData(), 0666);
    ::chmod(locked.constData(), 0444);
    ::chmod(closed.constData(), 0);
    const auto walk = [&](bool unwritable) {
        Notes notes;
        FolderWalk::Rules rules;
        rules.unwritable = unwritable;
        FolderWalk(rules, notes).walk(m_root.toStdString());
        const bool isLeftOut = notes.unwritable == QList<QByteArray>({locked}) && notes.files.size() == 1;
        const bool isTaken = notes.unwritable.isEmpty() && notes.files.size() == 2;
        return (unwritable ? isTaken : isLeftOut) &&
               notes.failures == QList<QByteArray>({closed + ": Permission denied"});
    };
    const pid_t child = ::fork();
    if (child == 0) { // root may read and write everything
        if (::geteuid() == 0 && (::setgid(ordinaryUser) != 0 || ::setuid(ordinaryUser) != 0))
            ::_exit(99);
        if (::access(m_root.constData(), R_OK | X_OK) != 0) // as where the system's root is for root alone
            ::_exit(unreachable);
        ::_exit(walk(false) && walk(true) ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    QVERIFY(WIFEXITED(status));
    if (WEXITSTATUS(status) == unreachable)
        QSKIP("an ordinary user gets to no file here");
    QCOMPARE(WEXITSTATUS(status), 0);
}

void TestFolderWalk::anotherFileSystemIsEnteredByTheRule()
{
    make("a.mp3");
    make("disk/hidden by it.mp3");
    const std::string disk = (m_root + "disk").toStdString();
    const int files =
        withOwnMount([&disk] { return ::mount("tmpfs", disk.c_str(), "tmpfs", 0, nullptr) == 0; },
                     [&] {
                         make("disk/b.mp3");
                         make("disk/deep/c.mp3");
                         FolderWalk::Rules rules;
                         const int all = found(rules).size();
                         rules.oneFileSystem = true;
                         Notes notes; // by itself the other one is taken
                         FolderWalk(rules, notes).walk(disk);
                         return all * 10 + found(rules).size() + (notes.files.size() == 2 ? 5 : 0);
                     });
    if (files < 0)
        QSKIP("this user may mount nothing");
    QCOMPARE(files, 36);
}

void TestFolderWalk::theEndIsAskedForAtEachFile()
{
    for (const char* name : {"a.mp3", "b.mp3", "c.mp3", "d/e.mp3"})
        make(name);
    Notes notes;
    notes.most = 2;
    FolderWalk(FolderWalk::Rules(), notes).walk(m_root.toStdString());
    QCOMPARE(notes.files.size(), 2);
}

void TestFolderWalk::slashesAtTheEndAreNoMatter()
{
    make("a.mp3");
    Notes notes;
    FolderWalk(FolderWalk::Rules(), notes).walk((m_root + "//").toStdString());
    QCOMPARE(notes.files, QList<QByteArray>({m_root + "a.mp3"}));
}

QTEST_GUILESS_MAIN(TestFolderWalk)
#include "tst_folderwalk.moc"
