#include "ownenvironment.h"
#include "privatefolder.h"
#include "programrun.h"
#include "sanitized.h"

#include <QElapsedTimer>
#include <QtTest>

#include <array>
#include <atomic>
#include <thread>
#include <unistd.h>

class TestPrivateFolder : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_run = std::make_unique<ProgramRun>(); }
    void cleanup() { m_run.reset(); }

    void itIsItsUsersAlone();
    void itGoesWithAllThatIsInIt();
    void linksAreRemovedAndNotFollowed();
    void theNextStartRemovesWhatAKilledRunLeft();
    void foldersOfRunningProgramsStay();
    void foldersOfTheUsersOwnStay_data();
    void foldersOfTheUsersOwnStay();
    void foldersOfOtherUsersStay();
    void manyAtOnceKeepTheirFolders();
    void aPlaceThatCannotBeUsedIsLogged();
    void programsThatAreStartedFindNoFolderWhereThereWasNone();

private:
    QString make(const QString& file, const QByteArray& content = "content") const;
    static bool isThere(const QString& path) { return QFileInfo::exists(path); }

    std::unique_ptr<ProgramRun> m_run;
};

/// The file in the temporary folder, and the folders on its way, which only their user can enter.
QString TestPrivateFolder::make(const QString& file, const QByteArray& content) const
{
    const QString path = m_run->temporary() + '/' + file;
    QDir(m_run->temporary()).mkpath(QFileInfo(file).path());
    QFile::setPermissions(m_run->temporary() + '/' + file.section('/', 0, 0),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QFile made(path);
    if (!made.open(QIODevice::WriteOnly) || made.write(content) != content.size())
        qFatal("the file cannot be made");
    return path;
}

void TestPrivateFolder::itIsItsUsersAlone()
{
    const PrivateFolder folder(m_run->temporary());
    QCOMPARE(QFileInfo(folder.path()).absolutePath(), m_run->temporary());
    QCOMPARE(QFile::permissions(folder.path()) & (QFile::Permissions(0x0077)), QFile::Permissions());
}

void TestPrivateFolder::itGoesWithAllThatIsInIt()
{
    {
        const PrivateFolder folder(m_run->temporary());
        QVERIFY(QDir(folder.path()).mkpath("tmp/a/b/c"));
        QVERIFY(QDir(folder.path()).mkpath("tmplocalImage"));
        for (int i = 0; i < 100; ++i)
            make(m_run->left().first() + QStringLiteral("/tmplocalImage/tempstr%1").arg(i));
        make(m_run->left().first() + "/tmp/a/b/.hidden");
    }
    QCOMPARE(m_run->left(), QStringList());
}

void TestPrivateFolder::linksAreRemovedAndNotFollowed()
{
    const QString mine = m_run->path("mine");
    QVERIFY(QDir().mkpath(mine));
    QVERIFY(QFile::rename(make("song.mp3"), mine + "/song.mp3"));
    make("melodrift-Left01/tmp/file");
    for (const QString& link :
         {QStringLiteral("melodrift-Left01/tmplink"), QStringLiteral("melodrift-Left01/tmp/link"),
          QStringLiteral("melodrift-Link01")})
        QVERIFY(QFile::link(mine, m_run->temporary() + '/' + link));
    {
        const PrivateFolder folder(m_run->temporary());
        QVERIFY(QFile::link(mine, folder.path() + "/link"));
    }
    QCOMPARE(m_run->left(), QStringList("melodrift-Link01"));
    QCOMPARE(QDir(mine).entryList(QDir::Files), QStringList("song.mp3"));
}

void TestPrivateFolder::theNextStartRemovesWhatAKilledRunLeft()
{
    constexpr int covers = 2000;
    m_run->startMelodrift();
    QTRY_VERIFY(!m_run->left().isEmpty());
    const QString folder = m_run->left().first();
    QTRY_VERIFY(isThere(m_run->temporary() + '/' + folder + "/tmp"));
    m_run->process.kill();
    QVERIFY(m_run->process.waitForFinished(patience));
    for (int i = 0; i < covers; ++i)
        make(folder + QStringLiteral("/tmplocalImage/tempstr%1").arg(i));
    QCOMPARE(m_run->left(), QStringList(folder));

    m_run->startMelodrift();
    QElapsedTimer clock;
    clock.start();
    QTRY_VERIFY(!m_run->left().contains(folder));
    qInfo("%d covers were gone %lld ms after the start", covers, clock.elapsed());
    QTRY_COMPARE(m_run->left().size(), 1);
    m_run->process.terminate();
    QVERIFY(m_run->process.waitForFinished(patience));
    QCOMPARE(m_run->left(), QStringList());
}

void TestPrivateFolder::foldersOfRunningProgramsStay()
{
    m_run->startMelodrift();
    QTRY_VERIFY(!m_run->left().isEmpty());
    const QString theirs = m_run->left().first();
    QTRY_VERIFY(isThere(m_run->temporary() + '/' + theirs + "/tmp"));
    const QString cover = make(theirs + "/tmplocalImage/tempstr1");
    {
        const PrivateFolder first(m_run->temporary());
        const PrivateFolder second(m_run->temporary());
        QCOMPARE(m_run->left().size(), 3);
    }
    QCOMPARE(m_run->left(), QStringList(theirs));
    QVERIFY(isThere(cover));
}

void TestPrivateFolder::foldersOfTheUsersOwnStay_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("something of their own") << "melodrift-backup/songs/song.mp3";
    QTest::newRow("something beside ours") << "melodrift-Left01/song.mp3";
    QTest::newRow("a longer name") << "melodrift-Left012/tmp/file";
    QTest::newRow("another name") << "melodrift-Left-1/tmp/file";
    QTest::newRow("a file") << "melodrift-Left01";
}

