#include "plainlibrary.h"

#include <QTextCodec>
#include <QtTest>

using Fixtures::ITunesTrack;
using namespace PlainLibrary;

class TestLibraryReading : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void everyFieldArrivesInTheLibrarysOrder();
    void namesOfBrokenTextStillArrive_data();
    void namesOfBrokenTextStillArrive();
    void everyEncodingReadsTheSame_data();
    void everyEncodingReadsTheSame();
    void locationsHaveOnePrefix_data();
    void locationsHaveOnePrefix();
    void whatIsNoMusicFileHereIsMarked_data();
    void whatIsNoMusicFileHereIsMarked();
    void brokenStructureGivesNothingAndTellsWhere_data();
    void brokenStructureGivesNothingAndTellsWhere();
    void aFileCutAnywhereGivesNothing();
    void aFileThatEndsInsideACharacterGivesNothing();
    void unusualButSoundStructureIsRead();
    void tracksWithoutAnIdentifierHaveNone();
    void theArrayBeforeLivesUntilTheNextReadingBegins();
    void tagsMayLieAcrossAnyBlockBorder();
    void aVeryLongTitleArrives();
    void noLibraryIsAnEmptyOne();

private:
    Reading read(const QByteArray& bytes);

    QTemporaryDir m_folder;
};

void TestLibraryReading::init()
{
    AudioFile::takeLog();
}

Reading TestLibraryReading::read(const QByteArray& bytes)
{
    return PlainLibrary::read(m_folder, bytes);
}

void TestLibraryReading::everyFieldArrivesInTheLibrarysOrder()
{
    QVector<ITunesTrack> tracks;
    for (int i = 0; i < 30; ++i)
        tracks.append(Fixtures::itunesTrack(i));
    const Reading reading = read(Fixtures::itunesLibrary(tracks, {{"All", {1000, 1002}}}));
    QCOMPARE(reading.count, 30);
    for (int i = 0; i < 30; ++i) {
        const iTunesTrackRecord& record = reading.records[i];
        const ITunesTrack& track = tracks.at(i);
        QCOMPARE(record.name, track.name.constData());
        QCOMPARE(record.artist, track.artist.constData());
        QCOMPARE(record.album, track.album.constData());
        QCOMPARE(record.genre, track.genre.constData());
        QCOMPARE(record.kind, track.kind.constData());
        QCOMPARE(quint64(record.size), track.size);
        QCOMPARE(quint64(record.duration), track.duration);
        QCOMPARE(quint64(record.trackNumber), track.trackNumber);
        QCOMPARE(quint64(record.year), track.year);
        QCOMPARE(quint64(record.bitRate), track.bitRate);
        QCOMPARE(quint64(record.sampleRate), track.sampleRate);
        QCOMPARE(record.persistentId, Fixtures::itunesIdentifier(track.persistentId).constData());
        QCOMPARE(record.location, track.location.constData());
        QCOMPARE(int(record.skipA), 0);
        QCOMPARE(int(record.skipB), 0);
    }
    QVERIFY(AudioFile::takeLog().isEmpty());
}

