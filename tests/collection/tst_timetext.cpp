#include "collection/timetext.h"

#include <QtTest>

class TestTimeText : public QObject
{
    Q_OBJECT

private slots:
    void lengthsAreSaidInWords_data();
    void lengthsAreSaidInWords();
};

void TestTimeText::lengthsAreSaidInWords_data()
{
    QTest::addColumn<qint64>("milliseconds");
    QTest::addColumn<QString>("words");
    QTest::newRow("nothing") << qint64(0) << "0 seconds";
    QTest::newRow("not yet a second") << qint64(999) << "0 seconds";
    QTest::newRow("below nothing") << qint64(-5000) << "0 seconds";
    QTest::newRow("one second") << qint64(1000) << "1 second";
    QTest::newRow("whole minutes") << qint64(120000) << "2 minutes";
    QTest::newRow("a song") << qint64(243500) << "4 minutes 3 seconds";
    QTest::newRow("whole hours") << qint64(7200000) << "2 hours";
    QTest::newRow("a set") << qint64(3723000) << "1 hour 2 minutes 3 seconds";
    QTest::newRow("a long file") << qint64(3600) * 1000 * 2000 << "2,000 hours";
}

void TestTimeText::lengthsAreSaidInWords()
{
    QFETCH(qint64, milliseconds);
    QTEST(TimeText::inWords(milliseconds), "words");
}

QTEST_APPLESS_MAIN(TestTimeText)
#include "tst_timetext.moc"
