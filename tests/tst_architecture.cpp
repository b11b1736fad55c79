// Which way the arrows run: what a file of each room may include. A new room, and every new arrow, is written
// down here and in docs/architecture.md.
#include <QDirIterator>
#include <QRegularExpression>
#include <QtTest>

class TestArchitecture : public QObject
{
    Q_OBJECT

private slots:
    void everyRoomIncludesWhatItMay_data();
    void everyRoomIncludesWhatItMay();
    void testsLookAtTheirRoomAndBelow();
    void everyFileLiesInARoom();
    void formsShowTheKitAndWindowsOnly();
    void theModeIsReadInFewPlaces();
    void formatsAreToldApartInTheirTableAlone();
    void noFileIsLong();
};

namespace {
struct Room
{
    QString folder;
    QStringList rooms;      ///< that it may include, beside itself
    QString foreignHeaders; ///< names of headers of libraries that it must not include
};

const QString qt = "Q[A-Za-z]|Qt";
const QString widgets = "QtWidgets|QWidget|QApplication|QPainter|QPixmap|QImage";
const QString engines = "taglib/|mpv/|libav|libsw|chromaprint|curl/|nlohmann/";

/// The records of songs and the singleton that knows the mode: fixed classes of the application that the
/// rooms below them work on.
const QStringList records = {"qmusicinfo", "localmusicinfo", "dupmusicinfo", "qiorvoutil"};

const QVector<Room>& rooms()
{
    static const QVector<Room> all = {
        {"base", {}, qt + '|' + engines},
        {"audiocore/include", {}, qt + '|' + engines},
        {"audiocore/src", {"base", "audiocore/include"}, qt + '|' + engines},
        {"audiocore/src/media",
         {"base", "audiocore/include"},
         qt + "|mpv/|libav|libsw|chromaprint|curl/|nlohmann/"},
        {"audiocore/src/tags",
         {"base", "audiocore/include", "audiocore/src/media"},
         qt + "|mpv/|libav|libsw|chromaprint|curl/|nlohmann/"},
        {"audiocore/src/demux",
         {"base", "audiocore/include", "audiocore/src", "audiocore/src/media"},
         qt + "|mpv/|libsw|chromaprint|curl/|nlohmann/"},
        {"audiocore/src/playback",
         {"base", "audiocore/include", "audiocore/src", "audiocore/src/media", "audiocore/src/tags"},
         qt + "|libav|libsw|chromaprint|curl/|nlohmann/"},
        {"audiocore/src/identify",
         {"base", "audiocore/include", "audiocore/src", "audiocore/src/demux", "audiocore/src/media",
          "audiocore/src/tags"},
         qt + "|mpv/"},
        {"itunes/include", {}, qt + '|' + engines},
        {"itunes/src/xml", {"base"}, qt + '|' + engines},
        {"itunes/src/library",
         {"base", "itunes/include", "audiocore/include", "itunes/src/xml"},
         qt + '|' + engines},
        {"itunes/src/calls", {"base", "itunes/include", "itunes/src/library"}, qt + '|' + engines},
        {"collection", {"base", "audiocore/include", "itunes/include"}, widgets + '|' + engines},
        {"cli", {"base", "audiocore/include", "collection"}, widgets + "|QGui|" + engines},
        {"cli/describe", {"cli"}, qt + '|' + engines},
        {"src/common", {"base", "forms"}, engines},
        {"src/covers", {"collection", "src/common"}, engines},
        {"records", {"collection", "src/common", "src/covers"}, engines},
        {"src/songs",
         {"collection", "audiocore/include", "itunes/include", "src/common", "src/covers", "records"},
         engines},
        {"src/views", {"collection", "src/common", "src/covers", "src/songs", "records"}, engines},
        {"src",
         {"collection", "audiocore/include", "itunes/include", "forms", "src/common", "src/covers",
          "src/songs", "src/views", "records"},
         engines},
    };
    return all;
}

/// They look at everything: what the windows' tests, the benchmarks and the fuzz targets include is not told.
const QStringList onlookers = {"tests", "bench", "fuzz"};

/// Whose code the tests of a folder look at, beside what that may include, and nothing from above.
const QMap<QString, QStringList>& testedRooms()
{
    static const QMap<QString, QStringList> all = {
        {"tests/base", {"base"}},
        {"tests/audiocore",
         {"audiocore/src/demux", "audiocore/src/tags", "audiocore/src/playback", "audiocore/src/identify"}},
        {"tests/identify", {"audiocore/src/identify"}},
        {"tests/itunes", {"itunes/src/calls"}},
        {"tests/collection", {"collection"}},
        {"tests/cli", {"cli"}},
        {"tests/common", {"src/common", "records"}}, // by the fixtures that all these share
        {"tests/covers", {"src/covers", "records"}},
        {"tests/songs", {"src/songs"}},
        {"tests/views", {"src/views"}},
        {"tests/packaging", {"collection"}}, // formats, by what desktops call them
    };
    return all;
}

QStringList withAllBelow(QStringList folders)
{
    for (int i = 0; i < folders.size(); ++i)
        for (const Room& room : rooms())
            if (room.folder == folders[i])
                for (const QString& below : room.rooms)
                    if (!folders.contains(below))
                        folders.append(below);
    return folders;
}

QString rootPath(const QString& path)
{
    return QDir(MELODRIFT_ROOT).filePath(path);
}

QStringList filesIn(const QString& folder, const QStringList& names)
{
    QStringList files;
    QDirIterator walk(rootPath(folder), names, QDir::Files, QDirIterator::Subdirectories);
    while (walk.hasNext())
        files.append(QDir(MELODRIFT_ROOT).relativeFilePath(walk.next()));
    files.sort();
    return files;
}

/// All that is ours, and nothing of what a build makes.
QStringList topFolders()
{
    QStringList tops = QDir(MELODRIFT_ROOT).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    tops.removeAll("build");
    return tops;
}

QString contentOf(const QString& path)
{
    QFile file(rootPath(path));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// The room that a file lies in; empty for none.
QString roomOf(const QString& path)
{
    const QFileInfo file(path);
    if (file.path() == "src" && records.contains(file.completeBaseName()))
        return "records";
    for (const Room& room : rooms())
        if (file.path() == room.folder ||
            (room.folder.endsWith("/include") && path.startsWith(room.folder + '/')))
            return room.folder;
    return QString();
}

/// Where a header of ours lies that a file of the folder names; empty when it is nowhere.
QString placeOf(const QString& header, const QString& folder)
{
    if (header.startsWith("ui_"))
        return "forms/" + header;
    const QString library = folder.section('/', 0, 0);
    for (const QString& root :
         {QString(), library + "/src/", QString("audiocore/include/"), QString("itunes/include/"),
          QString("src/"), QString("audiocore/src/"), QString("itunes/src/")})
        if (QFile::exists(rootPath(root + header)))
            return root + header;
    return QString();
}

QStringList includesOf(const QString& path, const QString& pattern)
{
    QStringList found;
    static const auto options = QRegularExpression::MultilineOption;
    auto matches = QRegularExpression("^#include " + pattern, options).globalMatch(contentOf(path));
    while (matches.hasNext())
        found.append(matches.next().captured(1));
    return found;
}
} // namespace

void TestArchitecture::everyRoomIncludesWhatItMay_data()
{
    QTest::addColumn<int>("number");
    for (int i = 0; i < rooms().size(); ++i)
        QTest::newRow(qPrintable(rooms()[i].folder)) << i;
}

void TestArchitecture::everyRoomIncludesWhatItMay()
{
    QFETCH(int, number);
    const Room& room = rooms()[number];
    const QRegularExpression foreign("^(?:" + room.foreignHeaders + ')');
    QStringList wrong;
    int files = 0;
    const QStringList tops = {"base", "audiocore", "itunes", "collection", "cli", "src"};
    for (const QString& top : tops)
        for (const QString& path : filesIn(top, {"*.h", "*.cpp"})) {
            if (roomOf(path) != room.folder)
                continue;
            ++files;
            for (const QString& header : includesOf(path, "\"(.+)\"")) {
                const QString place = placeOf(header, QFileInfo(path).path());
                const QString target = place.startsWith("forms/") ? QString("forms") : roomOf(place);
                if (target != room.folder && !room.rooms.contains(target))
                    wrong.append(path + " includes " + header);
            }
            for (const QString& header : includesOf(path, "<(.+)>").filter(foreign))
                wrong.append(path + " includes " + header);
        }
    QVERIFY(files > 0);
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join('\n')));
}

