// Single pieces of XML, and a whole document tag by tag, at the bounds of what is believed.
#include "base/filebytes.h"
#include "xml/bytesource.h"
#include "xml/xmlgrammar.h"
#include "xml/xmlscanner.h"
#include "xml/xmltext.h"

#include <QtTest>

using itunes::ByteSource;
using itunes::Encoding;
using itunes::Entities;
using itunes::XmlScanner;
using Event = XmlScanner::Event;

namespace xml = itunes::xml;

class TestXml : public QObject
{
    Q_OBJECT

private slots:
    void openingTagsEnd_data();
    void openingTagsEnd();
    void documentTypesEnd_data();
    void documentTypesEnd();
    void attributesAreTold_data();
    void attributesAreTold();
    void referencesAreResolved_data();
    void referencesAreResolved();
    void sectionsAreTakenAsTheyAre();
    void plainTextsNeedNoWork();
    void textsAreEscaped();
    void declaredNamesHaveABound();
    void textsGoBackIntoTheirEncoding_data();
    void textsGoBackIntoTheirEncoding();
    void encodingsAreToldByTheFirstBytes_data();
    void encodingsAreToldByTheFirstBytes();
    void documentsAreRead_data();
    void documentsAreRead();
    void placesOfTagsAreTold();
    void namesAndDepthsHaveABound();
    void longTextsAreLost();
    void whatCrossesTheBufferIsRead();
};

namespace {
std::string resolved(const QByteArray& raw)
{
    Entities entities;
    entities.declare("<!DOCTYPE a [<!ENTITY own 'Own &amp; &#60;'>]>");
    std::string out;
    itunes::appendText(raw.toStdString(), entities, out);
    return out;
}

bool declares(const QByteArray& declaration)
{
    return Entities().declare(("<!DOCTYPE a [" + declaration + "]>").toStdString());
}

/// The tags and texts of a document, and what is wrong with it.
QByteArray walked(const QByteArray& document)
{
    const base::MemoryFile file(document.toStdString());
    ByteSource source(file);
    XmlScanner scanner(source);
    QByteArray all;
    for (;;) {
        const Event event = scanner.next();
        if (event == Event::End)
            return all;
        if (event == Event::Broken)
            return all + "! " + QByteArray::fromStdString(scanner.error()) + " at " +
                   QByteArray::number(qulonglong(scanner.errorOffset()));
        all += QByteArray::fromStdString(std::string(scanner.text()));
        all += (event == Event::Open ? '(' : ')') + QByteArray::fromStdString(std::string(scanner.name()));
    }
}

QByteArray allOf(const QByteArray& bytes, Encoding& encoding, bool& isOther)
{
    const base::MemoryFile file(bytes.toStdString());
    ByteSource source(file);
    encoding = source.encoding();
    isOther = source.isDeclaredOther();
    QByteArray all;
    QByteArray some(int(ByteSource::leastRoom), '\0');
    while (const std::size_t got = source.read(some.data(), std::size_t(some.size())))
        all += some.left(int(got));
    return all;
}
} // namespace

void TestXml::openingTagsEnd_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("end");
    QTest::newRow("plain") << QByteArray("<a>b>") << 2;
    QTest::newRow("quoted") << QByteArray("<a b='>' c=\">\">") << 14;
    QTest::newRow("the other quote inside") << QByteArray("<a b='\"' c=\"'\">") << 14;
    QTest::newRow("no end") << QByteArray("<a b") << 0;
    QTest::newRow("an open quote") << QByteArray("<a b='>") << 0;
    QTest::newRow("another tag") << QByteArray("<a <b>") << 0;
    QTest::newRow("a tag in quotes") << QByteArray("<a b='<'>") << 0;
}

void TestXml::openingTagsEnd()
{
    QFETCH(QByteArray, text);
    QTEST(int(xml::openTagEnd(text.toStdString())), "end");
}

