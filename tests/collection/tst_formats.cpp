// Formats by their codes and by the ends of their names.
#include "collection/formats.h"

#include <QtTest>

class TestFormats : public QObject
{
    Q_OBJECT

private slots:
    void everyCodeHasItsNames_data();
    void everyCodeHasItsNames();
    void endingsAreTold_data();
    void endingsAreTold();
    void theDialogNamesAll();
    void aDropTakesWhatIsNamedForIt();
};

void TestFormats::everyCodeHasItsNames_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("listed");
    const auto row = [](int code, const char* name, const char* listed) {
        QTest::addRow("%d", code) << code << QString(name) << QString(listed);
    };
    row(0, "wav", "WAV");
    row(1, "Wma", "WMA");
    row(2, "mp3", "MP3");
    row(3, "AAC", "AAC");
    row(4, "M4a", "M4A");
    row(5, "OGG", "OGG");
    row(6, "APE", "APE");
    row(7, "Flac", "FLAC");
    row(8, "None", "MP3");
    row(-1, "None", "MP3");
}

void TestFormats::everyCodeHasItsNames()
{
    QFETCH(int, code);
    QTEST(Formats::nameOf(code), "name");
    QTEST(Formats::listedName(code), "listed");
}

void TestFormats::endingsAreTold_data()
{
    QTest::addColumn<bool>("isMusic");
    QTest::addColumn<bool>("isWindowsMedia");
    for (const char* ending : {"mp3", "MP3", "m4a", "ape", "aac", "lac", "wav", "Ogg"})
        QTest::newRow(ending) << true << false;
    for (const char* ending : {"wma", "WMA"})
        QTest::newRow(ending) << false << true;
    for (const char* ending : {"", "ac", "jpg", "mp4", "flac"})
        QTest::addRow("<%s>", ending) << false << false;
}

void TestFormats::endingsAreTold()
{
    const QString ending = QString(QTest::currentDataTag()).remove('<').remove('>');
    QTEST(Formats::isMusicEnding(ending), "isMusic");
    QTEST(Formats::isWindowsMediaEnding(ending), "isWindowsMedia");
}

void TestFormats::theDialogNamesAll()
{
    QCOMPARE(Formats::namePatterns(), QStringLiteral("*.mp3 *.m4a *.ape *.aac *.flac *.wma *.wav *.ogg"));
}

void TestFormats::aDropTakesWhatIsNamedForIt()
{
    QCOMPARE(Formats::dropped(), QStringList({"MP3", "M4A", "APE", "AAC", "FLAC", "WAV", "OGG"}));
    for (const QString& name : Formats::dropped())
        QVERIFY(Formats::isMusicEnding(name.right(3)));
}

QTEST_GUILESS_MAIN(TestFormats)
#include "tst_formats.moc"
