// What identify shows and writes, by services that the test plays.
#include "clirun.h"
#include "filebytes.h"
#include "identifyserver.h"

#ifdef Q_OS_UNIX
#include <csignal>
#include <unistd.h>
#endif

using Manner = IdentifyServer::Manner;
using Service = IdentifyServer::Service;

class TestCliIdentify : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void theMatchIsShownAndNothingIsWritten();
    void whatIsAgreedToIsWrittenAndComesBack();
    void onlyWhatIsMissingIsFilled();
    void whatMissesNothingIsNotAskedFor();
    void whatTheTagsSayIsFoundToo();
    void thePlaceOfASongNamesIt();
    void noMatchIsNoFailure();
    void aLineIsWrittenForEachSong();
    void foldersAreWalked();
    void whatFailsIsNamedAndTheRestIsDone();
    void aNameThatIsNoTextIsIdentified();
    void whatTheServicesDoWrongIsTold_data();
    void whatTheServicesDoWrongIsTold();
    void withoutAConnectionTheRestIsNotAskedFor();
    void aCoverThatCannotBeHadLeavesTheTexts();
    void aSongThatTwoPathsNameIsSavedOnce();
    void withoutAHistoryNothingIsWritten();
    void whatAKeyWouldAddIsSaidOnce();
    void anEndBetweenSongsLeavesWholeOnes_data();
    void anEndBetweenSongsLeavesWholeOnes();

private:
    /// A song that lasts longer than the others, so that services can tell it from them.
    QString addLongSong(const QString& name) const
    {
        const QString file = m_run->path(name);
        if (!QFile::copy(Fixtures::tone("flac", 20000), file) ||
            AudioFile::write(file, {{TAG_TITLE, "Long"}}) != 0)
            qFatal("cannot make %s", qPrintable(file));
        return file;
    }
    QByteArray bytesOf(const QString& name) const { return Fixtures::readBytes(m_run->path(name)); }
    static QString textOf(const QString& file, TagItemType type) { return AudioFile::read(file).texts[type]; }
    static void isFound(const QString& file)
    {
        const AudioFile::Content content = AudioFile::read(file);
        QCOMPARE(content.texts, (QHash<int, QString>{{TAG_TITLE, "Midnight Ferry"},
                                                     {TAG_ARTIST, "Ida Marlowe feat. The Salt Choir"},
                                                     {TAG_ALBUM, "Paper Lanterns"},
                                                     {TAG_GENRE, "Pop"},
                                                     {TAG_YEAR, "2012"},
                                                     {TAG_TRACK, "4"}}));
        QCOMPARE(content.picture, IdentifyServer::picture());
    }

    std::unique_ptr<IdentifyServer> m_server;
    std::unique_ptr<CliRun> m_run;
    QByteArray m_cover;
    QString m_song;
};

void TestCliIdentify::init()
{
    m_server = std::make_unique<IdentifyServer>();
    m_server->putIntoEnvironment();
    qputenv("XDG_CONFIG_HOME", "/nowhere"); // with a key of the user's
    m_run = std::make_unique<CliRun>();
    m_cover = Fixtures::jpeg(40, 40, 1);
    m_song = m_run->addSong("a.mp3", {{TAG_TITLE, "Halo"}, {TAG_ALBUM, "Paper Lanterns"}}, "mp3", m_cover);
}

void TestCliIdentify::theMatchIsShownAndNothingIsWritten()
{
    const QByteArray before = bytesOf("a.mp3");
    const CliRun::Answer answer = m_run->ask({"identify", "a.mp3"});
    QVERIFY2(answer.code == 0, answer.errors);
    QCOMPARE(answer.output.left(answer.output.indexOf("  cover")),
             QByteArray("a.mp3 (by its sound, 98 %)\n"
                        "  title     Halo \u2192 Midnight Ferry\n"
                        "  artist    - \u2192 Ida Marlowe feat. The Salt Choir\n"
                        "  album     Paper Lanterns\n"
                        "  genre     - \u2192 Pop\n"
                        "  year      - \u2192 2012\n"
                        "  track     - \u2192 4\n"));
    QVERIFY2(answer.output.contains("  cover     ") && answer.output.contains(" kB\n"), answer.output);
    QCOMPARE(answer.errors,
             QByteArray("melodrift-cli: 1 song identified, 1 by sound and 0 by tags; 0 without a match\n"
                        "melodrift-cli: 1 to change, and nothing was done; --write does it\n"));
    const CliRun::Answer asked = m_run->ask({"identify", "--write", "a.mp3"});
    QCOMPARE(asked.output, answer.output);
    QVERIFY2(asked.errors.endsWith("--yes does it\n"), asked.errors);
    QCOMPARE(bytesOf("a.mp3"), before);
    QCOMPARE(m_run->ask({"history"}).errors, QByteArray("melodrift-cli: nothing was changed\n"));
}

