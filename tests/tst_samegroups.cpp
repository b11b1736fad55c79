// The program without a window and the window say the same of one collection.
#include "cli/clirun.h"
#include "dupmusicinfo.h"
#include "qmusicinfo.h"
#include "songfixtures.h"
#include "songs/localintake.h"
#include "songs/songclassification.h"

#include <QApplication>

#include <random>

class TestSameGroups : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase()
    {
        m_intake->reader().forgetCovers();
        qDeleteAll(m_songs);
    }

    void groupsAreTheSame();
    void undefinedSongsAreTheSame();

private:
    CliRun m_run;
    std::unique_ptr<LocalIntake> m_intake;
    QList<QMusicInfo*> m_songs;
    QList<IAudioTag*> m_tags;
    SongClassification m_classes;
};

/// Songs at random of few titles and lengths, some without any.
void TestSameGroups::initTestCase()
{
    std::mt19937 random(7);
    for (int i = 0; i < 60; ++i) {
        const QString folder = QString("m/%1/%2/").arg(random() % 3).arg(random() % 2);
        const QString name = folder + QString::number(i);
        QDir().mkpath(m_run.path(folder));
        const QString kind = QStringList({"mp3", "flac", "ogg"}).at(int(random() % 3));
        const QString path = m_run.path(name) + '.' + kind;
        QVERIFY(QFile::copy(Fixtures::tone(kind, 500 + 250 * int(random() % 4)), path));
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
        QHash<int, QString> texts =
            CliRun::texts(QStringList({"", "Halo", "halo", "Wren", "Kites"}).at(int(random() % 5)));
        if (random() % 4 == 0)
            texts[TAG_GENRE].clear();
        QCOMPARE(AudioFile::write(path, texts), 0);
    }
    const Fixtures::ModeGuard local(true);
    m_intake = std::make_unique<LocalIntake>();
    m_intake->add(m_intake->collect(m_run.path("m"), 0).music, m_songs, m_tags);
    m_classes.collect(m_songs);
    m_classes.group();
    QVERIFY(!m_classes.groups().isEmpty());
}

void TestSameGroups::groupsAreTheSame()
{
    const Fixtures::ModeGuard local(true);
    QList<QStringList> window;
    for (const DupMusicInfo* group : m_classes.groups()) {
        window.append(QStringList());
        for (const QMusicInfo* song : group->musicList)
            window.last().append(song->localInfo->filePath);
    }
    QList<QStringList> told;
    const QJsonObject document = m_run.ask({"duplicates", "--json", m_run.path("m")}).document();
    for (const QJsonValue& group : document["groups"].toArray()) {
        told.append(QStringList());
        for (const QJsonValue& song : group.toObject()["songs"].toArray())
            told.last().append(song.toObject()["path"].toString());
    }
    QCOMPARE(told, window);
}

void TestSameGroups::undefinedSongsAreTheSame()
{
    QStringList window;
    for (const QMusicInfo* song : m_classes.undefinedSongs())
        window.append(song->localInfo->filePath);
    QStringList told;
    const QJsonObject document = m_run.ask({"undefined", "--json", m_run.path("m")}).document();
    for (const QJsonValue& song : document["songs"].toArray())
        told.append(song.toObject()["path"].toString());
    QVERIFY(!told.isEmpty());
    QCOMPARE(told, window);
}

QTEST_MAIN(TestSameGroups)
#include "tst_samegroups.moc"
