// Vorbis comments, plain texts of MP4 and the choice among pictures, at the bounds of what is believed.
#include "audiocore/tagitem.h"
#include "mediabytes.h"
#include "tags/commentbytes.h"
#include "tags/fieldlist.h"
#include "tags/mp4text.h"
#include "tags/pictures.h"
#include "tags/taglimits.h"

#include <QtTest>

#include <taglib/xiphcomment.h>

using audiocore::CommentBytes;
using audiocore::PictureChoice;
using audiocore::TagEdits;
using MediaBytes::big32;
using MediaBytes::comment;
using MediaBytes::field;
using MediaBytes::little;
using TagLib::ByteVector;

class TestCommentBytes : public QObject
{
    Q_OBJECT

private slots:
    void whatCannotBeTakenApartIsNone_data();
    void whatCannotBeTakenApartIsNone();
    void whatIsTakenApartIsPutTogether_data();
    void whatIsTakenApartIsPutTogether();
    void thereIsAMostOfFields();
    void valuesAreJoined();
    void longFieldsSayNothing();
    void fieldsAreReplacedByName();
    void thereIsAMostOfTexts();
    void noMoreFieldsAreToldThanThereAre();
    void aLongVendorHidesAll();
    void picturesCostLessThanTexts_data();
    void picturesCostLessThanTexts();
    void theFirstFrontCoverIsChosen();
    void picturesAreToldByTheirFirstBytes();
    void plainTextsSayTheirSizeAndLanguage_data();
    void plainTextsSayTheirSizeAndLanguage();
    void plainTextsKeepTheirLanguage_data();
    void plainTextsKeepTheirLanguage();
};

namespace {
constexpr int longest = int(audiocore::longestText);
constexpr int mostFields = int(audiocore::mostFields);
constexpr int mostTexts = int(audiocore::mostTextBytes);
constexpr int costOfField = int(audiocore::costOfField);

ByteVector vectorOf(const QByteArray& bytes)
{
    return ByteVector(bytes.constData(), unsigned(bytes.size()));
}

QByteArray arrayOf(const ByteVector& bytes)
{
    return QByteArray(bytes.data(), int(bytes.size()));
}

std::optional<CommentBytes> parsed(const QByteArray& bytes)
{
    return CommentBytes::parse(vectorOf(bytes));
}

QString textOf(const QByteArrayList& fields, int type)
{
    QByteArray bytes;
    for (const QByteArray& text : fields)
        bytes += field(text);
    const std::optional<CommentBytes> tag = parsed(comment(bytes, quint32(fields.size())));
    return tag ? QString::fromStdString(tag->text(type)) : QStringLiteral("no comment");
}

TagEdits textEdit(int type, const char* text)
{
    TagEdits edits;
    edits.texts[std::size_t(type)] = text;
    return edits;
}

std::optional<CommentBytes::Bound> boundOf(const QByteArray& bytes)
{
    return CommentBytes::boundOf(vectorOf(bytes));
}

/// What is too large for a text, and begins with the head of a picture as FLAC wraps it.
QByteArray largePicture(quint32 mimeSize, quint32 descriptionSize)
{
    constexpr int beginning = 66;
    QByteArray head = big32(3) + big32(mimeSize) + QByteArray(int(qMin(mimeSize, 100u)), 'm');
    head = (head + big32(descriptionSize)).leftJustified(beginning, '\0', true);
    return "METADATA_BLOCK_PICTURE=" + head.toBase64() + QByteArray(mostTexts, 'A');
}

QByteArray offered(PictureChoice& choice, const char* bytes, bool front)
{
    choice.offer(bytes, front);
    return arrayOf(choice.bytes());
}

QByteArray bigShort(int number)
{
    return big32(quint32(number)).mid(2);
}
} // namespace

void TestCommentBytes::whatCannotBeTakenApartIsNone_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray one = field("ARTIST=One");
    QTest::newRow("a vendor cut short") << little(quint32(4)) + "ven";
    QTest::newRow("no count") << little(quint32(3)) + "ven";
    QTest::newRow("a count cut short") << little(quint32(3)) + "ven" + QByteArray(3, '\0');
    QTest::newRow("less than a size") << QByteArray(3, '\0');
    QTest::newRow("a field cut short") << comment(one + one.chopped(1), 2);
    QTest::newRow("a field much too long") << comment(one + little(0xFFFFFFFFu) + "x", 2);
    QTest::newRow("a size cut short") << comment(one + QByteArray(3, '\0'), 2);
}

