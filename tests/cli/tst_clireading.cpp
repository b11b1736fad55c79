// What scan, undefined and show say of a collection.
#include "clirun.h"

#include <csignal>
#include <sys/stat.h>

class TestCliReading : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void undefinedSongsStandInAlignedText();
    void aDocumentSaysWhatIsMissing();
    void aLineIsASongOrAFailureOrTheCounts();
    void scanCountsByFormatAndProblem();
    void scanWritesTheSameAsText();
    void showTellsAllOfASong();
    void whatIsFoundMayEndWithOne();
    void whatCannotBeReadIsNamedAndTheRestIsRead();
    void namesThatAreNoTextAreKept();
    void namesCannotControlATerminal();
    void hiddenAndExcludedSongsAreLeftOut();
    void pathsComeFromAListToo();
    void namedFilesThatAreNoMusicAreLeftOut();
    void linksAreFollowedOnce();
    void quietSaysWhatFailedAlone();
    void twoRunsSayTheSame();
    void anInterruptedRunEndsWithWhatItHas();
    void outputThatFindsNoRoomFails();

private:
    std::unique_ptr<CliRun> m_run;
};

void TestCliReading::init()
{
    m_run = std::make_unique<CliRun>();
    m_run->addSong("m/a.mp3", CliRun::texts("Halo"), "mp3", Fixtures::jpeg(40, 40, 1));
    m_run->addSong("m/b.flac", {{TAG_TITLE, "Bare"}, {TAG_GENRE, "Pop"}}, "flac");
    m_run->addSong("m/c.wma", CliRun::texts(""), "wma");
}

void TestCliReading::undefinedSongsStandInAlignedText()
{
    const CliRun::Answer answer = m_run->ask({"undefined", "m"});
    QCOMPARE(answer.code, 0);
    QCOMPARE(answer.output, QByteArray("missing                     song\n"
                                       "artist, album               m/b.flac\n"
                                       "title                       m/c.wma\n"));
    QCOMPARE(answer.errors, QByteArray("melodrift-cli: 2 of 3 songs are undefined\n"));
}

void TestCliReading::aDocumentSaysWhatIsMissing()
{
    const QJsonObject document = m_run->ask({"undefined", "--json", "m"}).document();
    QCOMPARE(document["command"].toString(), QString("undefined"));
    const QJsonArray songs = document["songs"].toArray();
    QCOMPARE(songs.size(), 2);
    QCOMPARE(songs[0].toObject()["path"].toString(), QString("m/b.flac"));
    QCOMPARE(songs[0].toObject()["missing"].toArray(), QJsonArray({"artist", "album"}));
    QCOMPARE(songs[1].toObject()["format"].toString(), QString("WMA"));
    QCOMPARE(document["failed"].toArray().size(), 0);
    QCOMPARE(document["counts"].toObject()["songs"].toInt(), 3);
    QCOMPARE(document["counts"].toObject()["undefined"].toInt(), 2);
    QCOMPARE(document["interrupted"].toBool(true), false);
}

void TestCliReading::aLineIsASongOrAFailureOrTheCounts()
{
    const CliRun::Answer answer = m_run->ask({"undefined", "--ndjson", "nowhere.mp3", "m"});
    QCOMPARE(answer.code, 3);
    const QList<QJsonObject> lines = answer.lines();
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines[0]["type"].toString(), QString("failed"));
    QCOMPARE(lines[0]["path"].toString(), QString("nowhere.mp3"));
    QCOMPARE(lines[0]["reason"].toString(), QString("No such file or directory"));
    QCOMPARE(lines[1]["type"].toString(), QString("song"));
    QCOMPARE(lines[3]["type"].toString(), QString("counts"));
    QCOMPARE(lines[3]["counts"].toObject()["failed"].toInt(), 1);
}

