#include "audiofile.h"
#include "fixtures.h"
#include "latency.h"
#include "playing.h"
#include "sanitized.h"

#include <QDir>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <clocale>
#include <functional>
#include <locale.h>
#include <sys/stat.h>
#include <vector>

using namespace Playing;

namespace {
int entriesOf(const char* folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

/// No machine is so busy that an end takes so long, and what is gone through to the end takes longer.
constexpr qint64 stuckMilliseconds = 5000;
} // namespace

/// What a player is given need not be a song.
class TestPlayerLimits : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void whatIsNoSongPlaysNothing_data();
    void whatIsNoSongPlaysNothing();
    void noPathIsLoggedAsNone();
    void cutOffSongsEnd();
    void damagedSongsEnd();
    void aVastHoleBehindTheSongEnds_data();
    void aVastHoleBehindTheSongEnds();
    void hugeCoversDoNotHinder_data();
    void hugeCoversDoNotHinder();
    void withoutASoundDeviceTheSongRunsOn();
    void aPlayingPlayerIsDestroyedAtOnceAndWhole();
    void aFreshPlayerIsDestroyedAtOnce();
    void numbersNeedNoCertainLocale();

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }
    /// Another file for each of what `change` makes of the kinds.
    QStringList changed(const std::function<QList<QByteArray>(const QByteArray&)>& change) const;

    QTemporaryDir m_folder;
};

void TestPlayerLimits::init()
{
    chooseOutput("null");
    AudioFile::takeLog();
}

QStringList TestPlayerLimits::changed(const std::function<QList<QByteArray>(const QByteArray&)>& change) const
{
    QStringList files;
    for (const QString& kind : Fixtures::formats() + Fixtures::furtherKinds())
        for (const QByteArray& bytes : change(contentOf(Fixtures::tone(kind, 1000)))) {
            files.append(path(QString("%1-%2.%3").arg(kind).arg(files.size()).arg(Fixtures::suffixOf(kind))));
            setContent(files.last(), bytes);
        }
    return files;
}

void TestPlayerLimits::whatIsNoSongPlaysNothing_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("no name") << QString();
    QTest::newRow("missing") << path("missing.mp3");
    QTest::newRow("folder") << m_folder.path();
    QTest::newRow("device") << "/dev/zero";
    setContent(path("empty.mp3"), QByteArray());
    QTest::newRow("empty") << path("empty.mp3");
    setContent(path("text.mp3"), QByteArray("All work and no play.\n").repeated(2000));
    QTest::newRow("text") << path("text.mp3");
    QByteArray noise(200000, '\0');
    QRandomGenerator(1).generate(reinterpret_cast<quint32*>(noise.data()),
                                 reinterpret_cast<quint32*>(noise.data()) + noise.size() / 4);
    setContent(path("noise.mp3"), noise);
    QTest::newRow("noise") << path("noise.mp3");
    QVERIFY(::mkfifo(path("fifo.mp3").toLocal8Bit().constData(), 0600) == 0);
    QTest::newRow("fifo") << path("fifo.mp3");
    QVERIFY(QFile::link(path("missing.mp3"), path("dangling.mp3")));
    QTest::newRow("dangling link") << path("dangling.mp3");
    QTest::newRow("address") << "http://127.0.0.1/song.mp3";
    QTest::newRow("engine's own addresses") << "edl://" + Fixtures::tone("wav");
}

void TestPlayerLimits::whatIsNoSongPlaysNothing()
{
    QFETCH(QString, file);
    verifyNothing(file);
}

void TestPlayerLimits::noPathIsLoggedAsNone()
{
    const Player player(CreatePlayer());
    QVERIFY(player->Open(U"") != 0);
    QCOMPARE(AudioFile::takeLog(), QStringList({"a file: no path was given"}));
}

void TestPlayerLimits::cutOffSongsEnd()
{
    verifyEnds(changed([](const QByteArray& whole) {
        return QList<QByteArray>{whole.left(whole.size() / 100), whole.left(whole.size() / 2),
                                 whole.chopped(7)};
    }));
}

void TestPlayerLimits::damagedSongsEnd()
{
    QRandomGenerator random(1);
    verifyEnds(changed([&random](const QByteArray& whole) {
        QList<QByteArray> damaged{whole, whole, whole};
        for (QByteArray& bytes : damaged)
            for (int i = 0; i < bytes.size() / 200;
                 ++i) // the beginning stays, so that there is something to play
                bytes[200 + random.bounded(bytes.size() - 200)] = char(random.bounded(256));
        return damaged;
    }));
}

void TestPlayerLimits::aVastHoleBehindTheSongEnds_data()
{
    QTest::addColumn<QString>("kind");
    for (const QString& kind : Fixtures::formats() + Fixtures::furtherKinds())
        QTest::newRow(qPrintable(kind)) << kind;
}

void TestPlayerLimits::aVastHoleBehindTheSongEnds()
{
    QFETCH(QString, kind);
    const QString song = Fixtures::copyTone(kind, m_folder.path(), "vast");
    QVERIFY(QFile::resize(song, qint64(50) << 30));
    Player player = opened(song);
    for (const std::uint64_t from : {2500, 1000}) {
        player->Seek(from);
        player->Play();
        const auto over = [&player] {
            return player->GetState() == PLAYER_STATE_FINISHED || player->GetState() == PLAYER_STATE_EMPTY;
        };
        QVERIFY(QTest::qWaitFor(over, patience));
    }
    const qint64 end = shortestOfThree([&player, &song] {
        if (!player)
            player = opened(song);
        player->Seek(2900);
        player->Play();
        QTest::qWait(150); // well into the hole
        return millisecondsOf([&player] { player.reset(); });
    });
    QVERIFY2(end <= stuckMilliseconds, qPrintable(QString::number(end)));
    QVERIFY(QFile::remove(song));
}