void TestCommentBytes::whatCannotBeTakenApartIsNone()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(!parsed(bytes));
}

void TestCommentBytes::whatIsTakenApartIsPutTogether_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray one = field("ARTIST=One");
    QTest::newRow("one") << comment(one, 1);
    QTest::newRow("a vendor") << little(quint32(6)) + "vendor" + little(quint32(1)) + one;
    QTest::newRow("an empty field at the end") << comment(one + field(""), 2);
    QTest::newRow("none") << comment("", 0);
    QTest::newRow("more behind them") << comment(one + one + "more", 2);
}

void TestCommentBytes::whatIsTakenApartIsPutTogether()
{
    QFETCH(QByteArray, bytes);
    const std::optional<CommentBytes> tag = parsed(bytes);
    QVERIFY(tag);
    QCOMPARE(tag->isEmpty(), !bytes.contains("ARTIST"));
    QCOMPARE(arrayOf(tag->render()), bytes);
    // Where more are told than there are, it tells those that are.
    const std::optional<CommentBytes> fewer = parsed(comment(field("ARTIST=One"), 2));
    QVERIFY(fewer);
    QCOMPARE(arrayOf(fewer->render()), comment(field("ARTIST=One"), 1));
    QVERIFY(parsed(QByteArray()));
}

void TestCommentBytes::thereIsAMostOfFields()
{
    const QByteArray most = field("").repeated(mostFields);
    QVERIFY(parsed(comment(most, quint32(mostFields))));
    QVERIFY(!parsed(comment(most + field(""), quint32(mostFields) + 1)));
}

void TestCommentBytes::valuesAreJoined()
{
    QCOMPARE(textOf({"ARTIST=One", "x=y", "artist=Two", "ARTIST="}, TAG_ARTIST), QStringLiteral("One; Two"));
    QCOMPARE(textOf({"TITLE=", "TITLE=One", "TITLE=Two"}, TAG_TITLE), QStringLiteral("One"));
    QCOMPARE(textOf({"YEAR=1987"}, TAG_YEAR), QStringLiteral("1987"));
    QCOMPARE(textOf({"=One", "ARTIST", "ARTISTS=Two"}, TAG_ARTIST), QString());
}

void TestCommentBytes::longFieldsSayNothing()
{
    const QByteArray name = "ARTIST=";
    const QByteArray most(longest - name.size(), 'x');
    QCOMPARE(textOf({name + most}, TAG_ARTIST).size(), most.size());
    QCOMPARE(textOf({name + most + 'x'}, TAG_ARTIST), QString());
}

void TestCommentBytes::fieldsAreReplacedByName()
{
    std::optional<CommentBytes> tag =
        parsed(comment(field("tracknum=3/12") + field("x=y") + field("COVERART=old"), 3));
    QVERIFY(tag);
    tag->apply(textEdit(TAG_TRACK, "4"));
    tag->apply(textEdit(TAG_TITLE, "5"));
    QCOMPARE(arrayOf(tag->render()),
             comment(field("TRACKNUMBER=4/12") + field("x=y") + field("COVERART=old") + field("TITLE=5"), 4));
    TagEdits edits;
    edits.picture = ByteVector("\x89PNG");
    tag->apply(edits);
    const QByteArray picture = arrayOf(audiocore::flacPicture("\x89PNG")).toBase64();
    QCOMPARE(arrayOf(tag->render()),
             comment(field("TRACKNUMBER=4/12") + field("x=y") + field("METADATA_BLOCK_PICTURE=" + picture) +
                         field("TITLE=5"),
                     4));
    edits.picture = ByteVector();
    tag->apply(edits);
    tag->apply(textEdit(TAG_TRACK, ""));
    QCOMPARE(arrayOf(tag->render()), comment(field("x=y") + field("TITLE=5"), 2));
}