void TestXml::documentTypesEnd_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("size");
    const auto row = [](const char* name, const QByteArray& text, int behind) {
        QTest::newRow(name) << text << (behind < 0 ? 0 : text.size() - behind);
    };
    row("plain", "<!DOCTYPE a>b>", 2);
    row("brackets", "<!DOCTYPE a [<!ENTITY b 'c'>]>d", 1);
    row("brackets in quotes", "<!DOCTYPE a ']>[' [<!ENTITY b '[>'>]>", 0);
    row("a comment", "<!DOCTYPE a [<!-- ' ]> --> ]>", 0);
    row("an instruction", "<!DOCTYPE a [<? ' ]> ?> ]>", 0);
    row("brackets in brackets", "<!DOCTYPE a [[]>]>", 0);
    row("one that nobody opened", "<!DOCTYPE a ]>", 0);
    row("an open bracket", "<!DOCTYPE a [>", -1);
    row("an open quote", "<!DOCTYPE a '>", -1);
    row("an open comment", "<!DOCTYPE a [<!-- ]>", -1);
    row("no end", "<!DOCTYPE a", -1);
}

void TestXml::documentTypesEnd()
{
    QFETCH(QByteArray, text);
    QTEST(int(xml::documentTypeSize(text.toStdString())), "size");
}

void TestXml::attributesAreTold_data()
{
    QTest::addColumn<bool>("are");
    for (const char* text : {"", " ", " a='b'", "\ta=\"b\"\n", " a = 'b' c:d='' ", " a='\"'"})
        QTest::addRow("<%s>", text) << true;
    for (const char* text :
         {"a='b'", " a", " a=", " a=b", " a/'b'", " a='b", " a='b'c='d'", " ='b'", " 1='b'", " a 'b'", " '"})
        QTest::addRow("<%s>", text) << false;
}

void TestXml::attributesAreTold()
{
    const QByteArray tag = QTest::currentDataTag();
    QTEST(xml::areAttributes(tag.mid(1, tag.size() - 2).toStdString()), "are");
}

void TestXml::referencesAreResolved_data()
{
    QTest::addColumn<QByteArray>("raw");
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const QByteArray& raw, const QByteArray& text) { QTest::newRow(raw) << raw << text; };
    const QByteArray none = "\xEF\xBF\xBD";
    row("&amp;&lt;&gt;&quot;&apos;", "&<>\"'");
    row("&#65;&#x41;&#X5a;&#x5A;&#90;", "AAZZZ");
    row("&#x09;&#9;", "\t\t");
    row("&#x2f;&#x3a;", "/:");
    row("a&#0;&#8;&#31;b", "ab"); // what XML forbids and other programs write
    row("&#32;", " ");
    row("&#128512;&#xD83D;&#xDE00;", "\xF0\x9F\x98\x80\xF0\x9F\x98\x80");
    row("&#xDBFF;&#xDFFF;", "\xF4\x8F\xBF\xBF");
    row("&#xD800;&#xDC00;", "\xF0\x90\x80\x80");
    row("&#xD83D;a", none + "a");
    row("&#xD83D;&#x41;", none + "A");
    row("&#xD83D;&#xE000;", none + "\xEE\x80\x80");
    row("&#xD83D;", none);
    row("&#xDE00;", none);
    row("&#xFFFD;&#xFFFE;&#xFFFF;", none + none + none);
    row("&#1114111;&#1114112;&#99999999999;", "\xF4\x8F\xBF\xBF" + none + none);
    row("&#;&#x;&#xg;&#a;&;& ", "&#;&#x;&#xg;&#a;&;& ");
    row("&own;&other;", "Own & <&other;");
    row("&am p;&am<p;&", "&am p;&am<p;&");
    row("a\rb\r\nc\nd\r", "a\nb\nc\nd\n");
    row("a\x01\x1F\tb\x7F", "a\tb\x7F");
    row("\xC3\xA9\xFF\xE4\xB8", "\xC3\xA9" + none + none + none);
    const QByteArray longest(64, 'n');
    row('&' + longest + ';', '&' + longest + ';');
}

void TestXml::referencesAreResolved()
{
    QFETCH(QByteArray, raw);
    QFETCH(QByteArray, text);
    QCOMPARE(QByteArray::fromStdString(resolved(raw)), text);
}

void TestXml::sectionsAreTakenAsTheyAre()
{
    std::string out = "[";
    itunes::appendLiteral("&amp;\r\n\x01<a>&#65;", out);
    QCOMPARE(QByteArray::fromStdString(out), QByteArray("[&amp;\n<a>&#65;"));
}