void TestLibraryReading::namesOfBrokenTextStillArrive_data()
{
    QTest::addColumn<QByteArray>("raw");
    QTest::addColumn<QString>("name");
    const QString lost(QChar(0xFFFD));
    QTest::newRow("references") << QByteArray("&amp;&lt;&gt;&quot;&apos;&#65;&#x42;") << "&<>\"'AB";
    QTest::newRow("section") << QByteArray("a<![CDATA[<b>&amp;]]>c") << "a<b>&amp;c";
    QTest::newRow("comment inside") << QByteArray("a<!-- <b> -->c&#100;<!---->e") << "acde";
    QTest::newRow("instruction inside") << QByteArray("a<?x <b> ?>c") << "ac";
    QTest::newRow("control characters") << QByteArray("a\x01"
                                                      "b\0c\x1F"
                                                      "d",
                                                      7)
                                        << "abcd";
    QTest::newRow("references to control characters") << QByteArray("a&#0;&#1;&#x1F;b") << "ab";
    QTest::newRow("surrogate pair") << QByteArray("&#55357;&#56832;") << text("\xF0\x9F\x98\x80");
    QTest::newRow("hexadecimal pair") << QByteArray("&#xD83D;&#xDE00;") << text("\xF0\x9F\x98\x80");
    QTest::newRow("lone high half") << QByteArray("a&#xD83D;b") << "a" + lost + "b";
    QTest::newRow("lone low half") << QByteArray("a&#xDE00;b") << "a" + lost + "b";
    QTest::newRow("two high halves") << QByteArray("&#xD83D;&#xD83D;&#xDE00;")
                                     << lost + text("\xF0\x9F\x98\x80");
    QTest::newRow("beyond all characters")
        << QByteArray("a&#x110000;&#99999999999999;b") << "a" + lost + lost + "b";
    QTest::newRow("bare ampersands") << QByteArray("Rock & Roll &c; &;&#;&#x;&#xG;&")
                                     << "Rock & Roll &c; &;&#;&#x;&#xG;&";
    QTest::newRow("stray byte") << QByteArray("a\xFF"
                                              "b\x80"
                                              "c")
                                << "a" + lost + "b" + lost + "c";
    QTest::newRow("cut character") << QByteArray("a\xC3") << "a" + lost;
    QTest::newRow("overlong character") << QByteArray("\xC0\xAF") << lost + lost;
    QTest::newRow("surrogate half in bytes") << QByteArray("\xED\xA0\x80") << lost;
    QTest::newRow("line ends") << QByteArray("a\r\nb\rc\nd") << "a\nb\nc\nd";
    QTest::newRow("no characters") << QByteArray("a\xEF\xBF\xBE"
                                                 "b\xEF\xBF\xBF&#xFFFE;&#65535;c")
                                   << "a" + lost + "b" + lost + lost + lost + "c";
    QTest::newRow("the last characters before them")
        << QByteArray("\xEF\xBF\xBD\xEF\xBE\xBF&#xFFFD;") << text("\xEF\xBF\xBD\xEF\xBE\xBF\xEF\xBF\xBD");
    QTest::newRow("four bytes") << QByteArray("\xF0\x9F\x98\x80 \xE2\x82\xAC \xC3\xA9")
                                << text("\xF0\x9F\x98\x80 \xE2\x82\xAC \xC3\xA9");
    QTest::newRow("greater-than sign") << QByteArray("a > b ]]> c") << "a > b ]]> c";
}

void TestLibraryReading::namesOfBrokenTextStillArrive()
{
    QFETCH(QByteArray, raw);
    QFETCH(QString, name);
    const Reading reading = read(named(raw));
    QCOMPARE(reading.count, 1);
    QCOMPARE(text(reading.records[0].name), name);
}

void TestLibraryReading::everyEncodingReadsTheSame_data()
{
    QTest::addColumn<QByteArray>("codec");
    QTest::addColumn<bool>("mark");
    for (const bool mark : {false, true})
        for (const char* codec : {"UTF-8", "UTF-16LE", "UTF-16BE"})
            QTest::addRow("%s%s", codec, mark ? " with a mark" : "") << QByteArray(codec) << mark;
}

void TestLibraryReading::everyEncodingReadsTheSame()
{
    QFETCH(QByteArray, codec);
    QFETCH(bool, mark);
    QString document = QString::fromUtf8(named("Nächte \xF0\x9F\x98\x80 &amp; \xE5\xA4\x9C"));
    if (mark)
        document.prepend(QChar(0xFEFF));
    QTextCodec::ConverterState plain(QTextCodec::IgnoreHeader);
    const Reading reading =
        read(QTextCodec::codecForName(codec)->fromUnicode(document.constData(), document.size(), &plain));
    QCOMPARE(reading.count, 1);
    QCOMPARE(text(reading.records[0].name), text("Nächte \xF0\x9F\x98\x80 & \xE5\xA4\x9C"));
}

