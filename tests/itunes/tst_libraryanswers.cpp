#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "itunesfixture.h"
#include "librarycalls.h"

#include <expat.h>

#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

using Fixtures::ITunesTrack;
using LibraryCalls::Buffers;
using LibraryCalls::contentOf;

namespace {
struct stat stateOf(const QString& path)
{
    struct stat status = {};
    ::stat(QFile::encodeName(path).constData(), &status);
    return status;
}

/// The title that another program finds in a library of one track; no text when it refuses the file.
QString titleForOthers(const QByteArray& document)
{
    struct Found
    {
        QByteArray text;
        QByteArray key;
        QByteArray title;
    } found;
    const XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &found);
    XML_SetElementHandler(
        parser, [](void* data, const char*, const char**) { static_cast<Found*>(data)->text.clear(); },
        [](void* data, const char*) {
            auto* const here = static_cast<Found*>(data);
            if (here->key == "Name")
                here->title = here->text;
            here->key = here->text;
        });
    XML_SetCharacterDataHandler(parser, [](void* data, const char* bytes, int size) {
        static_cast<Found*>(data)->text.append(bytes, size);
    });
    const bool sound = XML_Parse(parser, document.constData(), document.size(), 1) == XML_STATUS_OK;
    XML_ParserFree(parser);
    return sound ? QString::fromUtf8(found.title) : QString();
}
} // namespace

class TestLibraryAnswers : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void theLastBufferGetsTheLocation();
    void aLongLocationIsCutAtACharacter_data();
    void aLongLocationIsCutAtACharacter();
    void theLocationIsTheLibrarysNotTheRecords();
    void unknownTracksLeaveTheBuffersEmpty();
    void artworkOfEveryFormatIsWritten_data();
    void artworkOfEveryFormatIsWritten();
    void aPathThatFillsItsBufferIsAllowed();
    void aPathWithoutAnEndIsRefused();
    void equalPicturesShareTheirSpace();
    void aChangedPictureTakesTheFilesPlace();
    void noArtworkLeavesNoFile();
    void artworkThatCannotBeWrittenIsTold();
    void whatIsNoPictureLeavesTheArtwork_data();
    void whatIsNoPictureLeavesTheArtwork();
    void picturesOfEveryKindAreTaken_data();
    void picturesOfEveryKindAreTaken();
    void othersReadWhatWasEdited_data();
    void othersReadWhatWasEdited();

private:
    QString inFolder(const QString& name) const { return m_folder->filePath(name); }
    /// One track more; its identifier.
    quint64 addTrack(const QString& kind, const QByteArray& picture);
    void readLibrary();

    std::unique_ptr<QTemporaryDir> m_folder;
    QVector<ITunesTrack> m_tracks;
};

void TestLibraryAnswers::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_tracks.clear();
    AudioFile::takeLog();
}

void TestLibraryAnswers::cleanup()
{
    closeITunesLibrary();
    setITunesLibraryOption(nullptr);
}

quint64 TestLibraryAnswers::addTrack(const QString& kind, const QByteArray& picture)
{
    const int number = m_tracks.size();
    const QString file = Fixtures::copyTone(kind, m_folder->path(), QString("song%1").arg(number));
    if (!picture.isNull())
        AudioFile::write(file, {}, &picture);
    m_tracks.append(Fixtures::itunesTrack(number, file));
    return m_tracks.last().persistentId;
}

void TestLibraryAnswers::readLibrary()
{
    LibraryCalls::read(Fixtures::writeLibrary(inFolder("Library.xml"), Fixtures::itunesLibrary(m_tracks)));
}

void TestLibraryAnswers::theLastBufferGetsTheLocation()
{
    m_tracks = {Fixtures::itunesTrack(0), Fixtures::itunesTrack(1)};
    readLibrary();
    Buffers<1024> buffers;
    QCOMPARE(buffers.call(m_tracks.at(1).persistentId), 0);
    QCOMPARE(QByteArray(buffers.bytes[5].data()), m_tracks.at(1).location);
    QVERIFY(buffers.othersAreEmpty(5));
    QVERIFY(buffers.guardsStand());
}

void TestLibraryAnswers::aLongLocationIsCutAtACharacter_data()
{
    QTest::addColumn<QByteArray>("character");
    QTest::newRow("one byte") << QByteArray("x");
    QTest::newRow("two bytes") << QByteArray("\xC3\xA9");
    QTest::newRow("four bytes") << QByteArray("\xF0\x9F\x98\x80");
    QTest::newRow("an escape") << QByteArray("%20");
    QTest::newRow("escapes of one character") << QByteArray("%E5%A4%9C");
}