void TestCliReading::scanCountsByFormatAndProblem()
{
    m_run->addFile("m/rubbish.mp3", "no music");
    const CliRun::Answer answer = m_run->ask({"scan", "--json", "m"});
    QCOMPARE(answer.code, 3);
    const QJsonObject document = answer.document();
    const QJsonObject counts = document["counts"].toObject();
    QCOMPARE(counts["songs"].toInt(), 3);
    QCOMPARE(counts["failed"].toInt(), 1);
    QCOMPARE(counts["undefined"].toInt(), 2);
    QCOMPARE(counts["formats"].toObject().keys(), QStringList({"FLAC", "MP3", "WMA"}));
    QCOMPARE(counts["formats"].toObject()["MP3"].toObject()["songs"].toInt(), 1);
    const QJsonObject missing = counts["missing"].toObject();
    for (const char* field : {"title", "artist", "album"})
        QCOMPARE(missing[field].toInt(), 1);
    QCOMPARE(missing["genre"].toInt(), 0);
    QCOMPARE(missing["cover"].toInt(), 2);
    const QJsonObject failed = document["failed"].toArray().at(0).toObject();
    QCOMPARE(failed["path"].toString(), QString("m/rubbish.mp3"));
    QCOMPARE(failed["reason"].toString(), QString("it holds no music that can be read"));
}

void TestCliReading::scanWritesTheSameAsText()
{
    const QByteArray text = m_run->ask({"scan", "m"}).output.simplified();
    for (const char* part : {"songs 3 0:09 ", " FLAC 1 0:03 ",
                             " undefined 2 no title 1 no artist 1 no album 1 no genre 0 "
                             "no cover 2 failed 0"})
        QVERIFY2(text.contains(part), text);
    const QList<QJsonObject> lines = m_run->ask({"scan", "--ndjson", "m"}).lines();
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines.first()["type"].toString(), QString("song"));
}

void TestCliReading::showTellsAllOfASong()
{
    const QByteArray text = m_run->ask({"show", "m/a.mp3"}).output;
    for (const char* row :
         {"m/a.mp3\n", "  title     Halo\n", "  artist    Zo\xC3\xA9\n", "  album     First\n",
          "  genre     Pop\n", "  year      2004\n", "  track     3\n", "  format    MP3\n",
          "  length    0:03\n", "  samples   44.1 kHz\n"})
        QVERIFY2(text.contains(row), text);
    QVERIFY(m_run->ask({"show", "m/b.flac"}).output.contains("  cover     -\n"));
    const QJsonObject song =
        m_run->ask({"show", "--json", "m/a.mp3"}).document()["songs"].toArray().at(0).toObject();
    const AudioFile::Properties properties = AudioFile::properties(m_run->path("m/a.mp3"));
    QCOMPARE(song["milliseconds"].toInt(), properties.duration);
    QCOMPARE(song["bit_rate"].toInt(), properties.bitRate);
    QCOMPARE(song["sample_rate"].toInt(), properties.sampleRate);
    QCOMPARE(song["year"].toInt(), 2004);
    QCOMPARE(song["track"].toInt(), 3);
    QCOMPARE(song["cover_bytes"].toInt(), Fixtures::jpeg(40, 40, 1).size());
    QCOMPARE(song["bytes"].toInt(), int(QFileInfo(m_run->path("m/a.mp3")).size()));
}

void TestCliReading::whatIsFoundMayEndWithOne()
{
    QCOMPARE(m_run->ask({"scan", "--fail-on", "undefined", "m"}).code, 1);
    QCOMPARE(m_run->ask({"scan", "--fail-on", "genre", "m"}).code, 0);
    QCOMPARE(m_run->ask({"scan", "--fail-on", "genre,cover", "m"}).code, 1);
    QCOMPARE(m_run->ask({"undefined", "--fail-on", "any", "m"}).code, 1);
    QCOMPARE(m_run->ask({"undefined", "--fail-on", "any", "m/a.mp3"}).code, 0);
    QCOMPARE(m_run->ask({"duplicates", "--fail-on", "any", "m"}).code, 0);
    QCOMPARE(m_run->ask({"scan", "--fail-on", "undefined", "m", "nowhere"}).code, 3);
}

