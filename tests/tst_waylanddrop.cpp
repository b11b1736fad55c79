// Files that a user drags from another program's window into ours, on a Wayland desktop with a real pointer:
// the desktop is a window of an X server without a screen, and a tool moves that one's pointer. This program
// is both others, too: what is in its environment says which.
#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "centerwidget.h"
#include "fixtures.h"
#include "program.h"
#include "programrun.h"
#include "programscene.h"
#include "told.h"

#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QtTest>
#include <QWindow>

namespace {
const char givesVariable[] = "MELODRIFT_GIVES";

void say(const QByteArray& line)
{
    std::puts(line.constData());
    std::fflush(stdout);
}

/// Tells where the pointer is in a window.
class PointerTeller : public QObject
{
public:
    explicit PointerTeller(const QWindow* window) : QObject(nullptr), m_window(window)
    {
        QCoreApplication::instance()->installEventFilter(this);
    }
    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (object == m_window && event->type() == QEvent::MouseMove) {
            const QPoint at = static_cast<QMouseEvent*>(event)->pos();
            say(QStringLiteral("pointer %1 %2").arg(at.x()).arg(at.y()).toUtf8());
        }
        return false;
    }

private:
    const QWindow* const m_window;
};

/// A window full of files, to be dragged out of it.
class Giver : public QWidget
{
public:
    Giver() { resize(320, 240); }

protected:
    void mouseMoveEvent(QMouseEvent* event) override
    {
        if (!(event->buttons() & Qt::LeftButton))
            return;
        auto* drag = new QDrag(this);
        auto* files = new QMimeData;
        files->setUrls({QUrl::fromLocalFile(QString::fromLocal8Bit(qgetenv(givesVariable)))});
        drag->setMimeData(files);
        say("dragging");
        say(drag->exec(Qt::CopyAction) == Qt::CopyAction ? "given" : "kept");
    }
    void paintEvent(QPaintEvent*) override { QPainter(this).fillRect(rect(), Qt::magenta); }
};

int give(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    Giver giver;
    giver.show();
    const PointerTeller teller(giver.windowHandle());
    QTimer::singleShot(0, [] { say("shown"); });
    return QApplication::exec();
}

/// Looks on while a user drops files.
class Receiver : public ProgramScene
{
    Q_OBJECT

public slots:
    void receive()
    {
        m_dialogs.expect([](QWidget* dialog) {
            tell("a message says what was added");
            QTest::mouseClick(dialog->findChild<QImageButton*>("m_btnType"), Qt::LeftButton);
            QTimer::singleShot(0, qApp, &QApplication::quit);
        });
        window().OpenInLocalMode({});
        m_teller = std::make_unique<PointerTeller>(window().windowHandle());
        auto* const center = window().findChild<CenterWidget*>();
        center->installEventFilter(this);
        connect(&m_timer, &QTimer::timeout, this, [this, center] {
            if (!center->acceptDrops())
                return;
            m_timer.stop();
            const QRect place(center->mapTo(&window(), QPoint()), center->size());
            tell(QStringLiteral("takes files at %1 %2 %3 %4")
                     .arg(place.x())
                     .arg(place.y())
                     .arg(place.width())
                     .arg(place.height())
                     .toUtf8());
        });
        m_timer.start(20);
    }

    bool eventFilter(QObject* center, QEvent* event) override
    {
        if (event->type() != QEvent::DragEnter)
            return false;
        center->removeEventFilter(this);
        QCoreApplication::sendEvent(center, event);
        tell(event->isAccepted() ? "would take them" : "would leave them");
        return true;
    }

private:
    std::unique_ptr<PointerTeller> m_teller;
    QTimer m_timer;
};
} // namespace

class TestWaylandDrop : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void filesAreDraggedIntoTheWindow();

private:
    static constexpr int width = 1300;
    static constexpr int height = 900;

    static QString plainRenderer();
    void useDesktop(ProgramRun& run) const;
    void movePointer(const QPoint& to, const QStringList& andThen = {}) const;
    bool isAt(const QPoint& origin, const QPoint& on, Told& program) const;
    bool findOrigin(Told& program, QPoint& origin) const;
    void drag(const QPoint& from, const QPoint& to, Told& giver, Told& receiver) const;

    ProgramRun m_screen;
    ProgramRun m_desktop;
    QString m_display;
};

/// Without a graphics card; the option has another name since version 12.
QString TestWaylandDrop::plainRenderer()
{
    QProcess help;
    help.start("weston", {"--help"});
    help.waitForFinished(patience);
    return help.readAll().contains("--renderer=") ? "--renderer=pixman" : "--use-pixman";
}

void TestWaylandDrop::initTestCase()
{
    for (const char* tool : {"weston", "xdotool", "Xvfb"})
        if (QStandardPaths::findExecutable(tool).isEmpty())
            QSKIP(qPrintable(QString(tool) + " is not installed"));
    m_screen.start("Xvfb",
                   {"-displayfd", "1", "-screen", "0", "1300x900x24", "-nolisten", "tcp", "-noreset"});
    m_display = ':' + QString::fromLatin1(Told(m_screen.process).line());
    m_desktop.process.setProcessChannelMode(QProcess::MergedChannels);
    m_desktop.unset("WAYLAND_DISPLAY");
    m_desktop.set("DISPLAY", m_display);
    m_desktop.start("weston", {"--backend=x11-backend.so", plainRenderer(),
                               "--width=" + QString::number(width), "--height=" + QString::number(height),
                               "--no-config", "--idle-time=0", "--socket=wayland-drop"});
    QTRY_VERIFY(QFile::exists(m_desktop.path("wayland-drop")) ||
                m_desktop.process.state() == QProcess::NotRunning);
    const bool isThere = m_desktop.process.state() == QProcess::Running;
    const QByteArray errors = isThere ? QByteArray() : m_desktop.process.readAll();
    if (errors.contains("x11-backend.so: cannot open"))
        QSKIP("weston is not installed with what makes a window of it");
    QVERIFY2(isThere, errors);
}

