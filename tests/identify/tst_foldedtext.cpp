// Which texts are close to each other.
#include "identify/foldedtext.h"

#include <QtTest>

using audiocore::closeness;
using audiocore::folded;

namespace {
double closenessOf(const char* one, const char* other)
{
    return closeness(folded(one), folded(other));
}
} // namespace

class TestFoldedText : public QObject
{
    Q_OBJECT

private slots:
    void textsAreFolded_data();
    void textsAreFolded();
    void whatIsFoldedStaysAsItIs();
    void closenessCountsLetters();
    void longTextsAreComparedByTheirBeginning();
};

void TestFoldedText::textsAreFolded_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("plain");
    const auto add = [](const char* text, const char* plain) {
        QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(plain);
    };
    add("Midnight Ferry", "midnight ferry");
    add("  MIDNIGHT\tFerry ", "midnight ferry");
    add("Don't Stop", "dont stop");
    add("Don’t Stop", "dont stop");
    add("Rock & Roll", "rock and roll");
    add("Rock&Roll", "rock and roll");
    add("AC/DC", "ac dc");
    add("AC_DC", "ac dc");
    add("Déjà Vu", "deja vu");
    add("De\xCC\x81ja\xCC\x80 Vu", "deja vu"); // accents that stand behind their letters
    add("Björk Guðmundsdóttir", "bjork gudmundsdottir");
    add("Straße Æther Œuvre Þór", "strasse aether oeuvre thor");
    add("Łódź Žižek Ștefan", "lodz zizek stefan");
    add("Tiếng Việt", "tieng viet");
    add("Чайковский, Пётр", "чайковский петр");
    add("ΜΙΚΗΣ Θεοδωράκης", "μικησ θεοδωρακησ");
    add("東京事変", "東京事変");
    add("ＡＢＣ　１２", "abc 12");
    add("100% — “Live”…", "100 live");
    add("!!!", "!!!");
    add("?", "?");
    add("", "");
    add(" ", "");
}

void TestFoldedText::textsAreFolded()
{
    QFETCH(QString, text);
    QFETCH(QString, plain);
    QCOMPARE(QString::fromStdU32String(folded(text.toStdString())), plain);
}

void TestFoldedText::whatIsFoldedStaysAsItIs()
{
    for (char32_t c = 1; c < 0x3100; ++c) {
        const QString once = QString::fromStdU32String(folded(QString::fromUcs4(&c, 1).toStdString()));
        const QString twice = QString::fromStdU32String(folded(once.toStdString()));
        QVERIFY2(twice == once, qPrintable(QString::number(c, 16)));
    }
    QCOMPARE(folded("\xFF\xFE"), std::u32string(U"\uFFFD\uFFFD"));
}

void TestFoldedText::closenessCountsLetters()
{
    QCOMPARE(closenessOf("Midnight Ferry", "midnight ferry!"), 1.0);
    QCOMPARE(closenessOf("abcdefghij", "abcdefghiX"), 0.9);
    QCOMPARE(closenessOf("abcdefghij", "abcdefghi"), 0.9);
    QCOMPARE(closenessOf("abcdefghij", "bacdefghij"), 0.9);
    QCOMPARE(closenessOf("abcdefghij", "abXdefghiX"), 0.8);
    QCOMPARE(closenessOf("abcd", "wxyz"), 0.0);
    QCOMPARE(closenessOf("abcd", "abcdefghij"), 0.0);
    QCOMPARE(closenessOf("", ""), 0.0);
    QCOMPARE(closenessOf("a", ""), 0.0);
    QCOMPARE(closenessOf("abcdefgh", "abcdwxyz"), closenessOf("abcdwxyz", "abcdefgh"));
}

void TestFoldedText::longTextsAreComparedByTheirBeginning()
{
    const std::u32string text(100000, U'x');
    QCOMPARE(closeness(text, text + U"y"), 1.0);
    QCOMPARE(closeness(text, std::u32string(100000, U'y')), 0.0);
}

QTEST_APPLESS_MAIN(TestFoldedText)
#include "tst_foldedtext.moc"
