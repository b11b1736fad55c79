#include "covers/coverstore.h"
#include "songfixtures.h"

#include <QBuffer>
#include <QTemporaryDir>
#include <QtTest>

using namespace Fixtures;

namespace {
QByteArray encoded(const QImage& image, const char* format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!image.save(&buffer, format))
        qFatal("cannot encode");
    return bytes;
}
} // namespace

class TestCoverStore : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void writesTheBytesAndAnswersTheirPicture();
    void largeCoversAreKeptSmallerWithTheirAspect();
    void equalBytesShareOnePixmap();
    void bytesThatDifferAnywhereShareNothing();
    void replacingOneCoverFileLeavesItsTwinsAlone();
    void aFileThatChangedSinceIsNotSharedAnyMore();
    void whatIsNoPictureIsWrittenAndNull();
    void afterTheBudgetCoversAreSmall();
    void clearForgetsWhatCouldBeShared();
    void aFailedWriteStillShowsThePicture();
    void keepingACoverTwiceUnderOnePathKeepsItsFile();
    void coversAreHandedOverWhenFinished();
    void theLastCoverOfASongCounts();
    void clearHandsNothingOver();
    void sharedCoversStayWithinTheBudgetWhileDecoding();

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestCoverStore::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void TestCoverStore::writesTheBytesAndAnswersTheirPicture()
{
    CoverStore store;
    const QImage picture = noise(200, 120);
    const QByteArray bytes = encoded(picture, "PNG");
    QCOMPARE(pixels(store.keep(bytes, path("a"))), pixels(picture));
    QCOMPARE(readBytes(path("a")), bytes);
}

void TestCoverStore::largeCoversAreKeptSmallerWithTheirAspect()
{
    CoverStore store;
    for (const char* format : {"JPEG", "PNG", "BMP"}) {
        const QByteArray square = encoded(plain(600, 600, Qt::red), format);
        const QByteArray wide = encoded(plain(1000, 500, Qt::red), format);
        QCOMPARE(store.keep(square, path("square")).size(), QSize(300, 300));
        QCOMPARE(store.keep(wide, path("wide")).size(), QSize(300, 150));
    }
}

void TestCoverStore::equalBytesShareOnePixmap()
{
    CoverStore store;
    const QByteArray bytes = encoded(noise(200, 200), "PNG");
    const QPixmap first = store.keep(bytes, path("a"));
    QByteArray copy = bytes;
    copy.detach();
    const QPixmap second = store.keep(copy, path("b"));
    QCOMPARE(second.cacheKey(), first.cacheKey());
    QCOMPARE(readBytes(path("b")), bytes);
    // The first file may go; the second one stays whole.
    QVERIFY(QFile::remove(path("a")));
    QCOMPARE(readBytes(path("b")), bytes);
}

void TestCoverStore::bytesThatDifferAnywhereShareNothing()
{
    CoverStore store;
    const QByteArray bytes = encoded(noise(150, 150), "BMP");
    const QPixmap first = store.keep(bytes, path("first"));
    for (const int position : {60, 5000, 20000, 40000, bytes.size() - 1}) {
        QByteArray changed = bytes;
        changed[position] = char(~changed.at(position));
        const QString file = path(QString::number(position));
        QVERIFY(store.keep(changed, file).cacheKey() != first.cacheKey());
        QCOMPARE(readBytes(file), changed);
    }
    QCOMPARE(readBytes(path("first")), bytes);
    QCOMPARE(store.keep(bytes, path("again")).cacheKey(), first.cacheKey());
}

void TestCoverStore::replacingOneCoverFileLeavesItsTwinsAlone()
{
    CoverStore store;
    const QByteArray bytes = encoded(noise(50, 50), "PNG");
    const QByteArray other = encoded(noise(50, 50, 2), "PNG");
    store.keep(bytes, path("a"));
    store.keep(bytes, path("b"));
    store.keep(other, path("b"));
    QCOMPARE(readBytes(path("a")), bytes);
    QCOMPARE(readBytes(path("b")), other);
}

void TestCoverStore::aFileThatChangedSinceIsNotSharedAnyMore()
{
    CoverStore store;
    const QByteArray bytes = encoded(noise(50, 50), "PNG");
    store.keep(bytes, path("a"));
    saveBytes(QByteArray(bytes.size(), 'x'), path("a"));
    QVERIFY(!store.keep(bytes, path("b")).isNull());
    QCOMPARE(readBytes(path("b")), bytes);
    QVERIFY(QFile::remove(path("b")));
    store.keep(bytes, path("c"));
    QCOMPARE(readBytes(path("c")), bytes);
}

void TestCoverStore::whatIsNoPictureIsWrittenAndNull()
{
    CoverStore store;
    for (const QByteArray& bytes : {QByteArray("garbage"), QByteArray(), QByteArray(1 << 20, 'x')}) {
        QVERIFY(store.keep(bytes, path("a")).isNull());
        QCOMPARE(readBytes(path("a")), bytes);
        QVERIFY(store.keep(bytes, path("b")).isNull());
        QCOMPARE(readBytes(path("b")), bytes);
    }
}