void TestWaylandDrop::useDesktop(ProgramRun& run) const
{
    run.unset("DISPLAY");
    run.set("QT_QPA_PLATFORM", "wayland");
    run.set("XDG_RUNTIME_DIR", m_desktop.path(""));
    run.set("WAYLAND_DISPLAY", "wayland-drop");
    run.set("MELODRIFT_AUDIO_OUTPUT", "null");
}

void TestWaylandDrop::movePointer(const QPoint& to, const QStringList& andThen) const
{
    QProcess tool;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DISPLAY", m_display);
    tool.setProcessEnvironment(environment);
    tool.start("xdotool",
               QStringList{"mousemove", QString::number(to.x()), QString::number(to.y())} + andThen);
    QVERIFY(tool.waitForFinished(patience) && tool.exitCode() == 0);
}

/// Whether the window of the program has its corner there: it is asked at a point of the screen.
bool TestWaylandDrop::isAt(const QPoint& origin, const QPoint& on, Told& program) const
{
    program.forget();
    movePointer(on);
    const QPoint local = on - origin;
    const QByteArray wanted = QStringLiteral("pointer %1 %2").arg(local.x()).arg(local.y()).toUtf8();
    return program.line("pointer ", 2000) == wanted;
}

/// A desktop puts windows where it likes and tells nobody: the pointer goes over all of it until the program
/// feels it.
bool TestWaylandDrop::findOrigin(Told& program, QPoint& origin) const
{
    for (int pause = 100; pause < 10000; pause *= 4) // as fast as the machine has it
        for (int y = 120; y < height; y += 180)
            for (int x = 100; x < width; x += 220) {
                program.forget();
                const QPoint on(x, y);
                movePointer(on);
                const QList<int> felt = program.numbers("pointer ", pause);
                if (felt.size() < 2)
                    continue;
                origin = on - QPoint(felt.at(0), felt.at(1));
                if (isAt(origin, on + QPoint(3, 2), program))
                    return true;
            }
    return false;
}

void TestWaylandDrop::drag(const QPoint& from, const QPoint& to, Told& giver, Told& receiver) const
{
    movePointer(from, {"mousedown", "1"});
    constexpr int steps = 20;
    for (int i = 1; i <= steps; ++i) {
        movePointer(from + (to - from) * i / steps);
        if (i == 3)
            QVERIFY(!giver.line("dragging").isEmpty());
    }
    QCOMPARE(receiver.line("would "), QByteArray("would take them"));
    movePointer(to, {"mouseup", "1"});
}

void TestWaylandDrop::filesAreDraggedIntoTheWindow()
{
    ProgramRun receiver;
    useDesktop(receiver);
    receiver.set(ProgramScene::variable, "receive");
    receiver.start(QCoreApplication::applicationFilePath());
    Told receiverTold(receiver.process);
    const QList<int> takes = receiverTold.numbers("takes files at ");
    if (receiver.process.readAllStandardError().contains("Could not find the Qt platform plugin"))
        QSKIP("the toolkit has no plugin for Wayland");
    QCOMPARE(takes.size(), 4);
    QPoint window;
    QVERIFY(findOrigin(receiverTold, window));

    QVERIFY(QDir().mkpath(receiver.path("songs")));
    for (const char* name : {"one", "two"})
        AudioFile::write(Fixtures::copyTone("mp3", receiver.path("songs"), name),
                         {{TAG_TITLE, "Title"}, {TAG_ARTIST, "A"}, {TAG_ALBUM, "B"}, {TAG_GENRE, "Pop"}});
    ProgramRun giver;
    useDesktop(giver);
    giver.set(givesVariable, receiver.path("songs"));
    giver.start(QCoreApplication::applicationFilePath());
    Told giverTold(giver.process);
    QVERIFY(!giverTold.line("shown").isEmpty());
    QPoint files;
    QVERIFY(findOrigin(giverTold, files));

    const QRect center(window + QPoint(takes.at(0), takes.at(1)), QSize(takes.at(2), takes.at(3)));
    const QPoint from = files + QPoint(160, 120);
    const QPoint left = center.topLeft() + QPoint(100, 300);
    const QPoint right = center.topLeft() + QPoint(500, 300);
    drag(from, (left - from).manhattanLength() > (right - from).manhattanLength() ? left : right, giverTold,
         receiverTold);
    QCOMPARE(giverTold.line("given"), QByteArray("given"));
    QVERIFY(!receiverTold.line("a message says what was added").isEmpty());
    QVERIFY(receiver.process.waitForFinished(patience));
    QCOMPARE(receiver.process.readAllStandardError().trimmed(),
             QByteArray("songs: 2, undefined: 0, duplicate groups: 1"));
}

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsSet(givesVariable))
        return give(argc, argv);
    if (qEnvironmentVariableIsSet(ProgramScene::variable)) {
        qAddPreRoutine(ProgramScene::begin<Receiver>);
        return runProgram(argc, argv);
    }
    QCoreApplication application(argc, argv);
    TestWaylandDrop test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_waylanddrop.moc"
