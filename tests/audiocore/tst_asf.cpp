#include "asffixture.h"
#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "tags/asfbytes.h"

#include <QTemporaryDir>
#include <QtTest>

using audiocore::AsfBytes;
using audiocore::TagEdits;
using namespace Asf;

namespace {
const char* const someId = "00112233445566778899AABBCCDDEEFF";

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// What others leave in a header; the edits of the tests take the place of `title`, or of one of the lists.
struct Rich
{
    QByteArray title = wide("Old");
    QByteArray author = wide("Singer");
    QByteArrayList fields = {
        field("WM/Genre", wide("Rock")),           field("ZZ", wide("last by name, first here")),
        field("WM/Genre", wide("Blues")),          field("WM/Composer", wide("One")),
        field("WM/Composer", wide("Two")),         field("IsVBR", number(quint32(1)), Bool),
        field("WM/Year", wide("2012-03-15")),      field("WM/TrackNumber", wide("3/12")),
        field("WM/AlbumTitle", wide("The album")), field("Odd", "\1\2\3", Bytes)};
    QByteArrayList metadataFields = {
        longField("WM/Composer", wide("of a stream"), Unicode, 0, 1),
        longField("DeviceConformanceTemplate", wide("L1"), Unicode, 0, 2),
    };
    QByteArrayList libraryFields = {
        longField("WM/MediaClassPrimaryID", QByteArray(16, 'g'), Guid),
        longField("Title", wide("Alt"), Unicode, 1),
        longField("WM/Composer", wide("Three")),
        longField("WM/Picture", picture("\xFF\xD8 back", 4, "the back"), Bytes),
        longField("WM/Picture", picture("\xFF\xD8 front"), Bytes),
        longField("WM/Lyrics", wide("La la la"), Unicode, 2),
    };

    QByteArrayList objects() const
    {
        return {object(someId, "nobody knows this"), extended(fields),
                extension({object(someId, "nor this"), metadata(metadataFields), padding(11),
                           library(libraryFields), object(someId, QByteArray())}),
                padding(500),
                description({title, author, wide("Copyright"), QByteArray(), wide("R")}) + QByteArray()};
    }
    QByteArray file() const { return Asf::file(objects(), object(someId, "not counted")); }
};

QString longText(int size)
{
    return QString(size, QLatin1Char('x'));
}

QByteArray large(int size)
{
    return "\xFF\xD8" + QByteArray(size, 'p');
}

TagLib::ByteVector bytesOf(const QByteArray& bytes)
{
    return TagLib::ByteVector(bytes.constData(), unsigned(bytes.size()));
}

QByteArray bytesOf(const TagLib::ByteVector& bytes)
{
    return QByteArray(bytes.data(), int(bytes.size()));
}
} // namespace

/// Headers of WMA files by the byte: an edit changes its own field, and nothing else.
class TestAsf : public QObject
{
    Q_OBJECT

private slots:
    void init() { AudioFile::takeLog(); }
    void anEditChangesItsOwnFieldAlone_data();
    void anEditChangesItsOwnFieldAlone();
    void aSecondSaveChangesNothing();
    void aNewFieldBringsNoEmptyOnes();
    void whatIsTakenOutLeavesNoEmptyField();
    void severalValuesAreReplacedTogether();
    void namesAreTheSameInCapitals();
    void longNamesAreNoneOfOurs();
    void aCountEndsWithItsObject_data();
    void aCountEndsWithItsObject();
    void aNameLikeAnObjectHidesNoObject();
    void titlesOfOtherLanguagesStay();
    void ofSeveralDescriptionsTheShownOneIsWritten();
    void aPictureGoesWhereItFits_data();
    void aPictureGoesWhereItFits();
    void aNumberOfATrackBecomesText();
    void whatCannotBeKeptIsNotSaved_data();
    void whatCannotBeKeptIsNotSaved();
    void everyPartOfAHeaderIsRefused();
    void asManyFieldsAsThereAreAreTakenApart();

private:
    QString saved(const QByteArray& content);
    void edit(const QString& path, int type, const QString& text);

    QTemporaryDir m_folder;
};

