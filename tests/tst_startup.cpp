#include "localsongreader.h"
#include "startup.h"

#include <QDir>
#include <QFontDatabase>
#include <QFontInfo>
#include <QLabel>
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
        Startup::beforeApplication();
    }

private slots:
    void initTestCase() { Startup::afterApplication(); }

    void temporaryFilesArePrivate();
    void pointsArePixels();
    void aResolutionOfTheUsersOwnStays();
    void missingFontsHaveStandIns();
    void numbersHaveADotForTheLibraries();
    void fileNamesAreUtf8();
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

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"
