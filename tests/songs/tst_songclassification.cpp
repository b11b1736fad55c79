#include "songs/songclassification.h"

#include <QtTest>

/// What of the classification is asked behind it.
class TestSongClassification : public QObject
{
    Q_OBJECT

private slots:
    void theRowBehindAGroup_data();
    void theRowBehindAGroup();
};

void TestSongClassification::theRowBehindAGroup_data()
{
    QTest::addColumn<int>("groups");
    QTest::addColumn<int>("row");
    QTest::addColumn<bool>("isThere");
    QTest::addColumn<int>("next");
    QTest::newRow("the one behind it") << 3 << 0 << true << 1;
    QTest::newRow("behind the last comes the first") << 3 << 2 << true << 0;
    QTest::newRow("behind the only one comes none") << 1 << 0 << true << -1;
    QTest::newRow("one that is gone gave its row to the next") << 3 << 1 << false << 1;
    QTest::newRow("behind the last, which is gone, comes the first") << 3 << 3 << false << 0;
    QTest::newRow("the only one left") << 1 << 0 << false << 0;
    QTest::newRow("the only one left, before it") << 1 << 1 << false << 0;
    QTest::newRow("none is left") << 0 << 0 << false << -1;
}

void TestSongClassification::theRowBehindAGroup()
{
    QFETCH(int, groups);
    QFETCH(int, row);
    QFETCH(bool, isThere);
    QTEST(SongClassification::rowAfter(row, isThere, groups), "next");
}

QTEST_MAIN(TestSongClassification)
#include "tst_songclassification.moc"
