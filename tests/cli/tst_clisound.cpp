// Duplicates that are told by what is heard: one recording in whatever format, or one music with other tags.
#include "clirun.h"
#include "filebytes.h"

#include <csignal>

class TestCliSound : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init() { m_run = std::make_unique<CliRun>(); }

    void copiesOfAllFormatsMeet();
    void otherArrangementsDoNot();
    void theSecondRunReadsTheCache();
    void aDamagedCacheIsMadeAnew();
    void withoutACacheItGoesAsWell();
    void whatCannotBeDecodedIsNamed();
    void anInterruptionEndsIt();
    void contentIsMusicWithoutTags();
    void otherMusicIsOtherContent();
    void cleaningGoesByThemToo();

private:
    /// Of thirty seconds: a tune over a bass, each by its own time.
    void make(const QString& name, int tune, int bass, double tempo = 1);
    void encode(const QString& from, const QStringList& names) const;
    void link(const QStringList& names) const;
    static QStringList groupsIn(const CliRun::Answer& answer);
    QString cacheFile() const { return m_run->path("home/.cache/melodrift/fingerprints"); }

    QTemporaryDir m_sounds;
    std::unique_ptr<CliRun> m_run;
};

void TestCliSound::initTestCase()
{
    make("song.wav", 200, 7);
    make("remix.wav", 200, 5);
    make("faster.wav", 200, 7, 1.08);
    make("other.wav", 310, 9);
    encode("song.wav", {"song.mp3", "low.mp3", "song.m4a", "song.flac", "song.ogg", "song.wma", "song.aac"});
}

void TestCliSound::make(const QString& name, int tune, int bass, double tempo)
{
    const QString expression =
        QString("aevalsrc=0.3*sin(2*PI*t*(%1+100*floor(mod(t*%3*3\\,%2))))"
                "+0.2*sin(2*PI*t*(300+%1/%2*floor(mod(t*%3*1.7\\,%2-2)))):s=44100:d=30")
            .arg(tune)
            .arg(bass)
            .arg(tempo);
    QCOMPARE(QProcess::execute("ffmpeg",
                               {"-v", "error", "-f", "lavfi", "-i", expression, m_sounds.filePath(name)}),
             0);
}

void TestCliSound::encode(const QString& from, const QStringList& names) const
{
    for (const QString& name : names) {
        QStringList arguments = {"-v", "error", "-i", m_sounds.filePath(from)};
        if (name.startsWith("low"))
            arguments += {"-b:a", "64k"};
        QCOMPARE(QProcess::execute("ffmpeg", arguments + QStringList(m_sounds.filePath(name))), 0);
    }
}

/// Brings sounds into the folder of the run.
void TestCliSound::link(const QStringList& names) const
{
    for (const QString& name : names)
        QVERIFY(QFile::copy(m_sounds.filePath(name), m_run->path(name)));
}

QStringList TestCliSound::groupsIn(const CliRun::Answer& answer)
{
    QStringList groups;
    for (const QJsonValue& group : answer.document()["groups"].toArray()) {
        QStringList names;
        for (const QJsonValue& song : group.toObject()["songs"].toArray())
            names.append(QFileInfo(song.toObject()["path"].toString()).fileName());
        names.sort();
        groups.append(names.join(' '));
    }
    return groups;
}

void TestCliSound::copiesOfAllFormatsMeet()
{
    link({"song.wav", "song.mp3", "low.mp3", "song.m4a", "song.flac", "song.ogg", "song.wma", "song.aac",
          "other.wav"});
    const CliRun::Answer answer = m_run->ask({"duplicates", "--by", "sound", "--json", "."});
    QCOMPARE(answer.code, 0);
    QCOMPARE(groupsIn(answer),
             QStringList("low.mp3 song.aac song.flac song.m4a song.mp3 song.ogg song.wav song.wma"));
    const CliRun::Answer text = m_run->ask({"duplicates", "--by", "sound", "."});
    QVERIFY2(text.output.startsWith("low.mp3 (8)\n"), text.output); // its name, for want of a title
    QCOMPARE(text.errors, QByteArray("melodrift-cli: 1 group with 8 songs of 9\n"));
}