void TestCliReading::whatCannotBeReadIsNamedAndTheRestIsRead()
{
    m_run->addFile("m/empty.mp3", QByteArray());
    m_run->addFile("m/half.flac", "fLaC\x7F\xFF\xFF\xFF");
    QCOMPARE(::mkfifo(QFile::encodeName(m_run->path("pipe.mp3")).constData(), 0600), 0);
    QVERIFY(QFile::link(m_run->path("gone.mp3"), m_run->path("m/dangling.mp3")));
    const CliRun::Answer answer = m_run->ask({"undefined", "gone", "m", "pipe.mp3"});
    QCOMPARE(answer.code, 3);
    QCOMPARE(answer.output.count('\n'), 3);
    QVERIFY2(answer.errors.contains("melodrift-cli: gone: No such file or directory\n"), answer.errors);
    for (const char* name : {"m/empty.mp3", "m/half.flac", "pipe.mp3"})
        QVERIFY2(answer.errors.contains("melodrift-cli: " + QByteArray(name) + ": it "), answer.errors);
}

void TestCliReading::namesThatAreNoTextAreKept()
{
    const QByteArray name = m_run->path().toUtf8() + "/m/odd\xFF.mp3";
    m_run->addSong("m/odd.mp3", CliRun::texts(""));
    QCOMPARE(std::rename(QFile::encodeName(m_run->path("m/odd.mp3")).constData(), name.constData()), 0);
    const CliRun::Answer text = m_run->ask({"undefined", "m"});
    const CliRun::Answer json = m_run->ask({"undefined", "--ndjson", "m"});
    const CliRun::Answer listed =
        m_run->ask({"undefined", "--ndjson", "-0"}, QByteArray("m/odd\xFF.mp3\0", 11));
    QCOMPARE(std::remove(name.constData()), 0);
    QCOMPARE(text.code, 0);
    QVERIFY2(text.output.contains("m/odd\xFF.mp3\n"), text.output);
    const QJsonObject song = json.lines().at(2);
    QCOMPARE(song["path"].toString(), QString("m/odd\uFFFD.mp3"));
    QCOMPARE(QByteArray::fromBase64(song["path_base64"].toString().toLatin1()), QByteArray("m/odd\xFF.mp3"));
    QVERIFY(!json.lines().at(0).contains("path_base64"));
    QCOMPARE(listed.lines().at(0), song);
}

void TestCliReading::namesCannotControlATerminal()
{
    m_run->addSong("m/odd.mp3", CliRun::texts("", "Zo\x1b[2J\nx"));
    const QString odd = m_run->path("m/new\nline\x1b[31m.mp3");
    QVERIFY(QFile::rename(m_run->path("m/odd.mp3"), odd));
    const CliRun::Answer answer = m_run->ask({"undefined", "m"});
    QVERIFY2(answer.output.contains("m/new?line?[31m.mp3\n"), answer.output);
    QVERIFY(!m_run->ask({"show", odd}).output.contains('\x1b'));
    QCOMPARE(m_run->ask({"undefined", "--ndjson", "m"}).lines().at(2)["path"].toString(),
             QString("m/new\nline\x1b[31m.mp3"));
}

void TestCliReading::hiddenAndExcludedSongsAreLeftOut()
{
    m_run->addSong("m/.hidden.mp3", {});
    m_run->addSong("m/.folder/x.mp3", {});
    m_run->addSong("m/old/y.mp3", {});
    const auto songs = [this](const QStringList& options) {
        return m_run->ask(QStringList{"scan", "--json", "m"} + options)
            .document()["counts"]
            .toObject()["songs"]
            .toInt();
    };
    QCOMPARE(songs({}), 4);
    QCOMPARE(songs({"--hidden"}), 6);
    QCOMPARE(songs({"--exclude", "old"}), 3);
    QCOMPARE(songs({"--exclude", "old/*", "--exclude", "*.flac"}), 2);
}

void TestCliReading::pathsComeFromAListToo()
{
    const QByteArray list = "m/a.mp3\n\nm/b.flac\nm/c.wma";
    m_run->addFile("list", list);
    const QByteArray all = m_run->ask({"undefined", "m"}).output;
    QCOMPARE(m_run->ask({"undefined", "--files-from", "list"}).output, all);
    QCOMPARE(m_run->ask({"undefined", "--files-from", "-"}, list).output, all);
    QByteArray zeros = list;
    QCOMPARE(m_run->ask({"undefined", "-0"}, zeros.replace('\n', '\0')).output, all);
    QCOMPARE(m_run->ask({"undefined", "m/a.mp3", "--files-from", "-"}, "m/b.flac\nm/c.wma\n").output, all);
    const CliRun::Answer none = m_run->ask({"undefined", "--files-from", "nowhere"});
    QCOMPARE(none.code, 3);
    QVERIFY2(none.errors.contains("--files-from: nowhere: No such file"), none.errors);
}

