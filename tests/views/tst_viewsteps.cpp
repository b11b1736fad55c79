// Where keys take the mark of a view.
#include "views/viewsteps.h"

#include <QtTest>

class TestViewSteps : public QObject
{
    Q_OBJECT

private slots:
    void keysLeadToRows_data();
    void keysLeadToRows();
    void everyKeyLeadsToARowThatIsThere();
};

void TestViewSteps::keysLeadToRows_data()
{
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("to");
    // Eleven rows, three lines a page.
    QTest::newRow("down a table") << 1 << 4 << int(Qt::Key_Down) << 5;
    QTest::newRow("up a table") << 1 << 4 << int(Qt::Key_Up) << 3;
    QTest::newRow("a table has no sides") << 1 << 4 << int(Qt::Key_Right) << 4;
    QTest::newRow("nor a left one") << 1 << 4 << int(Qt::Key_Left) << 4;
    QTest::newRow("a page down a table") << 1 << 4 << int(Qt::Key_PageDown) << 7;
    QTest::newRow("a page up a table") << 1 << 4 << int(Qt::Key_PageUp) << 1;
    QTest::newRow("the end") << 1 << 4 << int(Qt::Key_End) << 10;
    QTest::newRow("the beginning") << 1 << 4 << int(Qt::Key_Home) << 0;
    QTest::newRow("above the first") << 1 << 0 << int(Qt::Key_Up) << 0;
    QTest::newRow("below the last") << 1 << 10 << int(Qt::Key_Down) << 10;
    QTest::newRow("past the end by a page") << 1 << 9 << int(Qt::Key_PageDown) << 10;
    QTest::newRow("past the beginning by a page") << 1 << 2 << int(Qt::Key_PageUp) << 0;
    QTest::newRow("right in a line") << 4 << 1 << int(Qt::Key_Right) << 2;
    QTest::newRow("right to the next line") << 4 << 3 << int(Qt::Key_Right) << 4;
    QTest::newRow("left to the line before") << 4 << 4 << int(Qt::Key_Left) << 3;
    QTest::newRow("left of the first") << 4 << 0 << int(Qt::Key_Left) << 0;
    QTest::newRow("right of the last") << 4 << 10 << int(Qt::Key_Right) << 10;
    QTest::newRow("down a column") << 4 << 1 << int(Qt::Key_Down) << 5;
    QTest::newRow("up a column") << 4 << 5 << int(Qt::Key_Up) << 1;
    QTest::newRow("down to a short line") << 4 << 7 << int(Qt::Key_Down) << 10;
    QTest::newRow("down from the last line") << 4 << 9 << int(Qt::Key_Down) << 9;
    QTest::newRow("up from the first line") << 4 << 2 << int(Qt::Key_Up) << 2;
    QTest::newRow("a page down keeps the column") << 4 << 1 << int(Qt::Key_PageDown) << 9;
    QTest::newRow("a page up keeps the column") << 4 << 9 << int(Qt::Key_PageUp) << 1;
    QTest::newRow("without a mark, down") << 4 << -1 << int(Qt::Key_Down) << 0;
    QTest::newRow("without a mark, up") << 4 << -1 << int(Qt::Key_PageUp) << 0;
    QTest::newRow("without a mark, the end") << 4 << -1 << int(Qt::Key_End) << 10;
}

void TestViewSteps::keysLeadToRows()
{
    QFETCH(int, columns);
    QFETCH(int, from);
    QFETCH(int, key);
    QTEST(ViewSteps::from(from, key, {11, columns, 3}), "to");
}

void TestViewSteps::everyKeyLeadsToARowThatIsThere()
{
    for (const int key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down, Qt::Key_PageUp,
                          Qt::Key_PageDown, Qt::Key_Home, Qt::Key_End})
        for (int rows = 0; rows < 9; ++rows)
            for (int columns = 1; columns < 5; ++columns)
                for (int from = -1; from < rows; ++from) {
                    const int to = ViewSteps::from(from, key, {rows, columns, 2});
                    QVERIFY(rows == 0 ? to == -1 : to >= 0 && to < rows);
                }
}

QTEST_MAIN(TestViewSteps)
#include "tst_viewsteps.moc"