QString TestAsf::saved(const QByteArray& content)
{
    const QString path = m_folder.filePath(QStringLiteral("song.wma"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qUtf8Printable(path));
    return path;
}

void TestAsf::edit(const QString& path, int type, const QString& text)
{
    QCOMPARE(AudioFile::write(path, {{type, text}}), 0);
    QCOMPARE(AudioFile::takeLog(), QStringList());
    QCOMPARE(AudioFile::read(path).texts.value(type), text);
}

void TestAsf::anEditChangesItsOwnFieldAlone_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("wanted");
    const auto row = [](const char* name, int type, const QString& text, const auto& change) {
        Rich rich;
        change(rich);
        QTest::newRow(name) << type << text << rich.file();
    };
    row("title", TAG_TITLE, QStringLiteral("Größer"), [](Rich& rich) { rich.title = wide("Größer"); });
    row("artist", TAG_ARTIST, QStringLiteral("S"), [](Rich& rich) { rich.author = wide("S"); });
    row("album", TAG_ALBUM, longText(3000),
        [](Rich& rich) { rich.fields[8] = field("WM/AlbumTitle", wide(longText(3000))); });
    row("genre", TAG_GENRE, QStringLiteral("Pop"), [](Rich& rich) {
        rich.fields[0] = field("WM/Genre", wide("Pop"));
        rich.fields.removeAt(2);
    });
    row("year", TAG_YEAR, QStringLiteral("1987"),
        [](Rich& rich) { rich.fields[6] = field("WM/Year", wide("1987")); });
    row("track", TAG_TRACK, QStringLiteral("7"),
        [](Rich& rich) { rich.fields[7] = field("WM/TrackNumber", wide("7/12")); });
    row("no track", TAG_TRACK, QString(), [](Rich& rich) { rich.fields.removeAt(7); });
}

void TestAsf::anEditChangesItsOwnFieldAlone()
{
    QFETCH(int, type);
    QFETCH(QString, text);
    QFETCH(QByteArray, wanted);
    const QString path = saved(Rich().file());
    const AudioFile::Content before = AudioFile::read(path);
    QCOMPARE(before.picture, QByteArray("\xFF\xD8 front"));
    QCOMPARE(before.texts.value(TAG_GENRE), QStringLiteral("Rock; Blues"));
    edit(path, type, text);
    QCOMPARE(contentOf(path), wanted);
    AudioFile::Content expected = before;
    expected.texts.remove(type);
    if (!text.isEmpty())
        expected.texts.insert(type, text);
    QCOMPARE(AudioFile::read(path).texts, expected.texts);
    QCOMPARE(AudioFile::read(path).picture, expected.picture);
}

void TestAsf::aSecondSaveChangesNothing()
{
    const QString path = saved(Rich().file());
    const QHash<int, QString> texts = {
        {TAG_TITLE, QStringLiteral("New")}, {TAG_ARTIST, QStringLiteral("New")},
        {TAG_ALBUM, QStringLiteral("New")}, {TAG_GENRE, QStringLiteral("New")},
        {TAG_YEAR, QStringLiteral("1987")}, {TAG_TRACK, QStringLiteral("7")}};
    const QByteArray picture = large(100000);
    QCOMPARE(AudioFile::write(path, texts, &picture), 0);
    const QByteArray once = contentOf(path);
    QCOMPARE(AudioFile::write(path, texts, &picture), 0);
    QCOMPARE(contentOf(path), once);
    QCOMPARE(AudioFile::read(path).texts, texts);
    QCOMPARE(AudioFile::read(path).picture, picture);
}

void TestAsf::aNewFieldBringsNoEmptyOnes()
{
    const QString title = saved(file({}));
    edit(title, TAG_TITLE, QStringLiteral("New"));
    QCOMPARE(contentOf(title), file({description({wide("New"), "", "", "", ""})}));
    edit(title, TAG_ALBUM, QStringLiteral("New"));
    QCOMPARE(contentOf(title), file({description({wide("New"), "", "", "", ""}),
                                     extended({field("WM/AlbumTitle", wide("New"))})}));
}

void TestAsf::whatIsTakenOutLeavesNoEmptyField()
{
    const auto described = [](const QByteArray& title) {
        return description({title, wide("Singer"), "", wide("Comment"), ""});
    };
    const QString path = saved(file({described(wide("Old")), extended({field("WM/Genre", wide("Rock"))})}));
    edit(path, TAG_TITLE, QString());
    edit(path, TAG_GENRE, QString());
    QCOMPARE(contentOf(path), file({described(""), extended({})}));
    edit(path, TAG_ALBUM, QString());
    QCOMPARE(contentOf(path), file({described(""), extended({})}));
}