void TestLibraryAnswers::aLongLocationIsCutAtACharacter()
{
    QFETCH(QByteArray, character);
    const QByteArray head = "file://localhost/";
    for (int shift = 0; shift < 12; ++shift) {
        m_tracks = {Fixtures::itunesTrack(0)};
        m_tracks[0].location = head + QByteArray(shift, 'a') + character.repeated(1100 / character.size());
        readLibrary();
        Buffers<1024> buffers;
        QCOMPARE(buffers.call(m_tracks.at(0).persistentId), 0);
        const int room = 1023 - head.size() - shift;
        QCOMPARE(QByteArray(buffers.bytes[5].data()),
                 head + QByteArray(shift, 'a') + character.repeated(room / character.size()));
        QVERIFY(buffers.guardsStand());
    }
}

void TestLibraryAnswers::theLocationIsTheLibrarysNotTheRecords()
{
    m_tracks = {Fixtures::itunesTrack(0)};
    readLibrary();
    const LibraryCalls::Reading reading = LibraryCalls::read();
    // The application puts its own text into the record.
    QByteArray own("something else");
    reading.records[0].location = own.constData();
    own.fill('x');
    Buffers<1024> buffers;
    QCOMPARE(buffers.call(m_tracks.at(0).persistentId), 0);
    QCOMPARE(QByteArray(buffers.bytes[5].data()), m_tracks.at(0).location);
}

void TestLibraryAnswers::unknownTracksLeaveTheBuffersEmpty()
{
    m_tracks = {Fixtures::itunesTrack(0), Fixtures::itunesTrack(1)};
    m_tracks[1].location = QByteArray();
    readLibrary();
    for (const quint64 id : {Q_UINT64_C(0), Q_UINT64_C(12345), m_tracks.at(1).persistentId}) {
        Buffers<1024> buffers;
        QVERIFY(buffers.call(id) != 0);
        QVERIFY(buffers.othersAreEmpty(6));
        QVERIFY(buffers.guardsStand());
        QVERIFY(LibraryCalls::writeArtwork(id, inFolder("cover")) != 0);
        QVERIFY(!QFile::exists(inFolder("cover")));
    }
}

void TestLibraryAnswers::artworkOfEveryFormatIsWritten_data()
{
    QTest::addColumn<QString>("kind");
    for (const QString& kind : Fixtures::formats())
        QTest::newRow(qPrintable(kind)) << kind;
}

void TestLibraryAnswers::artworkOfEveryFormatIsWritten()
{
    QFETCH(QString, kind);
    const QByteArray picture = Fixtures::jpeg(120, 100, 3);
    const quint64 id = addTrack(kind, picture);
    readLibrary();
    Buffers<256> buffers;
    const QByteArray path = QFile::encodeName(inFolder(QString::fromUtf8("c\xC3\xB6ver")));
    qstrncpy(buffers.bytes[4].data(), path.constData(), 256);
    QCOMPARE(buffers.call(id), 0);
    QCOMPARE(contentOf(QFile::decodeName(path)), picture);
    QVERIFY(!QImage(QFile::decodeName(path)).isNull());
    QVERIFY(buffers.othersAreEmpty(4));
    QVERIFY(buffers.guardsStand());
}

void TestLibraryAnswers::aPathThatFillsItsBufferIsAllowed()
{
    const quint64 id = addTrack("mp3", Fixtures::jpeg(50, 50, 1));
    readLibrary();
    QString folder = m_folder->path() + '/';
    while (folder.size() < 200)
        folder += QString(50, 'f') + '/';
    QDir().mkpath(folder);
    const QString path = folder + QString(255 - folder.size(), 'c');
    QCOMPARE(LibraryCalls::writeArtwork(id, path), 0);
    QVERIFY(QFile::exists(path));
}

void TestLibraryAnswers::aPathWithoutAnEndIsRefused()
{
    const quint64 id = addTrack("mp3", Fixtures::jpeg(50, 50, 1));
    readLibrary();
    Buffers<256> buffers;
    buffers.bytes[4].fill('c');
    QVERIFY(buffers.call(id) != 0);
}

