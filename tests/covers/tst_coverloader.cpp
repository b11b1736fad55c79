#include "covers/coverloader.h"
#include "fixtures.h"
#include "qiorvoutil.h"
#include "songfixtures.h"

#include <QBuffer>
#include <QDateTime>
#include <QPainter>
#include <QTemporaryDir>
#include <QtTest>

#include <filesystem>

using namespace Fixtures;

class TestCoverLoader : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void loadsAPictureWhateverItsName();
    void decodesAFileOnce();
    void testAndDisplayShareTheDecoding();
    void hardLinksShareTheDecoding();
    void showsAChangedFileAtOnce();
    void forgetsAVanishedFile();
    void whatIsNoPictureIsNull_data();
    void whatIsNoPictureIsNull();
    void scalesHugePicturesDown();
    void refusesPicturesBeyondTheLimitWithoutDecodingThem();
    void aGifIsAsLargeAsItsScreen();
    void aLongThinPictureKeepsBothEdges();
    void aSquareIconHasThePicturesOwnSize();
    void anOblongIconIsStretchedWithoutSmoothing();
    void anIconIsNeverEnlarged();
    void anIconGivesTheSamePixmapAgain();
    void aLargeSquareIconIsFineAtEverySize();
    void anIconPaintsOnADenseScreen();
    void aScreenFullOfCoversIsDecodedOnce();
    void theMemoryIsBounded();
    void anIconShowsTheGenericCoverWhereThereIsNone();
    void anOldIconShowsTheFileAsItIsNow();
    void theGenericCoverIsOnePixmap();
    void isImageNeedsTwoPixelsEachWay();

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QImage m_generic;
};

void TestCoverLoader::initTestCase()
{
    m_generic = genericCover();
    QVERIFY(!m_generic.isNull());
}

void TestCoverLoader::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    CoverLoader::setMemoryLimit(192 * 1024 * 1024);
}

void TestCoverLoader::loadsAPictureWhateverItsName()
{
    const QImage picture = noise(40, 30);
    QCOMPARE(pixels(CoverLoader::load(savePicture(picture, path("noextension"), "PNG"))), pixels(picture));
    QCOMPARE(pixels(CoverLoader::load(savePicture(picture, path("lying.jpg"), "PNG"))), pixels(picture));
    QCOMPARE(pixels(CoverLoader::load(savePicture(picture, path("lying.mp3"), "BMP"))), pixels(picture));
    QCOMPARE(CoverLoader::load(savePicture(picture, path("jpeg.png"), "JPEG")).size(), picture.size());
}

void TestCoverLoader::decodesAFileOnce()
{
    const QString file = savePicture(noise(200, 100), path("cover"));
    const qint64 before = CoverLoader::decodeCount();
    const qint64 first = CoverLoader::load(file).cacheKey();
    for (int i = 0; i < 10; ++i)
        QCOMPARE(CoverLoader::load(file).cacheKey(), first);
    QCOMPARE(CoverLoader::decodeCount() - before, 1);
}

void TestCoverLoader::testAndDisplayShareTheDecoding()
{
    const QString file = savePicture(noise(600, 600), path("cover"), "JPEG");
    const qint64 before = CoverLoader::decodeCount();
    QVERIFY(QIOrvoUtil::isImage(file));
    QVERIFY(!CoverLoader::icon(file).pixmap(100, 120).isNull());
    QVERIFY(QIOrvoUtil::isImage(file));
    QCOMPARE(CoverLoader::decodeCount() - before, 1);
}

void TestCoverLoader::hardLinksShareTheDecoding()
{
    const QString file = savePicture(noise(50, 50), path("cover"));
    std::error_code failure;
    std::filesystem::create_hard_link(file.toStdString(), path("link").toStdString(), failure);
    if (failure)
        QSKIP("no hard links here");
#ifndef Q_OS_UNIX
    QSKIP("no file numbers here");
#endif
    const qint64 before = CoverLoader::decodeCount();
    QCOMPARE(CoverLoader::load(path("link")).cacheKey(), CoverLoader::load(file).cacheKey());
    QCOMPARE(CoverLoader::decodeCount() - before, 1);
}