void TestCliIdentify::whatIsAgreedToIsWrittenAndComesBack()
{
    const AudioFile::Content before = AudioFile::read(m_song);
    const CliRun::Answer answer = m_run->ask({"identify", "--write", "--yes", "a.mp3"});
    QVERIFY2(answer.code == 0, answer.errors);
    QVERIFY2(answer.errors.endsWith("melodrift-cli: 1 song saved; melodrift-cli undo 1 takes it back\n"),
             answer.errors);
    isFound(m_song);
    const CliRun::Answer again = m_run->ask({"identify", "--write", "--yes", "--json", "a.mp3"});
    QCOMPARE(again.document()["counts"].toObject()["to_change"].toInt(-1), 0);
    QCOMPARE(again.document()["counts"].toObject()["step"].toInt(-1), 0);
    QCOMPARE(m_run->ask({"undo"}).code, 0);
    QCOMPARE(AudioFile::read(m_song).texts, before.texts);
    QCOMPARE(AudioFile::read(m_song).picture, m_cover);
}

void TestCliIdentify::onlyWhatIsMissingIsFilled()
{
    const CliRun::Answer answer = m_run->ask({"identify", "--write", "--only-missing", "--yes", "a.mp3"});
    QVERIFY2(answer.code == 0, answer.errors);
    QVERIFY2(answer.output.contains("  title     Halo (found: Midnight Ferry)\n"
                                    "  artist    - \u2192 Ida Marlowe feat. The Salt Choir\n"),
             answer.output);
    QCOMPARE(textOf(m_song, TAG_TITLE), QString("Halo"));
    QCOMPARE(textOf(m_song, TAG_TRACK), QString("4"));
    QCOMPARE(AudioFile::read(m_song).picture, m_cover);
}

void TestCliIdentify::whatMissesNothingIsNotAskedFor()
{
    m_run->addSong("whole.mp3", CliRun::texts("Halo"), "mp3", m_cover);
    const CliRun::Answer answer = m_run->ask({"identify", "--only-missing", "--json", "whole.mp3"});
    QCOMPARE(answer.code, 0);
    QCOMPARE(answer.document()["songs"].toArray().at(0).toObject()["match"].toString(), QString("not_asked"));
    QVERIFY(m_server->requests().isEmpty());
    m_run->addSong("bare.mp3", CliRun::texts("Halo"));
    QVERIFY(
        m_run->ask({"identify", "--only-missing", "whole.mp3", "bare.mp3"})
            .errors.contains("1 song identified, 1 by sound and 0 by tags; 0 without a match, 1 not asked"));
}

void TestCliIdentify::whatTheTagsSayIsFoundToo()
{
    m_server->setAnswer(Service::AcoustId, IdentifyServer::emptyLookupAnswer());
    m_run->addSong("b.mp3", {{TAG_TITLE, "Midnight Fery"}, {TAG_ARTIST, "Ida Marlowe"}});
    const CliRun::Answer answer = m_run->ask({"identify", "b.mp3"});
    QVERIFY2(answer.output.startsWith("b.mp3 (by its tags, please check, 9"), answer.output);
    QVERIFY2(answer.errors.contains("0 by sound and 1 by tags"), answer.errors);
    const QJsonObject song =
        m_run->ask({"identify", "--json", "b.mp3"}).document()["songs"].toArray().at(0).toObject();
    QCOMPARE(song["match"].toString(), QString("tags"));
    QVERIFY(song["score"].toInt() > 84 && song["score"].toInt() < 100);
    QCOMPARE(song["changes"].toArray().at(0).toObject(),
             QJsonObject({{"field", "title"}, {"before", "Midnight Fery"}, {"after", "Midnight Ferry"}}));
}

