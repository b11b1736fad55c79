// What tag and cover change, and what they leave alone.
#include "clirun.h"

class TestCliEditing : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void fieldsAreSetAndCleared_data();
    void fieldsAreSetAndCleared();
    void whatIsNotNamedStays();
    void coversAreSetAndTakenOut();
    void fieldsComeFromNames();
    void whatFailsIsNamedAndTheRestIsSaved();
    void filesComeFromAListToo();
    void aCoverBecomesAFile();
    void aFileIsReplacedWhenThatIsAskedFor();
    void aSongWithoutACoverGivesNone();

private:
    QHash<int, QString> textsOf(const QString& name) const
    {
        return AudioFile::read(m_run->path(name)).texts;
    }

    std::unique_ptr<CliRun> m_run;
    QByteArray m_cover;
};

void TestCliEditing::init()
{
    m_run = std::make_unique<CliRun>();
    m_cover = Fixtures::jpeg(40, 40, 1);
    m_run->addSong("a.mp3", CliRun::texts("Halo"), "mp3", m_cover);
}

void TestCliEditing::fieldsAreSetAndCleared_data()
{
    QTest::addColumn<QString>("kind");
    for (const QString& kind : Fixtures::formats())
        QTest::newRow(qPrintable(kind)) << kind;
}

void TestCliEditing::fieldsAreSetAndCleared()
{
    QFETCH(QString, kind);
    const QString song = m_run->addSong("song." + kind, CliRun::texts("Halo"), kind);
    const CliRun::Answer answer = m_run->ask({"tag", "--title", "Täxt", "--artist=-x", "--year", "1999",
                                              "--track", "12", "--clear", "genre,album", song});
    QVERIFY2(answer.code == 0, answer.errors);
    QCOMPARE(answer.errors, QByteArray("melodrift-cli: 1 song saved; melodrift-cli undo 1 takes it back\n"));
    QCOMPARE(m_run->ask({"tag", "--title", "Täxt", song}).errors,
             QByteArray("melodrift-cli: 0 songs saved, 1 as wanted before\n"));
    QHash<int, QString> texts = AudioFile::read(song).texts;
    QCOMPARE(texts.take(TAG_TITLE), QString("Täxt"));
    QCOMPARE(texts.take(TAG_ARTIST), QString("-x"));
    QCOMPARE(texts.take(TAG_YEAR), QString("1999"));
    QCOMPARE(texts.take(TAG_TRACK), QString("12"));
    QVERIFY(texts.isEmpty());
}

void TestCliEditing::whatIsNotNamedStays()
{
    const AudioFile::Content before = AudioFile::read(m_run->path("a.mp3"));
    QCOMPARE(m_run->ask({"tag", "--genre", "Rock", "a.mp3"}).code, 0);
    AudioFile::Content after = AudioFile::read(m_run->path("a.mp3"));
    QCOMPARE(after.texts.value(TAG_GENRE), QString("Rock"));
    after.texts[TAG_GENRE] = before.texts.value(TAG_GENRE);
    QCOMPARE(after.texts, before.texts);
    QCOMPARE(after.picture, m_cover);
}

void TestCliEditing::coversAreSetAndTakenOut()
{
    const QByteArray other = Fixtures::jpeg(60, 60, 2);
    m_run->addFile("other.jpg", other);
    QCOMPARE(m_run->ask({"tag", "--cover", "other.jpg", "a.mp3"}).code, 0);
    QCOMPARE(AudioFile::read(m_run->path("a.mp3")).picture, other);
    QCOMPARE(textsOf("a.mp3").value(TAG_TITLE), QString("Halo"));
    QCOMPARE(m_run->ask({"tag", "--clear-cover", "a.mp3"}).code, 0);
    QVERIFY(AudioFile::read(m_run->path("a.mp3")).picture.isEmpty());
}

void TestCliEditing::fieldsComeFromNames()
{
    m_run->addSong("Ida/Lanterns/02 Harbour - Lights.mp3", {{TAG_GENRE, "Pop"}, {TAG_TITLE, "x"}});
    const QString name = "Ida/Lanterns/02 Harbour - Lights.mp3";
    QCOMPARE(
        m_run->ask({"tag", "--from-name", "{artist}/{album}/{track} {title}", "--album", "Mine", name}).code,
        0);
    const QHash<int, QString> texts = textsOf(name);
    QCOMPARE(texts.value(TAG_ARTIST), QString("Ida"));
    QCOMPARE(texts.value(TAG_ALBUM), QString("Mine"));
    QCOMPARE(texts.value(TAG_TRACK), QString("2"));
    QCOMPARE(texts.value(TAG_TITLE), QString("Harbour - Lights"));
    QCOMPARE(texts.value(TAG_GENRE), QString("Pop"));
}

