#include "common/skinmovie.h"
#include "common/skinpicture.h"
#include "qiorvoutil.h"

#include <QDir>
#include <QLabel>
#include <QTemporaryDir>
#include <QtTest>

/// Runs on a plain and on a dense screen.
class TestSkinMovie : public QObject
{
    Q_OBJECT

private slots:
    void theFileFollowsTheScreen_data();
    void theFileFollowsTheScreen();
    void everyPixelOfAFrameIsShown_data() { theFileFollowsTheScreen_data(); }
    void everyPixelOfAFrameIsShown();
    void startingAgainBeginsWithTheFirstFrame();
    void aMovieCanGoFromLabelToLabel();
    void aMovieWithoutAFinerFileIsShownAsItIs();
    void aMissingMovieShowsNothing();
    void theLabelOutlivesTheMovie();

private:
    static bool dense() { return qApp->devicePixelRatio() > 1; }
};

void TestSkinMovie::theFileFollowsTheScreen_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QSize>("size");
    QTest::newRow("to local") << QByteArray("b_local_music_clean1.gif") << QSize(220, 44);
    QTest::newRow("to iTunes") << QByteArray("b_itunes_music_clean1.gif") << QSize(220, 44);
    QTest::newRow("scanning") << QByteArray("dynamic_scanning.gif") << QSize(50, 50);
    QTest::newRow("scanning, small") << QByteArray("dynamic_scanning_small.gif") << QSize(32, 32);
    QTest::newRow("deleting") << QByteArray("deletingMusic.gif") << QSize(96, 96);
}

void TestSkinMovie::theFileFollowsTheScreen()
{
    QFETCH(QByteArray, name);
    QFETCH(QSize, size);
    QLabel label;
    SkinMovie movie(name.constData());
    movie.startIn(&label);
    QCOMPARE(label.movie(), &movie);
    QCOMPARE(movie.state(), QMovie::Running);
    const QString plain = SkinPicture::path(name.constData());
    QCOMPARE(movie.fileName(), dense() ? SkinPicture::doubledPath(plain) : plain);
    QCOMPARE(movie.sizeInPoints(), size);
    QCOMPARE(movie.currentPixmap().size(), size * qApp->devicePixelRatio());
}

void TestSkinMovie::everyPixelOfAFrameIsShown()
{
    QFETCH(QByteArray, name);
    QFETCH(QSize, size);
    QLabel label;
    label.resize(size);
    SkinMovie movie(name.constData());
    movie.startIn(&label);
    movie.setPaused(true);
    for (int i = 0; i < 8; ++i)
        QVERIFY(movie.jumpToNextFrame());
    const QImage frame = movie.currentImage();
    QImage shown(frame.size(), QImage::Format_ARGB32);
    shown.setDevicePixelRatio(qApp->devicePixelRatio());
    shown.fill(Qt::magenta);
    label.render(&shown, QPoint(), QRegion(), QWidget::RenderFlags());
    for (int y = 0; y < frame.height(); ++y)
        for (int x = 0; x < frame.width(); ++x) {
            const QRgb wanted = qAlpha(frame.pixel(x, y)) ? frame.pixel(x, y) : QColor(Qt::magenta).rgb();
            QCOMPARE(shown.pixel(x, y), wanted);
        }
}

void TestSkinMovie::startingAgainBeginsWithTheFirstFrame()
{
    QLabel label;
    SkinMovie movie("b_local_music_clean1.gif");
    movie.startIn(&label);
    QTRY_COMPARE(movie.state(), QMovie::NotRunning); // it plays once
    QVERIFY(movie.currentFrameNumber() > 0);
    movie.startIn(&label);
    QCOMPARE(movie.currentFrameNumber(), 0);
    QTRY_VERIFY(movie.currentFrameNumber() > 2);
    movie.startIn(&label);
    QCOMPARE(movie.currentFrameNumber(), 0);
    QCOMPARE(movie.state(), QMovie::Running);
}

void TestSkinMovie::aMovieCanGoFromLabelToLabel()
{
    QLabel first;
    QLabel second;
    SkinMovie movie("dynamic_scanning_small.gif");
    movie.startIn(&first);
    first.clear();
    movie.startIn(&second);
    QVERIFY(!first.movie());
    QCOMPARE(second.movie(), &movie);
    movie.stop();
    QCOMPARE(movie.state(), QMovie::NotRunning);
}

void TestSkinMovie::aMovieWithoutAFinerFileIsShownAsItIs()
{
    QTemporaryDir folder;
    const QString alone = folder.filePath("alone.gif");
    QVERIFY(QFile::copy(SkinPicture::path("dynamic_scanning_small.gif"), alone));
    const QDir skin(QIOrvoUtil::getResourcePath() + "/Image");
    QLabel label;
    SkinMovie movie(QFile::encodeName(skin.relativeFilePath(alone)).constData());
    movie.startIn(&label);
    QCOMPARE(movie.state(), QMovie::Running);
    QCOMPARE(movie.sizeInPoints(), QSize(32, 32));
    QCOMPARE(movie.currentPixmap().size(), QSize(32, 32));
}

void TestSkinMovie::aMissingMovieShowsNothing()
{
    QLabel label;
    label.resize(50, 50);
    SkinMovie movie("missing.gif");
    movie.startIn(&label);
    QCOMPARE(movie.state(), QMovie::NotRunning);
    QVERIFY(movie.sizeInPoints().isEmpty());
    QVERIFY(!label.grab().isNull());
}

void TestSkinMovie::theLabelOutlivesTheMovie()
{
    QLabel label;
    label.resize(96, 96);
    {
        SkinMovie movie("deletingMusic.gif");
        movie.startIn(&label);
    }
    QVERIFY(!label.movie());
    QVERIFY(!label.grab().isNull());
}

QTEST_MAIN(TestSkinMovie)
#include "tst_skinmovie.moc"
