// The bytes of single fields, at the bounds of what is believed: APE items, entries of an INFO list, and the
// texts in them.
#include "audiocore/tagitem.h"
#include "mediabytes.h"
#include "tags/apebytes.h"
#include "tags/fieldlist.h"
#include "tags/infobytes.h"
#include "tags/taglimits.h"
#include "tags/tagtext.h"

#include <QtTest>

using audiocore::ApeBytes;
using audiocore::InfoBytes;
using audiocore::TagEdits;
using MediaBytes::apeItem;
using MediaBytes::apeTag;
using MediaBytes::chunk;
using MediaBytes::little;
using TagLib::ByteVector;

class TestFieldBytes : public QObject
{
    Q_OBJECT

private slots:
    void whatIsNoUtf8IsReadAsWindowsHasIt_data();
    void whatIsNoUtf8IsReadAsWindowsHasIt();
    void aTotalStandsBehindTheSlash();
    void namesAreTheSameInCapitalsOrNot_data();
    void namesAreTheSameInCapitalsOrNot();
    void aFooterTellsTheSizeOfItsTag_data();
    void aFooterTellsTheSizeOfItsTag();
    void itemsThatDoNotFitAreNoTag_data();
    void itemsThatDoNotFitAreNoTag();
    void anItemMayEndWithTheTag();
    void thereIsAMostOfItems();
    void textsOfItemsAreJoined();
    void longItemsSayNothing();
    void aPictureTakesThePlaceOfAll();
    void theTrackKeepsItsTotal();
    void itemsAreShownInBounds();
    void thereIsAMostOfShownText();
    void aTagWithoutItemsIsNone();
    void entriesUpToTheEndAreEntries_data();
    void entriesUpToTheEndAreEntries();
    void whatIsNoEntryStaysBehind_data();
    void whatIsNoEntryStaysBehind();
    void anEntryIsFilledUpToAnEvenSize();
    void ofEqualEntriesTheLastIsShown();
    void longEntriesAreNotShown();
    void thereIsAMostOfEntries();
};

namespace {
constexpr int longest = int(audiocore::longestText);
constexpr int mostFields = int(audiocore::mostFields);

ByteVector vectorOf(const QByteArray& bytes)
{
    return ByteVector(bytes.constData(), unsigned(bytes.size()));
}

QByteArray arrayOf(const ByteVector& bytes)
{
    return QByteArray(bytes.data(), int(bytes.size()));
}

QString readable(const QByteArray& bytes)
{
    return QString::fromStdString(audiocore::readableText(vectorOf(bytes)));
}

QByteArray footer(quint32 size, quint32 flags)
{
    return "APETAGEX" + little(quint32(2000)) + little(size) + little(quint32(1)) + little(flags) +
           QByteArray(8, '\0');
}

QByteArray flaggedItem(const QByteArray& key, const QByteArray& value, quint32 flags)
{
    return apeItem(key, value).replace(4, 4, little(flags));
}

std::optional<ApeBytes> parsedApe(const QByteArray& items)
{
    return ApeBytes::parse(vectorOf(apeTag(items, 1)));
}

QString textOf(const QByteArray& items, int type)
{
    const std::optional<ApeBytes> tag = parsedApe(items);
    return tag ? QString::fromStdString(tag->text(type)) : QStringLiteral("no tag");
}

TagEdits textEdit(int type, const char* text)
{
    TagEdits edits;
    edits.texts[std::size_t(type)] = text;
    return edits;
}

/// Between header and footer.
QByteArray itemsOf(const ApeBytes& tag)
{
    constexpr int edge = 32;
    const QByteArray bytes = arrayOf(tag.render());
    return bytes.mid(edge, bytes.size() - 2 * edge);
}

QByteArray shownItems(const QByteArray& items)
{
    return arrayOf(ApeBytes::shown(vectorOf(items)));
}

QByteArray edited(const QByteArray& list)
{
    InfoBytes info(vectorOf("INFO" + list));
    info.apply(textEdit(TAG_ARTIST, "new"));
    return arrayOf(info.render()).mid(4);
}

QByteArray shownEntries(const QByteArray& list)
{
    return arrayOf(InfoBytes::shown(vectorOf("INFO" + list))).mid(4);
}
} // namespace

