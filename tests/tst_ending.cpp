// How the program ends when the system or the terminal asks it to. This program is its own example: started
// with the name of a scene in its environment, it runs the program itself and plays the scene in its windows.
#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "centerwidget.h"
#include "common/qimagebutton.h"
#include "fixtures.h"
#include "identifyserver.h"
#include "itunes/delmusiclib.h"
#include "itunesfixture.h"
#include "musicdetailedinfowidget.h"
#include "program.h"
#include "programrun.h"
#include "programscene.h"
#include "qmusicinfo.h"
#include "songfixtures.h"
#include "songs/localsongreader.h"

#include <QFileDialog>
#include <QListView>
#include <QtTest>

#include <csignal>
#include <memory>

namespace {
constexpr int songsOfAnIntake = 6000;
constexpr int songsOfAGroup = 1500;

QStringList namesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

/// What the example does. Each scene ends with the program waiting for its signal, or raises it.
class Scene : public ProgramScene
{
    Q_OBJECT

public slots:
    void aboutBoxIsOpen()
    {
        m_dialogs.expect([](QWidget*) { tell("ready"); });
        QMetaObject::invokeMethod(&window(), "SlotAboutMenu");
    }
    void fileDialogIsOpen()
    {
        center().SwitchToLocalCleanModel();
        m_dialogs.expect(
            [](QWidget* dialog) { tell(qobject_cast<QFileDialog*>(dialog) ? "ready" : "not a dialog"); });
        center().OnBtnOpenFile();
    }
    void noticeIsOpen()
    {
        center().SwitchToLocalCleanModel();
        m_dialogs.expect([](QWidget*) { tell("ready"); });
        center().TakeDroppedPaths({QDir::currentPath() + "/songs"});
    }
    void intakeRuns()
    {
        center().SwitchToLocalCleanModel();
        onceDuringTheIntake();
        connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit,
                [first = musicNum] { tell("read " + QByteArray::number(musicNum - first)); });
        center().TakeDroppedPaths({QDir::currentPath() + "/songs"});
    }
    void deletionRuns()
    {
        center().SwitchToLocalCleanModel();
        m_dialogs.expectButton("m_btnType");
        center().TakeDroppedPaths({QDir::currentPath() + "/songs"});
        m_dialogs.expect([](QWidget*) {});
        onceAFileIsGone(QDir::currentPath() + "/songs");
        center().SlotDeleteAllDupMusic();
    }
    void changesArePending()
    {
        window().OnBtnStartScan();
        const auto song = static_cast<QMusicInfo*>(songs()->index(1, 0).internalPointer());
        if (deleteMusic(QByteArray(song->track->persistentId).toULongLong(nullptr, 16)) == 1)
            std::raise(SIGTERM);
    }
    void identificationRuns()
    {
        center().SwitchToLocalCleanModel();
        m_dialogs.expectButton("m_btnType");
        center().TakeDroppedPaths({QDir::currentPath() + "/songs"});
        center().SlotClickAllMusicIndex(songs()->index(0, 0));
        auto* details = window().findChild<MusicDetailedInfoWidget*>();
        for (const char* button : {"m_btnEdit", "m_btnIdentify"})
            QTest::mouseClick(details->findChild<QImageButton*>(button), Qt::LeftButton);
    }
    void windowIsClosed() { window().close(); }
    void exitIsChosen() { window().SlotExitMenu(); }
    void furtherSignalsCome()
    {
        connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, [] {
            std::raise(SIGINT);
            std::raise(SIGTERM);
        });
        std::raise(SIGHUP);
        std::raise(SIGTERM);
    }

private:
    static CenterWidget& center() { return *window().findChild<CenterWidget*>(); }
    static QAbstractItemModel* songs()
    {
        return window().findChild<QListView*>("m_allMusicListView")->model();
    }
    void onceDuringTheIntake()
    {
        auto* timer = new QTimer(this);
        connect(timer, &QTimer::timeout, this, [timer] {
            if (!center().ListsAreInUse() || musicNum == firstNumber)
                return;
            timer->stop();
            std::raise(SIGTERM);
        });
        timer->start(0);
    }

    void onceAFileIsGone(const QString& folder)
    {
        auto* timer = new QTimer(this);
        connect(timer, &QTimer::timeout, this, [timer, folder, before = namesIn(folder).size()] {
            if (namesIn(folder).size() == before)
                return;
            timer->stop();
            std::raise(SIGTERM);
        });
        timer->start(0);
    }

    static inline const quint64 firstNumber = musicNum;
};
} // namespace