void TestArchitecture::testsLookAtTheirRoomAndBelow()
{
    QStringList wrong;
    const QStringList folders = QDir(rootPath("tests")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& name : folders) {
        if (name == "support")
            continue;
        const QString folder = "tests/" + name;
        if (!testedRooms().contains(folder))
            wrong.append(folder + " is the folder of no room");
        const QStringList allowed = withAllBelow(testedRooms().value(folder));
        for (const QString& path : filesIn(folder, {"*.h", "*.cpp"}))
            for (const QString& header : includesOf(path, "[\"<](.+)[\">]")) {
                const QString room = roomOf(placeOf(header, folder));
                // The fonts and folders that the application sets up are wanted by many.
                if (header != "startup.h" && !room.isEmpty() && !allowed.contains(room))
                    wrong.append(path + " includes " + header);
            }
    }
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join('\n')));
}

void TestArchitecture::everyFileLiesInARoom()
{
    QStringList outside;
    for (const QString& top : topFolders()) {
        if (onlookers.contains(top))
            continue;
        for (const QString& path : filesIn(top, {"*.h", "*.cpp"}))
            if (roomOf(path).isEmpty())
                outside.append(path);
    }
    QVERIFY2(outside.isEmpty(), qPrintable(outside.join('\n')));
}

void TestArchitecture::formsShowTheKitAndWindowsOnly()
{
    static const QRegularExpression header("<header>(.+)</header>");
    const QStringList forms = filesIn("forms", {"*.ui"});
    QVERIFY(!forms.isEmpty());
    for (const QString& path : forms) {
        auto matches = header.globalMatch(contentOf(path));
        while (matches.hasNext()) {
            const QString shown = roomOf(placeOf(matches.next().captured(1), "src"));
            QVERIFY2(shown == "src/common" || shown == "src", qPrintable(path));
        }
    }
}