void TestCommentBytes::thereIsAMostOfTexts()
{
    constexpr int most = mostTexts / longest;
    const QByteArray large = field(QByteArray(longest - costOfField, 'x'));
    QVERIFY(!boundOf(comment(large.repeated(most), most)));
    QVERIFY(!boundOf(comment(field(""), 1)));
    const QByteArray more = comment(large.repeated(most) + field("") + field(""), most + 2);
    const std::optional<CommentBytes::Bound> bound = boundOf(more);
    QVERIFY(bound);
    QCOMPARE(int(bound->end), 8 + most * large.size());
    ByteVector bytes = vectorOf(more);
    CommentBytes::boundFields(bytes);
    QVERIFY(arrayOf(bytes) == QByteArray(more).replace(4, 4, little(quint32(most))));
    // What cannot be taken apart is left as it is.
    QVERIFY(!boundOf(comment(large.repeated(most) + field("x").chopped(1), most + 1)));
    QVERIFY(!boundOf(little(quint32(4)) + "ven"));
    QVERIFY(!boundOf(little(quint32(3)) + "ven" + QByteArray(3, '\0')));
    QVERIFY(!boundOf(QByteArray()));
}

void TestCommentBytes::noMoreFieldsAreToldThanThereAre()
{
    const QByteArray fields = field("TITLE=5") + field("ARTIST=6");
    for (const quint32 told : {3u, 1000u, 0x07000009u, 0xFFFFFFFFu}) {
        ByteVector bytes = vectorOf(comment(fields, 2).replace(4, 4, little(told)));
        CommentBytes::boundFields(bytes);
        QCOMPARE(TagLib::Ogg::XiphComment(bytes).fieldCount(), 2u);
    }
    QVERIFY(!boundOf(comment(fields, 2)));
    QVERIFY(!boundOf(comment(fields, 1)));
    QVERIFY(!boundOf(comment(fields.chopped(1), 0x07000009)));
}

void TestCommentBytes::aLongVendorHidesAll()
{
    const auto vendor = [](int size) {
        return little(quint32(size)) + QByteArray(size, 'v') + little(quint32(0));
    };
    QVERIFY(!boundOf(vendor(longest)));
    ByteVector bytes = vectorOf(vendor(longest + 1));
    CommentBytes::boundFields(bytes);
    QVERIFY(arrayOf(bytes) == vendor(longest + 1).replace(0, 8, QByteArray(8, '\0')));
    QVERIFY(boundOf(vendor(longest + 1).left(8)));
    QVERIFY(!boundOf(vendor(longest + 1).left(7)));
}

void TestCommentBytes::picturesCostLessThanTexts_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("isInBounds");
    const QByteArray filling(mostTexts, 'A');
    const quint32 most = quint32(longest);
    QTest::newRow("a text") << "ARTIST=" + filling << false;
    QTest::newRow("a picture") << largePicture(10, 20) << true;
    QTest::newRow("the longest type") << largePicture(54, 20) << true;
    QTest::newRow("a longer type") << largePicture(55, 20) << false;
    QTest::newRow("a type of any length") << largePicture(0xFFFFFFF0u, 20) << false;
    QTest::newRow("the longest description") << largePicture(10, most) << true;
    QTest::newRow("a longer description") << largePicture(10, most + 1) << false;
    QTest::newRow("an older picture") << "COVERART=AZaz09+/=" + filling << true;
    for (const char other : QByteArray("@[`{.:*,<>\x80"))
        QTest::addRow("character %d", int(quint8(other))) << "COVERART=" + filling + other << false;
}

void TestCommentBytes::picturesCostLessThanTexts()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, isInBounds);
    QCOMPARE(!boundOf(comment(field(text), 1)), isInBounds);
}

void TestCommentBytes::theFirstFrontCoverIsChosen()
{
    PictureChoice choice;
    QCOMPARE(offered(choice, "", true), QByteArray());
    QCOMPARE(choice.count(), 0);
    QCOMPARE(offered(choice, "back", false), QByteArray("back"));
    QCOMPARE(offered(choice, "other back", false), QByteArray("back"));
    QCOMPARE(offered(choice, "front", true), QByteArray("front"));
    QCOMPARE(offered(choice, "other front", true), QByteArray("front"));
    QCOMPARE(choice.count(), 4);
    choice.passOver();
    QCOMPARE(choice.count(), 5);
    PictureChoice second;
    QCOMPARE(offered(second, "front", true), QByteArray("front"));
    QCOMPARE(offered(second, "other front", true), QByteArray("front"));

    PictureChoice large;
    large.offer(ByteVector(audiocore::largestPicture + 1, 'x'), true);
    QVERIFY(large.bytes().isEmpty());
    QCOMPARE(large.count(), 1);
    large.offer(ByteVector(audiocore::largestPicture, 'x'), false);
    QCOMPARE(large.bytes().size(), audiocore::largestPicture);
}