void TestXml::plainTextsNeedNoWork()
{
    for (const char* plain : {"", "a b", " ~\x7F", "a\tb\n"})
        QVERIFY2(itunes::isPlain(plain), plain);
    for (const char* other : {"&", "a\rb", "\x1F", "\x80", "\xC3\xA9"})
        QVERIFY2(!itunes::isPlain(other), other);
}

void TestXml::textsAreEscaped()
{
    QCOMPARE(itunes::escaped("R&B <\"'> a\rb\nc\td"), std::string("R&#38;B &#60;\"'&#62; a&#13;b\nc\td"));
}

void TestXml::declaredNamesHaveABound()
{
    const auto entity = [](int nameSize, int valueSize) {
        return "<!ENTITY " + QByteArray(nameSize, 'n') + " '" + QByteArray(valueSize, 'v') + "'>";
    };
    QVERIFY(declares(entity(64, 4096)));
    QVERIFY(!declares(entity(65, 4096)));
    QVERIFY(!declares(entity(64, 4097)));
    QVERIFY(declares("<!ENTITY a '&amp;&#65;'>"));
    QVERIFY(!declares("<!ENTITY a '&b;'>"));
    QVERIFY(!declares("<!ENTITY a '&amp;&b;'>"));
    QVERIFY(!declares("<!ENTITY a 'open>"));
    QVERIFY(declares("<!ENTITY % a '&b;'>"));
    QVERIFY(declares("<!ENTITY a SYSTEM 'b'>"));

    Entities entities;
    QVERIFY(entities.declare(("<!DOCTYPE a [" + entity(1, 4096) + "]>").toStdString()));
    std::string out;
    constexpr std::size_t most = 1024 * 1024;
    for (std::size_t times = 0; times < most / 4096; ++times)
        QVERIFY(entities.append("n", out));
    QCOMPARE(out.size(), most);
    QVERIFY(entities.append("n", out));
    QCOMPARE(out.size(), most);
    QVERIFY(!entities.append("m", out));
}

void TestXml::textsGoBackIntoTheirEncoding_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("little");
    QTest::addColumn<QByteArray>("references");
    QTest::newRow("ASCII") << QByteArray("a\x7F") << QByteArray("a\0\x7F\0", 4) << QByteArray("a\x7F");
    QTest::newRow("two bytes") << QByteArray("\xC2\x80") << QByteArray("\x80\0", 2) << QByteArray("&#128;");
    QTest::newRow("three bytes") << QByteArray("\xEF\xBF\xBD") << QByteArray("\xFD\xFF")
                                 << QByteArray("&#65533;");
    QTest::newRow("the first pair") << QByteArray("\xF0\x90\x80\x80") << QByteArray("\x00\xD8\x00\xDC", 4)
                                    << QByteArray("&#65536;");
    QTest::newRow("a pair") << QByteArray("\xF0\x9F\x98\x80") << QByteArray("\x3D\xD8\x00\xDE", 4)
                            << QByteArray("&#128512;");
    QTest::newRow("the last pair") << QByteArray("\xF4\x8F\xBF\xBF") << QByteArray("\xFF\xDB\xFF\xDF", 4)
                                   << QByteArray("&#1114111;");
    QTest::newRow("a lone half") << QByteArray("\xED\xA0\xBD") << QByteArray("\x3D\xD8")
                                 << QByteArray("&#55357;");
    QTest::newRow("broken") << QByteArray("\xFF") << QByteArray("\xFD\xFF") << QByteArray("&#65533;");
    QTest::newRow("nothing") << QByteArray() << QByteArray() << QByteArray();
}