void TestCoverLoader::showsAChangedFileAtOnce()
{
    const QString file = savePicture(plain(20, 20, Qt::red), path("cover"), "BMP");
    QCOMPARE(CoverLoader::load(file).toImage().pixelColor(3, 3), QColor(Qt::red));
    QCOMPARE(CoverLoader::icon(file).pixmap(20, 20).toImage().pixelColor(3, 3), QColor(Qt::red));
    // Same length, another moment.
    const QFileInfo former(file);
    savePicture(plain(20, 20, Qt::green), file, "BMP");
    QCOMPARE(QFileInfo(file).size(), former.size());
    QFile changed(file);
    QVERIFY(changed.open(QIODevice::ReadWrite));
    QVERIFY(changed.setFileTime(former.lastModified().addSecs(1), QFileDevice::FileModificationTime));
    changed.close();
    QCOMPARE(CoverLoader::load(file).toImage().pixelColor(3, 3), QColor(Qt::green));
    QCOMPARE(CoverLoader::icon(file).pixmap(20, 20).toImage().pixelColor(3, 3), QColor(Qt::green));
    // Another length.
    savePicture(plain(30, 30, Qt::blue), file, "BMP");
    QCOMPARE(CoverLoader::load(file).size(), QSize(30, 30));
}

void TestCoverLoader::forgetsAVanishedFile()
{
    const QString file = savePicture(plain(20, 20, Qt::red), path("cover"));
    QVERIFY(!CoverLoader::load(file).isNull());
    QVERIFY(QFile::remove(file));
    QVERIFY(CoverLoader::load(file).isNull());
    QCOMPARE(pixels(CoverLoader::icon(file).pixmap(m_generic.size())),
             pixels(CoverLoader::icon(CoverLoader::genericCoverPath()).pixmap(m_generic.size())));
}

void TestCoverLoader::whatIsNoPictureIsNull_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QByteArray png;
    QBuffer buffer(&png);
    QVERIFY(noise(64, 64).save(&buffer, "PNG"));
    QTest::newRow("empty file") << QByteArray();
    QTest::newRow("text") << QByteArray("not a picture at all\n");
    QTest::newRow("zeros") << QByteArray(100000, '\0');
    QTest::newRow("a signature alone") << png.left(8);
    QTest::newRow("a header alone") << png.left(33);
    QTest::newRow("half a picture") << png.left(png.size() / 2);
    QTest::newRow("a JPEG header alone") << QByteArray::fromHex("ffd8ffe000104a46494600010100000100010000");
}

void TestCoverLoader::whatIsNoPictureIsNull()
{
    QFETCH(QByteArray, bytes);
    const QString file = saveBytes(bytes, path("cover"));
    const qint64 before = CoverLoader::decodeCount();
    QVERIFY(CoverLoader::load(file).isNull());
    QVERIFY(!QIOrvoUtil::isImage(file));
    QCOMPARE(CoverLoader::pictureSize(file), QSize());
    QCOMPARE(CoverLoader::decodeCount() - before, 1); // what is none is remembered, too
    QVERIFY(CoverLoader::load(m_folder->path()).isNull());
    QVERIFY(CoverLoader::load(QString()).isNull());
    QVERIFY(CoverLoader::load(path("nothing")).isNull());
}

void TestCoverLoader::scalesHugePicturesDown()
{
    for (const char* format : {"JPEG", "PNG", "BMP"}) {
        const QString file = savePicture(plain(4100, 2050, Qt::red), path(QLatin1String(format)), format);
        QCOMPARE(CoverLoader::load(file).size(), QSize(2048, 1024));
        QCOMPARE(CoverLoader::pictureSize(file), QSize(4100, 2050));
    }
}

void TestCoverLoader::refusesPicturesBeyondTheLimitWithoutDecodingThem()
{
    // A valid header of 30000 x 30000 pixels, three bytes each.
    QByteArray header("P6\n30000 30000\n255\n");
    QVERIFY(CoverLoader::load(saveBytes(header + QByteArray(1000, 'x'), path("ppm"))).isNull());
    QByteArray bmp =
        QByteArray::fromHex("424d0000000000000000360000002800000030750000307500000100180000000000"
                            "00000000130b0000130b00000000000000000000");
    QVERIFY(CoverLoader::load(saveBytes(bmp + QByteArray(1000, 'x'), path("bmp"))).isNull());
    QCOMPARE(CoverLoader::icon(path("bmp")).pixmap(50, 50).size(), QSize(50, 50));
}