void TestCommentBytes::picturesAreToldByTheirFirstBytes()
{
    const auto type = [](const QByteArray& bytes) { return audiocore::pictureType(vectorOf(bytes)); };
    QCOMPARE(type("\x89PNG"), std::string("image/png"));
    QCOMPARE(type("GIF89a"), std::string("image/gif"));
    QCOMPARE(type("BM"), std::string("image/bmp"));
    QCOMPARE(type("RIFF....WEBP"), std::string("image/webp"));
    QCOMPARE(type("\xFF\xD8"), std::string("image/jpeg"));
}

void TestCommentBytes::plainTextsSayTheirSizeAndLanguage_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("text");
    QTest::newRow("UTF-8") << bigShort(5) + bigShort(0x55C4) + "Caf\xC3\xA9" << QStringLiteral("Café");
    QTest::newRow("more behind it") << bigShort(3) + bigShort(0x55C4) + "Caff" << QStringLiteral("Caf");
    QTest::newRow("an encoding of its own")
        << bigShort(4) + bigShort(0) + "Caf\x8E" << QStringLiteral("Café");
    QTest::newRow("the last of those") << bigShort(4) + bigShort(0x3FF) + "Caf\x8E" << QStringLiteral("Café");
    QTest::newRow("the first of others")
        << bigShort(4) + bigShort(0x400) + "Caf\xE9" << QStringLiteral("Café");
    QTest::newRow("UTF-8 all the same")
        << bigShort(5) + bigShort(0) + "Caf\xC3\xA9" << QStringLiteral("Café");
    QTest::newRow("the ends of it") << bigShort(3) + bigShort(0) + "\x7F\x80\xFF" << QStringLiteral("\x7FÄˇ");
    QTest::newRow("nothing in front") << QByteArray("Harbour") << QStringLiteral("Harbour");
    QTest::newRow("nothing in front of little") << QByteArray("abc") << QStringLiteral("abc");
    QTest::newRow("longer than it is") << QByteArray("\0\3\0Xab", 6) << QString::fromLatin1("\0\3\0Xab", 6);
    QTest::newRow("no text") << bigShort(0) + bigShort(0x55C4) << QString();
}

void TestCommentBytes::plainTextsSayTheirSizeAndLanguage()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, text);
    QCOMPARE(QString::fromStdString(audiocore::mp4PlainText(vectorOf(content))), text);
}

void TestCommentBytes::plainTextsKeepTheirLanguage_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("old");
    QTest::addColumn<QByteArray>("content");
    const QByteArray any = bigShort(0x55C4);
    const QByteArray own = bigShort(0x3FF);
    QTest::newRow("none") << QByteArray("ab") << QByteArray() << bigShort(2) + any + "ab";
    QTest::newRow("cut") << QByteArray("ab") << own.repeated(2).left(3) << bigShort(2) + any + "ab";
    QTest::newRow("one") << QByteArray("ab\x7F") << own.repeated(2) << bigShort(3) + own + "ab\x7F";
    QTest::newRow("one that cannot say it")
        << QByteArray("\xC2\x80") << own.repeated(2) << bigShort(2) + any + "\xC2\x80";
    QTest::newRow("one that can") << QByteArray("\xC2\x80") << bigShort(0x400).repeated(2)
                                  << bigShort(2) + bigShort(0x400) + "\xC2\x80";
    const QByteArray most(0xFFFF, 'x');
    QTest::newRow("the longest") << most << QByteArray() << bigShort(0xFFFF) + any + most;
    QTest::newRow("a longer one") << most + 'x' << QByteArray() << QByteArray();
}

void TestCommentBytes::plainTextsKeepTheirLanguage()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, old);
    QTEST(arrayOf(audiocore::mp4PlainContent(text.toStdString(), vectorOf(old))), "content");
}

QTEST_GUILESS_MAIN(TestCommentBytes)
#include "tst_commentbytes.moc"