void TestCliIdentify::thePlaceOfASongNamesIt()
{
    m_server->setAnswer(Service::AcoustId, IdentifyServer::emptyLookupAnswer());
    m_run->addSong("Ida Marlowe/Paper Lanterns/04 Midnight Ferry.mp3", {});
    ProgramRun run; // from within the folder, of which the path says nothing
    m_run->prepare(run);
    run.process.setWorkingDirectory(m_run->path("Ida Marlowe/Paper Lanterns"));
    run.start(CliRun::program(), {"identify", "04 Midnight Ferry.mp3"});
    QVERIFY(run.process.waitForFinished(patience));
    const QByteArray output = run.process.readAllStandardOutput();
    QVERIFY2(output.startsWith("04 Midnight Ferry.mp3 (by its tags"), output);
}

void TestCliIdentify::noMatchIsNoFailure()
{
    m_server->setAnswer(Service::AcoustId, IdentifyServer::emptyLookupAnswer());
    const CliRun::Answer answer = m_run->ask({"identify", "--write", "--yes", "a.mp3"});
    QCOMPARE(answer.code, 0);
    QCOMPARE(answer.output, QByteArray("a.mp3 (no match: the services know no such recording)\n"));
    QVERIFY2(answer.errors.contains("1 without a match\n"), answer.errors);
    QCOMPARE(m_run->ask({"identify", "--fail-on", "no-match", "a.mp3"}).code, 1);
    const QJsonObject document = m_run->ask({"identify", "--json", "a.mp3"}).document();
    QCOMPARE(document["songs"].toArray().at(0).toObject()["match"].toString(), QString("none"));
    QCOMPARE(document["counts"].toObject()["no_match"].toInt(), 1);
    QVERIFY(document["failed"].toArray().isEmpty());
}

void TestCliIdentify::aLineIsWrittenForEachSong()
{
    const CliRun::Answer answer = m_run->ask({"identify", "--write", "--yes", "--ndjson", "a.mp3"});
    const QList<QJsonObject> lines = answer.lines();
    QCOMPARE(lines.size(), 2);
    QCOMPARE(lines[0]["type"].toString(), QString("song"));
    QCOMPARE(lines[0]["match"].toString(), QString("sound"));
    QCOMPARE(lines[0]["score"].toInt(), 98);
    QCOMPARE(lines[0]["found"].toObject()["album"].toString(), QString("Paper Lanterns"));
    QCOMPARE(lines[0]["saved"].toBool(), true);
    const QJsonObject cover = lines[0]["changes"].toArray().last().toObject();
    QCOMPARE(cover["field"].toString(), QString("cover"));
    QCOMPARE(cover["bytes_before"].toInt(), m_cover.size());
    QCOMPARE(cover["bytes_after"].toInt(), IdentifyServer::picture().size());
    QCOMPARE(lines[1]["counts"].toObject()["saved"].toInt(), 1);
    QCOMPARE(lines[1]["counts"].toObject()["step"].toInt(), 1);
}

void TestCliIdentify::foldersAreWalked()
{
    m_run->addSong("m/old/a.mp3", {});
    m_run->addSong("m/b.flac", {}, "flac");
    const QJsonArray songs =
        m_run->ask({"identify", "--json", "--exclude", "old", "m"}).document()["songs"].toArray();
    QCOMPARE(songs.size(), 1);
    QCOMPARE(songs[0].toObject()["path"].toString(), QString("m/b.flac"));
}

void TestCliIdentify::whatFailsIsNamedAndTheRestIsDone()
{
    m_run->addFile("rubbish.mp3", "no music");
    const QByteArray cut = bytesOf("a.mp3").left(600); // tags, and no sound
    m_run->addFile("cut.mp3", cut);
    m_run->addFile("notes.txt", "text");
    const CliRun::Answer answer = m_run->ask({"identify", "--write", "--yes", "--json", "gone.mp3",
                                              "rubbish.mp3", "cut.mp3", "notes.txt", "a.mp3"});
    QCOMPARE(answer.code, 3);
    QVERIFY2(answer.errors.contains("melodrift-cli: gone.mp3: No such file or directory\n"), answer.errors);
    QVERIFY2(answer.errors.contains("melodrift-cli: rubbish.mp3: "), answer.errors);
    QVERIFY2(answer.errors.contains("melodrift-cli: cut.mp3: "), answer.errors);
    QCOMPARE(answer.document()["failed"].toArray().size(), 3);
    QCOMPARE(answer.document()["counts"].toObject()["not_music"].toInt(), 1);
    QCOMPARE(bytesOf("cut.mp3"), cut);
    isFound(m_song);
}

