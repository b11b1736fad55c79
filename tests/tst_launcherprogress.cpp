// How far long work is, as a task bar hears of it on a session bus of the test's own.
#include "deletingmusicwaitingdlg.h"
#include "launcherprogress.h"
#include "told.h"

#include <QDBusConnection>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

class TestLauncherProgress : public QObject
{
    Q_OBJECT

public slots:
    void hear(const QString& application, const QVariantMap& properties)
    {
        QCOMPARE(application, QString("application://melodrift.desktop"));
        m_heard.append(properties["progress-visible"].toBool()
                           ? QString::number(properties["progress"].toDouble())
                           : QString("over"));
    }

private slots:
    void initTestCase();
    void init() { m_heard.clear(); }
    void cleanupTestCase();

    void wholePercentsAreTold();
    void anEndIsToldOfWhatWasShown();
    void aDeletionTellsHowFarItIs();

private:
    QTemporaryDir m_folder;
    QProcess m_bus;
    QStringList m_heard;
};

void TestLauncherProgress::initTestCase()
{
    const QString daemon = QStandardPaths::findExecutable("dbus-daemon");
    if (daemon.isEmpty())
        QSKIP("dbus-daemon is not installed");
    m_bus.start(daemon, {"--session", "--nofork", "--address=unix:path=" + m_folder.filePath("bus"),
                         "--print-address=1"});
    const QByteArray address = Told(m_bus).line(); // once it listens; the socket is there before
    QVERIFY2(!address.isEmpty(), m_bus.readAllStandardError());
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);
    QDBusConnection taskBar = QDBusConnection::connectToBus(QString::fromUtf8(address), "task bar");
    QVERIFY(taskBar.connect(QString(), QString(), "com.canonical.Unity.LauncherEntry", "Update", this,
                            SLOT(hear(QString, QVariantMap))));
}

void TestLauncherProgress::cleanupTestCase()
{
    m_bus.terminate();
    m_bus.waitForFinished(patience);
}

void TestLauncherProgress::wholePercentsAreTold()
{
    for (int done = 0; done <= 1000; ++done)
        LauncherProgress::show(done, 2000);
    LauncherProgress::end();
    QTRY_COMPARE(m_heard.size(), 52);
    QCOMPARE(m_heard.first(), QString("0"));
    QCOMPARE(m_heard.at(50), QString("0.5"));
    QCOMPARE(m_heard.last(), QString("over"));
}

void TestLauncherProgress::anEndIsToldOfWhatWasShown()
{
    LauncherProgress::end();
    LauncherProgress::show(2000000000, 2000000000);
    LauncherProgress::end();
    LauncherProgress::end();
    LauncherProgress::show(1, 0);
    LauncherProgress::end();
    QTRY_COMPARE(m_heard, QStringList({"1", "over", "0", "over"}));
}

void TestLauncherProgress::aDeletionTellsHowFarItIs()
{
    DeletingMusicWaitingDlg dialog;
    dialog.showProgress(1, 4);
    dialog.finish();
    QTRY_COMPARE(m_heard, QStringList({"0.25", "over"}));
}

QTEST_MAIN(TestLauncherProgress)
#include "tst_launcherprogress.moc"