void TestPlayerLimits::hugeCoversDoNotHinder_data()
{
    QTest::addColumn<QString>("kind");
    for (const QString& kind : Fixtures::formats())
        QTest::newRow(qPrintable(kind)) << kind;
}

void TestPlayerLimits::hugeCoversDoNotHinder()
{
    QFETCH(QString, kind);
    const QString song = Fixtures::copyTone(kind, m_folder.path(), "covered");
    const QByteArray cover = Fixtures::jpeg(400, 400, 7) + QByteArray(5000000, 'x');
    QCOMPARE(AudioFile::write(song, {{0, QStringLiteral("Title")}}, &cover), 0);
    const Player player(CreatePlayer());
    const qint64 used = processorMillisecondsOf([&player, &song] { QCOMPARE(open(*player, song), 0); });
    QVERIFY2(used <= 500, qPrintable(QString::number(used)));
    QVERIFY(qAbs(player->GetDuration() - 3000) <= 50);
    player->Seek(2500);
    player->Play();
    QVERIFY(passes(*player, 2600));
    QVERIFY(reaches(*player, PLAYER_STATE_FINISHED));
}

void TestPlayerLimits::withoutASoundDeviceTheSongRunsOn()
{
    // An output that cannot be opened, and the system's own, which may be none.
    for (const QString& output : {"pcm:" + path("no/such/folder/heard.wav"), QString()}) {
        if (output.isEmpty())
            qunsetenv("MELODRIFT_AUDIO_OUTPUT");
        else
            chooseOutput(output);
        const Player player = opened(Fixtures::tone("wav"));
        const Run run(0);
        player->Play();
        for (const int position : {200, 1200}) {
            QVERIFY(passes(*player, position));
            QVERIFY(player->GetPosition() <= run.latest()); // not all at once
        }
        player->Seek(2500);
        QVERIFY(reaches(*player, PLAYER_STATE_FINISHED));
    }
}

void TestPlayerLimits::aPlayingPlayerIsDestroyedAtOnceAndWhole()
{
    const QStringList formats = Fixtures::formats();
    Latencies ends;
    int threads = 0;
    int files = 0;
    const int times = sanitized ? 40 : 100;
    for (int i = 0; i < times; ++i) {
        Player player = opened(Fixtures::tone(formats.at(i % formats.size())));
        player->Play();
        QVERIFY(passes(*player, 0));
        ends.add(millisecondsOf([&player] { player.reset(); }));
        if (i == formats.size()) { // what the libraries keep for themselves is there by now
            threads = entriesOf("/proc/self/task");
            files = entriesOf("/proc/self/fd");
        }
    }
    QVERIFY2(ends.usual() <= 1000, qPrintable(QString::number(ends.usual())));
    // A thread that has ended may be listed for another moment, also when they were counted first.
    QTRY_VERIFY(entriesOf("/proc/self/task") <= threads);
    QTRY_VERIFY(entriesOf("/proc/self/fd") <= files);
    qInfo("the longest of %d ends took %lld ms", times, ends.longest());
}

void TestPlayerLimits::aFreshPlayerIsDestroyedAtOnce()
{
    // Made before the clock runs: encoding the long one takes seconds.
    const QString brief = Fixtures::tone("wav", 60000);
    const QString lengthy = Fixtures::tone("mp3novbr", Fixtures::longSong);
    for (int i = 0; i < (sanitized ? 5 : 20); ++i) {
        opening(brief);
        Player seeking = opening(lengthy);
        seeking->Seek(Fixtures::longSong - 10000);
        seeking->Play();
        const qint64 end = millisecondsOf([&seeking] { seeking.reset(); });
        QVERIFY2(end <= stuckMilliseconds, qPrintable(QString::number(end)));
    }
}

void TestPlayerLimits::numbersNeedNoCertainLocale()
{
    QProcess compiler;
    compiler.start("localedef", {"-i", "de_DE", "-f", "UTF-8", path("de_DE.UTF-8")});
    QVERIFY(compiler.waitForFinished(patience));
    QCOMPARE(compiler.exitCode(), 0);
    qputenv("LOCPATH", m_folder.path().toLocal8Bit());
    QVERIFY(std::setlocale(LC_NUMERIC, "de_DE.UTF-8"));
    QCOMPARE(QByteArray::number(std::strtod("1.5", nullptr)), QByteArray("1")); // the comma is in force
    // Also where a thread has a locale of its own. Copied: made anew, it would lose what LOCPATH names.
    const locale_t own = ::duplocale(LC_GLOBAL_LOCALE);
    const locale_t before = ::uselocale(own);
    {
        const Player player = opened(Fixtures::tone("flac"));
        const Run run(1500);
        player->Seek(1500);
        player->Play();
        QVERIFY(passes(*player, 1600));
        QVERIFY(player->GetPosition() <= run.latest());
        QCOMPARE(std::setlocale(LC_NUMERIC, nullptr), "C");
    }
    ::uselocale(before);
    ::freelocale(own);
    qunsetenv("LOCPATH");
}

QTEST_GUILESS_MAIN(TestPlayerLimits)
#include "tst_playerlimits.moc"