void TestCoverStore::afterTheBudgetCoversAreSmall()
{
    CoverStore store;
    store.setFullSizeBudget(2 * 300 * 300 * 4);
    for (unsigned i = 0; i < 4; ++i) {
        const QPixmap kept = store.keep(encoded(noise(400, 400, i), "JPEG"), path(QString::number(i)));
        QCOMPARE(kept.width(), i < 2 ? 300 : 96);
    }
    QCOMPARE(store.keep(encoded(noise(400, 400, 0), "JPEG"), path("again")).width(), 300);
}

void TestCoverStore::clearForgetsWhatCouldBeShared()
{
    CoverStore store;
    store.setFullSizeBudget(1);
    const QByteArray bytes = encoded(noise(200, 200), "PNG");
    const QPixmap first = store.keep(bytes, path("a"));
    store.clear();
    const QPixmap second = store.keep(bytes, path("b"));
    QVERIFY(second.cacheKey() != first.cacheKey());
    QCOMPARE(second.size(), first.size()); // the budget starts anew
    QCOMPARE(readBytes(path("a")), bytes);
}

void TestCoverStore::aFailedWriteStillShowsThePicture()
{
    CoverStore store;
    const QByteArray bytes = encoded(noise(20, 20), "PNG");
    const QString nowhere = path("missing/folder/cover");
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("cannot be written"));
    QCOMPARE(store.keep(bytes, nowhere).size(), QSize(20, 20));
    QVERIFY(!QFile::exists(nowhere));
}

void TestCoverStore::keepingACoverTwiceUnderOnePathKeepsItsFile()
{
    CoverStore store;
    const QByteArray bytes = encoded(noise(20, 20), "PNG");
    const QPixmap first = store.keep(bytes, path("a"));
    QCOMPARE(store.keep(bytes, path("a")).cacheKey(), first.cacheKey());
    QCOMPARE(readBytes(path("a")), bytes);
}

void TestCoverStore::coversAreHandedOverWhenFinished()
{
    CoverStore store;
    std::vector<QPixmap> covers(400);
    for (unsigned i = 0; i < covers.size(); ++i) {
        QByteArray bytes = encoded(noise(40, 40, i / 2), "PNG");
        store.keep(QByteArray::fromRawData(bytes.constData(), bytes.size()), path(QString::number(i)),
                   &covers[i]);
        bytes.fill('x'); // the caller's memory is free again
    }
    store.finish();
    for (unsigned i = 0; i < covers.size(); ++i) {
        QCOMPARE(pixels(covers[i]), pixels(noise(40, 40, i / 2)));
        QCOMPARE(covers[i].cacheKey(), covers[i / 2 * 2].cacheKey());
    }
    QPixmap late;
    store.keep(encoded(noise(40, 40, 0), "PNG"), path("late"), &late);
    QCOMPARE(late.cacheKey(), covers[0].cacheKey());
}

void TestCoverStore::theLastCoverOfASongCounts()
{
    CoverStore store;
    const QByteArray first = encoded(noise(40, 40, 1), "PNG");
    const QByteArray second = encoded(noise(50, 50, 2), "PNG");
    QPixmap cover;
    QPixmap other = store.keep(second, path("known"));
    store.keep(first, path("a"), &cover);
    store.keep(second, path("b"), &cover);
    store.keep(second, path("c"), &other);
    store.keep(first, path("d"), &other);
    store.finish();
    QCOMPARE(cover.size(), QSize(50, 50));
    QCOMPARE(other.size(), QSize(40, 40));
    store.keep(QByteArray("garbage"), path("e"), &cover);
    store.finish();
    QVERIFY(cover.isNull());
}

void TestCoverStore::clearHandsNothingOver()
{
    CoverStore store;
    {
        QPixmap gone;
        for (unsigned i = 0; i < 20; ++i)
            store.keep(encoded(noise(100, 100, i), "PNG"), path(QString::number(i)), &gone);
        store.clear();
    }
    store.finish();
    QCOMPARE(store.keep(encoded(noise(100, 100, 1), "PNG"), path("x")).size(), QSize(100, 100));
}

void TestCoverStore::sharedCoversStayWithinTheBudgetWhileDecoding()
{
    CoverStore store;
    store.setFullSizeBudget(3 * 300 * 300 * 4);
    std::vector<QPixmap> covers(10);
    for (unsigned i = 0; i < covers.size(); ++i)
        store.keep(encoded(noise(400, 400, i), "JPEG"), path(QString::number(i)), &covers[i]);
    store.finish();
    for (unsigned i = 0; i < covers.size(); ++i)
        QCOMPARE(covers[i].width(), i < 3 ? 300 : 96);
}

QTEST_MAIN(TestCoverStore)
#include "tst_coverstore.moc"