void TestCliSound::otherArrangementsDoNot()
{
    link({"song.mp3", "remix.wav", "faster.wav", "other.wav"});
    const CliRun::Answer answer =
        m_run->ask({"duplicates", "--by", "sound", "--json", "--fail-on", "any", "."});
    QCOMPARE(answer.code, 0);
    QCOMPARE(groupsIn(answer), QStringList());
}

void TestCliSound::theSecondRunReadsTheCache()
{
    link({"song.mp3", "song.ogg"});
    const QStringList call = {"duplicates", "--by", "sound", "--json", "."};
    QCOMPARE(groupsIn(m_run->ask(call)), QStringList("song.mp3 song.ogg"));
    const QByteArray kept = Fixtures::readBytes(cacheFile());
    QVERIFY(kept.size() > 1000);
    QCOMPARE(groupsIn(m_run->ask(call)), QStringList("song.mp3 song.ogg"));
    QCOMPARE(Fixtures::readBytes(cacheFile()), kept);
    // A file of another state has a fingerprint of its own.
    const QString path = m_run->path("song.ogg");
    QVERIFY(QFile::remove(path) && QFile::copy(m_sounds.filePath("other.wav"), path));
    QCOMPARE(groupsIn(m_run->ask(call)), QStringList());
    QVERIFY(Fixtures::readBytes(cacheFile()).size() > kept.size());
}

void TestCliSound::aDamagedCacheIsMadeAnew()
{
    link({"song.mp3", "song.ogg"});
    const QStringList call = {"duplicates", "--by", "sound", "--json", "."};
    QCOMPARE(groupsIn(m_run->ask(call)), QStringList("song.mp3 song.ogg"));
    const QByteArray kept = Fixtures::readBytes(cacheFile());
    for (const QByteArray& damaged : {QByteArray(kept).replace(200, 50, QByteArray(50, 'x')), kept.left(700),
                                      QByteArray(5000, 'x'), QByteArray()}) {
        Fixtures::saveBytes(damaged, cacheFile());
        QCOMPARE(groupsIn(m_run->ask(call)), QStringList("song.mp3 song.ogg"));
    }
}

void TestCliSound::withoutACacheItGoesAsWell()
{
    link({"song.mp3", "song.ogg"});
    Fixtures::saveBytes("in the way", m_run->path("home/.cache"));
    const CliRun::Answer answer = m_run->ask({"duplicates", "--by", "sound", "--json", "."});
    QCOMPARE(groupsIn(answer), QStringList("song.mp3 song.ogg"));
    QCOMPARE(answer.code, 0);
    QCOMPARE(answer.errors, QByteArray());
}

/// Its head says that it is a song of thirty seconds, and nothing behind that does.
void TestCliSound::whatCannotBeDecodedIsNamed()
{
    link({"song.mp3", "song.flac", "song.ogg"});
    QByteArray bytes = Fixtures::readBytes(m_run->path("song.flac"));
    const int head = 4 + 4 + 34;
    bytes.replace(head, bytes.size() - head, QByteArray(bytes.size() - head, '\0'));
    bytes[4] = char(bytes[4] | 0x80); // no further block follows
    m_run->addFile("bad.flac", bytes);
    const CliRun::Answer answer = m_run->ask({"duplicates", "--by", "sound", "--json", "."});
    QCOMPARE(answer.code, 3);
    QCOMPARE(groupsIn(answer), QStringList("song.flac song.mp3 song.ogg"));
    const QJsonArray failed = answer.document()["failed"].toArray();
    QCOMPARE(failed.size(), 1);
    QCOMPARE(failed[0].toObject()["path"].toString(), QString("./bad.flac"));
    QCOMPARE(answer.document()["counts"].toObject()["failed"].toInt(), 1);
    QCOMPARE(answer.errors, QByteArray("melodrift-cli: ./bad.flac: its sound cannot be decoded\n"));
}

