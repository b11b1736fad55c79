// Names that a library declares for texts.
#include "latency.h"
#include "plainlibrary.h"

#include <QtTest>

using namespace PlainLibrary;

class TestLibraryEntities : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void entitiesOfEntitiesEndAtOnce();
    void externalEntitiesReadAsNothing();
    void entitiesOfCharactersAreResolved_data();
    void entitiesOfCharactersAreResolved();

private:
    Reading read(const QByteArray& bytes) const { return PlainLibrary::read(m_folder, bytes); }

    QTemporaryDir m_folder;
};

void TestLibraryEntities::init()
{
    AudioFile::takeLog();
}

void TestLibraryEntities::entitiesOfEntitiesEndAtOnce()
{
    QByteArray bomb = "<!DOCTYPE plist [<!ENTITY a0 \"ha\">";
    for (int i = 1; i < 60; ++i)
        bomb += "<!ENTITY a" + QByteArray::number(i) + " \"" +
                QByteArray("&a" + QByteArray::number(i - 1) + ";").repeated(10) + "\">";
    bomb += "]><plist><dict><key>Tracks</key><dict>" + entryWith("<key>Name</key><string>&a59;</string>") +
            "</dict></dict></plist>";
    QVERIFY(processorMillisecondsOf([&] { QCOMPARE(read(bomb).count, 0); }) < 1000);
    QCOMPARE(AudioFile::takeLog().size(), 1);

    // One long entity very often: the text stays within bounds.
    const QByteArray wide =
        "<!DOCTYPE plist [<!ENTITY a \"" + QByteArray(4000, 'x') +
        "\">]><plist><dict><key>Tracks</key><dict>" +
        entryWith("<key>Name</key><string>" + QByteArray("&a;").repeated(100000) + "</string>") +
        "</dict></dict></plist>";
    const Reading reading = read(wide);
    QCOMPARE(reading.count, 1);
    QVERIFY(qstrlen(reading.records[0].name) <= 1024 * 1024);
}

void TestLibraryEntities::externalEntitiesReadAsNothing()
{
    const QString secret = Fixtures::writeLibrary(m_folder.filePath("secret"), "secret");
    const Reading reading =
        read("<!DOCTYPE plist [<!ENTITY % p SYSTEM \"file:///dev/zero\"> <!-- ' ]> -->\n"
             "<!ENTITY out SYSTEM \"file://" +
             secret.toUtf8() +
             "\"><!ENTITY in 'a plain name'>]>"
             "<plist><dict><key>Tracks</key><dict>" +
             entryWith("<key>Name</key><string>[&out;|&in;]</string>") + "</dict></dict></plist>");
    QCOMPARE(reading.count, 1);
    QCOMPARE(text(reading.records[0].name), QStringLiteral("[|a plain name]"));
}

void TestLibraryEntities::entitiesOfCharactersAreResolved_data()
{
    QTest::addColumn<QByteArray>("declarations");
    QTest::addColumn<QString>("name");
    const QString none = "[&in;]";
    QTest::newRow("a number") << QByteArray("<!ENTITY in \"a&#160;b\">") << QString("[a\u00A0b]");
    QTest::newRow("a hexadecimal number") << QByteArray("<!ENTITY in '&#xE9;'>") << QString("[\u00E9]");
    QTest::newRow("a pair of numbers")
        << QByteArray("<!ENTITY in '&#xD83D;&#xDE00;'>") << text("[\xF0\x9F\x98\x80]");
    QTest::newRow("a known name") << QByteArray("<!ENTITY in 'R&amp;B'>") << "[R&B]";
    QTest::newRow("a known name in numbers") << QByteArray("<!ENTITY in '&#38;#60;'>") << "[<]";
    QTest::newRow("an ampersand") << QByteArray("<!ENTITY in 'R &#38; B'>") << "[R & B]";
    QTest::newRow("a percent sign") << QByteArray("<!ENTITY in '100%'>") << "[100%]";
    QTest::newRow("what looks like a parameter") << QByteArray("<!ENTITY in '%p;'>") << "[%p;]";
    QTest::newRow("the first counts") << QByteArray("<!ENTITY in 'a'><!ENTITY in 'b'>") << "[a]";
    QTest::newRow("in a comment") << QByteArray("<!-- <!ENTITY in '&out;'> ' -->") << none;
    QTest::newRow("behind a comment") << QByteArray("<!--'--><!ENTITY in 'a'>") << "[a]";
    QTest::newRow("in an instruction") << QByteArray("<?it's <!ENTITY in '&out;'> ]>?>") << none;
    QTest::newRow("in another's value")
        << QByteArray("<!ENTITY a \"<!ENTITY in '&#38;'>\"><!ENTITY in 'a'>") << "[a]";
}

void TestLibraryEntities::entitiesOfCharactersAreResolved()
{
    QFETCH(QByteArray, declarations);
    QFETCH(QString, name);
    const Reading reading =
        read("<!DOCTYPE plist [" + declarations + "]>" + "<plist><dict><key>Tracks</key><dict>" +
             entryWith("<key>Name</key><string>[&in;]</string>") + "</dict></dict></plist>");
    QCOMPARE(reading.count, 1);
    QCOMPARE(text(reading.records[0].name), name);
    QVERIFY(AudioFile::takeLog().isEmpty());
}

QTEST_GUILESS_MAIN(TestLibraryEntities)
#include "tst_libraryentities.moc"