void TestCliEditing::whatFailsIsNamedAndTheRestIsSaved()
{
    m_run->addFile("rubbish.mp3", "no music");
    m_run->addSong("01 Two.mp3", {});
    const CliRun::Answer answer = m_run->ask({"tag", "--json", "--from-name", "{track} {title}", "gone.mp3",
                                              "rubbish.mp3", "a.mp3", "01 Two.mp3"});
    QCOMPARE(answer.code, 3);
    QVERIFY2(answer.errors.contains("melodrift-cli: a.mp3: its name is not like the pattern\n"),
             answer.errors);
    const QJsonObject document = answer.document();
    QCOMPARE(document["songs"].toArray().size(), 1);
    QCOMPARE(document["failed"].toArray().size(), 3);
    QCOMPARE(document["counts"].toObject()["failed"].toInt(), 3);
    QCOMPARE(textsOf("01 Two.mp3").value(TAG_TITLE), QString("Two"));
    QCOMPARE(textsOf("a.mp3").value(TAG_TITLE), QString("Halo"));
    QCOMPARE(m_run->ask({"tag", "--title", "x", "gone.mp3"}).errors,
             QByteArray("melodrift-cli: gone.mp3: the file is gone\nmelodrift-cli: 0 songs saved\n"));
}

void TestCliEditing::filesComeFromAListToo()
{
    m_run->addSong("b.mp3", {});
    QCOMPARE(m_run->ask({"tag", "--genre", "Rock", "-0"}, QByteArray("a.mp3\0b.mp3\0", 12)).code, 0);
    for (const char* name : {"a.mp3", "b.mp3"})
        QCOMPARE(textsOf(name).value(TAG_GENRE), QString("Rock"));
}

void TestCliEditing::aCoverBecomesAFile()
{
    QCOMPARE(m_run->ask({"cover", "a.mp3", "--out", "cover.jpg"}).code, 0);
    QFile file(m_run->path("cover.jpg"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), m_cover);
    const CliRun::Answer answer = m_run->ask({"cover", "a.mp3", "--out", "-"});
    QCOMPARE(answer.output, m_cover);
    QCOMPARE(answer.errors, QByteArray());
}

void TestCliEditing::aFileIsReplacedWhenThatIsAskedFor()
{
    m_run->addFile("cover.jpg", "precious");
    const auto content = [this] {
        QFile file(m_run->path("cover.jpg"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    const CliRun::Answer answer = m_run->ask({"cover", "a.mp3", "--out", "cover.jpg"});
    QCOMPARE(answer.code, 3);
    QVERIFY2(answer.errors.contains("cover.jpg: there is such a file already"), answer.errors);
    QCOMPARE(content(), QByteArray("precious"));
    QCOMPARE(m_run->ask({"cover", "a.mp3", "--out", "cover.jpg", "--force"}).code, 0);
    QCOMPARE(content(), m_cover);
    QCOMPARE(m_run->ask({"cover", "a.mp3", "--out", "nowhere/cover.jpg"}).code, 3);
    QCOMPARE(QDir(m_run->path()).entryList(QDir::Files | QDir::Hidden), QStringList({"a.mp3", "cover.jpg"}));
}

void TestCliEditing::aSongWithoutACoverGivesNone()
{
    m_run->addSong("b.mp3", {});
    const CliRun::Answer answer = m_run->ask({"cover", "b.mp3", "--out", "cover.jpg"});
    QCOMPARE(answer.code, 3);
    QCOMPARE(answer.errors, QByteArray("melodrift-cli: b.mp3: it has no cover\n"));
    QVERIFY(!QFile::exists(m_run->path("cover.jpg")));
    QCOMPARE(m_run->ask({"cover", "gone.mp3", "--out", "cover.jpg"}).code, 3);
}

QTEST_GUILESS_MAIN(TestCliEditing)
#include "tst_cliediting.moc"