void TestLibraryReading::locationsHaveOnePrefix_data()
{
    QTest::addColumn<QByteArray>("raw");
    QTest::addColumn<QByteArray>("location");
    QTest::newRow("local host") << QByteArray("file://localhost/m/a%20b.mp3")
                                << QByteArray("file://localhost/m/a%20b.mp3");
    QTest::newRow("no host") << QByteArray("file:///m/a.mp3") << QByteArray("file://localhost/m/a.mp3");
    QTest::newRow("no slashes") << QByteArray("file:/m/a.mp3") << QByteArray("file://localhost/m/a.mp3");
    QTest::newRow("capitals") << QByteArray("FILE://LOCALHOST/m/A.mp3")
                              << QByteArray("file://localhost/m/A.mp3");
    QTest::newRow("a drive") << QByteArray("file://localhost/C:/m/a.mp3")
                             << QByteArray("file://localhost/C:/m/a.mp3");
    QTest::newRow("a share") << QByteArray("file://server/m/a.mp3")
                             << QByteArray("file://localhost//server/m/a.mp3");
    QTest::newRow("a share's old form")
        << QByteArray("file://localhost//server/m/a.mp3") << QByteArray("file://localhost//server/m/a.mp3");
    QTest::newRow("a bare path") << QByteArray("/m/a b#1.mp3")
                                 << QByteArray("file://localhost/m/a%20b%231.mp3");
    QTest::newRow("not a file") << QByteArray("http://example.org/a.mp3") << QByteArray();
    QTest::newRow("a host alone") << QByteArray("file://server") << QByteArray();
}

void TestLibraryReading::locationsHaveOnePrefix()
{
    QFETCH(QByteArray, raw);
    QFETCH(QByteArray, location);
    const Reading reading =
        read(libraryAround("<key>1</key><dict><key>Location</key><string>" + raw + "</string></dict>"));
    QCOMPARE(reading.count, 1);
    QCOMPARE(QByteArray(reading.records[0].location), location);
    QCOMPARE(bool(reading.records[0].skipA), location.isEmpty());
}

void TestLibraryReading::whatIsNoMusicFileHereIsMarked_data()
{
    QTest::addColumn<QByteArray>("pairs");
    QTest::addColumn<bool>("skipA");
    QTest::addColumn<bool>("skipB");
    const QByteArray here = "<key>Location</key><string>file:///a.mp3</string>";
    QTest::newRow("a song") << here << false << false;
    QTest::newRow("a file") << here + "<key>Track Type</key><string>File</string>" << false << false;
    QTest::newRow("a disabled song") << here + "<key>Disabled</key><true/>" << false << false;
    QTest::newRow("remote") << here + "<key>Track Type</key><string>Remote</string>" << true << false;
    QTest::newRow("a stream") << here + "<key>Track Type</key><string>URL</string>" << true << false;
    QTest::newRow("nowhere") << QByteArray() << true << false;
    for (const char* key :
         {"Movie", "TV Show", "Music Video", "Has Video", "Podcast", "Audiobook", "Audiobooks"}) {
        QTest::newRow(key) << here + "<key>" + key + "</key><true/>" << false << true;
        QTest::addRow("no %s", key) << here + "<key>" + key + "</key><false/>" << false << false;
    }
    for (const char* kind : {"MPEG-4 video file", "QuickTime movie file", "PDF document",
                             "Protected HD Video file", "Audible file", "Protected AAC Audiobook"})
        QTest::newRow(kind) << here + "<key>Kind</key><string>" + kind + "</string>" << false << true;
    QTest::newRow("a kind of song") << here + "<key>Kind</key><string>MPEG audio file</string>" << false
                                    << false;
    QTest::newRow("a number") << here + "<key>Movie</key><integer>1</integer>" << false << true;
}

void TestLibraryReading::whatIsNoMusicFileHereIsMarked()
{
    QFETCH(QByteArray, pairs);
    QFETCH(bool, skipA);
    QFETCH(bool, skipB);
    const Reading reading = read(libraryAround("<key>1</key><dict>" + pairs + "</dict>"));
    QCOMPARE(reading.count, 1);
    QCOMPARE(bool(reading.records[0].skipA), skipA);
    QCOMPARE(bool(reading.records[0].skipB), skipB);
}