void TestXml::textsGoBackIntoTheirEncoding()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, little);
    const std::string utf8 = text.toStdString();
    QCOMPARE(QByteArray::fromStdString(itunes::encoded(utf8, Encoding::Utf8)), text);
    QCOMPARE(QByteArray::fromStdString(itunes::encoded(utf8, Encoding::Utf16Little)), little);
    QByteArray big = little;
    for (int i = 0; i + 1 < big.size(); i += 2)
        std::swap(big.data()[i], big.data()[i + 1]);
    QCOMPARE(QByteArray::fromStdString(itunes::encoded(utf8, Encoding::Utf16Big)), big);
    QTEST(QByteArray::fromStdString(itunes::inReferences(utf8)), "references");
    // And is read from it.
    Encoding encoding = Encoding::Utf8;
    bool isOther = true;
    const QByteArray read =
        QTest::currentDataTag() == QByteArray("broken") ? QByteArray("\xEF\xBF\xBD") : text;
    QCOMPARE(allOf("\xFF\xFE" + little, encoding, isOther), "\xEF\xBB\xBF" + read);
    QCOMPARE(allOf("\xFE\xFF" + big, encoding, isOther), "\xEF\xBB\xBF" + read);
}

void TestXml::encodingsAreToldByTheFirstBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("encoding");
    QTest::addColumn<bool>("isOther");
    const int utf8 = int(Encoding::Utf8);
    const int little = int(Encoding::Utf16Little);
    const int big = int(Encoding::Utf16Big);
    const auto declared = [](const QByteArray& name) {
        return "<?xml version='1.0' encoding=" + name + "?><a/>";
    };
    QTest::newRow("nothing") << QByteArray() << utf8 << false;
    QTest::newRow("one byte") << QByteArray("\xFF") << utf8 << false;
    QTest::newRow("a mark, little") << QByteArray("\xFF\xFE") << little << false;
    QTest::newRow("a mark, big") << QByteArray("\xFE\xFF") << big << false;
    QTest::newRow("half of a mark") << QByteArray("\xFF<") << utf8 << false;
    QTest::newRow("half of the other") << QByteArray("\xFE<") << utf8 << false;
    QTest::newRow("no mark, little") << QByteArray("<\0a\0", 4) << little << false;
    QTest::newRow("no mark, big") << QByteArray("\0<\0a", 4) << big << false;
    QTest::newRow("a zero") << QByteArray("a\0", 2) << utf8 << false;
    QTest::newRow("the other zero") << QByteArray("\0a", 2) << utf8 << false;
    QTest::newRow("UTF-8") << declared("'UTF-8'") << utf8 << false;
    QTest::newRow("utf-8") << declared("\"utf-8\"") << utf8 << false;
    QTest::newRow("another") << declared("'ISO-8859-1'") << utf8 << true;
    QTest::newRow("a longer name") << declared("'UTF-80'") << utf8 << true;
    QTest::newRow("another, behind a mark") << "\xEF\xBB\xBF" + declared("'latin1'") << utf8 << true;
    QTest::newRow("none in quotes") << declared("latin1") << utf8 << false;
    QTest::newRow("no declaration") << QByteArray("<a encoding='latin1'/>") << utf8 << false;
    QTest::newRow("behind the declaration") << QByteArray("<?xml?><a encoding='latin1'/>") << utf8 << false;
}

void TestXml::encodingsAreToldByTheFirstBytes()
{
    QFETCH(QByteArray, bytes);
    Encoding encoding = Encoding::Utf8;
    bool isOther = false;
    allOf(bytes, encoding, isOther);
    QTEST(int(encoding), "encoding");
    QTEST(isOther, "isOther");
}

