#include "collection/timetext.h"
#include "qiorvoutil.h"

#include <QCoreApplication>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

class TestQIOrvoUtil : public QObject
{
    Q_OBJECT

private slots:
    void theOneInstanceIsThereBeforeMain();
    void startsInTheITunesMode();
    void resourcesLieBesideTheExecutable();
    void theConfigurationNameHasABackslash();
    void knowsMusicByTheLastThreeCharacters_data();
    void knowsMusicByTheLastThreeCharacters();
    void namesFormatCodes();
    void showsSizes_data();
    void showsSizes();
    void tellsPicturesFromOtherFiles();
    void showsLengthsWithADoubledColon_data();
    void showsLengthsWithADoubledColon();
};

void TestQIOrvoUtil::theOneInstanceIsThereBeforeMain()
{
    QVERIFY(QIOrvoUtil::m_singleton);
    QCOMPARE(QIOrvoUtil::Instance(), QIOrvoUtil::m_singleton);
    QVERIFY(!QIOrvoUtil::Instance()->parent());
}

void TestQIOrvoUtil::startsInTheITunesMode()
{
    QVERIFY(!QIOrvoUtil::m_cleanMode);
}

void TestQIOrvoUtil::resourcesLieBesideTheExecutable()
{
    QCOMPARE(QIOrvoUtil::getResourcePath(), QCoreApplication::applicationDirPath());
    QVERIFY(QIOrvoUtil::getQMFile().isEmpty());
}

void TestQIOrvoUtil::theConfigurationNameHasABackslash()
{
    QCOMPARE(QIOrvoUtil::getConfigureFile(), QCoreApplication::applicationDirPath() + "\\configure.dat");
}

void TestQIOrvoUtil::knowsMusicByTheLastThreeCharacters_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("music");
    for (const char* text : {"wav", "mp3", "aac", "m4a", "ogg", "ape", "lac", "MP3", "Lac"})
        QTest::newRow(text) << QString(text) << true;
    for (const char* text : {"wma", "WMA", ".mp3", "flac", "", "jpg", "mp"})
        QTest::newRow(text) << QString(text) << false;
}

void TestQIOrvoUtil::knowsMusicByTheLastThreeCharacters()
{
    QFETCH(QString, text);
    QFETCH(bool, music);
    QCOMPARE(QIOrvoUtil::isMusicFormatorNot(text), music);
}

void TestQIOrvoUtil::namesFormatCodes()
{
    const QStringList names{"wav", "Wma", "mp3", "AAC", "M4a", "OGG", "APE", "Flac"};
    for (int code = 0; code < names.size(); ++code)
        QCOMPARE(QIOrvoUtil::intToString(code), names.at(code));
    QCOMPARE(QIOrvoUtil::intToString(8), QString("None"));
    QCOMPARE(QIOrvoUtil::intToString(-1), QString("None"));
}

void TestQIOrvoUtil::showsSizes_data()
{
    QTest::addColumn<quint64>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << quint64(0) << "0.00B";
    QTest::newRow("a kibibyte belongs to the bytes") << quint64(1024) << "1024.00B";
    QTest::newRow("one more") << quint64(1025) << "1.00KB";
    QTest::newRow("a mebibyte belongs to the kibibytes") << quint64(1048576) << "1024.00KB";
    QTest::newRow("a gibibyte belongs to the mebibytes") << quint64(1073741824) << "1024.00MB";
    QTest::newRow("one byte beyond") << quint64(1073741825) << "1.00GB";
    QTest::newRow("one and a half") << quint64(1610612736) << "1.50GB";
}

void TestQIOrvoUtil::showsSizes()
{
    QFETCH(quint64, bytes);
    QFETCH(QString, text);
    QCOMPARE(QIOrvoUtil::size2String(bytes), text);
}

void TestQIOrvoUtil::tellsPicturesFromOtherFiles()
{
    QTemporaryDir folder;
    const auto save = [&folder](int width, int height) {
        const QString path = folder.filePath(QString("%1x%2").arg(width).arg(height));
        QImage picture(width, height, QImage::Format_RGB32);
        picture.fill(Qt::red);
        picture.save(path, "PNG");
        return path;
    };
    QVERIFY(QIOrvoUtil::isImage(save(2, 2)));
    QVERIFY(!QIOrvoUtil::isImage(save(1, 500)));
    QVERIFY(!QIOrvoUtil::isImage(save(500, 1)));
    QFile letter(folder.filePath("letter.png"));
    QVERIFY(letter.open(QIODevice::WriteOnly));
    letter.write("no picture");
    letter.close();
    QVERIFY(!QIOrvoUtil::isImage(letter.fileName()));
    QVERIFY(!QIOrvoUtil::isImage(folder.filePath("missing.png")));
    QVERIFY(!QIOrvoUtil::isImage(folder.path()));
}

void TestQIOrvoUtil::showsLengthsWithADoubledColon_data()
{
    QTest::addColumn<qint64>("milliseconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << qint64(0) << "00::00";
    QTest::newRow("four minutes") << qint64(247900) << "04::07";
    QTest::newRow("just below an hour") << qint64(3599999) << "59::59";
    QTest::newRow("an hour has no text") << qint64(3600000) << "";
}

void TestQIOrvoUtil::showsLengthsWithADoubledColon()
{
    QFETCH(qint64, milliseconds);
    QFETCH(QString, text);
    QCOMPARE(TimeText::convert(milliseconds), text);
}

QTEST_MAIN(TestQIOrvoUtil)
#include "tst_qiorvoutil.moc"