void TestCoverLoader::aGifIsAsLargeAsItsScreen()
{
    const QString wide = saveBytes(Fixtures::gif({3000, 300}), path("wide"));
    QCOMPARE(CoverLoader::load(wide).width(), 2048);
    QCOMPARE(CoverLoader::pictureSize(wide), QSize(3000, 300));
    QVERIFY(CoverLoader::load(saveBytes(Fixtures::gif({16000, 16000}), path("vast"))).isNull());
}

void TestCoverLoader::aLongThinPictureKeepsBothEdges()
{
    const QString file = savePicture(plain(3, 5000, Qt::red), path("thin"));
    QCOMPARE(CoverLoader::load(file).size(), QSize(1, 2048));
    QVERIFY(QIOrvoUtil::isImage(file));
    QCOMPARE(CoverLoader::icon(file).pixmap(300, 300).size(), QSize(300, 300));
}

void TestCoverLoader::aSquareIconHasThePicturesOwnSize()
{
    const QImage picture = noise(500, 500);
    const QIcon icon = CoverLoader::icon(savePicture(picture, path("cover")));
    QCOMPARE(icon.availableSizes(), QList<QSize>{QSize(500, 500)});
    QCOMPARE(pixels(icon.pixmap(500, 500)), pixels(picture));
    QCOMPARE(icon.actualSize(QSize(100, 120)), QSize(100, 100));
    QCOMPARE(icon.pixmap(100, 120).size(), QSize(100, 100));
}

void TestCoverLoader::anOblongIconIsStretchedWithoutSmoothing()
{
    const QImage picture = noise(400, 300);
    const QIcon icon = CoverLoader::icon(savePicture(picture, path("cover")));
    QCOMPARE(icon.availableSizes(), QList<QSize>{QSize(300, 300)});
    QCOMPARE(pixels(icon.pixmap(300, 300)),
             pixels(picture.scaled(300, 300, Qt::IgnoreAspectRatio, Qt::FastTransformation)));
    const QIcon tall = CoverLoader::icon(savePicture(noise(1, 500), path("tall")));
    QCOMPARE(tall.pixmap(900, 900).size(), QSize(300, 300));
}

void TestCoverLoader::anIconIsNeverEnlarged()
{
    const QIcon icon = CoverLoader::icon(savePicture(noise(32, 32), path("cover")));
    QCOMPARE(icon.pixmap(100, 120).size(), QSize(32, 32));
    QCOMPARE(CoverLoader::icon(savePicture(noise(1, 1), path("dot"))).pixmap(100, 120).size(), QSize(1, 1));
}

void TestCoverLoader::anIconGivesTheSamePixmapAgain()
{
    for (const QSize size : {QSize(600, 600), QSize(640, 480), QSize(60, 60)}) {
        const QString file = savePicture(noise(size.width(), size.height()), path("cover"));
        for (const int edge : {60, 100, 300, 1000})
            QCOMPARE(CoverLoader::icon(file).pixmap(edge, edge).cacheKey(),
                     CoverLoader::icon(file).pixmap(edge, edge).cacheKey());
    }
}

void TestCoverLoader::aLargeSquareIconIsFineAtEverySize()
{
    QImage picture = plain(1200, 1200, Qt::white);
    QPainter(&picture).fillRect(0, 0, 600, 1200, Qt::black);
    for (const char* format : {"PNG", "JPEG"}) {
        const QIcon icon = CoverLoader::icon(savePicture(picture, path(QLatin1String(format)), format));
        for (const int edge : {100, 300, 301, 1200}) {
            const QImage drawn = icon.pixmap(edge, edge).toImage();
            QCOMPARE(drawn.size(), QSize(edge, edge));
            QVERIFY(qGray(drawn.pixel(edge / 4, edge / 2)) < 8);
            QVERIFY(qGray(drawn.pixel(3 * edge / 4, edge / 2)) > 247);
        }
    }
}

void TestCoverLoader::anIconPaintsOnADenseScreen()
{
    const QIcon icon = CoverLoader::icon(savePicture(plain(400, 400, Qt::red), path("cover")));
    QImage screen(240, 280, QImage::Format_RGB32);
    screen.setDevicePixelRatio(2);
    screen.fill(Qt::white);
    QPainter painter(&screen);
    icon.paint(&painter, QRect(0, 0, 120, 140));
    painter.end();
    QCOMPARE(screen.pixelColor(2, 22), QColor(Qt::red));
    QCOMPARE(screen.pixelColor(237, 257), QColor(Qt::red));
    QCOMPARE(screen.pixelColor(120, 16), QColor(Qt::white));
    QCOMPARE(screen.pixelColor(120, 264), QColor(Qt::white));
}