void TestCliSound::anInterruptionEndsIt()
{
#ifdef Q_OS_UNIX
    for (int i = 0; i < 200; ++i)
        QVERIFY(QFile::copy(m_sounds.filePath("song.wma"), m_run->path(QString("%1.wma").arg(i))));
    ProgramRun run;
    m_run->prepare(run);
    run.start(CliRun::program(), {"duplicates", "--by", "sound", "--json", "."});
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(cacheFile()).size() > 0, patience);
    ::kill(pid_t(run.process.processId()), SIGINT);
    QVERIFY(run.process.waitForFinished(patience));
    QCOMPARE(run.process.exitCode(), 130);
    const QJsonObject document = QJsonDocument::fromJson(run.process.readAllStandardOutput()).object();
    QVERIFY(document["interrupted"].toBool());
    QVERIFY(document["groups"].toArray().isEmpty());
#endif
}

void TestCliSound::contentIsMusicWithoutTags()
{
    for (const QString& kind : Fixtures::formats()) {
        m_run->addSong(kind + "-a." + kind, CliRun::texts("Halo"), kind);
        m_run->addSong(kind + "-b." + kind, CliRun::texts("Kites", "Somebody"), kind,
                       Fixtures::jpeg(300, 300, 3));
    }
    const CliRun::Answer answer = m_run->ask({"duplicates", "--by", "content", "--json", "."});
    QCOMPARE(answer.code, 0);
    QStringList expected;
    for (const QString& kind : Fixtures::formats())
        expected.append(QString("%1-a.%1 %1-b.%1").arg(kind));
    expected.sort();
    QCOMPARE(groupsIn(answer), expected);
    const CliRun::Answer text = m_run->ask({"duplicates", "--by", "content", "mp3-a.mp3", "mp3-b.mp3"});
    QVERIFY2(text.output.startsWith("Zo\xC3\xA9 - Halo (2)\n"), text.output);
}

/// One byte of the music makes another one.
void TestCliSound::otherMusicIsOtherContent()
{
    link({"song.mp3", "song.wav"});
    QByteArray bytes = Fixtures::readBytes(m_run->path("song.wav"));
    bytes[bytes.size() - 5] = char(~bytes[bytes.size() - 5]);
    m_run->addFile("changed.wav", bytes);
    QVERIFY(QFile::copy(m_run->path("song.mp3"), m_run->path("copy.mp3")));
    const CliRun::Answer answer = m_run->ask({"duplicates", "--by", "content", "--json", "."});
    QCOMPARE(groupsIn(answer), QStringList("copy.mp3 song.mp3"));
}

void TestCliSound::cleaningGoesByThemToo()
{
    link({"song.mp3", "song.flac", "remix.wav"});
    const CliRun::Answer plan = m_run->ask({"clean", "--by", "sound", "--keep", "best", "--json", "."});
    QCOMPARE(plan.document()["counts"].toObject()["going"].toInt(), 1);
    QCOMPARE(m_run->ask({"clean", "--by", "sound", "--keep", "best", "--yes", "."}).code, 0);
    QVERIFY(!QFile::exists(m_run->path("song.mp3")));
    QVERIFY(QFile::exists(m_run->path("song.flac")) && QFile::exists(m_run->path("remix.wav")));
    QVERIFY(QFile::copy(m_run->path("song.flac"), m_run->path("copy.flac")));
    QCOMPARE(m_run->ask({"clean", "--by", "content", "--keep", "first", "--yes", "."}).code, 0);
    QVERIFY(QFile::exists(m_run->path("copy.flac")) && !QFile::exists(m_run->path("song.flac")));
    QCOMPARE(m_run->ask({"undo"}).code, 0);
    QVERIFY(QFile::exists(m_run->path("song.flac")));
}

QTEST_GUILESS_MAIN(TestCliSound)
#include "tst_clisound.moc"
