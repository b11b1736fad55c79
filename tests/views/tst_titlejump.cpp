// What letters lead to in a list of titles.
#include "views/titlejump.h"

#include <QApplication>
#include <QStringListModel>
#include <QtTest>

class TestTitleJump : public QObject
{
    Q_OBJECT

private slots:
    void init() { QApplication::setKeyboardInputInterval(60000); }

    void lettersLeadToTitles_data();
    void lettersLeadToTitles();
    void theSameLetterGoesOn();
    void aPauseBeginsAnew();
    void withoutTitlesThereIsNoRow();

private:
    const QStringListModel m_titles{
        {"Anchor", "Élan", "midnight", "Midsummer", "Ｅcho", "E\u0301tude", "Ｚ"}};
};

void TestTitleJump::lettersLeadToTitles_data()
{
    QTest::addColumn<int>("marked");
    QTest::addColumn<QStringList>("letters");
    QTest::addColumn<int>("row");
    QTest::newRow("one") << -1 << QStringList({"m"}) << 2;
    QTest::newRow("several") << -1 << QStringList({"m", "i", "d", "s"}) << 3;
    QTest::newRow("the marked one, by its second letter") << 2 << QStringList({"m", "i"}) << 3;
    QTest::newRow("of either case") << -1 << QStringList({"M", "I", "D", "S"}) << 3;
    QTest::newRow("without its accent") << -1 << QStringList({"e"}) << 1;
    QTest::newRow("with it") << 1 << QStringList({"é", "t"}) << 5;
    QTest::newRow("of either width") << -1 << QStringList({"e", "c"}) << 4;
    QTest::newRow("round again") << 6 << QStringList({"a"}) << 0;
    QTest::newRow("the only one, again") << 0 << QStringList({"a"}) << 0;
    QTest::newRow("not within a title") << -1 << QStringList({"n"}) << -1;
    QTest::newRow("longer than any") << -1 << QStringList({"z", "e"}) << -1;
    QTest::newRow("an accent alone") << -1 << QStringList({"\u0301"}) << -1;
}

void TestTitleJump::lettersLeadToTitles()
{
    QFETCH(int, marked);
    QFETCH(QStringList, letters);
    TitleJump jump;
    int row = -1;
    for (const QString& each : letters) {
        row = jump.rowFor(each, m_titles, marked);
        if (row >= 0)
            marked = row;
    }
    QTEST(row, "row");
}

void TestTitleJump::theSameLetterGoesOn()
{
    TitleJump jump;
    int row = -1;
    for (const int next : {1, 4, 5, 1}) {
        row = jump.rowFor("e", m_titles, row);
        QCOMPARE(row, next);
    }
}

void TestTitleJump::aPauseBeginsAnew()
{
    TitleJump jump;
    QVERIFY(!jump.isGoingOn());
    QCOMPARE(jump.rowFor("m", m_titles, -1), 2);
    QVERIFY(jump.isGoingOn());
    QApplication::setKeyboardInputInterval(0);
    QTRY_VERIFY(!jump.isGoingOn());
    QCOMPARE(jump.rowFor("a", m_titles, 2), 0);
}

void TestTitleJump::withoutTitlesThereIsNoRow()
{
    const QStringListModel none;
    QCOMPARE(TitleJump().rowFor("a", none, -1), -1);
}

QTEST_MAIN(TestTitleJump)
#include "tst_titlejump.moc"
