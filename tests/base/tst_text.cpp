#include "base/text.h"

#include <QtTest>

class TestText : public QObject
{
    Q_OBJECT

private slots:
    void everyCharacterComesBack();
    void brokenBytesAreNone_data();
    void brokenBytesAreNone();
    void halvesAreNumbersAndNoCharacters();
    void everyNameComesBack_data();
    void everyNameComesBack();
    void noNameIsMadeOfOtherHalves();
};

void TestText::everyCharacterComesBack()
{
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        if (!base::isCharacter(c))
            continue;
        std::string text;
        base::appendUtf8(text, c);
        const base::Utf8Number read = base::utf8At(text + 'x', 0);
        if (read.number != c || read.size != text.size() || !base::isUtf8(text) ||
            base::toUtf32(text) != std::u32string(1, c))
            QFAIL(qPrintable(QString::number(uint(c), 16)));
    }
}

void TestText::brokenBytesAreNone_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("a further byte alone") << QByteArray("\x80");
    QTest::newRow("too long for ASCII") << QByteArray("\xC1\xBF");
    QTest::newRow("too long, three bytes") << QByteArray("\xE0\x9F\xBF");
    QTest::newRow("too long, four bytes") << QByteArray("\xF0\x8F\xBF\xBF");
    QTest::newRow("cut after one") << QByteArray("\xC3");
    QTest::newRow("cut after two") << QByteArray("\xE2\x82");
    QTest::newRow("cut after three") << QByteArray("\xF0\x9F\x8E");
    QTest::newRow("followed by another") << QByteArray("\xC3x");
    QTest::newRow("beyond the last character") << QByteArray("\xF4\x90\x80\x80");
    QTest::newRow("no such byte") << QByteArray("\xFF");
}

void TestText::brokenBytesAreNone()
{
    QFETCH(QByteArray, bytes);
    const std::string text = bytes.toStdString();
    QCOMPARE(base::utf8At(text, 0).size, size_t(0));
    QVERIFY(!base::isUtf8(text));
    QVERIFY(!base::isUtf8("before" + text));
    QCOMPARE(base::toUtf32(text)[0], base::replacementCharacter);
}

void TestText::halvesAreNumbersAndNoCharacters()
{
    std::string text;
    base::appendUtf8(text, 0xD83C);
    const base::Utf8Number half = base::utf8At(text, 0);
    QCOMPARE(half.size, size_t(3));
    QCOMPARE(half.number, char32_t(0xD83C));
    QVERIFY(!half.isCharacter());
    QVERIFY(!base::isUtf8(text));
    QCOMPARE(base::toUtf32(text), std::u32string(3, base::replacementCharacter));
}

void TestText::everyNameComesBack_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("plain") << QByteArray("song.mp3");
    QTest::newRow("characters") << QByteArray("\xC3\xA9 \xF0\x9F\x8E\xB5");
    QTest::newRow("bytes") << QByteArray("a\xFF\x80z");
    QTest::newRow("cut") << QByteArray("\xF0\x9F\x8E");
    QTest::newRow("a half") << QByteArray("\xED\xB2\x80");
}

void TestText::everyNameComesBack()
{
    QFETCH(QByteArray, name);
    const std::string bytes = name.toStdString();
    QCOMPARE(base::nameFromUtf32(base::nameToUtf32(bytes)).value_or("none"), bytes);
    QVERIFY(base::isUtf8(base::shownName(bytes)));
    if (base::isUtf8(bytes)) {
        QVERIFY(base::nameToUtf32(bytes) == base::toUtf32(bytes));
        QCOMPARE(base::shownName(bytes), bytes);
    }
}

void TestText::noNameIsMadeOfOtherHalves()
{
    for (const char32_t c : {0xD800, 0xDBFF, 0xDC00, 0xDC7F, 0xDD00, 0xDFFF, 0x110000})
        QVERIFY(!base::nameFromUtf32(std::u32string(1, c)));
}

QTEST_GUILESS_MAIN(TestText)
#include "tst_text.moc"