void TestCoverLoader::aScreenFullOfCoversIsDecodedOnce()
{
    CoverLoader::setMemoryLimit(12 * 1024 * 1024);
    QStringList files;
    for (int i = 0; i < 40; ++i) // 57 MB decoded, 1.6 MB as they are drawn
        files.append(
            savePicture(plain(600, 600, QColor::fromHsv(9 * i, 200, 200)), path(QString::number(i)), "JPEG"));
    const qint64 before = CoverLoader::decodeCount();
    for (int repaint = 0; repaint < 3; ++repaint)
        for (const QString& file : qAsConst(files)) {
            QVERIFY(QIOrvoUtil::isImage(file));
            QCOMPARE(CoverLoader::icon(file).pixmap(100, 120).size(), QSize(100, 100));
        }
    QCOMPARE(CoverLoader::decodeCount() - before, files.size());
}

void TestCoverLoader::theMemoryIsBounded()
{
    CoverLoader::setMemoryLimit(3 * 1024 * 1024); // one of the two fits into the share of decoded pictures
    const QString first = savePicture(noise(480, 480, 1), path("first"));
    const QString second = savePicture(noise(480, 481, 2), path("second"));
    const qint64 before = CoverLoader::decodeCount();
    QCOMPARE(CoverLoader::load(first).size(), QSize(480, 480));
    QCOMPARE(CoverLoader::load(second).size(), QSize(480, 481));
    QCOMPARE(CoverLoader::load(first).size(), QSize(480, 480));
    QCOMPARE(CoverLoader::decodeCount() - before, 3);
    // Pictures larger than the whole memory are shown all the same.
    CoverLoader::setMemoryLimit(1024);
    QCOMPARE(pixels(CoverLoader::load(second)), pixels(noise(480, 481, 2)));
    QCOMPARE(CoverLoader::icon(first).pixmap(100, 100).size(), QSize(100, 100));
}

void TestCoverLoader::anIconShowsTheGenericCoverWhereThereIsNone()
{
    const QImage expected = pixels(CoverLoader::icon(CoverLoader::genericCoverPath()).pixmap(100, 100));
    QVERIFY(!expected.isNull());
    QCOMPARE(pixels(CoverLoader::icon(QString()).pixmap(100, 100)), expected);
    QCOMPARE(pixels(CoverLoader::icon(path("nothing")).pixmap(100, 100)), expected);
    QCOMPARE(pixels(CoverLoader::icon(m_folder->path()).pixmap(100, 100)), expected);
    QCOMPARE(pixels(CoverLoader::icon(saveBytes("garbage", path("cover"))).pixmap(100, 100)), expected);
}

void TestCoverLoader::anOldIconShowsTheFileAsItIsNow()
{
    const QString file = savePicture(plain(64, 64, Qt::red), path("cover"));
    const QIcon icon = CoverLoader::icon(file);
    savePicture(plain(200, 100, Qt::green), file);
    QCOMPARE(icon.pixmap(40, 40).toImage().pixelColor(5, 5), QColor(Qt::green));
    QVERIFY(QFile::remove(file));
    QVERIFY(icon.pixmap(30, 30).isNull());
}

void TestCoverLoader::theGenericCoverIsOnePixmap()
{
    CoverLoader::setMemoryLimit(1024);
    QCOMPARE(pixels(CoverLoader::genericCover()), pixels(m_generic));
    QCOMPARE(CoverLoader::genericCover().cacheKey(), CoverLoader::genericCover().cacheKey());
}

void TestCoverLoader::isImageNeedsTwoPixelsEachWay()
{
    QVERIFY(QIOrvoUtil::isImage(savePicture(noise(2, 2), path("two"))));
    QVERIFY(!QIOrvoUtil::isImage(savePicture(noise(1, 500), path("thin"))));
    QVERIFY(!QIOrvoUtil::isImage(savePicture(noise(500, 1), path("flat"))));
}

QTEST_MAIN(TestCoverLoader)
#include "tst_coverloader.moc"
