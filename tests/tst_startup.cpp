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