void TestLibraryAnswers::equalPicturesShareTheirSpace()
{
    const QByteArray picture = Fixtures::jpeg(120, 100, 3);
    const quint64 first = addTrack("mp3", picture);
    const quint64 second = addTrack("flac", picture);
    const quint64 other = addTrack("ogg", Fixtures::jpeg(120, 100, 4));
    readLibrary();
    for (int round = 0; round < 2; ++round) {
        QCOMPARE(LibraryCalls::writeArtwork(first, inFolder("1")), 0);
        QCOMPARE(LibraryCalls::writeArtwork(second, inFolder("2")), 0);
        QCOMPARE(LibraryCalls::writeArtwork(other, inFolder("3")), 0);
        QCOMPARE(stateOf(inFolder("1")).st_ino, stateOf(inFolder("2")).st_ino);
        QVERIFY(stateOf(inFolder("1")).st_ino != stateOf(inFolder("3")).st_ino);
        QCOMPARE(contentOf(inFolder("2")), picture);
        QCOMPARE(contentOf(inFolder("3")), Fixtures::jpeg(120, 100, 4));
    }
    QVERIFY(QDir(m_folder->path()).entryList({"*.part*"}, QDir::Files).isEmpty());
    // A file that is no longer what was written shares nothing.
    Fixtures::writeLibrary(inFolder("1"), "something else");
    QCOMPARE(LibraryCalls::writeArtwork(first, inFolder("4")), 0);
    QCOMPARE(contentOf(inFolder("4")), picture);
}

void TestLibraryAnswers::aChangedPictureTakesTheFilesPlace()
{
    const quint64 id = addTrack("mp3", Fixtures::jpeg(50, 50, 1));
    readLibrary();
    QCOMPARE(LibraryCalls::writeArtwork(id, inFolder("cover")), 0);
    QFile open(inFolder("cover"));
    QVERIFY(open.open(QIODevice::ReadOnly));
    LibraryCalls::Edit edit;
    edit.cover = Fixtures::writeLibrary(inFolder("new.jpg"), Fixtures::jpeg(60, 60, 2));
    QCOMPARE(LibraryCalls::edit(id, edit), 0);
    QCOMPARE(LibraryCalls::writeArtwork(id, inFolder("cover")), 0);
    QCOMPARE(contentOf(inFolder("cover")), Fixtures::jpeg(60, 60, 2));
    QCOMPARE(open.readAll(), Fixtures::jpeg(50, 50, 1)); // whoever reads it sees it whole
}

void TestLibraryAnswers::noArtworkLeavesNoFile()
{
    const quint64 bare = addTrack("mp3", QByteArray());
    m_tracks.append(Fixtures::itunesTrack(1)); // its file is not there
    readLibrary();
    QVERIFY(LibraryCalls::writeArtwork(bare, inFolder("cover")) != 0);
    QVERIFY(LibraryCalls::writeArtwork(m_tracks.at(1).persistentId, inFolder("cover")) != 0);
    QVERIFY(!QFile::exists(inFolder("cover")));
    QVERIFY(AudioFile::takeLog().isEmpty()); // nothing unusual
}

void TestLibraryAnswers::artworkThatCannotBeWrittenIsTold()
{
    const quint64 id = addTrack("mp3", Fixtures::jpeg(50, 50, 1));
    readLibrary();
    QVERIFY(LibraryCalls::writeArtwork(id, inFolder("no such folder/cover")) != 0);
    QDir(m_folder->path()).mkdir("folder");
    QVERIFY(LibraryCalls::writeArtwork(id, inFolder("folder")) != 0);
    QVERIFY(QDir(m_folder->path()).entryList({"*.part*"}, QDir::Files).isEmpty());
}

void TestLibraryAnswers::whatIsNoPictureLeavesTheArtwork_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("text") << QByteArray("no picture");
    QTest::newRow("text with letters of a picture") << QByteArray("BMW, and other makers of cars and bikes");
    QTest::newRow("one byte") << QByteArray("\xFF");
    QTest::newRow("zeros") << QByteArray(100, '\0');
    QTest::newRow("a picture behind something") << "x" + Fixtures::jpeg(60, 60, 2);
    QTest::newRow("sound") << QByteArray("RIFF\x24\0\0\0WAVEfmt ", 16);
}