void TestLibraryReading::brokenStructureGivesNothingAndTellsWhere_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("place");
    const QByteArray head = "<plist>\n<dict>\n<key>Tracks</key><dict><key>1</key><dict>"
                            "<key>Name</key><string>A</string></dict></dict>\n";
    QTest::newRow("empty") << QByteArray() << "line 1, column 1";
    QTest::newRow("no XML") << QByteArray("bplist00\x01\x02") << "line 1, column";
    QTest::newRow("another document") << QByteArray("<html></html>") << "line 1, column 1";
    const struct
    {
        const char* name;
        const char* rest;
        const char* place;
    } rows[] = {
        {"no end", "</dict>\n", "line 5, column 1"},
        {"wrong closing tag", "</array>\n</plist>", "line 4, column 1"},
        {"closing tag of another case", "</Dict></plist>", "line 4, column 1"},
        {"a longer closing tag", "</dict2></plist>", "line 4, column 1"},
        {"text after the end", "</dict></plist>\nrest", "line 5, column 5"},
        {"a second document", "</dict></plist>\n<plist/>", "line 5, column 1"},
        {"an open tag", "  <key", "line 4, column 3"},
        {"a tag in a tag", "<key <key>></key></dict></plist>", "line 4, column 1"},
        {"a tag without a name", "< key></key></dict></plist>", "line 4, column 1"},
        {"a number for a name", "<1></1></dict></plist>", "line 4, column 1"},
        {"an attribute without a value", "<key a></key></dict></plist>", "line 4, column 1"},
        {"an open attribute", "<key a=\"1></key></dict></plist>", "line 4, column 1"},
        {"an open comment", "<!-- </dict></plist>", "line 4, column 1"},
        {"an open section", "<![CDATA[ </dict></plist>", "line 4, column 1"},
        {"an open instruction", "<?x </dict></plist>", "line 4, column 1"},
        {"a declaration inside", "<!ENTITY a 'b'></dict></plist>", "line 4, column 1"},
    };
    for (const auto& row : rows)
        QTest::newRow(row.name) << head + row.rest << row.place;
    QTest::newRow("an open document type") << QByteArray("\n <!DOCTYPE plist [") << "line 2, column 2";
    QTest::newRow("deep nesting") << head + QByteArray("<a>").repeated(100000) << "line 4, column";
}

void TestLibraryReading::brokenStructureGivesNothingAndTellsWhere()
{
    QFETCH(QByteArray, document);
    QFETCH(QString, place);
    const Reading reading = read(document);
    QCOMPARE(reading.count, 0);
    QCOMPARE(reading.records, nullptr);
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().contains(place), qPrintable(log.first()));
    QVERIFY(log.first().contains(m_folder.filePath("Library.xml")));
}

void TestLibraryReading::aFileCutAnywhereGivesNothing()
{
    const QByteArray whole = Fixtures::itunesLibrary({Fixtures::itunesTrack(1)}, {{"All", {1002}}}).trimmed();
    QCOMPARE(read(whole).count, 1);
    for (int size = 0; size < whole.size(); ++size) {
        AudioFile::takeLog();
        QCOMPARE(read(whole.left(size)).count, 0);
        QCOMPARE(AudioFile::takeLog().size(), 1);
    }
}

void TestLibraryReading::aFileThatEndsInsideACharacterGivesNothing()
{
    const QByteArray document = named("A");
    QByteArray wide;
    for (const char c : document)
        wide += QByteArray(1, c) + '\0';
    QCOMPARE(read(wide).count, 1);
    AudioFile::takeLog();
    QCOMPARE(read(wide + ' ').count, 0);
    QCOMPARE(AudioFile::takeLog().size(), 1);
}

