#include "dupmusicinfo.h"
#include "songfixtures.h"
#include "songs/shownlist.h"

#include <QtTest>

class TestShownList : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { Fixtures::genericCover(); }
    void init();

    void theTrueListShowsWhileNothingIsAsked();
    void clicksGoRoundInThree();
    void whatIsFoundKeepsItsOrder();
    void columnsOrderWhatShows_data();
    void columnsOrderWhatShows();
    void findingKeepsTheOrderAskedFor();
    void groupsAreOrderedByTheirFirstSongAndSize();
    void changesOfTheTrueListShow();
    void whatLeftIsDropped();

private:
    QString shown() const;
    static QMusicInfo* add(std::vector<std::unique_ptr<Fixtures::Song>>& songs, const Fixtures::Texts& texts);

    const Fixtures::ModeGuard m_mode{true};
    std::vector<std::unique_ptr<Fixtures::Song>> m_songs;
    QList<QMusicInfo*> m_list;
    SongFind m_find;
    ShownList<QMusicInfo> m_shown;
};

QMusicInfo* TestShownList::add(std::vector<std::unique_ptr<Fixtures::Song>>& songs,
                               const Fixtures::Texts& texts)
{
    songs.push_back(Fixtures::makeSong(true, texts));
    return &songs.back()->info;
}

void TestShownList::init()
{
    m_shown = ShownList<QMusicInfo>();
    m_find = SongFind();
    m_list.clear();
    m_songs.clear();
    for (const Fixtures::Texts& texts : {Fixtures::Texts{"d", "Part 10", "", "Pop", 2001, 10, {}},
                                         {"B", "Part 2", "x", "Pop", 0, 2, {}},
                                         {"", "part 1", "y", "Jazz", 1999, 0, {}},
                                         {"a", "Part 2", "", "Jazz", 1999, 1, {}}})
        m_list.append(add(m_songs, texts));
    m_shown.show(&m_list, m_find);
}

/// The rows of the true list, as they are shown.
QString TestShownList::shown() const
{
    QString rows;
    for (QMusicInfo* song : *m_shown.list())
        rows += QString::number(m_list.indexOf(song));
    return rows;
}

void TestShownList::theTrueListShowsWhileNothingIsAsked()
{
    QCOMPARE(m_shown.list(), &m_list);
    QVERIFY(m_shown.isWhole());
    m_find.setTyped("pop");
    m_shown.narrow(m_find);
    QVERIFY(!m_shown.isWhole() && m_shown.list() != &m_list);
    QCOMPARE(m_shown.count(), 2);
    QCOMPARE(m_shown.countOfAll(), 4);
    QCOMPARE(m_list.size(), 4);
    m_find.setTyped(" ");
    m_shown.narrow(m_find);
    QCOMPARE(m_shown.list(), &m_list);
    m_shown.show(nullptr, m_find);
    QVERIFY(!m_shown.list());
    QCOMPARE(m_shown.count() + m_shown.countOfAll(), 0);
    QCOMPARE(m_shown.rowOf(m_list.first()), -1);
    m_find.setTyped("pop");
    m_shown.orderBy({0, false}, m_find);
    QVERIFY(!m_shown.list());
}

void TestShownList::clicksGoRoundInThree()
{
    ShownOrder order;
    QVERIFY(order.isOwn());
    order = order.afterClick(3);
    QVERIFY(order.column == 3 && !order.backwards);
    order = order.afterClick(3);
    QVERIFY(order.column == 3 && order.backwards);
    QVERIFY(order.afterClick(3).isOwn());
    order = order.afterClick(0); // another one begins anew
    QVERIFY(order.column == 0 && !order.backwards);
}

void TestShownList::whatIsFoundKeepsItsOrder()
{
    m_find.setTyped("PART 2");
    m_shown.narrow(m_find);
    QCOMPARE(shown(), QString("13"));
    QCOMPARE(m_shown.rowOf(m_list.at(3)), 1);
    QCOMPARE(m_shown.rowOf(m_list.at(0)), -1);
    m_find.setTyped("nowhere");
    m_shown.narrow(m_find);
    QCOMPARE(shown(), QString());
    QVERIFY(m_shown.list()->isEmpty());
}