void TestAsf::severalValuesAreReplacedTogether()
{
    const QByteArrayList others = {longField("WM/Composer", wide("Someone"), Unicode, 0, 1)};
    const QString path = saved(file(
        {extension(
             {metadata(QByteArrayList{longField("WM/Genre", wide("of a stream"), Unicode, 0, 1)} + others),
              library({longField("WM/Genre", wide("in a language"), Unicode, 2),
                       longField("WM/Genre", wide("Rock")), longField("WM/Genre", wide("Blues"))})}),
         extended({})}));
    QCOMPARE(AudioFile::read(path).texts.value(TAG_GENRE),
             QStringLiteral("of a stream; in a language; Rock; Blues"));
    edit(path, TAG_GENRE, QStringLiteral("Pop"));
    QCOMPARE(
        contentOf(path),
        file({extension({metadata(others), library({longField("WM/Genre", wide("Pop"))})}), extended({})}));
}

void TestAsf::namesAreTheSameInCapitals()
{
    const QString path =
        saved(file({extended({field("wm/genre", wide("Rock")), field("WM/GENRE", wide("Pop")),
                              field("WM/Genre2", wide("Blues"))})}));
    edit(path, TAG_GENRE, QStringLiteral("Jazz"));
    QCOMPARE(contentOf(path),
             file({extended({field("WM/Genre", wide("Jazz")), field("WM/Genre2", wide("Blues"))})}));
}

void TestAsf::longNamesAreNoneOfOurs()
{
    const auto genreNamedIn = [](int bytes) {
        const QByteArray name = wide("WM/Genre").leftJustified(bytes, '\0');
        return number(quint16(bytes)) + name + field("", wide("Rock")).mid(2 + wide("").size());
    };
    std::optional<AsfBytes> parsed =
        AsfBytes::parse(bytesOf(header({extended({genreNamedIn(64), genreNamedIn(66)})})));
    QVERIFY(parsed);
    TagEdits edits;
    edits.texts[TAG_GENRE] = "Pop";
    parsed->apply(edits);
    QCOMPARE(bytesOf(parsed->render(tone().behind.size()).value_or(TagLib::ByteVector())),
             header({extended({field("WM/Genre", wide("Pop")), genreNamedIn(66)})}));
}

/// Where it counts more fields than there are, what comes behind is read all the same.
void TestAsf::aCountEndsWithItsObject_data()
{
    QTest::addColumn<QByteArray>("object");
    const QByteArray more = number(quint16(2));
    QTest::newRow("short fields") << extended({QByteArray(6, '\0')}).replace(24, 2, more);
    QTest::newRow("long fields") << extension({library({QByteArray(12, '\0')}).replace(24, 2, more)});
}

void TestAsf::aCountEndsWithItsObject()
{
    QFETCH(QByteArray, object);
    const QString path = saved(file({object, description({wide("Title"), "", "", "", ""})}));
    QCOMPARE(AudioFile::read(path).texts.value(TAG_TITLE), QStringLiteral("Title"));
}

void TestAsf::aNameLikeAnObjectHidesNoObject()
{
    const QByteArray name = extended({}).left(16);
    const QByteArray named = number(quint32(0)) + number(quint16(name.size())) + number(quint16(Bytes)) +
                             number(quint32(8)) + name + QByteArray(8, '\0');
    const QString path =
        saved(file({extension({library({named})}), extended({field("WM/Genre", wide("Rock"))})}));
    QCOMPARE(AudioFile::read(path).texts.value(TAG_GENRE), QStringLiteral("Rock"));
}

void TestAsf::titlesOfOtherLanguagesStay()
{
    const QByteArrayList others = {longField("Title", wide("Titel"), Unicode, 1),
                                   longField("Author", wide("of a stream"), Unicode, 0, 1)};
    const auto with = [&others](const char* title, const QByteArrayList& further) {
        return file(
            {description({wide(title), wide("One"), "", "", ""}), extension({library(further + others)})});
    };
    // Further ones of the same language are titles and authors as well, as others write several.
    const QString path =
        saved(with("Old", {longField("Title", wide("Second")), longField("Author", wide("Two"))}));
    edit(path, TAG_TITLE, QStringLiteral("New"));
    QCOMPARE(contentOf(path), with("New", {longField("Author", wide("Two"))}));
    QCOMPARE(AudioFile::write(path, {{TAG_ARTIST, QString()}}), 0);
    QVERIFY(contentOf(path).contains(extension({library(others)})));
}