class TestEnding : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_run = std::make_unique<ProgramRun>(); }
    void cleanup() { m_run.reset(); }

    void theWindowsEndLeavesNothing_data();
    void theWindowsEndLeavesNothing();
    void eachSignalEndsTheProgram_data();
    void eachSignalEndsTheProgram();
    void ignoredSignalsStayIgnored();
    void openDialogsDoNotHinder_data();
    void openDialogsDoNotHinder();
    void anIntakeEndsAfterTheFileAtHand();
    void aDeletionEndsAfterTheFileAtHand();
    void pendingLibraryChangesAreWritten();
    void anIdentificationIsCancelled();
    void furtherSignalsDoNotHarm();

private:
    void play(const char* scene)
    {
        m_run->set(ProgramScene::variable, scene);
        m_run->start(QCoreApplication::applicationFilePath());
    }
    QString makeSongs() const
    {
        QDir(m_run->path("")).mkdir("songs");
        return m_run->path("songs");
    }
    /// Whether it died of the signal and left nothing.
    bool endedBy(int signal);
    bool isReady();

    std::unique_ptr<ProgramRun> m_run;
};

bool TestEnding::endedBy(int signal)
{
    QProcess& process = m_run->process;
    process.waitForFinished(patience);
    const bool asItShould = process.state() == QProcess::NotRunning &&
                            process.exitStatus() == QProcess::CrashExit && process.exitCode() == signal &&
                            m_run->left().isEmpty();
    if (!asItShould)
        qWarning() << process.state() << process.exitStatus() << process.exitCode() << m_run->left()
                   << process.readAllStandardError();
    return asItShould;
}

bool TestEnding::isReady()
{
    return QTest::qWaitFor([this] { return m_run->process.canReadLine(); }, patience) &&
           m_run->process.readLine() == "ready\n";
}

void TestEnding::theWindowsEndLeavesNothing_data()
{
    QTest::addColumn<QByteArray>("scene");
    for (const char* scene : {"windowIsClosed", "exitIsChosen"})
        QTest::newRow(scene) << QByteArray(scene);
}

void TestEnding::theWindowsEndLeavesNothing()
{
    QFETCH(QByteArray, scene);
    play(scene);
    QVERIFY(m_run->process.waitForFinished(patience));
    QCOMPARE(m_run->process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_run->process.exitCode(), 0);
    QCOMPARE(m_run->left(), QStringList());
}

void TestEnding::eachSignalEndsTheProgram_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGHUP") << SIGHUP;
}

void TestEnding::eachSignalEndsTheProgram()
{
    QFETCH(int, signal);
    m_run->startMelodrift();
    QTRY_VERIFY(!m_run->left().isEmpty());
    QCOMPARE(::kill(pid_t(m_run->process.processId()), signal), 0);
    QVERIFY(endedBy(signal));
}

void TestEnding::ignoredSignalsStayIgnored()
{
    m_run->start("sh",
                 {"-c", "trap '' HUP; exec \"$0\"",
                  QStandardPaths::findExecutable("melodrift", {QCoreApplication::applicationDirPath()})});
    QTRY_VERIFY(!m_run->left().isEmpty());
    QCOMPARE(::kill(pid_t(m_run->process.processId()), SIGHUP), 0);
    m_run->process.terminate();
    QVERIFY(endedBy(SIGTERM)); // the first that came would show
}

void TestEnding::openDialogsDoNotHinder_data()
{
    QTest::addColumn<QByteArray>("scene");
    for (const char* scene : {"aboutBoxIsOpen", "fileDialogIsOpen", "noticeIsOpen"})
        QTest::newRow(scene) << QByteArray(scene);
}

void TestEnding::openDialogsDoNotHinder()
{
    QFETCH(QByteArray, scene);
    Fixtures::copyTone("mp3", makeSongs());
    play(scene);
    QVERIFY(isReady());
    m_run->process.terminate();
    QVERIFY(endedBy(SIGTERM));
}