void TestLibraryAnswers::whatIsNoPictureLeavesTheArtwork()
{
    QFETCH(QByteArray, bytes);
    const QByteArray artwork = Fixtures::jpeg(50, 50, 1);
    const quint64 id = addTrack("mp3", artwork);
    readLibrary();
    LibraryCalls::Edit edit;
    edit.cover = Fixtures::writeLibrary(inFolder("cover.jpg"), bytes);
    QCOMPARE(LibraryCalls::edit(id, edit), 0); // the texts are not lost for it
    QCOMPARE(AudioFile::read(inFolder("song0.mp3")).picture, artwork);
    QCOMPARE(AudioFile::read(inFolder("song0.mp3")).texts.value(TAG_TITLE), QString("New name"));
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY(log.first().contains("cover.jpg"));
}

void TestLibraryAnswers::picturesOfEveryKindAreTaken_data()
{
    QTest::addColumn<QByteArray>("format");
    for (const char* format : {"JPEG", "PNG", "BMP"})
        QTest::newRow(format) << QByteArray(format);
    QTest::newRow("GIF") << QByteArray();
}

void TestLibraryAnswers::picturesOfEveryKindAreTaken()
{
    QFETCH(QByteArray, format);
    const quint64 id = addTrack("mp3", Fixtures::jpeg(50, 50, 1));
    readLibrary();
    LibraryCalls::Edit edit;
    edit.cover = inFolder("cover");
    QImage picture(20, 20, QImage::Format_RGB32);
    picture.fill(Qt::red);
    if (format.isEmpty())
        Fixtures::writeLibrary(edit.cover,
                               QByteArray::fromBase64("R0lGODlhAQABAAAAACwAAAAAAQABAAACAkQBADs="));
    else
        QVERIFY(picture.save(edit.cover, format.constData()));
    QCOMPARE(LibraryCalls::edit(id, edit), 0);
    QCOMPARE(AudioFile::read(inFolder("song0.mp3")).picture, contentOf(edit.cover));
    QVERIFY(AudioFile::takeLog().isEmpty());
}

void TestLibraryAnswers::othersReadWhatWasEdited_data()
{
    QTest::addColumn<QByteArray>("encoding");
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<QString>("title");
    const QByteArray umlaut = QString::fromUtf8("Mot\xC3\xB6r \xF0\x9F\x98\x80").toUtf8();
    for (const char* encoding : {"UTF-8", "utf-8", "ISO-8859-1", "US-ASCII"}) {
        QTest::addRow("umlauts in %s", encoding)
            << QByteArray(encoding) << umlaut << QString::fromUtf8(umlaut);
        QTest::addRow("no characters in %s", encoding)
            << QByteArray(encoding) << QByteArray("a\xEF\xBF\xBF\xEF\xBF\xBE<b>&\x01\xFF")
            << QString("a\uFFFD\uFFFD<b>&\uFFFD");
    }
}

void TestLibraryAnswers::othersReadWhatWasEdited()
{
    QFETCH(QByteArray, encoding);
    QFETCH(QByteArray, written);
    QFETCH(QString, title);
    const quint64 id = addTrack("mp3", QByteArray());
    m_tracks[0].name = "Title";
    m_tracks[0].further = "\t\t\t<key>Comments</key><string>caf\xC3\xA9</string>\n";
    QByteArray document = Fixtures::itunesLibrary(m_tracks);
    document.replace("encoding=\"UTF-8\"", "encoding=\"" + encoding + "\"");
    if (encoding == "ISO-8859-1")
        document.replace("caf\xC3\xA9", "caf\xE9");
    else if (encoding == "US-ASCII")
        document.replace("caf\xC3\xA9", "caf&#233;");
    const QString path = Fixtures::writeLibrary(inFolder("Library.xml"), document);
    QCOMPARE(LibraryCalls::read(path).count, 1);
    QCOMPARE(titleForOthers(contentOf(path)), QString("Title"));
    LibraryCalls::Edit edit;
    edit.name = written;
    QCOMPARE(LibraryCalls::edit(id, edit), 0);
    closeITunesLibrary();
    QCOMPARE(titleForOthers(contentOf(path)), title);
    QCOMPARE(LibraryCalls::names(LibraryCalls::read(path)), QStringList(title));
    // Characters of the file that nobody edited stay as they are.
    const int comments = document.indexOf("<key>Comments");
    QVERIFY(contentOf(path).contains(document.mid(comments, document.indexOf('\n', comments) - comments)));
}

QTEST_GUILESS_MAIN(TestLibraryAnswers)
#include "tst_libraryanswers.moc"
