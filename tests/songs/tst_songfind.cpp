#include "dupmusicinfo.h"
#include "songfixtures.h"
#include "songs/songfind.h"

#include <QtTest>

class TestSongFind : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { Fixtures::genericCover(); }

    void everyWordMustOccur_data();
    void everyWordMustOccur();
    void tracksAreFoundAsWell();
    void aGroupIsFoundWithOneOfItsSongs();
    void editsAreFoundOnceTextsAreForgotten();
    void keepingTextsCostsLittle();
};

namespace {
std::unique_ptr<Fixtures::Song> localSong(const QString& file, const Fixtures::Texts& texts)
{
    auto song = Fixtures::makeSong(true, texts);
    song->info.localInfo->filePath = file;
    return song;
}

Fixtures::Texts titled(const QByteArray& title)
{
    Fixtures::Texts texts;
    texts.title = title;
    return texts;
}

bool finds(SongFind& find, const QString& typed, const QMusicInfo& song)
{
    find.setTyped(typed);
    return find.finds(&song);
}
} // namespace

void TestSongFind::everyWordMustOccur_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<bool>("found");
    QTest::newRow("a part of the title") << "dnigh" << true;
    QTest::newRow("the artist") << "sirenes" << true;
    QTest::newRow("the album") << "harbour" << true;
    QTest::newRow("the genre") << "folk" << true;
    QTest::newRow("the file") << "03 - quay" << true;
    QTest::newRow("its ending") << ".flac" << true;
    QTest::newRow("words of several fields") << "folk ferry SIRÈNES" << true;
    QTest::newRow("one that occurs nowhere") << "folk ferry jazz" << false;
    QTest::newRow("the folder") << "holiday" << false;
    QTest::newRow("no word goes over the end of a field") << "ferryles" << false;
    QTest::newRow("the beginning of the file as the next field") << "folk03" << false;
}

void TestSongFind::everyWordMustOccur()
{
    QFETCH(QString, typed);
    const Fixtures::ModeGuard mode(true);
    const auto song =
        localSong("/home/holiday/03 - Quay.flac",
                  {"Midnight Ferry", QByteArray("Les Sirènes"), "Harbour Lights", "Folk", 0, 0, {}});
    SongFind find;
    QTEST(finds(find, typed, song->info), "found");
    QTEST(finds(find, typed, song->info), "found"); // by the text that was kept
    find.setTyped(QString());
    QVERIFY(!find.isActive());
}

void TestSongFind::tracksAreFoundAsWell()
{
    const Fixtures::ModeGuard mode(false);
    const auto song = Fixtures::makeSong(false, titled("Midnight Ferry"));
    song->record.location = "file://localhost/Music/Quay%20%C3%89t%C3%A9.mp3";
    SongFind find;
    QVERIFY(finds(find, "midnight artist album genre", song->info));
    QVERIFY(finds(find, QStringLiteral("quay été"), song->info));
    QVERIFY(!finds(find, "music", song->info));
    const QMusicInfo none;
    QVERIFY(!finds(find, "a", none));
}

void TestSongFind::aGroupIsFoundWithOneOfItsSongs()
{
    const Fixtures::ModeGuard mode(true);
    const auto one = localSong("/a.mp3", titled("Same"));
    const auto other = localSong("/other.mp3", titled("Same"));
    const DupMusicInfo group = {{&one->info, &other->info}};
    SongFind find;
    find.setTyped("other");
    QVERIFY(find.isActive() && find.finds(&group));
    find.setTyped("a.mp3 other"); // both, of one song
    QVERIFY(!find.finds(&group));
    const DupMusicInfo empty;
    QVERIFY(!find.finds(&empty));
}

void TestSongFind::editsAreFoundOnceTextsAreForgotten()
{
    const Fixtures::ModeGuard mode(true);
    const auto song = localSong("/a.mp3", titled("Before"));
    SongFind find;
    QVERIFY(finds(find, "before", song->info));
    song->info.localInfo->title = "After";
    find.forgetTexts();
    QCOMPARE(find.textSize(), std::size_t(0));
    QVERIFY(!finds(find, "before", song->info));
    QVERIFY(finds(find, "after", song->info));
}

void TestSongFind::keepingTextsCostsLittle()
{
    const Fixtures::ModeGuard mode(true);
    const int count = 20000;
    std::vector<std::unique_ptr<Fixtures::Song>> songs;
    QList<QMusicInfo*> list;
    for (int i = 0; i < count; ++i) {
        songs.push_back(localSong(QString("/music/%1.mp3").arg(i), titled("Title " + QByteArray::number(i))));
        list.append(&songs.back()->info);
    }
    SongFind find;
    find.prepare(list);
    const std::size_t size = find.textSize();
    QVERIFY(find.memory() - size < std::size_t(100 * count));
    find.setTyped("19999");
    QCOMPARE(
        std::count_if(list.begin(), list.end(), [&find](const QMusicInfo* song) { return find.finds(song); }),
        1);
    // In another order, too.
    QCOMPARE(std::count_if(list.rbegin(), list.rend(),
                           [&find](const QMusicInfo* song) { return find.finds(song); }),
             1);
    QCOMPARE(find.textSize(), size); // once
}

QTEST_MAIN(TestSongFind)
#include "tst_songfind.moc"