void TestAsf::ofSeveralDescriptionsTheShownOneIsWritten()
{
    const QByteArray second = description({"", wide("Two"), "", wide("Comment"), ""});
    const QString path = saved(file({description({wide("First"), wide("One"), wide("C"), "", ""}), second}));
    edit(path, TAG_TITLE, QStringLiteral("New"));
    QCOMPARE(contentOf(path), file({description({"", wide("One"), wide("C"), "", ""}),
                                    description({wide("New"), wide("Two"), "", wide("Comment"), ""})}));
}

void TestAsf::aPictureGoesWhereItFits_data()
{
    QTest::addColumn<QByteArrayList>("before");
    QTest::addColumn<QByteArray>("picture");
    QTest::addColumn<QByteArrayList>("after");
    const QByteArray small = large(60000);
    const QByteArray vast = large(70000);
    const QByteArrayList others = {field("A", wide("a")), field("WM/Picture", picture("\xFF\xD8 old"), Bytes),
                                   field("Z", wide("z"))};
    const QByteArrayList left = {others.first(), others.last()};
    const auto inExtended = [&others](const QByteArray& bytes) {
        return extended({others.first(), field("WM/Picture", picture(bytes), Bytes), others.last()});
    };
    const auto inLibrary = [](const QByteArray& bytes) {
        return library({longField("WM/Picture", picture(bytes), Bytes)});
    };
    using List = QByteArrayList;
    QTest::newRow("small, none yet") << List() << small
                                     << List{extended({field("WM/Picture", picture(small), Bytes)})};
    QTest::newRow("large, none yet") << List() << vast << List{extension({inLibrary(vast)})};
    QTest::newRow("large, an extension")
        << List{extension({padding(3)})} << vast << List{extension({padding(3), inLibrary(vast)})};
    QTest::newRow("small for an old one") << List{extended(others)} << small << List{inExtended(small)};
    QTest::newRow("large for an old one") << List{extended(others), extension({library({})})} << vast
                                          << List{extended(left), extension({inLibrary(vast)})};
    const QByteArray behind = longField("WM/Lyrics", wide("La la la"));
    QTest::newRow("large, others behind the old one")
        << List{extension({library({longField("WM/Picture", picture("\xFF\xD8 old"), Bytes), behind})})}
        << vast << List{extension({library({behind, longField("WM/Picture", picture(vast), Bytes)})})};
    QTest::newRow("small for two") << List{extension({inLibrary(vast)}), extended(others)} << small
                                   << List{extension({inLibrary(small)}), extended(left)};
    QTest::newRow("none for two") << List{extension({inLibrary(vast)}), extended(others)} << QByteArray("")
                                  << List{extension({library({})}), extended(left)};
}

void TestAsf::aPictureGoesWhereItFits()
{
    QFETCH(QByteArrayList, before);
    QFETCH(QByteArray, picture);
    QFETCH(QByteArrayList, after);
    const QString path = saved(file(before));
    QCOMPARE(AudioFile::write(path, {}, &picture), 0);
    QCOMPARE(contentOf(path), file(after));
    QCOMPARE(AudioFile::read(path).picture, picture);
}

void TestAsf::aNumberOfATrackBecomesText()
{
    const QString path = saved(file({extended({field("WM/TrackNumber", number(quint32(3)), DoubleWord)})}));
    QCOMPARE(AudioFile::read(path).texts.value(TAG_TRACK), QStringLiteral("3"));
    edit(path, TAG_TRACK, QStringLiteral("4"));
    QCOMPARE(contentOf(path), file({extended({field("WM/TrackNumber", wide("4"))})}));
}

