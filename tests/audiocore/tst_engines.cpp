// The engines and the last way of reading come in at their first use, and are missed without harm.
#include "audiofile.h"
#include "fixtures.h"
#include "foreignfixture.h"
#include "loadedlibraries.h"
#include "programrun.h"

#include <audiocore/iaudioidentifier.h>
#include <audiocore/iaudioplayer.h>

#include <QtTest>

class TestEngines : public QObject
{
    Q_OBJECT

private slots:
    void theProgramStartsWithoutThem();
    void theLastWayComesForWhatNobodyElseReads();
    void eachComesAtItsFirstUse();
    void withoutItsModuleAnEngineIsNone();
};

namespace {
const QString player = "libmelodrift-playback";
const QString identification = "libmelodrift-identify";
const QString lastWay = "libmelodrift-demux";
const QStringList engines = {player,       identification,   lastWay,  "libmpv",
                             "libavcodec", "libchromaprint", "libcurl"};

QString libraryName(const char* name)
{
    return QString("libmelodrift-%1.so").arg(name);
}
} // namespace

void TestEngines::theProgramStartsWithoutThem()
{
    ProgramRun run;
    run.process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    run.startMelodrift({"-platform", "offscreen"});
    QVERIFY(run.process.waitForStarted(patience));
    const QString process = QString::number(run.process.processId());
    // Its own folder comes when all libraries of the start are there, and before the window.
    QTRY_VERIFY(!loadedBy(process, {"libqoffscreen"}).isEmpty());
    QTRY_VERIFY(!run.left().isEmpty());
    QCOMPARE(loadedBy(process, engines), QStringList());
    QCOMPARE(loadedBy(process, {"libmelodrift-audiocore"}).size(), 1);
}

void TestEngines::eachComesAtItsFirstUse()
{
    QCOMPARE(loadedBy("self", {player, identification}), QStringList());
    IAudioPlayer* const aPlayer = CreatePlayer();
    QVERIFY(aPlayer);
    QCOMPARE(loadedBy("self", {player, identification}), QStringList{player});
    IAudioIdentifier* const identifier = CreateIdentifier();
    QVERIFY(identifier);
    QCOMPARE(loadedBy("self", {player, identification}), QStringList({player, identification}));
    DestroyPlayer(aPlayer);
    DestroyIdentifier(identifier);
    QVERIFY(AudioFile::takeLog().isEmpty());
}

void TestEngines::theLastWayComesForWhatNobodyElseReads()
{
    // Before the others, which bring it with them.
    const QTemporaryDir folder;
    const auto made = [&folder](const char* name, const QByteArray& bytes) {
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write %s", name);
        return file.fileName();
    };
    for (const QString& kind : Fixtures::formats() + Fixtures::furtherKinds())
        QVERIFY(AudioFile::properties(Fixtures::tone(kind)).duration > 0);
    AudioFile::properties(made("rubbish.mp3", QByteArray(100000, 'r')));
    AudioFile::properties(made("rubbish.ogg", "OggS" + QByteArray(100000, 'r')));
    QCOMPARE(loadedBy("self", engines), QStringList());
    AudioFile::takeLog();
    QCOMPARE(AudioFile::properties(made("turned.wav", Foreign::rifx(500))).duration, 500);
    QCOMPARE(loadedBy("self", {player, identification, lastWay}), QStringList{lastWay});
    QVERIFY(AudioFile::takeLog().isEmpty());
}

/// This program once more, with libraries that have no modules beside them.
void TestEngines::withoutItsModuleAnEngineIsNone()
{
    ProgramRun run;
    const QDir here(QCoreApplication::applicationDirPath());
    for (const char* name : {"base", "audiocore"})
        QVERIFY(QFile::copy(here.filePath(libraryName(name)), run.path(libraryName(name))));
    run.set("LD_LIBRARY_PATH", run.path(QString()));
    QFile foreign(run.path("turned.wav"));
    QVERIFY(foreign.open(QIODevice::WriteOnly) && foreign.write(Foreign::rifx(500)) > 0);
    foreign.close();
    run.start(QCoreApplication::applicationFilePath(), {"--without-modules", foreign.fileName()});
    QVERIFY(run.process.waitForFinished(patience));
    const QByteArray log = run.process.readAllStandardError();
    QCOMPARE(run.process.exitCode(), 0);
    for (const char* work : {"playing a song", "identifying a song", "reading files of unusual kinds"})
        QCOMPARE(log.count(work + QByteArray(": is not possible, its module cannot be loaded: ")), 1);
}

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    if (application.arguments().contains("--without-modules")) {
        DestroyPlayer(nullptr);
        DestroyIdentifier(nullptr);
        const bool none = !CreatePlayer() && !CreateIdentifier() &&
                          AudioFile::properties(application.arguments().last()).format == -1;
        std::fputs(qUtf8Printable(AudioFile::takeLog().join('\n')), stderr);
        return none ? 0 : 1;
    }
    TestEngines test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_engines.moc"
