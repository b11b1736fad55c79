// The program as those use it who have the screen read out: on a desktop of its own, with a screen that
// nobody sees and a bus of its own, a script finds everything by its name and does everything by actions.
#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "programrun.h"
#include "told.h"

#include <QtTest>

#include <memory>

class TestAtSpi : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theLocalWorkflowGoesByNamesAlone();
    void theMarkAndWhatIsFoundAreReadOut();

private:
    void openDesktop();
    void startTalking(QProcess& process, const QString& program, const QStringList& arguments,
                      QString* firstLine) const;
    void play(const char* scene);
    void tone(const char* kind, const char* name, const char* title) const;
    QStringList songs() const { return QDir(m_run->path("songs")).entryList(QDir::Files, QDir::Name); }
    static QString sockets() { return QStringLiteral("/tmp/.X11-unix"); } // where every screen has its own
    static void end(QProcess& process);

    std::unique_ptr<ProgramRun> m_run;
    std::unique_ptr<QProcess> m_screen;
    std::unique_ptr<QProcess> m_bus;
    bool m_hadSockets = true;
};

void TestAtSpi::init()
{
    m_hadSockets = QFileInfo::exists(sockets());
    m_run = std::make_unique<ProgramRun>();
    m_screen = std::make_unique<QProcess>();
    m_bus = std::make_unique<QProcess>();
    QVERIFY(QDir(m_run->path(QString())).mkdir("songs"));
    tone("mp3", "1", "Midnight Ferry");
    tone("mp3", "2", "Midnight Ferry");
    tone("m4a", "3", "Midnight Ferry");
    tone("flac", "4", "Lamplight");
    tone("mp3", "nameless", "");
    openDesktop();
}

void TestAtSpi::cleanup()
{
    m_run->process.terminate();
    m_run->process.waitForFinished(patience);
    end(*m_bus);
    end(*m_screen);
    m_run.reset();
    if (!m_hadSockets)
        QDir().rmdir(sockets()); // unless another screen came
}

void TestAtSpi::end(QProcess& process)
{
    process.terminate();
    process.waitForFinished(patience);
}

void TestAtSpi::tone(const char* kind, const char* name, const char* title) const
{
    const QString path = Fixtures::copyTone(kind, m_run->path("songs"), name);
    AudioFile::write(
        path,
        {{TAG_TITLE, title}, {TAG_ARTIST, "The Harbour"}, {TAG_ALBUM, "Night Lines"}, {TAG_GENRE, "Pop"}});
}

void TestAtSpi::startTalking(QProcess& process, const QString& program, const QStringList& arguments,
                             QString* firstLine) const
{
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_run->startBeside(process, program, arguments);
    *firstLine = QString::fromUtf8(Told(process).line());
    QVERIFY2(!firstLine->isEmpty(), qPrintable(program + " says nothing"));
}

/// What the desktop of whoever runs the test brings is not in it.
void TestAtSpi::openDesktop()
{
    QString screen;
    QString bus;
    for (const char* variable : {"DBUS_SYSTEM_BUS_ADDRESS", "XDG_CURRENT_DESKTOP", "QT_QPA_PLATFORMTHEME",
                                 "WAYLAND_DISPLAY", "QT_ACCESSIBILITY", "AT_SPI_BUS_ADDRESS"})
        m_run->unset(variable);
    m_run->set("GSETTINGS_BACKEND", "memory");
    m_run->set("QT_QPA_PLATFORM", "xcb");
    m_run->set("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1"); // as if a screen reader had said so
    // Else one that no program is at begins anew, and forgets where the bus for this is.
    startTalking(*m_screen, "Xvfb",
                 {"-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-noreset"},
                 &screen);
    m_run->set("DISPLAY", ':' + screen);
    startTalking(*m_bus, "dbus-daemon",
                 {"--session", "--nofork", "--nopidfile", "--nosyslog", "--print-address=1",
                  "--address=unix:path=" + m_run->path("bus")},
                 &bus);
    m_run->set("DBUS_SESSION_BUS_ADDRESS", bus);
}

void TestAtSpi::play(const char* scene)
{
    QFile file(":/screenreader.py");
    QVERIFY(file.open(QIODevice::ReadOnly));
    QProcess script;
    QString ready;
    startTalking(script, QStandardPaths::findExecutable("python3", {"/usr/bin"}),
                 {"-c", QString::fromUtf8(file.readAll()), scene, m_run->path("songs")}, &ready);
    QCOMPARE(ready, QString("ready"));
    m_run->startMelodrift();
    QVERIFY(script.waitForFinished(-1)); // it loses its patience itself
    const bool played = script.exitStatus() == QProcess::NormalExit && script.exitCode() == 0;
    if (!played)
        m_run->process.terminate();
    QVERIFY(m_run->process.waitForFinished(patience));
    const QByteArray log = m_run->process.readAllStandardError().right(4000);
    QVERIFY2(played, log.constData());
    QVERIFY2(m_run->process.exitStatus() == QProcess::NormalExit && m_run->process.exitCode() == 0,
             log.constData());
    QVERIFY2(!log.contains("Cannot create accessible"), log.constData()); // for an event
    QCOMPARE(m_run->left(), QStringList());
}

void TestAtSpi::theLocalWorkflowGoesByNamesAlone()
{
    const QStringList all = songs();
    play("workflow");
    QCOMPARE(AudioFile::read(m_run->path("songs/nameless.mp3")).texts.value(TAG_TITLE), QString("Named"));
    QCOMPARE(songs(), all); // what was deleted was taken back
}

void TestAtSpi::theMarkAndWhatIsFoundAreReadOut()
{
    play("announcements");
}

QTEST_GUILESS_MAIN(TestAtSpi)
#include "tst_atspi.moc"
