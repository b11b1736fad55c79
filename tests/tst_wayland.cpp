// The local workflow on a Wayland desktop, where there is no X server. This program is its own example:
// started with a variable in its environment it runs the program itself, and plays the user.
#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "centerwidget.h"
#include "fixtures.h"
#include "navigationwidget.h"
#include "playsongwidget.h"
#include "program.h"
#include "programrun.h"
#include "programscene.h"

#include <QListView>
#include <QtTest>
#include <QWindow>

#include <memory>

namespace {
/// What the user does. Each line that it tells is a promise kept.
class User : public ProgramScene
{
    Q_OBJECT

public slots:
    void sortMusic()
    {
        tell(QGuiApplication::platformName().toUtf8());
        m_dialogs.expect([](QWidget* dialog) {
            tell(belongsToTheWindow(dialog) ? "the message is above the window" : "the message is anywhere");
            QTest::mouseClick(dialog->findChild<QImageButton*>("m_btnType"), Qt::LeftButton);
        });
        window().OpenInLocalMode({QDir::currentPath() + "/songs"});
        connect(&m_timer, &QTimer::timeout, this, &User::lookAtTheGroup);
        m_timer.start(20);
    }

private:
    void lookAtTheGroup()
    {
        auto* groups = window().findChild<QListView*>("m_dupMusicListView");
        if (groups->model()->rowCount() == 0 || QApplication::activeModalWidget())
            return;
        m_timer.stop();
        window().findChild<NavigationWidget*>()->OnBtnMusicDuplicate();
        window().findChild<CenterWidget*>()->SlotClickDupMusicIndex(groups->model()->index(0, 0));
        QTest::mouseClick(window().findChild<QImageButton*>("m_btnPlayMusic"), Qt::LeftButton);
        if (auto* player = findWindow<PlaySongWidget>())
            tell(belongsToTheWindow(player) ? "the player is above the window" : "the player is anywhere");
        m_dialogs.expect([](QWidget* dialog) {
            tell(belongsToTheWindow(dialog) ? "the about box is above the window"
                                            : "the about box is anywhere");
            dialog->close();
        });
        window().SlotAboutMenu();
        QApplication::quit();
    }

    static bool belongsToTheWindow(const QWidget* other)
    {
        return other->windowHandle() && other->windowHandle()->transientParent() == window().windowHandle();
    }

    QTimer m_timer;
};
} // namespace

class TestWayland : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void theLocalWorkflowRuns_data();
    void theLocalWorkflowRuns();

private:
    void makeSongs(const QString& folder);

    ProgramRun m_desktop;
};

void TestWayland::initTestCase()
{
    const QString weston = QStandardPaths::findExecutable("weston");
    if (weston.isEmpty())
        QSKIP("weston is not installed");
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY"})
        m_desktop.unset(name);
    m_desktop.start(weston, {"--backend=headless-backend.so", "--width=1300", "--height=900", "--no-config",
                             "--idle-time=0", "--socket=wayland-test"});
    QVERIFY(m_desktop.process.waitForStarted(patience));
    QTRY_VERIFY2(QFile::exists(m_desktop.path("wayland-test")) ||
                     m_desktop.process.state() == QProcess::NotRunning,
                 "it has no socket");
    QVERIFY2(m_desktop.process.state() == QProcess::Running, m_desktop.process.readAllStandardError());
}

/// Two that are alike.
void TestWayland::makeSongs(const QString& folder)
{
    QVERIFY(QDir().mkpath(folder));
    for (const char* name : {"one", "two"})
        AudioFile::write(Fixtures::copyTone("mp3", folder, name),
                         {{TAG_TITLE, "Title"}, {TAG_ARTIST, "A"}, {TAG_ALBUM, "B"}, {TAG_GENRE, "Pop"}});
}

void TestWayland::theLocalWorkflowRuns_data()
{
    QTest::addColumn<QString>("scale");
    for (const char* scale : {"1", "1.5", "2"})
        QTest::newRow(scale) << QString(scale);
}

void TestWayland::theLocalWorkflowRuns()
{
    QFETCH(QString, scale);
    ProgramRun run;
    makeSongs(run.path("songs"));
    run.unset("DISPLAY");
    run.set("QT_QPA_PLATFORM", "wayland");
    run.set("QT_SCALE_FACTOR", scale);
    run.set("XDG_RUNTIME_DIR", m_desktop.path(""));
    run.set("WAYLAND_DISPLAY", "wayland-test");
    run.set("MELODRIFT_AUDIO_OUTPUT", "null");
    run.set(ProgramScene::variable, "sortMusic");
    run.start(QCoreApplication::applicationFilePath());
    QVERIFY(run.process.waitForFinished(patience));
    const QByteArray errors = run.process.readAllStandardError();
    if (errors.contains("Could not find the Qt platform plugin"))
        QSKIP("the toolkit has no plugin for Wayland");
    const QList<QByteArray> told = run.process.readAllStandardOutput().trimmed().split('\n');
    QCOMPARE(told,
             QList<QByteArray>({"wayland", "the message is above the window",
                                "the player is above the window", "the about box is above the window"}));
    QList<QByteArray> logged = errors.trimmed().split('\n');
    QCOMPARE(logged.takeFirst(), QByteArray("songs: 2, undefined: 0, duplicate groups: 1"));
    QCOMPARE(logged.size(), 1);
    QVERIFY2(logged.first().startsWith("playing "), logged.first());
    QCOMPARE(run.left(), QStringList());
}

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsSet(ProgramScene::variable)) {
        qAddPreRoutine(ProgramScene::begin<User>);
        return runProgram(argc, argv);
    }
    QCoreApplication application(argc, argv);
    TestWayland test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_wayland.moc"