void TestCliReading::namedFilesThatAreNoMusicAreLeftOut()
{
    m_run->addFile("m/notes.txt", "text");
    const CliRun::Answer answer = m_run->ask({"scan", "--json", "m/notes.txt", "m/a.mp3"});
    QCOMPARE(answer.code, 0);
    QCOMPARE(answer.document()["counts"].toObject()["not_music"].toInt(), 1);
    QVERIFY2(answer.errors.contains("1 left out that are no music"), answer.errors);
    QVERIFY(m_run->ask({"scan", "-v", "m/notes.txt"}).errors.contains("m/notes.txt: left out"));
}

void TestCliReading::linksAreFollowedOnce()
{
    QVERIFY(QFile::link(m_run->path("m"), m_run->path("m/back")));
    QVERIFY(QFile::link(m_run->path("m"), m_run->path("other")));
    const CliRun::Answer answer = m_run->ask({"scan", "--json", "m", "other"});
    QCOMPARE(answer.document()["counts"].toObject()["songs"].toInt(), 3);
}

void TestCliReading::quietSaysWhatFailedAlone()
{
    QCOMPARE(m_run->ask({"undefined", "-q", "m"}).errors, QByteArray());
    QCOMPARE(m_run->ask({"undefined", "-q", "m", "gone.mp3"}).errors,
             QByteArray("melodrift-cli: gone.mp3: No such file or directory\n"));
}

void TestCliReading::twoRunsSayTheSame()
{
    for (int i = 0; i < 40; ++i) {
        const QString name = m_run->path(QString("m/%1.mp3").arg(i));
        QVERIFY(QFile::copy(m_run->path(i % 3 == 0 ? "m/c.wma" : "m/b.flac"), name));
        if (i % 5 == 0)
            m_run->addFile(QFile::encodeName(name).replace(m_run->path().toUtf8() + '/', ""), "rubbish");
    }
    const CliRun::Answer first = m_run->ask({"undefined", "--ndjson", "m"});
    QCOMPARE(first.code, 3);
    for (int i = 0; i < 5; ++i)
        QCOMPARE(m_run->ask({"undefined", "--ndjson", "m"}).output, first.output);
}

void TestCliReading::anInterruptedRunEndsWithWhatItHas()
{
    ProgramRun run;
    run.process.setWorkingDirectory(m_run->path());
    run.start(CliRun::program(), {"undefined", "--json", "--files-from", "-"});
    run.process.write("m/b.flac\n"); // and no end of it
    QVERIFY(run.process.waitForStarted(patience));
    QVERIFY(run.process.waitForBytesWritten(patience));
    QTRY_VERIFY(QFile(QString("/proc/%1/task").arg(run.process.processId())).exists());
    QTest::qWait(0);
    // It holds the signal once it waits for the list.
    const QString wait = QString("/proc/%1/syscall").arg(run.process.processId());
    QTRY_VERIFY([&wait] {
        QFile file(wait);
        return file.open(QIODevice::ReadOnly) && file.readAll().startsWith("0 0x0 ");
    }());
    ::kill(pid_t(run.process.processId()), SIGINT);
    QVERIFY(run.process.waitForFinished(patience));
    QCOMPARE(run.process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(run.process.exitCode(), 130);
    const QJsonObject document = QJsonDocument::fromJson(run.process.readAllStandardOutput()).object();
    QCOMPARE(document["interrupted"].toBool(), true);
}

void TestCliReading::outputThatFindsNoRoomFails()
{
    if (!QFile::exists("/dev/full"))
        QSKIP("the system has no full device");
    ProgramRun run;
    run.process.setWorkingDirectory(m_run->path());
    run.process.setStandardOutputFile("/dev/full");
    run.start(CliRun::program(), {"undefined", "m"});
    QVERIFY(run.process.waitForFinished(patience));
    QCOMPARE(run.process.exitCode(), 3);
    QVERIFY(run.process.readAllStandardError().contains("output could not be written"));
}

QTEST_GUILESS_MAIN(TestCliReading)
#include "tst_clireading.moc"
