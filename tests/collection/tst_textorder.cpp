#include "collection/textorder.h"

#include <QLocale>
#include <QtTest>

class TestTextOrder : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void textsAreInTheOrderOfPeople_data();
    void textsAreInTheOrderOfPeople();
    void theLanguageDecides();
    void equalOnesStayInTheirOrder();

private:
    static QStringList sorted(const QStringList& texts, bool backwards = false)
    {
        QStringList inOrder;
        for (const int position : TextOrder::sorted(texts, backwards))
            inOrder.append(texts.at(position));
        return inOrder;
    }
};

void TestTextOrder::textsAreInTheOrderOfPeople_data()
{
    QTest::addColumn<QStringList>("forwards");
    QTest::addColumn<QStringList>("backwards");
    QTest::newRow("nothing") << QStringList() << QStringList();
    QTest::newRow("numbers") << QStringList({"2", "10", "1999"}) << QStringList({"1999", "10", "2"});
    QTest::newRow("numbers in words")
        << QStringList({"Part 2", "Part 10", "Part 10 b"}) << QStringList({"Part 10 b", "Part 10", "Part 2"});
    QTest::newRow("capitals") << QStringList({"air", "Bee", "cat"}) << QStringList({"cat", "Bee", "air"});
    QTest::newRow("accents") << QStringList({"eau", "Élan", "elbow"})
                             << QStringList({"elbow", "Élan", "eau"});
    QTest::newRow("empty ones last") << QStringList({"a", "b", ""}) << QStringList({"b", "a", ""});
}

void TestTextOrder::textsAreInTheOrderOfPeople()
{
    QFETCH(QStringList, forwards);
    QStringList shuffled = forwards;
    std::reverse(shuffled.begin(), shuffled.end());
    QCOMPARE(sorted(shuffled), forwards);
    QCOMPARE(sorted(forwards), forwards);
    QTEST(sorted(shuffled, true), "backwards");
}

void TestTextOrder::theLanguageDecides()
{
    const QStringList letters = {QStringLiteral("z"), QStringLiteral("ä")};
    QLocale::setDefault(QLocale(QLocale::German));
    QCOMPARE(sorted(letters), QStringList({QStringLiteral("ä"), QStringLiteral("z")}));
    QLocale::setDefault(QLocale(QLocale::Swedish));
    QCOMPARE(sorted(letters), letters);
}

void TestTextOrder::equalOnesStayInTheirOrder()
{
    const QStringList texts = {"b", "", "a", "b", "", "a", "B"};
    QCOMPARE(TextOrder::sorted(texts, false), QVector<int>({2, 5, 0, 3, 6, 1, 4}));
    QCOMPARE(TextOrder::sorted(texts, true), QVector<int>({0, 3, 6, 2, 5, 1, 4}));
}

QTEST_APPLESS_MAIN(TestTextOrder)
#include "tst_textorder.moc"