void TestCliIdentify::aNameThatIsNoTextIsIdentified()
{
#ifdef Q_OS_LINUX
    const QByteArray odd = QFile::encodeName(m_run->path()) + "/odd\xFF.mp3";
    QCOMPARE(std::rename(QFile::encodeName(m_song).constData(), odd.constData()), 0);
    const CliRun::Answer answer = m_run->ask({"identify", "--write", "--yes", "--json", "."});
    QCOMPARE(std::rename(odd.constData(), QFile::encodeName(m_song).constData()), 0);
    QVERIFY2(answer.code == 0, answer.errors);
    const QJsonObject song = answer.document()["songs"].toArray().at(0).toObject();
    QCOMPARE(QByteArray::fromBase64(song["path_base64"].toString().toLatin1()), QByteArray("./odd\xFF.mp3"));
    isFound(m_song);
#endif
}

void TestCliIdentify::whatTheServicesDoWrongIsTold_data()
{
    QTest::addColumn<int>("service");
    QTest::addColumn<int>("manner");
    QTest::addColumn<QByteArray>("reason");
    const auto row = [](const char* name, Service service, Manner manner, const char* reason) {
        QTest::newRow(name) << int(service) << int(manner) << QByteArray(reason);
    };
    row("error", Service::AcoustId, Manner::ServerError, "a service refused to answer (AcoustID answers 500");
    row("other error", Service::MusicBrainz, Manner::ServerError,
        "a service refused to answer (MusicBrainz answers 500");
    row("half", Service::AcoustId, Manner::CutOff, "there is no connection to the services (AcoustID: ");
    row("nonsense", Service::MusicBrainz, Manner::WrongJson,
        "the answer of a service makes no sense (MusicBrainz's");
    row("elsewhere", Service::AcoustId, Manner::PlainRedirect, "AcoustID: ");
}

void TestCliIdentify::whatTheServicesDoWrongIsTold()
{
    QFETCH(int, service);
    QFETCH(int, manner);
    QFETCH(QByteArray, reason);
    const QByteArray before = bytesOf("a.mp3");
    m_server->setManner(Service(service), Manner(manner));
    const CliRun::Answer answer = m_run->ask({"identify", "--write", "--yes", "a.mp3"});
    QCOMPARE(answer.code, 3);
    QVERIFY2(answer.errors.startsWith("melodrift-cli: a.mp3: "), answer.errors);
    QVERIFY2(answer.errors.contains(reason), answer.errors);
    QCOMPARE(answer.output, QByteArray());
    QCOMPARE(bytesOf("a.mp3"), before);
}

void TestCliIdentify::withoutAConnectionTheRestIsNotAskedFor()
{
    QStringList call{"identify", "--json"};
    for (int i = 0; i < 5; ++i)
        call.append(QFileInfo(m_run->addSong(QString("%1.mp3").arg(i), {})).fileName());
    m_server->setManner(Service::AcoustId, Manner::CutOff);
    const CliRun::Answer answer = m_run->ask(call);
    QCOMPARE(answer.code, 3);
    QCOMPARE(answer.document()["failed"].toArray().size(), 5);
    QCOMPARE(m_server->requests(Service::AcoustId).size(), 3);
    QVERIFY2(answer.errors.contains("melodrift-cli: 4.mp3: there is no connection to the services\n"),
             answer.errors);
    qputenv("MELODRIFT_ACOUSTID_URL", "http://127.0.0.1:1"); // where nobody listens
    QVERIFY(m_run->ask({"identify", "a.mp3"}).errors.startsWith("melodrift-cli: a.mp3: there is no conn"));
    qputenv("MELODRIFT_ACOUSTID_URL", "http://example.org");
    QVERIFY(m_run->ask({"identify", "a.mp3"}).errors.startsWith("melodrift-cli: a.mp3: the address of a"));
}

void TestCliIdentify::aCoverThatCannotBeHadLeavesTheTexts()
{
    m_server->setManner(Service::CoverArt, Manner::ServerError);
    const CliRun::Answer answer = m_run->ask({"identify", "--write", "--yes", "a.mp3"});
    QVERIFY2(answer.code == 0, answer.errors);
    QVERIFY2(answer.output.contains("  cover     could not be had (Cover Art Archive answers 500"),
             answer.output);
    QCOMPARE(textOf(m_song, TAG_TITLE), QString("Midnight Ferry"));
    QCOMPARE(AudioFile::read(m_song).picture, m_cover);
}

