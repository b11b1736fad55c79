#include "collection/counttext.h"

#include <QtTest>

class TestCountText : public QObject
{
    Q_OBJECT

private slots:
    void thousandsAreParted();
    void oneIsOne();
};

void TestCountText::thousandsAreParted()
{
    QCOMPARE(CountText::number(0), QStringLiteral("0"));
    QCOMPARE(CountText::number(999), QStringLiteral("999"));
    QCOMPARE(CountText::number(95650), QStringLiteral("95,650"));
}

void TestCountText::oneIsOne()
{
    QCOMPARE(CountText::of(1, "song", "songs"), QStringLiteral("1 song"));
    QCOMPARE(CountText::of(0, "song", "songs"), QStringLiteral("0 songs"));
    QCOMPARE(CountText::of(2000, "song", "songs"), QStringLiteral("2,000 songs"));
}

QTEST_APPLESS_MAIN(TestCountText)
#include "tst_counttext.moc"
