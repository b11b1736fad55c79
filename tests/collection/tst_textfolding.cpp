#include "collection/textfolding.h"

#include <QtTest>

class TestTextFolding : public QObject
{
    Q_OBJECT

private slots:
    void whatPeopleTakeForOneIsOne_data();
    void whatPeopleTakeForOneIsOne();
    void otherLettersStayApart();
    void typedWordsAreParted_data();
    void typedWordsAreParted();
};

void TestTextFolding::whatPeopleTakeForOneIsOne_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("folded");
    QTest::newRow("nothing") << ""
                             << "";
    QTest::newRow("plain") << "midnight ferry 7"
                           << "midnight ferry 7";
    QTest::newRow("capitals") << "MidNight AZ @[`{"
                              << "midnight az @[`{";
    QTest::newRow("an accent") << QStringLiteral("Á") << "a";
    QTest::newRow("an accent of its own") << QStringLiteral("A\u0301e\u0323\u0302") << "ae";
    QTest::newRow("letters of many tongues")
        << QStringLiteral("Ça Ñandú Žižek Ởn ÿ Å") << "ca nandu zizek on y a";
    QTest::newRow("a ligature") << QStringLiteral("ﬁre ﬄ") << "fire ffl";
    QTest::newRow("full width") << QStringLiteral("ＡＢＣ　１２") << "abc 12";
    QTest::newRow("half width") << QStringLiteral("ｶﾞ") << QStringLiteral("カ");
    QTest::newRow("a voiced sign") << QStringLiteral("ガ") << QStringLiteral("カ");
    QTest::newRow("more than a capital") << QStringLiteral("STRASSE Straße") << "strasse strasse";
    QTest::newRow("Greek") << QStringLiteral("Ὀδυσσεύς ΣΊΣΥΦΟΣ") << QStringLiteral("οδυσσευσ σισυφοσ");
    QTest::newRow("Cyrillic") << QStringLiteral("Ёлка Й") << QStringLiteral("елка и");
    QTest::newRow("Arabic vowels") << QStringLiteral("مُحَمَّد") << QStringLiteral("محمد");
    QTest::newRow("dotted and dotless") << QStringLiteral("İI ıi") << "ii ii";
    QTest::newRow("letters that are one piece")
        << QStringLiteral("Røyksopp Łódź Ægir Œuvre Đ ħ ŧ") << "royksopp lodz aegir oeuvre d h t";
    QTest::newRow("quotes and dashes") << QStringLiteral("Don’t ‘“A”—B–C") << "don't '\"a\"-b-c";
    QTest::newRow("what is not seen")
        << QStringLiteral("so\u00ADft \u200B❤\uFE0F") << QStringLiteral("soft ❤");
    QTest::newRow("beyond the first plane") << QStringLiteral("𝒜 😀") << QStringLiteral("a 😀");
}

void TestTextFolding::whatPeopleTakeForOneIsOne()
{
    QFETCH(QString, text);
    QFETCH(QString, folded);
    QCOMPARE(QString::fromStdString(TextFolding::folded(text)), folded);
    QCOMPARE(QString::fromStdString(TextFolding::folded(folded)), folded);
    std::string behind = "x";
    TextFolding::append(behind, text);
    QCOMPARE(QString::fromStdString(behind), 'x' + folded);
}

void TestTextFolding::otherLettersStayApart()
{
    QVERIFY(TextFolding::folded("a") != TextFolding::folded("b"));
    QVERIFY(TextFolding::folded(QStringLiteral("か")) != TextFolding::folded(QStringLiteral("カ")));
    // Vowels, although they are written as marks.
    QVERIFY(TextFolding::folded(QStringLiteral("दुख")) != TextFolding::folded(QStringLiteral("दख")));
}

void TestTextFolding::typedWordsAreParted_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QVector<QByteArray>>("words");
    QTest::newRow("nothing") << "" << QVector<QByteArray>();
    QTest::newRow("blanks") << QStringLiteral(" \t\u3000 ") << QVector<QByteArray>();
    QTest::newRow("one") << " Ferry" << QVector<QByteArray>{"ferry"};
    QTest::newRow("some") << QStringLiteral("Élan\u3000vital  ﬁn ")
                          << QVector<QByteArray>{"elan", "vital", "fin"};
    QTest::newRow("an accent that waits for its letter")
        << QStringLiteral("´ \u0301 a") << QVector<QByteArray>{"a"};
}

void TestTextFolding::typedWordsAreParted()
{
    QFETCH(QString, typed);
    QTEST(TextFolding::words(typed), "words");
}

QTEST_APPLESS_MAIN(TestTextFolding)
#include "tst_textfolding.moc"
