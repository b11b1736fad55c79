#include "collection/glob.h"

#include <QtTest>

class TestGlob : public QObject
{
    Q_OBJECT

private slots:
    void comparesNamesAndPaths_data();
    void comparesNamesAndPaths();
    void saysWhatMakesNoSense_data();
    void saysWhatMakesNoSense();
    void noPatternTakesLong();
};

void TestGlob::comparesNamesAndPaths_data()
{
    QTest::addColumn<QByteArray>("pattern");
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<bool>("matches");
    const auto row = [](const char* pattern, const char* path, bool matches) {
        QTest::addRow("%s %s %d", pattern, path, int(matches))
            << QByteArray(pattern) << QByteArray(path) << matches;
    };
    row("*.wav", "a.wav", true);
    row("*.wav", "folder/a.wav", true); // the name alone
    row("*.wav", "a.wav.mp3", false);
    row("a", "a", true);
    row("a", "ab", false);
    row("a?c", "abc", true);
    row("a?c", "ac", false);
    row("?", "\xC3\xA4", true); // one character, not two bytes
    row("?", "\xFF", true);     // and a byte that is none
    row("[a-c]x", "bx", true);
    row("[a-c]x", "dx", false);
    row("[!a-c]x", "dx", true);
    row("[^a-c]x", "bx", false);
    row("[]]", "]", true);
    row("[a-]", "-", true);
    row("\\*", "*", true);
    row("\\*", "a", false);
    row("old/*", "old/a.mp3", true);
    row("old/*", "old/deep/a.mp3", false);
    row("old/**", "old/deep/a.mp3", true);
    row("/old", "old", true); // right below the folder
    row("/old", "new/old", false);
    row("**/old", "new/old", true);
    row("**/old", "new/deep/old", true);
    row("a?b/c", "a/b/c", false);
    row("x[!a]y/z", "x/y/z", false);
}

void TestGlob::comparesNamesAndPaths()
{
    QFETCH(QByteArray, pattern);
    QFETCH(QByteArray, path);
    QFETCH(bool, matches);
    std::string wrong;
    const Glob glob(pattern.toStdString(), wrong);
    QCOMPARE(wrong, std::string());
    QCOMPARE(glob.matches(path.toStdString()), matches);
}

void TestGlob::saysWhatMakesNoSense_data()
{
    QTest::addColumn<QByteArray>("pattern");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("empty") << QByteArray() << QByteArray("empty");
    QTest::newRow("open") << QByteArray("a[b") << QByteArray("not closed");
    QTest::newRow("closed at once") << QByteArray("a[]") << QByteArray("not closed");
    QTest::newRow("backwards") << QByteArray("[z-a]") << QByteArray("backwards");
    QTest::newRow("backslash") << QByteArray("a\\") << QByteArray("backslash");
}

void TestGlob::saysWhatMakesNoSense()
{
    QFETCH(QByteArray, pattern);
    QFETCH(QByteArray, reason);
    std::string wrong;
    const Glob glob(pattern.toStdString(), wrong);
    QVERIFY2(QByteArray::fromStdString(wrong).contains(reason), wrong.c_str());
}

void TestGlob::noPatternTakesLong()
{
    std::string wrong;
    QByteArray pattern;
    for (int i = 0; i < 50; ++i)
        pattern += "*a";
    const Glob glob((pattern + 'b').toStdString(), wrong);
    QVERIFY(!glob.matches(std::string(250, 'a')));
}

QTEST_GUILESS_MAIN(TestGlob)
#include "tst_glob.moc"
