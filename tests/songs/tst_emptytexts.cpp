#include "songs/emptytexts.h"
#include "songs/librarysight.h"

#include <QtTest>

namespace {
QStringList linesOf(const EmptyText& text)
{
    QStringList lines;
    for (const EmptyText::Line& line : text.lines)
        lines.append(line.text);
    return lines;
}

LibrarySight present()
{
    LibrarySight library;
    library.file = "/home/anna/Music/iTunes/iTunes Library.xml";
    library.isThere = true;
    library.bytes = 3 * 1048576;
    library.changed = QDateTime(QDate(2026, 3, 9), QTime(7, 5));
    return library;
}
} // namespace

/// The words themselves.
class TestEmptyTexts : public QObject
{
    Q_OBJECT

private slots:
    void nothingIsFound();
    void nothingIsScanned();
    void allIsTidy();
    void theLibraryThatWillBeRead();
    void aLibraryWithoutSongs_data();
    void aLibraryWithoutSongs();
    void noLibrary();
};

void TestEmptyTexts::nothingIsFound()
{
    const EmptyText songs = EmptyTexts::notFound("fjord", 95650, false);
    QCOMPARE(songs.heading, QStringLiteral("No song has “fjord”"));
    QCOMPARE(linesOf(songs), QStringList("Empty the field above to see all 95,650 songs again."));
    QVERIFY(!songs.offersLibrary);
    const EmptyText groups = EmptyTexts::notFound("fjord %1", 1, true);
    QCOMPARE(groups.heading, QStringLiteral("No group has “fjord %1”"));
    QCOMPARE(linesOf(groups), QStringList("Empty the field above to see all 1 group again."));
}

void TestEmptyTexts::nothingIsScanned()
{
    for (const bool groups : {false, true}) {
        const EmptyText text = EmptyTexts::notScanned(groups);
        QCOMPARE(text.heading, QString("Not scanned yet"));
        QVERIFY(linesOf(text).first().startsWith("Press Start Scan to find songs "));
        QVERIFY(text.picture == EmptyText::Picture::Scan);
    }
}

void TestEmptyTexts::allIsTidy()
{
    QCOMPARE(EmptyTexts::tidy(true).heading, QString("No duplicates. Well tidied."));
    QCOMPARE(EmptyTexts::tidy(false).heading, QString("No undefined songs. Well tagged."));
    QVERIFY(EmptyTexts::tidy(false).picture == EmptyText::Picture::Tidy);
    QVERIFY(!EmptyTexts::tidy(true).offersLibrary && !EmptyTexts::tidy(false).offersLibrary);
}

void TestEmptyTexts::theLibraryThatWillBeRead()
{
    const EmptyText text = EmptyTexts::toScan(present());
    QCOMPARE(text.heading, QString("Start Scan reads this library"));
    QCOMPARE(linesOf(text),
             QStringList({"/home/anna/Music/iTunes/iTunes Library.xml", "3.00MB, changed 2026-03-09 07:05"}));
    QVERIFY(text.lines.at(0).isPath && !text.lines.at(1).isPath);
    QVERIFY(text.offersLibrary);
    QVERIFY(EmptyTexts::looking().offersLibrary); // a disk that does not answer may never do
}

void TestEmptyTexts::aLibraryWithoutSongs_data()
{
    QTest::addColumn<int>("reading");
    QTest::addColumn<QString>("heading");
    const QString none = "There are no songs in this library";
    const QString unreadable = "This library cannot be read";
    QTest::newRow("empty") << int(ITUNES_EMPTY) << none;
    QTest::newRow("films alone") << int(ITUNES_READ) << none;
    QTest::newRow("broken") << int(ITUNES_BROKEN) << unreadable;
    QTest::newRow("unreadable") << int(ITUNES_UNREADABLE) << unreadable;
}

void TestEmptyTexts::aLibraryWithoutSongs()
{
    QFETCH(int, reading);
    const EmptyText text = EmptyTexts::withoutSongs(present(), iTunesReading(reading));
    QTEST(text.heading, "heading");
    QCOMPARE(linesOf(text).size(), 2);
    QVERIFY(text.offersLibrary);
}

void TestEmptyTexts::noLibrary()
{
    LibrarySight library;
    library.folders = QStringList({"/home/anna/Music/iTunes", "/home/anna/Music"});
    for (const EmptyText& text :
         {EmptyTexts::toScan(library), EmptyTexts::withoutSongs(library, ITUNES_NO_LIBRARY)}) {
        QCOMPARE(text.heading, QString("No music library was found"));
        QCOMPARE(linesOf(text),
                 QStringList({"Looked in these folders:", "/home/anna/Music/iTunes", "/home/anna/Music"}));
        QVERIFY(text.offersLibrary);
    }
    library = {};
    QVERIFY(EmptyTexts::toScan(library).lines.isEmpty()); // a user without a home
    library.file = "/mnt/gone.xml";
    QCOMPARE(linesOf(EmptyTexts::toScan(library)), QStringList({"/mnt/gone.xml", "There is no such file."}));
}

QTEST_GUILESS_MAIN(TestEmptyTexts)
#include "tst_emptytexts.moc"
