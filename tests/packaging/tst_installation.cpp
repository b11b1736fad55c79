// The program as packagers install it: one folder that holds all of it, and a link to be called by.
#include "fixtures.h"
#include "programrun.h"

#include <QDirIterator>
#include <QtTest>

class TestInstallation : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void theLinkLeadsToTheProgramsFolder_data();
    void theLinkLeadsToTheProgramsFolder();
    void allLiesWhereItBelongs();
    void theProgramRunsFromThere_data();
    void theProgramRunsFromThere();
    void itsLibrariesComeFromThere();

private:
    QString installed(const QString& path) const { return m_root.path() + "/opt/melodrift/" + path; }

    QTemporaryDir m_root;
};

void TestInstallation::initTestCase()
{
    QProcess install;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DESTDIR", m_root.path());
    install.setProcessEnvironment(environment);
    install.setProcessChannelMode(QProcess::MergedChannels);
    install.start(MELODRIFT_CMAKE, {"--install", MELODRIFT_BUILD, "--prefix", "/opt/melodrift"});
    QVERIFY(install.waitForFinished(patience));
    QVERIFY2(install.exitCode() == 0, install.readAll());
}

void TestInstallation::theLinkLeadsToTheProgramsFolder_data()
{
    QTest::addColumn<QString>("program");
    QTest::newRow("window") << "melodrift";
    QTest::newRow("no window") << "melodrift-cli";
}

void TestInstallation::theLinkLeadsToTheProgramsFolder()
{
    QFETCH(QString, program);
    const QFileInfo link(installed("bin/" + program));
    QVERIFY(link.isSymLink());
    QCOMPARE(link.canonicalFilePath(),
             QFileInfo(installed(MELODRIFT_LIBRARIES "/melodrift/" + program)).canonicalFilePath());
}

void TestInstallation::allLiesWhereItBelongs()
{
    const QStringList wanted = {
        MELODRIFT_LIBRARIES "/melodrift/Image/logo.png",
        MELODRIFT_LIBRARIES "/melodrift/Image/logo@2x.png",
        MELODRIFT_LIBRARIES "/melodrift/Melodrift for Mac-Orvo/index.html",
        "share/applications/melodrift.desktop",
        "share/bash-completion/completions/melodrift",
        "share/bash-completion/completions/melodrift-cli",
        "share/fish/vendor_completions.d/melodrift-cli.fish",
        "share/fish/vendor_completions.d/melodrift.fish",
        "share/icons/hicolor/512x512/apps/melodrift.png",
        "share/icons/hicolor/scalable/apps/melodrift.svg",
        "share/man/man1/melodrift-cli.1",
        "share/man/man1/melodrift.1",
        "share/metainfo/example.melodrift.Melodrift.metainfo.xml",
        "share/zsh/site-functions/_melodrift",
        "share/zsh/site-functions/_melodrift-cli",
    };
    for (const QString& path : wanted)
        QVERIFY2(QFile::exists(installed(path)), qPrintable(path));
    QDirIterator all(m_root.path(), QDir::Files, QDirIterator::Subdirectories);
    while (all.hasNext())
        QVERIFY2(all.next().startsWith(installed("")), qPrintable(all.filePath()));
}

void TestInstallation::theProgramRunsFromThere_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QByteArray>("version");
    QTest::newRow("window") << "melodrift" << QByteArray("Melodrift " MELODRIFT_VERSION "\n");
    QTest::newRow("no window") << "melodrift-cli" << QByteArray("melodrift-cli " MELODRIFT_VERSION "\n");
}

void TestInstallation::theProgramRunsFromThere()
{
    QFETCH(QString, program);
    QFETCH(QByteArray, version);
    ProgramRun run;
    run.start(installed("bin/" + program), {"--version"});
    QVERIFY(run.process.waitForFinished(patience));
    QCOMPARE(run.process.readAllStandardOutput(), version);
}

void TestInstallation::itsLibrariesComeFromThere()
{
    ProgramRun run;
    QVERIFY(QDir(run.path("")).mkdir("songs"));
    Fixtures::copyTone("mp3", run.path("songs"));
    run.start(installed("bin/melodrift"), {"songs"});
    QVERIFY(run.process.waitForStarted(patience));
    QTRY_VERIFY(QDir(run.temporary()).entryList({"*"}, QDir::Dirs | QDir::NoDotAndDotDot).size() == 1);
    QFile maps(QStringLiteral("/proc/%1/maps").arg(run.process.processId()));
    QVERIFY(maps.open(QIODevice::ReadOnly));
    QStringList ours;
    for (const QByteArray& line : maps.readAll().split('\n'))
        if (line.contains("/libmelodrift-"))
            ours.append(QString::fromUtf8(line).section(' ', -1));
    QVERIFY(!ours.isEmpty());
    for (const QString& library : qAsConst(ours))
        QVERIFY2(library.startsWith(QFileInfo(m_root.path()).canonicalFilePath()), qPrintable(library));
    QCOMPARE(run.process.readAllStandardError(), QByteArray());
    run.process.terminate();
    QVERIFY(run.process.waitForFinished(patience));
}

QTEST_GUILESS_MAIN(TestInstallation)
#include "tst_installation.moc"