void TestFieldBytes::whatIsNoUtf8IsReadAsWindowsHasIt_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("UTF-8") << QByteArray("Caf\xC3\xA9") << QStringLiteral("Café");
    QTest::newRow("Latin-1") << QByteArray("Caf\xE9\x7F") << QStringLiteral("Café\x7F");
    QTest::newRow("the first of Windows") << QByteArray("5 \x80") << QStringLiteral("5 €");
    QTest::newRow("the last of Windows") << QByteArray("\x9F") << QStringLiteral("Ÿ");
    QTest::newRow("the first behind them") << QByteArray("\xA0") << QString(QChar(0xA0));
    QTest::newRow("the last") << QByteArray("\xFF") << QStringLiteral("ÿ");
    QTest::newRow("none that Windows has") << QByteArray("\x81") << QString(QChar(0x81));
}

void TestFieldBytes::whatIsNoUtf8IsReadAsWindowsHasIt()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    QCOMPARE(readable(bytes), text);
}

void TestFieldBytes::aTotalStandsBehindTheSlash()
{
    QCOMPARE(audiocore::totalOf("3/12"), std::string("/12"));
    QCOMPARE(audiocore::totalOf("/12"), std::string("/12"));
    QCOMPARE(audiocore::totalOf("3"), std::string());
}

void TestFieldBytes::namesAreTheSameInCapitalsOrNot_data()
{
    QTest::addColumn<QString>("one");
    QTest::addColumn<QString>("other");
    QTest::addColumn<bool>("same");
    QTest::newRow("capitals") << "azTitle"
                              << "AZtITLE" << true;
    QTest::newRow("what stands before the letters") << "`"
                                                    << "@" << false;
    QTest::newRow("what stands behind the letters") << "{"
                                                    << "[" << false;
    QTest::newRow("one is longer") << "Title"
                                   << "Titles" << false;
    QTest::newRow("the other is longer") << "Titles"
                                         << "Title" << false;
}

void TestFieldBytes::namesAreTheSameInCapitalsOrNot()
{
    QFETCH(QString, one);
    QFETCH(QString, other);
    QTEST(audiocore::sameName(one.toStdString(), other.toStdString()), "same");
}

void TestFieldBytes::aFooterTellsTheSizeOfItsTag_data()
{
    constexpr quint32 largest = 1u << 30;
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<quint32>("size");
    QTest::newRow("no items") << footer(32, 0) << 32u;
    QTest::newRow("a header") << footer(132, 0x80000000u) << 164u;
    QTest::newRow("other flags") << footer(132, 0x7FFFFFFFu) << 132u;
    QTest::newRow("smaller than itself") << footer(31, 0) << 0u;
    QTest::newRow("the largest") << footer(largest, 0) << largest;
    QTest::newRow("larger") << footer(largest + 1, 0) << 0u;
    QTest::newRow("cut short") << footer(132, 0).left(31) << 0u;
    QTest::newRow("something else") << footer(132, 0).replace("EX", "??") << 0u;
}

void TestFieldBytes::aFooterTellsTheSizeOfItsTag()
{
    QFETCH(QByteArray, bytes);
    QTEST(quint32(ApeBytes::sizeByFooter(vectorOf(bytes))), "size");
}

void TestFieldBytes::itemsThatDoNotFitAreNoTag_data()
{
    QTest::addColumn<QByteArray>("tag");
    const QByteArray item = apeItem("Artist", "Singer");
    const QByteArray tag = apeTag(item, 1);
    QTest::newRow("longer than the tag") << QByteArray(tag).replace(0, 4, little(quint32(7)));
    QTest::newRow("much longer") << QByteArray(tag).replace(0, 4, little(0xFFFFFFFFu));
    QTest::newRow("no end of the key") << apeTag(item + QByteArray(8, '\1') + "Title", 2);
    QTest::newRow("numbers alone") << apeTag(item + QByteArray(8, '\0'), 2);
    QTest::newRow("less than numbers") << apeTag(item + QByteArray(7, '\0'), 2);
    QTest::newRow("bytes before the tag") << "?" + tag;
    QTest::newRow("less than a footer") << tag.right(31);
}

void TestFieldBytes::itemsThatDoNotFitAreNoTag()
{
    QFETCH(QByteArray, tag);
    QVERIFY(!ApeBytes::parse(vectorOf(tag)));
}

void TestFieldBytes::anItemMayEndWithTheTag()
{
    QCOMPARE(textOf(apeItem("Artist", "Singer"), TAG_ARTIST), QStringLiteral("Singer"));
    QCOMPARE(textOf(apeItem("Artist", "Singer") + apeItem("x", ""), TAG_ARTIST), QStringLiteral("Singer"));
    const std::optional<ApeBytes> none = parsedApe(QByteArray());
    QVERIFY(none && none->isEmpty());
    const std::optional<ApeBytes> nothing = ApeBytes::parse(ByteVector());
    QVERIFY(nothing && nothing->isEmpty());
}

