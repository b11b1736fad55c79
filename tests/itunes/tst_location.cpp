// Locations and pictures as libraries have them, at the bounds of what is believed.
#include "library/artwork.h"
#include "library/location.h"

#include <QtTest>

class TestLocation : public QObject
{
    Q_OBJECT

private slots:
    void locationsAreOfOneForm_data();
    void locationsAreOfOneForm();
    void locationsNamePaths_data();
    void locationsNamePaths();
    void whatIsCutIsWhole_data();
    void whatIsCutIsWhole();
    void picturesAreToldByTheirFirstBytes_data();
    void picturesAreToldByTheirFirstBytes();
};

void TestLocation::locationsAreOfOneForm_data()
{
    QTest::addColumn<QByteArray>("url");
    QTest::addColumn<QByteArray>("location");
    const auto row = [](const char* url, const QByteArray& location) {
        QTest::newRow(url) << QByteArray(url) << location;
    };
    row("file://localhost/m/a.mp3", "file://localhost/m/a.mp3");
    row("FILE://LocalHost/m/a.mp3", "file://localhost/m/a.mp3");
    row("file:///m/a.mp3", "file://localhost/m/a.mp3");
    row("file:/m/a.mp3", "file://localhost/m/a.mp3");
    row("file://server/share/a.mp3", "file://localhost//server/share/a.mp3");
    row("file://server", "");
    row("file:", "");
    row("file:m/a.mp3", "");
    row("fil", "");
    row("http://m/a.mp3", "");
    row("", "");
    row("/m/a b.mp3", "file://localhost/m/a%20b.mp3");
    row("/!~\x7F\x80%#?\"<>", "file://localhost/!~%7F%80%25%23%3F%22%3C%3E");
}

void TestLocation::locationsAreOfOneForm()
{
    QFETCH(QByteArray, url);
    QTEST(QByteArray::fromStdString(itunes::normalisedLocation(url.toStdString())), "location");
}

void TestLocation::locationsNamePaths_data()
{
    QTest::addColumn<QByteArray>("location");
    QTest::addColumn<QByteArray>("path");
    const auto row = [](const char* rest, const QByteArray& path) {
        QTest::newRow(rest) << QByteArray("file://localhost") + rest << path;
    };
    row("/m/a.mp3", "/m/a.mp3");
    row("/a%20b%2F%c3%A9", "/a b/\xC3\xA9");
    row("/%30%39%41%46%61%66%3a%5A", "/09AFaf:Z");
    row("/%1", "/%1");
    row("/%", "/%");
    row("/%0g%g0%/9%:9%@1%G1%`1", "/%0g%g0%/9%:9%@1%G1%`1");
    row("/a%00b", "");
    row("/a%01b", "/a\x01"
                  "b");
    QTest::newRow("elsewhere") << QByteArray("http://localhost/a") << QByteArray();
    QTest::newRow("nothing") << QByteArray() << QByteArray();
}

void TestLocation::locationsNamePaths()
{
    QFETCH(QByteArray, location);
    QTEST(QByteArray::fromStdString(itunes::pathOf(location.toStdString())), "path");
}

void TestLocation::whatIsCutIsWhole_data()
{
    QTest::addColumn<QByteArray>("location");
    QTest::addColumn<int>("bytes");
    QTest::addColumn<QByteArray>("cut");
    QTest::newRow("as long as there is room") << QByteArray("abcdef") << 6 << QByteArray("abcdef");
    QTest::newRow("longer") << QByteArray("abcdef") << 5 << QByteArray("abcde");
    QTest::newRow("an escape") << QByteArray("ab%20cd") << 5 << QByteArray("ab%20");
    QTest::newRow("in an escape") << QByteArray("ab%20cd") << 4 << QByteArray("ab");
    QTest::newRow("an escape of zero") << QByteArray("ab%00cd") << 4 << QByteArray("ab");
    QTest::newRow("in a character") << QByteArray("ab%C3%A9cd") << 7 << QByteArray("ab");
    QTest::newRow("behind a character") << QByteArray("ab%C3%A9cd") << 8 << QByteArray("ab%C3%A9");
    QTest::newRow("in a character that is not escaped") << QByteArray("ab\xC3\xA9"
                                                                      "cd")
                                                        << 3 << QByteArray("ab");
    QTest::newRow("no room") << QByteArray("abc") << 0 << QByteArray();
}

void TestLocation::whatIsCutIsWhole()
{
    QFETCH(QByteArray, location);
    QFETCH(int, bytes);
    const std::string whole = location.toStdString();
    QTEST(QByteArray::fromStdString(std::string(itunes::cutLocation(whole, std::size_t(bytes)))), "cut");
}

void TestLocation::picturesAreToldByTheirFirstBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("is");
    const QByteArray bitmap = "BM" + QByteArray(12, 'x') + QByteArray("\x28\0\0\0", 4);
    QTest::newRow("JPEG") << QByteArray("\xFF\xD8\xFF") << true;
    QTest::newRow("half of JPEG") << QByteArray("\xFF\xD8") << false;
    QTest::newRow("PNG") << QByteArray("\x89PNG\r\n\x1A\n") << true;
    QTest::newRow("GIF") << QByteArray("GIF87a") << true;
    QTest::newRow("a later GIF") << QByteArray("GIF89a") << true;
    QTest::newRow("WebP") << QByteArray("RIFF....WEBP") << true;
    QTest::newRow("another RIFF") << QByteArray("RIFF....WAVE") << false;
    QTest::newRow("half of RIFF") << QByteArray("RIFF") << false;
    QTest::newRow("a bitmap") << bitmap + 'x' << true;
    QTest::newRow("a head of a bitmap alone") << bitmap << false;
    QTest::newRow("a bitmap with a large head") << bitmap.left(15) + QByteArray("\1\0\0x", 4) << false;
    QTest::newRow("the other end of it") << bitmap.left(17) + "\1x" << false;
    QTest::newRow("a text") << QByteArray("BMW, a maker of motor cars") << false;
    QTest::newRow("nothing") << QByteArray() << false;
}

void TestLocation::picturesAreToldByTheirFirstBytes()
{
    QFETCH(QByteArray, bytes);
    QTEST(itunes::isPicture(std::vector<char>(bytes.begin(), bytes.end())), "is");
}

QTEST_GUILESS_MAIN(TestLocation)
#include "tst_location.moc"