void TestLibraryReading::unusualButSoundStructureIsRead()
{
    const Reading reading =
        read("\xEF\xBB\xBF<?xml version='1.0'?><!-- a --><plist version = '1.0' a=\"'>\" ><array/><dict >"
             "<key>Playlists</key><array><dict><key>Playlist Items</key><array><dict><key>Track ID</key>"
             "<integer>1</integer></dict></array></dict></array><true/><key>No "
             "value</key><key>Tracks</key><!-- b --><dict>"
             "<key>5</key><string>no entry</string>"
             "<key>1</key><dict><key>Smart</key><dict><key>Name</key><string>inner</string></dict>"
             "<key>Data</key><data>\nAQEAAw==\n</data><key>Year</key><real>1999.0</real><key/><key>Size</"
             "key><integer>99999999999999999999999</integer>"
             "<key>Bit Rate</key><integer>-1</integer>"
             "<key>Na<!-- c -->me</key  "
             "><string\n>A</string\t><key>Artist</key><string/><key>Album</key><string>x<b>y</b></string>"
             "<key>Name</key><string>B</string></dict><key>2</key><dict/>"
             "</dict><key>After</key><integer>1</integer></dict></plist>\n<!-- d -->\n<?e?>\n\0");
    QVERIFY2(AudioFile::takeLog().isEmpty(), "sound");
    QCOMPARE(reading.count, 2);
    QCOMPARE(text(reading.records[0].name), QStringLiteral("B"));
    QCOMPARE(reading.records[0].artist, nullptr);
    QCOMPARE(reading.records[0].album, nullptr);
    QCOMPARE(quint64(reading.records[0].year), Q_UINT64_C(1999));
    QCOMPARE(quint64(reading.records[0].size), ~Q_UINT64_C(0));
    QCOMPARE(quint64(reading.records[0].bitRate), Q_UINT64_C(0));
}

void TestLibraryReading::tracksWithoutAnIdentifierHaveNone()
{
    // The identifier becomes a file's name: nothing but hexadecimal digits may pass.
    for (const char* id : {"", "../../etc/passwd", "12345678901234567", "12G4", "0"}) {
        const Reading reading = read(libraryAround(
            QByteArray("<key>1</key><dict><key>Persistent ID</key><string>") + id + "</string></dict>"));
        QCOMPARE(reading.count, 1);
        QCOMPARE(reading.records[0].persistentId, nullptr);
    }
    QCOMPARE(text(read(named("A")).records[0].persistentId), QStringLiteral("00000000000000A1"));
}

void TestLibraryReading::theArrayBeforeLivesUntilTheNextReadingBegins()
{
    const Reading first = read(named("first"));
    const Reading second = read(named("second"));
    QCOMPARE(text(first.records[0].name), QStringLiteral("first"));
    // The application sets fields of its records.
    second.records[0].name = "its own";
    second.records[0].location = nullptr;
    const Reading third = LibraryCalls::read();
    QCOMPARE(text(second.records[0].name), QStringLiteral("its own"));
    QCOMPARE(text(third.records[0].name), QStringLiteral("second"));
}

void TestLibraryReading::tagsMayLieAcrossAnyBlockBorder()
{
    // The reader's buffer has 256 kilobytes: what ends it is moved byte by byte.
    const QByteArray rest =
        entryWith("<key>Name</key><string a='>'>A&amp;<![CDATA[b]]><!-- c -->d</string >");
    const int begin = 256 * 1024 - rest.size() - 200;
    for (int blanks = begin; blanks < begin + rest.size() + 250; ++blanks) {
        const Reading reading = read(libraryAround(QByteArray(blanks, ' ') + rest));
        QCOMPARE(reading.count, 1);
        QCOMPARE(text(reading.records[0].name), QStringLiteral("A&bd"));
    }
}

void TestLibraryReading::aVeryLongTitleArrives()
{
    const Reading reading = read(named(QByteArray(3000000, 'x') + "&amp;"));
    QCOMPARE(reading.count, 1);
    QCOMPARE(qstrlen(reading.records[0].name), 3000001u);
    // Beyond all bounds it reads as none, and costs nobody else anything.
    const Reading next = read(named(QByteArray(40000000, 'x') + "&amp;"));
    QCOMPARE(next.count, 1);
    QCOMPARE(next.records[0].name, nullptr);
    QVERIFY(next.records[0].location);
}

void TestLibraryReading::noLibraryIsAnEmptyOne()
{
    for (const QString& path : {m_folder.filePath("nowhere.xml"), m_folder.path(), QString("/dev/zero")}) {
        setITunesLibraryOption(QFile::encodeName(path).constData());
        const Reading reading = LibraryCalls::read();
        QCOMPARE(reading.count, 0);
        QCOMPARE(reading.records, nullptr);
        QCOMPARE(AudioFile::takeLog().size(), 1);
    }
}

QTEST_GUILESS_MAIN(TestLibraryReading)
#include "tst_libraryreading.moc"