void TestFieldBytes::thereIsAMostOfItems()
{
    const QByteArray most = apeItem("x", "").repeated(mostFields);
    const std::optional<ApeBytes> tag = parsedApe(most);
    QVERIFY(tag && !tag->isEmpty());
    QVERIFY(!parsedApe(most + apeItem("x", "")));
}

void TestFieldBytes::textsOfItemsAreJoined()
{
    const QByteArray artists =
        apeItem("Artist", {"One\0Two", 7}) + apeItem("x", "y") + apeItem("ARTIST", "Three");
    QCOMPARE(textOf(artists, TAG_ARTIST), QStringLiteral("One; Two; Three"));
    // By titles songs are told, so the first one is it.
    QCOMPARE(textOf(apeItem("Title", {"One\0Two", 7}), TAG_TITLE), QStringLiteral("One"));
    QCOMPARE(textOf(apeItem("Title", "One") + apeItem("Title", "Two"), TAG_TITLE), QStringLiteral("One"));
    QCOMPARE(textOf(apeItem("Title", "") + apeItem("Title", "Two"), TAG_TITLE), QStringLiteral("Two"));
    // What is no text says nothing; of the other flags none matters.
    QCOMPARE(textOf(flaggedItem("Artist", "Singer", 2), TAG_ARTIST), QString());
    QCOMPARE(textOf(flaggedItem("Artist", "Singer", 4), TAG_ARTIST), QString());
    QCOMPARE(textOf(flaggedItem("Artist", "Singer", 1), TAG_ARTIST), QStringLiteral("Singer"));
}

void TestFieldBytes::longItemsSayNothing()
{
    const QByteArray text(longest, 'x');
    QCOMPARE(textOf(apeItem("Artist", text), TAG_ARTIST).size(), longest);
    QCOMPARE(textOf(apeItem("Artist", text + 'x'), TAG_ARTIST), QString());
}

void TestFieldBytes::aPictureTakesThePlaceOfAll()
{
    const QByteArray back = flaggedItem("Cover Art (Back)", "back", 2);
    const QByteArray front = flaggedItem("COVER ART (FRONT)", "front", 2);
    std::optional<ApeBytes> tag = parsedApe(apeItem("a", "b") + back + apeItem("c", "d") + front);
    QVERIFY(tag);
    TagEdits edits;
    edits.picture = ByteVector("\x89PNG");
    tag->apply(edits);
    const QByteArray png = flaggedItem("Cover Art (Front)", {"Cover.png\0\x89PNG", 14}, 2);
    QCOMPARE(itemsOf(*tag), apeItem("a", "b") + png + apeItem("c", "d"));
    edits.picture = ByteVector("\xFF\xD8");
    tag->apply(edits);
    QVERIFY(itemsOf(*tag).contains(QByteArray("Cover.jpg\0\xFF\xD8", 12)));
    edits.picture = ByteVector();
    tag->apply(edits);
    QCOMPARE(itemsOf(*tag), apeItem("a", "b") + apeItem("c", "d"));
}

void TestFieldBytes::theTrackKeepsItsTotal()
{
    std::optional<ApeBytes> tag = parsedApe(apeItem("track", "3/12") + apeItem("Title", "3/12"));
    QVERIFY(tag);
    tag->apply(textEdit(TAG_TRACK, "4"));
    tag->apply(textEdit(TAG_TITLE, "4"));
    QCOMPARE(itemsOf(*tag), apeItem("track", "4/12") + apeItem("Title", "4"));
    tag->apply(textEdit(TAG_TRACK, ""));
    QCOMPARE(itemsOf(*tag), apeItem("Title", "4"));
    tag->apply(textEdit(TAG_TRACK, "5"));
    QCOMPARE(itemsOf(*tag), apeItem("Title", "4") + apeItem("Track", "5"));
}

void TestFieldBytes::itemsAreShownInBounds()
{
    const QByteArray picture = flaggedItem("Cover Art (Back)", QByteArray(2 * longest, 'p'), 2);
    const QByteArray date = apeItem("Date", "2012");
    const QByteArray track = apeItem("TRACKNUMBER", "3");
    const QByteArray most = apeItem("Artist", QByteArray(longest - 64, 'x'));
    const QByteArray more = apeItem("Artist", QByteArray(longest - 63, 'x'));
    QCOMPARE(shownItems(more + picture + date + apeItem("Lyrics", "La") + track + most),
             picture + date + track + most);
    QCOMPARE(shownItems(apeItem("Cover Art (Front)", "a text")), QByteArray());
    QCOMPARE(shownItems(flaggedItem("Binary", "no picture", 2)), QByteArray());
    // Those in front of what cannot be made out.
    QCOMPARE(shownItems(date + QByteArray(8, '\xFF')), date);
}