void TestShownList::columnsOrderWhatShows_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("forwards");
    QTest::addColumn<QString>("backwards");
    QTest::newRow("none") << -1 << "0123"
                          << "0123";
    QTest::newRow("title") << int(SongColumns::ColumnTitle) << "3102"
                           << "0132";
    QTest::newRow("artist, equal ones as they were") << int(SongColumns::ColumnArtist) << "2130"
                                                     << "0132";
    QTest::newRow("album, empty ones last") << int(SongColumns::ColumnAlbum) << "1203"
                                            << "2103";
    QTest::newRow("genre") << int(SongColumns::ColumnGenre) << "2301"
                           << "0123";
    QTest::newRow("year") << int(SongColumns::ColumnYear) << "2301"
                          << "0231";
    QTest::newRow("track") << int(SongColumns::ColumnTrack) << "3102"
                           << "0132";
    QTest::newRow("a column without a value") << int(SongColumns::ColumnDuplicates) << "0123"
                                              << "0123";
}

void TestShownList::columnsOrderWhatShows()
{
    QFETCH(int, column);
    m_shown.orderBy({column, false}, m_find);
    QTEST(shown(), "forwards");
    m_shown.orderBy({column, true}, m_find);
    QTEST(shown(), "backwards");
    QCOMPARE(m_list.first()->localInfo->title, QString("d")); // the true one stays
    m_shown.orderBy({}, m_find);
    QCOMPARE(m_shown.list(), &m_list);
}

void TestShownList::findingKeepsTheOrderAskedFor()
{
    m_shown.orderBy({SongColumns::ColumnTitle, true}, m_find);
    m_find.setTyped("part");
    m_shown.narrow(m_find);
    QCOMPARE(shown(), QString("0132"));
    m_find.setTyped("part 1");
    m_shown.narrow(m_find);
    QCOMPARE(shown(), QString("02"));
    m_find.setTyped(QString());
    m_shown.narrow(m_find);
    QCOMPARE(shown(), QString("0132"));
}

void TestShownList::groupsAreOrderedByTheirFirstSongAndSize()
{
    DupMusicInfo two = {{m_list.at(0), m_list.at(1)}};
    DupMusicInfo three = {{m_list.at(1), m_list.at(2), m_list.at(3)}};
    DupMusicInfo none;
    QList<DupMusicInfo*> groups = {&none, &two, &three};
    ShownList<DupMusicInfo> shownGroups;
    shownGroups.show(&groups, m_find);
    shownGroups.orderBy({SongColumns::ColumnTitle, false}, m_find);
    QCOMPARE(*shownGroups.list(), QList<DupMusicInfo*>({&three, &two, &none}));
    shownGroups.orderBy({SongColumns::ColumnDuplicates, false}, m_find);
    QCOMPARE(*shownGroups.list(), QList<DupMusicInfo*>({&none, &two, &three}));
    m_find.setTyped("jazz");
    shownGroups.narrow(m_find);
    QCOMPARE(*shownGroups.list(), QList<DupMusicInfo*>({&three}));
    QCOMPARE(shownGroups.countOfAll(), 3);
}

void TestShownList::changesOfTheTrueListShow()
{
    m_shown.orderBy({SongColumns::ColumnTitle, false}, m_find);
    m_find.setTyped("pop");
    m_shown.narrow(m_find);
    QCOMPARE(shown(), QString("10"));
    m_list.append(add(m_songs, {"C", "New", "", "Pop", 0, 0, {}}));
    m_shown.refresh(m_find);
    QCOMPARE(shown(), QString("140"));
    m_list[4]->localInfo->title = "zoo"; // which is not looked for
    m_shown.refresh(m_find);
    QCOMPARE(shown(), QString("104"));
    QList<QMusicInfo*> other = {m_list.at(2), m_list.at(0)};
    m_shown.show(&other, m_find);
    QCOMPARE(*m_shown.list(), QList<QMusicInfo*>({m_list.at(0)}));
}

void TestShownList::whatLeftIsDropped()
{
    m_shown.orderBy({SongColumns::ColumnTitle, false}, m_find);
    m_find.setTyped("part");
    m_shown.narrow(m_find);
    const QSet<QMusicInfo*> left = {m_list.takeAt(1)};
    m_shown.drop(left);
    QCOMPARE(shown(), QString("201"));
    m_find.setTyped("jazz");
    m_shown.narrow(m_find);
    QCOMPARE(shown(), QString("21"));
    m_find.setTyped(QString());
    m_shown.orderBy({}, m_find);
    m_shown.drop({m_list.first()}); // of the true list itself its owner takes it
    QCOMPARE(m_list.size(), 3);
}

QTEST_MAIN(TestShownList)
#include "tst_shownlist.moc"