void TestPrivateFolder::foldersOfTheUsersOwnStay()
{
    QFETCH(QString, file);
    const QString path = make(file);
    make("melodrift-Left02/tmp/file");
    const QString shared = make("melodrift-Left03/tmp/file");
    QFile::setPermissions(m_run->temporary() + "/melodrift-Left03",
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup);
    { // which waits for the removal
        const PrivateFolder folder(m_run->temporary());
    }
    QVERIFY(isThere(path));
    QVERIFY(isThere(shared));
    QCOMPARE(m_run->left().size(), 2);
}

void TestPrivateFolder::foldersOfOtherUsersStay()
{
    if (::geteuid() != 0)
        QSKIP("only the superuser can make one");
    const QString path = make("melodrift-Left01/tmp/file");
    const QByteArray folder = QFile::encodeName(m_run->temporary() + "/melodrift-Left01");
    QCOMPARE(::chown(folder.constData(), 65534, 65534), 0);
    {
        const PrivateFolder mine(m_run->temporary());
    }
    QVERIFY(isThere(path));
}

/// Each makes its folder while the others look for what was left.
void TestPrivateFolder::manyAtOnceKeepTheirFolders()
{
    const int rounds = sanitized ? 50 : 200;
    std::atomic<int> lost{0};
    const auto startAndEnd = [this, &lost, rounds] {
        for (int round = 0; round < rounds; ++round) {
            const PrivateFolder folder(m_run->temporary());
            const bool used = QDir(folder.path()).mkdir("tmp");
            std::this_thread::yield();
            if (folder.path().isEmpty() || !used || !isThere(folder.path() + "/tmp"))
                ++lost;
        }
    };
    std::array<std::thread, 6> starters;
    for (std::thread& starter : starters)
        starter = std::thread(startAndEnd);
    for (std::thread& starter : starters)
        starter.join();
    QCOMPARE(lost.load(), 0);
    QCOMPARE(m_run->left(), QStringList());
}

void TestPrivateFolder::aPlaceThatCannotBeUsedIsLogged()
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^no private temporary folder in .*/nowhere: "));
    const PrivateFolder folder(m_run->path("nowhere"));
    QCOMPARE(folder.path(), QString());
}

void TestPrivateFolder::programsThatAreStartedFindNoFolderWhereThereWasNone()
{
    qunsetenv("TMPDIR");
    const QString note = m_run->path("note");
    const QString program =
        QStringLiteral("printf %s \"${TMPDIR-none} $HOME\" > '%1.part'; mv '%1.part' '%1'");
    OwnEnvironment::set("TMPDIR", "/private/tmp");
    QCOMPARE(qgetenv("TMPDIR"), QByteArray("/private/tmp"));
    // As the desktop's services start a browser.
    QVERIFY(QProcess::startDetached("sh", {"-c", program.arg(note)}));
    QTRY_VERIFY(isThere(note));
    QFile said(note);
    QVERIFY(said.open(QIODevice::ReadOnly));
    QCOMPARE(said.readAll(), "none " + qgetenv("HOME"));
    QCOMPARE(qgetenv("TMPDIR"), QByteArray("/private/tmp"));
    qunsetenv("TMPDIR");
}

QTEST_GUILESS_MAIN(TestPrivateFolder)
#include "tst_privatefolder.moc"