void TestCliIdentify::aSongThatTwoPathsNameIsSavedOnce()
{
    QVERIFY(QFile::link("a.mp3", m_run->path("b.mp3")));
    const CliRun::Answer answer = m_run->ask({"identify", "--write", "--yes", "a.mp3", "b.mp3"});
    QVERIFY2(answer.code == 0, answer.errors);
    QVERIFY2(answer.errors.contains("1 song saved"), answer.errors);
    QVERIFY(QFileInfo(m_run->path("b.mp3")).isSymLink());
    isFound(m_song);
}

void TestCliIdentify::withoutAHistoryNothingIsWritten()
{
    m_run->addFile("home/.local", "no folder");
    const QByteArray before = bytesOf("a.mp3");
    const CliRun::Answer answer = m_run->ask({"identify", "--write", "--yes", "a.mp3"});
    QCOMPARE(answer.code, 3);
    QVERIFY2(answer.errors.contains("home/.local/state/melodrift: "), answer.errors);
    QVERIFY(m_server->requests().isEmpty());
    QCOMPARE(bytesOf("a.mp3"), before);
}

void TestCliIdentify::whatAKeyWouldAddIsSaidOnce()
{
    if (*BUILT_IN_KEY)
        QSKIP("this build has a key");
    qunsetenv("MELODRIFT_ACOUSTID_KEY");
    m_run->addSong("b.mp3", {});
    const CliRun::Answer answer = m_run->ask({"identify", "a.mp3", "b.mp3"});
    QCOMPARE(answer.code, 0);
    QCOMPARE(answer.errors.count("https://acoustid.org/new-application"), 1);
    QVERIFY(m_server->requests(Service::AcoustId).isEmpty());
    QCOMPARE(m_run->ask({"identify", "-q", "a.mp3"}).errors, QByteArray());
}

void TestCliIdentify::anEndBetweenSongsLeavesWholeOnes_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<bool>("isAgreed");
#ifdef Q_OS_LINUX
    QTest::newRow("interrupted") << SIGINT << true;
    QTest::newRow("interrupted before it was asked") << SIGINT << false;
    QTest::newRow("killed") << SIGKILL << true;
#endif
}

void TestCliIdentify::anEndBetweenSongsLeavesWholeOnes()
{
#ifdef Q_OS_LINUX
    QFETCH(int, signal);
    QFETCH(bool, isAgreed);
    const QString first = addLongSong("0.flac");
    const QByteArray firstBefore = bytesOf("0.flac");
    const QByteArray before = bytesOf("a.mp3");
    m_server->setAnswer(Service::AcoustId, IdentifyServer::lookupAnswer("20")); // which is not the second one
    m_server->setManner(Service::Search, Manner::Silent);
    ProgramRun run;
    m_run->prepare(run);
    run.start(CliRun::program(), QStringList{"identify", "--write", "--json", "0.flac", "a.mp3"} +
                                     (isAgreed ? QStringList{"--yes"} : QStringList{}));
    QVERIFY(run.process.waitForStarted(patience));
    QVERIFY(m_server->waitForRequests(Service::Search, 1));
    ::kill(pid_t(run.process.processId()), signal);
    QVERIFY(run.process.waitForFinished(patience));
    if (signal == SIGINT) {
        QCOMPARE(run.process.exitCode(), 130);
        const QJsonObject document = QJsonDocument::fromJson(run.process.readAllStandardOutput()).object();
        QCOMPARE(document["interrupted"].toBool(), true);
        QCOMPARE(document["counts"].toObject()["saved"].toInt(), isAgreed ? 1 : 0);
        QVERIFY(document["failed"].toArray().isEmpty());
    }
    QCOMPARE(bytesOf("a.mp3"), before);
    if (!isAgreed) {
        QCOMPARE(bytesOf("0.flac"), firstBefore);
        return;
    }
    isFound(first);
    QCOMPARE(m_run->ask({"undo"}).code, 0);
    QCOMPARE(AudioFile::read(first).texts, (QHash<int, QString>{{TAG_TITLE, "Long"}}));
    QVERIFY(AudioFile::read(first).picture.isEmpty());
#endif
}

QTEST_GUILESS_MAIN(TestCliIdentify)
#include "tst_cliidentify.moc"