void TestArchitecture::theModeIsReadInFewPlaces()
{
    QStringList readers;
    for (const QString& path : filesIn("src", {"*.cpp"}))
        if (contentOf(path).contains("m_cleanMode"))
            readers.append(QFileInfo(path).completeBaseName());
    readers.sort();
    // Fields come from songfields alone; the others ask what the mode lets the user do.
    QCOMPARE(readers, QStringList({"centerwidget", "dupmusicbarwidget", "mainwindow", "qiorvoutil",
                                   "songediting", "songfields", "songremoval"}));
}

void TestArchitecture::formatsAreToldApartInTheirTableAlone()
{
    // A format is a row of the table and a file of its own, which knows its types: nobody asks for either.
    static const QRegularExpression format("AUDIO_FORMAT_(?!UNKNOWN)");
    static const QRegularExpression kindOfFile("dynamic_cast<[^>]*File\\b");
    QStringList tables;
    for (const QString& path : filesIn("audiocore/src", {"*.h", "*.cpp"})) {
        const QString content = contentOf(path);
        if (content.contains(format))
            tables.append(path);
        QVERIFY2(!content.contains(kindOfFile), qPrintable(path));
    }
    QCOMPARE(tables, QStringList("audiocore/src/media/formats.cpp"));
}

void TestArchitecture::noFileIsLong()
{
    QStringList tooLong;
    for (const QString& top : topFolders()) {
        const int most = top == "tests" ? 500 : 450;
        for (const QString& path : filesIn(top, {"*.h", "*.cpp"}))
            if (contentOf(path).count('\n') > most)
                tooLong.append(path);
    }
    QVERIFY2(tooLong.isEmpty(), qPrintable(tooLong.join('\n')));
}

QTEST_GUILESS_MAIN(TestArchitecture)
#include "tst_architecture.moc"