void TestEnding::anIntakeEndsAfterTheFileAtHand()
{
    const QString folder = makeSongs();
    const QString first = Fixtures::copyTone("mp3", folder);
    const QByteArray cover = Fixtures::jpeg(40, 40, 1);
    AudioFile::write(first, {{TAG_TITLE, "T"}}, &cover);
    for (int i = 1; i < songsOfAnIntake; ++i)
        QFile::link(first, QStringLiteral("%1/%2.mp3").arg(folder).arg(i));
    play("intakeRuns");
    QVERIFY(endedBy(SIGTERM));
    const QList<QByteArray> told = m_run->process.readAllStandardOutput().simplified().split(' ');
    QCOMPARE(told.size(), 2);
    QVERIFY2(told.last().toInt() > 0 && told.last().toInt() < songsOfAnIntake, told.last());
}

/// On a busy machine the deletion may be over before the signal is seen; every round must leave whole files.
void TestEnding::aDeletionEndsAfterTheFileAtHand()
{
    bool endedInTheMiddle = false;
    for (int round = 0; round < 20 && !endedInTheMiddle; ++round) {
        m_run = std::make_unique<ProgramRun>();
        const QString folder = makeSongs();
        const QString first = Fixtures::copyTone("mp3", folder, "0");
        AudioFile::write(first, {{TAG_TITLE, "T"}});
        const QByteArray content = Fixtures::readBytes(first);
        for (int i = 1; i < songsOfAGroup; ++i)
            QFile::copy(first, QStringLiteral("%1/%2.mp3").arg(folder).arg(i));
        play("deletionRuns");
        QVERIFY(endedBy(SIGTERM));
        const QStringList after = namesIn(folder);
        QVERIFY(!after.isEmpty() && after.size() < songsOfAGroup);
        for (const QString& file : after)
            QCOMPARE(Fixtures::readBytes(folder + '/' + file), content);
        endedInTheMiddle = after.size() > 1;
    }
    QVERIFY(endedInTheMiddle);
}

void TestEnding::pendingLibraryChangesAreWritten()
{
    const QString song = Fixtures::copyTone("mp3", makeSongs());
    const QString library = m_run->path("Library.xml");
    const QVector<Fixtures::ITunesTrack> tracks = {
        Fixtures::itunesTrack(0, song), Fixtures::itunesTrack(1, song), Fixtures::itunesTrack(2, song)};
    Fixtures::writeLibrary(library, Fixtures::itunesLibrary(tracks));
    play("changesArePending");
    QVERIFY(endedBy(SIGTERM));
    const QByteArray after = Fixtures::readBytes(library);
    QVERIFY(after.contains(Fixtures::itunesIdentifier(tracks.at(0).persistentId)));
    QVERIFY(!after.contains(Fixtures::itunesIdentifier(tracks.at(1).persistentId)));
    QVERIFY(!QFile::exists(library + ".melodrift-journal"));
}

void TestEnding::anIdentificationIsCancelled()
{
    IdentifyServer server;
    server.setManner(IdentifyServer::AcoustId, IdentifyServer::Manner::Silent);
    server.putIntoEnvironment();
    m_run = std::make_unique<ProgramRun>();
    QFile::copy(Fixtures::tone("mp3", 12000), makeSongs() + "/song.mp3");
    play("identificationRuns");
    QVERIFY(server.waitForRequests(IdentifyServer::AcoustId, 1));
    m_run->process.terminate();
    QVERIFY(endedBy(SIGTERM));
}

void TestEnding::furtherSignalsDoNotHarm()
{
    play("furtherSignalsCome");
    QVERIFY(endedBy(SIGHUP));
}

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsSet(ProgramScene::variable)) {
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        qAddPreRoutine(ProgramScene::begin<Scene>);
        return runProgram(argc, argv);
    }
    for (const int signal : {SIGHUP, SIGINT, SIGTERM})
        std::signal(signal, SIG_DFL); // a background job is started deaf to some, and would start its own so
    QCoreApplication application(argc, argv);
    TestEnding test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_ending.moc"