void TestAsf::whatCannotBeKeptIsNotSaved_data()
{
    QTest::addColumn<QByteArray>("content");
    const QByteArray good = Rich().file();
    const auto patched = [&good](int at, const QByteArray& bytes) {
        return QByteArray(good).replace(at, bytes.size(), bytes);
    };
    const auto sizeOf = [&good](const QByteArray& id) { return good.indexOf(QByteArray::fromHex(id)) + 16; };
    const int extendedSize = sizeOf("40A4D0D2");
    const int extensionSize = sizeOf("B503BF5F");
    const quint64 most = ~quint64(0);
    QTest::newRow("a header beyond the file") << patched(16, number(quint64(good.size()) + 1));
    QTest::newRow("a header without an end") << patched(16, number(most));
    QTest::newRow("a header below zero") << patched(16, number(quint64(1) << 63));
    QTest::newRow("a header of no size") << patched(16, number(quint64(0)));
    QTest::newRow("a header within itself") << patched(16, number(quint64(29)));
    QTest::newRow("more objects than there are") << patched(24, number(quint32(12)));
    QTest::newRow("all objects of the world") << patched(24, number(~quint32(0)));
    QTest::newRow("an object without an end") << patched(extendedSize, number(most));
    QTest::newRow("an object of no size") << patched(sizeOf(someId), number(quint64(0)));
    QTest::newRow("an object within its head") << patched(sizeOf(someId), number(quint64(23)));
    QTest::newRow("an object beyond the header")
        << patched(sizeOf("74D40618DFCA0945A4BA9AABCB96AAE8F4"), number(quint64(50000)));
    QTest::newRow("fields beyond their object") << patched(extendedSize, number(quint64(200)));
    QTest::newRow("more fields than there are") << patched(extendedSize + 8, number(quint16(60000)));
    QTest::newRow("an extension beyond itself") << patched(extensionSize + 26, number(quint32(40000)));
    QTest::newRow("objects beyond their extension")
        << patched(sizeOf("941C2344"), number(quint64(0x7FFFFFFF)));
    QTest::newRow("texts beyond their object") << patched(sizeOf("3326B275") + 8, number(quint16(65535)));
    QTest::newRow("no room for a size") << file({object("A1DCAB8C47A9CF118EE400C00C205365", "short")});
    QTest::newRow("no more room for a field")
        << file({extended(QVector<QByteArray>(65535, field("A", "")).toList())});
    const QByteArray full = extended(QVector<QByteArray>(60000, field("A", "")).toList());
    QTest::newRow("too many fields") << file({full, full});
    QTest::newRow("too many objects") << file(QVector<QByteArray>(100001, object(someId, "")).toList());
}

void TestAsf::whatCannotBeKeptIsNotSaved()
{
    QFETCH(QByteArray, content);
    const QString path = saved(content);
    QVERIFY(AudioFile::write(path, {{TAG_TITLE, longText(300)}, {TAG_ALBUM, longText(200)}}) != 0);
    const QStringList log = AudioFile::takeLog();
    QVERIFY(!log.isEmpty());
    QVERIFY(log.last().contains(path));
    QVERIFY(contentOf(path) == content);
    // Nor would it be, were the tag library to see music there.
    std::optional<AsfBytes> header =
        AsfBytes::parse(bytesOf(content.left(content.size() - tone().behind.size())));
    TagEdits edits;
    edits.texts[TAG_ALBUM] = "New";
    if (header)
        header->apply(edits);
    QVERIFY(!header || !header->render(0));
}

void TestAsf::everyPartOfAHeaderIsRefused()
{
    const QByteArray whole = header(Rich().objects(), object(someId, "not counted"));
    const qint64 behind = tone().behind.size();
    const std::optional<AsfBytes> parsed = AsfBytes::parse(bytesOf(whole));
    QVERIFY(parsed);
    QCOMPARE(bytesOf(parsed->render(behind).value_or(TagLib::ByteVector())), whole);
    for (int size = 0; size < whole.size(); ++size) {
        QVERIFY(!AsfBytes::parse(bytesOf(whole.left(size))));
        // Nor when the header says so itself: something ends too early then, unless it is not counted.
        const QByteArray part = whole.left(size).replace(16, 8, number(quint64(size))).left(size);
        const bool counted = size < whole.size() - object(someId, "not counted").size();
        QCOMPARE(!AsfBytes::parse(bytesOf(part)), counted);
    }
}

void TestAsf::asManyFieldsAsThereAreAreTakenApart()
{
    const QByteArray genres = extended(QVector<QByteArray>(65535, field("WM/Genre", wide("R"))).toList());
    std::optional<AsfBytes> parsed = AsfBytes::parse(bytesOf(header({genres})));
    QVERIFY(parsed);
    TagEdits edits;
    edits.texts[TAG_GENRE] = "Pop";
    parsed->apply(edits);
    QCOMPARE(bytesOf(parsed->render(tone().behind.size()).value_or(TagLib::ByteVector())),
             header({extended({field("WM/Genre", wide("Pop"))})}));
    // A text of a description has a size of 16 bits.
    edits.texts[TAG_GENRE].reset();
    edits.texts[TAG_TITLE] = std::string(33000, 'x');
    parsed->apply(edits);
    QVERIFY(!parsed->render(0));
}

QTEST_GUILESS_MAIN(TestAsf)
#include "tst_asf.moc"
