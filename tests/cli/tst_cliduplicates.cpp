// Which songs the program calls duplicates.
#include "clirun.h"

class TestCliDuplicates : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void groupsAreThoseOfOneTitle();
    void groupsAreOfArtistAndTitleWhenAsked();
    void linesNameTheGroupOfASong();
    void whatIsThereTwiceMayEndWithOne();

private:
    static QList<QStringList> groupsIn(const CliRun::Answer& answer);

    std::unique_ptr<CliRun> m_run;
};

void TestCliDuplicates::init()
{
    m_run = std::make_unique<CliRun>();
    m_run->addSong("a.mp3", CliRun::texts("Halo"));
    m_run->addSong("b.mp3", CliRun::texts("Other"));
    m_run->addSong("c.mp3", CliRun::texts("Halo"));
    m_run->addSong("d.mp3", CliRun::texts("HALO (live)", "zoe feat. Ida"));
    m_run->addSong("e.mp3", CliRun::texts("Halo", "Somebody"));
}

QList<QStringList> TestCliDuplicates::groupsIn(const CliRun::Answer& answer)
{
    QList<QStringList> groups;
    for (const QJsonValue& group : answer.document()["groups"].toArray()) {
        groups.append(QStringList());
        for (const QJsonValue& song : group.toObject()["songs"].toArray())
            groups.last().append(song.toObject()["path"].toString());
    }
    return groups;
}

void TestCliDuplicates::groupsAreThoseOfOneTitle()
{
    const CliRun::Answer answer = m_run->ask({"duplicates", "--json", "."});
    QCOMPARE(groupsIn(answer), QList<QStringList>({{"./a.mp3", "./c.mp3", "./e.mp3"}}));
    QCOMPARE(answer.document()["counts"].toObject()["groups"].toInt(), 1);
    QCOMPARE(answer.document()["counts"].toObject()["in_groups"].toInt(), 3);
    const CliRun::Answer text = m_run->ask({"duplicates", "."});
    QCOMPARE(text.output.count('\n'), 4);
    QVERIFY2(text.output.startsWith("Halo (3)\n  MP3 "), text.output);
    QVERIFY2(text.output.contains(" 44.1 kHz     0:03 ") && text.output.contains("  ./c.mp3\n"), text.output);
    QCOMPARE(text.errors, QByteArray("melodrift-cli: 1 group with 3 songs of 5\n"));
}

void TestCliDuplicates::groupsAreOfArtistAndTitleWhenAsked()
{
    const CliRun::Answer answer = m_run->ask({"duplicates", "--by", "artist+title", "--json", "."});
    QCOMPARE(groupsIn(answer), QList<QStringList>({{"./a.mp3", "./c.mp3", "./d.mp3"}}));
    const CliRun::Answer text = m_run->ask({"duplicates", "--by", "artist+title", "."});
    QVERIFY2(text.output.startsWith("Zo\xC3\xA9 - Halo (3)\n"), text.output);
}

void TestCliDuplicates::linesNameTheGroupOfASong()
{
    m_run->addSong("f.mp3", CliRun::texts("Other"));
    QStringList songs;
    for (const QJsonObject& line : m_run->ask({"duplicates", "--ndjson", "."}).lines())
        if (line["type"].toString() == "song")
            songs.append(QString::number(line["group"].toInt()) + ' ' + line["path"].toString());
    QCOMPARE(songs, QStringList({"1 ./a.mp3", "1 ./c.mp3", "1 ./e.mp3", "2 ./b.mp3", "2 ./f.mp3"}));
}

void TestCliDuplicates::whatIsThereTwiceMayEndWithOne()
{
    QCOMPARE(m_run->ask({"duplicates", "--fail-on", "any", "."}).code, 1);
    QCOMPARE(m_run->ask({"duplicates", "--fail-on", "any", "a.mp3", "b.mp3"}).code, 0);
}

QTEST_GUILESS_MAIN(TestCliDuplicates)
#include "tst_cliduplicates.moc"