void TestFieldBytes::thereIsAMostOfShownText()
{
    const QByteArray large = apeItem("Artist", QByteArray(longest - 64, 'x'));
    const int most = int(audiocore::mostTextBytes) / longest;
    QCOMPARE(shownItems(large.repeated(most + 1)).size(), most * large.size());
    // What is too much is passed over for what is not.
    const QByteArray small = apeItem("Artist", QByteArray(longest - 1000, 'x'));
    const QByteArray rest = apeItem("Artist", QByteArray(1000 - 64 - 64, 'y'));
    QCOMPARE(shownItems(large.repeated(most - 1) + small + large + rest + rest),
             large.repeated(most - 1) + small + rest);
}

void TestFieldBytes::aTagWithoutItemsIsNone()
{
    std::optional<ApeBytes> tag = parsedApe(apeItem("Title", "Old"));
    QVERIFY(tag && !tag->isEmpty());
    tag->apply(textEdit(TAG_TITLE, ""));
    QVERIFY(tag->isEmpty());
    QVERIFY(tag->render().isEmpty());
}

void TestFieldBytes::entriesUpToTheEndAreEntries_data()
{
    QTest::addColumn<QByteArray>("list");
    const QByteArray other = chunk("ICMT", "word");
    QTest::newRow("the only one") << chunk("IART", "old!");
    QTest::newRow("the last one") << other + chunk("IART", "old!");
    QTest::newRow("an empty one at the end") << other + chunk("IART", "");
    QTest::newRow("one that nobody filled up") << other + chunk("IART", "old").chopped(1);
    QTest::newRow("two of them") << chunk("IART", "old!") + other + chunk("IART", "older!");
    QTest::newRow("none yet") << other;
}

void TestFieldBytes::entriesUpToTheEndAreEntries()
{
    QFETCH(QByteArray, list);
    const QByteArray artist = chunk("IART", {"new\0", 4});
    const QByteArray other = chunk("ICMT", "word");
    const QByteArray wanted =
        list.startsWith("IART") ? artist + (list.contains("ICMT") ? other : QByteArray()) : other + artist;
    QCOMPARE(edited(list), wanted);
}

void TestFieldBytes::whatIsNoEntryStaysBehind_data()
{
    QTest::addColumn<QByteArray>("rest");
    QTest::newRow("one longer than the list") << "IART" + little(quint32(5)) + "old!";
    QTest::newRow("one much longer") << "IART" + little(0xFFFFFFFFu) + "old!";
    QTest::newRow("less than a head") << QByteArray("IART\0\0\0", 7);
    QTest::newRow("nothing") << QByteArray();
}

void TestFieldBytes::whatIsNoEntryStaysBehind()
{
    QFETCH(QByteArray, rest);
    const QByteArray other = chunk("ICMT", "word");
    QCOMPARE(edited(other + rest), other + chunk("IART", {"new\0", 4}) + rest);
}

void TestFieldBytes::anEntryIsFilledUpToAnEvenSize()
{
    InfoBytes info(vectorOf("INFO" + chunk("ICMT", "odd") + chunk("INAM", "title")));
    info.apply(textEdit(TAG_TITLE, "four"));
    QCOMPARE(arrayOf(info.render()), "INFO" + chunk("ICMT", "odd") + chunk("INAM", {"four\0", 5}));
    info.apply(textEdit(TAG_TITLE, ""));
    QCOMPARE(arrayOf(info.render()), "INFO" + chunk("ICMT", "odd"));
}

void TestFieldBytes::ofEqualEntriesTheLastIsShown()
{
    const QByteArray list =
        chunk("IART", "One") + chunk("ICMT", "word") + chunk("INAM", "Title") + chunk("IART", "Two");
    QCOMPARE(shownEntries(list), chunk("INAM", "Title") + chunk("IART", "Two"));
}

void TestFieldBytes::longEntriesAreNotShown()
{
    const QByteArray most = chunk("IART", QByteArray(longest, 'x'));
    QCOMPARE(shownEntries(most + chunk("INAM", QByteArray(longest + 1, 'x'))), most);
}

void TestFieldBytes::thereIsAMostOfEntries()
{
    const QByteArray title = chunk("INAM", "Title");
    const QByteArray others = chunk("ICMT", "").repeated(mostFields - 1);
    QCOMPARE(shownEntries(others + title), title);
    QCOMPARE(shownEntries(others + chunk("ICMT", "") + title), QByteArray());
}

QTEST_GUILESS_MAIN(TestFieldBytes)
#include "tst_fieldbytes.moc"
