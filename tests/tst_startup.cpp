#include "desktopscale.h"
#include "folderopener.h"
#include "songs/localsongreader.h"
#include "startup.h"

#include <QDir>
#include <QFontDatabase>
#include <QFontInfo>
#include <QLabel>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

#include <clocale>

class TestStartup : public QObject
{
    Q_OBJECT

public:
    static void initMain()
    {
        qunsetenv("QT_FONT_DPI");
        s_usersFolder = QDir::tempPath();
        qputenv("TMPDIR", s_usersFolder.toUtf8());
        Startup::beforeApplication();
    }

private slots:
    void initTestCase() { Startup::afterApplication(); }

    void temporaryFilesArePrivate();
    void programsThatAreStartedFindTheUsersFolder();
    void pointsArePixels();
    void aResolutionOfTheUsersOwnStays();
    void densityIsReadFromTheDesktopsResources_data();
    void densityIsReadFromTheDesktopsResources();
    void whatTheToolkitIsToldWins_data();
    void whatTheToolkitIsToldWins();
    void missingFontsHaveStandIns();
    void numbersHaveADotForTheLibraries();
    void fileNamesAreUtf8();
    void theFolderGoesAtTheEnd();

private:
    static inline QString s_usersFolder;
};

void TestStartup::temporaryFilesArePrivate()
{
    // Glued names, such as that of the cover folder, lie in a folder that nobody else can enter.
    const QString covers = LocalSongReader::coverFolder();
    QCOMPARE(covers, QDir::tempPath() + "localImage");
    const QFileInfo home(QFileInfo(covers).path());
    QVERIFY(home.isDir());
    QCOMPARE(home.permissions() & (QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther |
                                   QFile::WriteOther | QFile::ExeOther),
             QFile::Permissions());
    QVERIFY(QFileInfo(QDir::tempPath()).isDir());
    QVERIFY(QDir().mkpath(covers));
}

void TestStartup::programsThatAreStartedFindTheUsersFolder()
{
#ifdef Q_OS_LINUX
    // A file browser of our own notes what it finds.
    const QTemporaryDir folder;
    QFile opener(folder.filePath("xdg-open"));
    QVERIFY(opener.open(QIODevice::WriteOnly));
    opener.write("#!/bin/sh\nprintf %s \"$TMPDIR\" > \"$1/note.part\"\nmv \"$1/note.part\" \"$1/note\"\n");
    opener.close();
    QVERIFY(opener.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", folder.path().toUtf8() + ':' + path);
    FolderOpener::open(folder.path());
    qputenv("PATH", path);
    QFile note(folder.filePath("note"));
    QTRY_VERIFY(note.exists());
    QVERIFY(note.open(QIODevice::ReadOnly));
    QCOMPARE(QString::fromUtf8(note.readAll()), s_usersFolder);
    QVERIFY(QDir::tempPath() != s_usersFolder);
#endif
}

void TestStartup::pointsArePixels()
{
    QCOMPARE(qgetenv("QT_FONT_DPI"), QByteArray("72"));
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi, false); // which the test library sets for itself
    const QLabel label;
    QCOMPARE(QFontInfo(QFont("Tahoma", 12)).pixelSize(), 12);
    QCOMPARE(label.logicalDpiY(), 72);
}

void TestStartup::aResolutionOfTheUsersOwnStays()
{
    qputenv("QT_FONT_DPI", "110");
    Startup::beforeApplication();
    QCOMPARE(qgetenv("QT_FONT_DPI"), QByteArray("110"));
    qputenv("QT_FONT_DPI", "72");
}

void TestStartup::densityIsReadFromTheDesktopsResources_data()
{
    QTest::addColumn<QByteArray>("resources");
    QTest::addColumn<qreal>("scale");
    QTest::newRow("nothing") << QByteArray() << 1.0;
    QTest::newRow("nothing of fonts") << QByteArray("Xcursor.size:\t48\nXft.rgba:\tnone\n") << 1.0;
    QTest::newRow("usual") << QByteArray("Xft.dpi:\t96\n") << 1.0;
    QTest::newRow("a little more") << QByteArray("Xft.dpi:\t101\n") << 1.0;
    QTest::newRow("less") << QByteArray("Xft.dpi:\t75\n") << 1.0;
    QTest::newRow("one and a quarter") << QByteArray("Xft.dpi: 120") << 1.25;
    QTest::newRow("one and a half") << QByteArray("Xft.antialias:\t1\nXft.dpi:\t144.5\nXft.hinting:\t1\n")
                                    << 1.5;
    QTest::newRow("two") << QByteArray("Xft.dpi:\t192\n") << 2.0;
    QTest::newRow("beyond all") << QByteArray("Xft.dpi:\t1e300\n") << 4.0;
    QTest::newRow("no number") << QByteArray("Xft.dpi:\tmany\n") << 1.0;
    QTest::newRow("not a number") << QByteArray("Xft.dpi:\tnan\n") << 1.0;
}

void TestStartup::densityIsReadFromTheDesktopsResources()
{
    QFETCH(QByteArray, resources);
    QFETCH(qreal, scale);
    QCOMPARE(DesktopScale::ofResources(resources), scale);
}

void TestStartup::whatTheToolkitIsToldWins_data()
{
    QTest::addColumn<QByteArray>("variable");
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("factor") << QByteArray("QT_SCALE_FACTOR") << QByteArray("1");
    QTest::newRow("of screens") << QByteArray("QT_SCREEN_SCALE_FACTORS") << QByteArray("HDMI-1=2;DP-1=1");
    QTest::newRow("not at all") << QByteArray("QT_AUTO_SCREEN_SCALE_FACTOR") << QByteArray("0");
    QTest::newRow("off") << QByteArray("QT_ENABLE_HIGHDPI_SCALING") << QByteArray("0");
    QTest::newRow("fonts") << QByteArray("QT_FONT_DPI") << QByteArray("96");
}

void TestStartup::whatTheToolkitIsToldWins()
{
    QFETCH(QByteArray, variable);
    QFETCH(QByteArray, value);
    const QByteArray factor = qgetenv("QT_SCALE_FACTOR"); // a dense screen's
    for (const char* name : {"QT_FONT_DPI", "QT_SCALE_FACTOR"})
        qunsetenv(name);
    QVERIFY(!DesktopScale::isToldToTheToolkit());
    qputenv(variable, value);
    const bool isTold = DesktopScale::isToldToTheToolkit();
    qunsetenv(variable);
    qputenv("QT_FONT_DPI", "72");
    if (!factor.isEmpty())
        qputenv("QT_SCALE_FACTOR", factor);
    QVERIFY(isTold);
}

void TestStartup::missingFontsHaveStandIns()
{
    const QStringList installed = QFontDatabase().families();
    for (const char* family : {"Tahoma", "Arial"})
        if (!installed.contains(family) && installed.contains("Open Sans"))
            QCOMPARE(QFont::substitute(family).toLower(), QString("open sans"));
}

void TestStartup::numbersHaveADotForTheLibraries()
{
    QCOMPARE(QByteArray(std::localeconv()->decimal_point), QByteArray("."));
}

void TestStartup::fileNamesAreUtf8()
{
    QCOMPARE(QTextCodec::codecForLocale()->name(), QByteArray("UTF-8"));
}

void TestStartup::theFolderGoesAtTheEnd()
{
    const QFileInfo home(QFileInfo(QDir::tempPath()).path());
    QVERIFY(home.isDir());
    Startup::removeTemporaryFiles();
    QVERIFY(!QFileInfo::exists(home.filePath()));
}

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"