void TestXml::documentsAreRead_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QByteArray>("read");
    const auto row = [](const QByteArray& document, const QByteArray& read) {
        QTest::newRow(document) << document << read;
    };
    row("<a>b</a>", "(ab)a");
    row("<a><b/>c<d e='f'/></a>", "(a(b)bc(d)d)a");
    row("\xEF\xBB\xBF <?xml?>\n<!-- b --><a/> <!-- c -->\n", "(a)a");
    row("<a>b<!-- c -->d<?e?>f</a>", "(abdf)a");
    row("<a>b<![CDATA[<c>&amp;]]>&amp;</a \n>", "(ab<c>&amp;&)a");
    row("<!DOCTYPE a [<!ENTITY b 'c'>]><a>&b;</a>", "(ac)a");
    row("<a>", "(a! the file ends inside <a> at 3");
    row("", "! there is no document at 0");
    row("a<b/>", "! text outside the document at 1");
    row("<a/>b", "(a)a! text outside the document at 5");
    row("<a/><b/>", "(a)a! a second document at 4");
    row("<a></b>", "(a! a closing tag that does not match <a> at 3");
    row("<a></ab>", "(a! a closing tag that does not match <a> at 3");
    row("<a></a", "(a! a tag that does not end at 3");
    row("</a>", "! a closing tag too many at 0");
    row("<a/></a>", "(a)a! a closing tag too many at 4");
    row("<>", "! a malformed tag at 0");
    row("<1/>", "! a malformed tag at 0");
    row("<a b/>", "! a malformed tag at 0");
    row("<a", "! a tag that does not end at 0");
    row("<a><!-- b</a>", "(a! a comment that does not end at 3");
    row("<a><? b</a>", "(a! an instruction that does not end at 3");
    row("<a><![CDATA[ b</a>", "(a! a section that does not end at 3");
    row("<![CDATA[]]><a/>", "! text outside the document at 0");
    row("<a><!b></a>", "(a! a declaration where none belongs at 3");
    row("<a><!DOCTYPE a></a>", "(a! a document type where none belongs at 3");
    row("<!DOCTYPE a><!DOCTYPE a><a/>", "! a document type where none belongs at 12");
    row("<!DOCTYPE a", "! a document type that does not end at 0");
}

void TestXml::documentsAreRead()
{
    QFETCH(QByteArray, document);
    QTEST(walked(document), "read");
}

void TestXml::placesOfTagsAreTold()
{
    const base::MemoryFile file("<a> b \n <c/>\t</a>");
    ByteSource source(file);
    XmlScanner scanner(source);
    const auto places = [&scanner] {
        return QStringLiteral("%1 %2 %3")
            .arg(scanner.leadBegin())
            .arg(scanner.tagBegin())
            .arg(scanner.tagEnd());
    };
    scanner.next();
    QCOMPARE(places(), QStringLiteral("0 0 3"));
    scanner.next();
    QCOMPARE(places(), QStringLiteral("5 8 12"));
    QCOMPARE(std::string(scanner.lead()), std::string(" \n "));
    scanner.next();
    QCOMPARE(places(), QStringLiteral("12 12 12"));
    scanner.next();
    QCOMPARE(places(), QStringLiteral("12 13 17"));
    QVERIFY(scanner.next() == Event::End);
}

void TestXml::namesAndDepthsHaveABound()
{
    const QByteArray longest(256, 'n');
    QCOMPARE(walked('<' + longest + "/>"), '(' + longest + ')' + longest);
    QCOMPARE(walked('<' + longest + "n/>"), QByteArray("! an element of too long a name at 0"));
    const auto nested = [](int depth) {
        return QByteArray("<a>").repeated(depth) + QByteArray("</a>").repeated(depth);
    };
    QVERIFY(!walked(nested(1000)).contains('!'));
    QVERIFY(walked(nested(1001)).endsWith("! elements nested too deeply at 3000"));
}

void TestXml::longTextsAreLost()
{
    constexpr int most = 4 * 1024 * 1024;
    const auto document = [](int size) { return "<a>" + QByteArray(size, 'x') + "</a>"; };
    QCOMPARE(walked(document(most - 100)).size(), most - 100 + 4);
    QCOMPARE(walked(document(2 * most)), QByteArray("(a)a"));
    // Of pieces, too.
    const QByteArray piece = "<![CDATA[" + QByteArray(most / 2, 'x') + "]]>";
    QCOMPARE(walked("<a>" + piece + piece + "</a>").size(), most + 4);
    QCOMPARE(walked("<a>" + piece + piece + "<![CDATA[x]]></a>"), QByteArray("(a)a"));
}

void TestXml::whatCrossesTheBufferIsRead()
{
    constexpr int buffer = 256 * 1024;
    for (int before = buffer - 60; before < buffer + 4; ++before) {
        const QByteArray document = "<a>" + QByteArray(before, ' ') +
                                    "<b c='d'>e<!-- f --><![CDATA[g]]>&amp;</b ><?h?></a>" +
                                    QByteArray(buffer, ' ');
        QCOMPARE(walked(document).simplified(), QByteArray("(a (beg&)b)a"));
    }
}

QTEST_GUILESS_MAIN(TestXml)
#include "tst_xml.moc"
