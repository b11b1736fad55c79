#include "dupmusicinfo.h"
#include "songfixtures.h"
#include "songs/spokenwords.h"

#include <QtTest>

using namespace Fixtures;
using SpokenWords::List;

/// What is heard of songs, groups and lists.
class TestSpokenWords : public QObject
{
    Q_OBJECT

private slots:
    void aSongIsToldByWhatTellsItApart_data() { bothModes(); }
    void aSongIsToldByWhatTellsItApart();
    void whatIsUnknownIsSaid_data() { bothModes(); }
    void whatIsUnknownIsSaid();
    void theRestFollows();
    void breaksAreBlanks();
    void aGroupSaysHowManyItHas();
    void aCopyIsASentence();
    void aListSaysWhatAndHowMany_data();
    void aListSaysWhatAndHowMany();

private:
    static void bothModes()
    {
        QTest::addColumn<bool>("local");
        QTest::newRow("local") << true;
        QTest::newRow("iTunes") << false;
    }
    static Texts ferry()
    {
        Texts texts;
        texts.title = "Midnight Ferry";
        texts.artist = "The Harbour";
        texts.album = "Night Lines";
        return texts;
    }
};

void TestSpokenWords::aSongIsToldByWhatTellsItApart()
{
    QFETCH(bool, local);
    const ModeGuard mode(local);
    const auto song = makeSong(local, ferry());
    QCOMPARE(SpokenWords::of(&song->info), QString("Midnight Ferry, The Harbour, Night Lines"));
}

void TestSpokenWords::whatIsUnknownIsSaid()
{
    QFETCH(bool, local);
    const ModeGuard mode(local);
    Texts texts;
    texts.title = texts.artist = texts.album = texts.genre = "";
    const auto song = makeSong(local, texts);
    if (local)
        song->info.localInfo->filePath = QStringLiteral("/music/ferry.mp3");
    else
        song->record.location = "file://localhost/music/ferry.mp3";
    QCOMPARE(SpokenWords::of(&song->info),
             QString("ferry.mp3, unknown title, unknown artist, unknown album"));
    QVERIFY(SpokenWords::about(&song->info).startsWith("unknown genre, "));
}

void TestSpokenWords::theRestFollows()
{
    const ModeGuard mode(true);
    const auto song = makeSong(true, ferry());
    song->info.localInfo->duration = 243000;
    QCOMPARE(SpokenWords::about(&song->info), QString("Genre, 1999, track 7, 4 minutes 3 seconds"));
    song->info.localInfo->year = 0;
    song->info.localInfo->trackNumber = 0;
    QCOMPARE(SpokenWords::about(&song->info), QString("Genre, 4 minutes 3 seconds"));
}

void TestSpokenWords::breaksAreBlanks()
{
    const ModeGuard mode(true);
    Texts texts = ferry();
    texts.title = "Midnight\n\n  Ferry ";
    const auto song = makeSong(true, texts);
    QCOMPARE(SpokenWords::of(&song->info), QString("Midnight Ferry, The Harbour, Night Lines"));
}

void TestSpokenWords::aGroupSaysHowManyItHas()
{
    const ModeGuard mode(true);
    const auto song = makeSong(true, ferry());
    DupMusicInfo group;
    group.musicList = {&song->info, &song->info, &song->info};
    QCOMPARE(SpokenWords::of(&group), QString("Midnight Ferry, The Harbour, Night Lines, 3 songs"));
}

void TestSpokenWords::aCopyIsASentence()
{
    const ModeGuard mode(true);
    const auto song = makeSong(true, ferry());
    song->info.localInfo->bitrate = 96000;
    QCOMPARE(SpokenWords::ofCopy(&song->info, "M4A", true, false),
             QString("Kept: Midnight Ferry, M4A, 96 kilobits per second"));
    QCOMPARE(SpokenWords::ofCopy(&song->info, "MP3", false, true),
             QString("To be deleted: Midnight Ferry, MP3, 96 kilobits per second, best sound of this group"));
}

void TestSpokenWords::aListSaysWhatAndHowMany_data()
{
    QTest::addColumn<int>("list");
    QTest::addColumn<int>("shown");
    QTest::addColumn<int>("all");
    QTest::addColumn<QString>("words");
    QTest::newRow("all songs") << int(List::All) << 95650 << 95650 << "All songs, 95,650 songs";
    QTest::newRow("found") << int(List::All) << 12 << 95650 << "All songs, 12 of 95,650 songs";
    QTest::newRow("nothing found") << int(List::All) << 0 << 7 << "All songs, 0 of 7 songs";
    QTest::newRow("one") << int(List::Undefined) << 1 << 1 << "Undefined songs, 1 song";
    QTest::newRow("none") << int(List::Undefined) << 0 << 0 << "Undefined songs, 0 songs";
    QTest::newRow("groups") << int(List::Duplicates) << 2 << 30 << "Duplicate songs, 2 of 30 groups";
}

void TestSpokenWords::aListSaysWhatAndHowMany()
{
    QFETCH(int, list);
    QFETCH(int, shown);
    QFETCH(int, all);
    QTEST(SpokenWords::ofList(List(list), shown, all), "words");
}

QTEST_MAIN(TestSpokenWords)
#include "tst_spokenwords.moc"
