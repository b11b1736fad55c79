#include "common/skinpicture.h"
#include "common/skinwords.h"
#include "qiorvoutil.h"

#include <QDirIterator>
#include <QImageReader>
#include <QMovie>
#include <QRegularExpression>
#include <QtTest>

namespace {
struct Size
{
    const char* name;
    int width;
    int height;
};

/// Pictures by their size at 1x; strips by the size of a cell.
const Size pictures[] = {{"Image/logo.png", 256, 256},
                         {"Image/bg_banner.png", 1120, 102},
                         {"Image/bg_foot.png", 1120, 26},
                         {"Image/bg_right_nofile.png", 330, 585},
                         {"Image/bg_right.png", 330, 585},
                         {"Image/bg_openfile.png", 420, 260},
                         {"Image/bg_no_picture.png", 200, 200},
                         {"Image/big.png", 300, 300},
                         {"Image/bg_message.png", 441, 145},
                         {"Image/bg_message_duplicated.png", 441, 145},
                         {"Image/bg_music_detail.png", 300, 230},
                         {"Image/bg_music_play.png", 560, 350},
                         {"Image/about_this_soft.png", 460, 300},
                         {"Image/b_local_music_clean1.gif", 220, 44},
                         {"Image/b_itunes_music_clean1.gif", 220, 44},
                         {"Image/pic_startscan.png", 50, 50},
                         {"Image/pic_scanover.png", 50, 50},
                         {"Image/dynamic_scanning.gif", 50, 50},
                         {"Image/dynamic_scanning_small.gif", 32, 32},
                         {"Image/deletingMusic.gif", 96, 96},
                         {"Image/trake_slider.png", 460, 8},
                         {"Image/trake_slider2.png", 460, 8},
                         {"Image/pic_number.png", 17, 17},
                         {"Image/menu_home.png", 16, 16},
                         {"Image/menu_about.png", 16, 16},
                         {"Image/menu_help.png", 16, 16},
                         {"Image/menu_exit.png", 16, 16}};

const Size strips[] = {{"Image/btn_startscan.png", 136, 44},
                       {"Image/add_music.png", 136, 44},
                       {"Image/button_Scanning.png", 136, 44},
                       {"Image/scan_again.png", 136, 44},
                       {"Image/button_itunes_music_clean.png", 220, 44},
                       {"Image/button_local_music_clean.png", 220, 44},
                       {"Image/button_menu.png", 200, 44},
                       {"Image/button_preview_left.png", 34, 26},
                       {"Image/button_preview_right.png", 34, 26},
                       {"Image/button_open.png", 200, 52},
                       {"Image/btn_msg_startscan.png", 114, 32},
                       {"Image/button_addmusic.png", 114, 32},
                       {"Image/button_ok.png", 114, 32},
                       {"Image/button_cancel.png", 114, 32},
                       {"Image/button_continue.png", 114, 32},
                       {"Image/button_edit.png", 124, 36},
                       {"Image/button_edit_close.png", 124, 36},
                       {"Image/btn_identify.png", 124, 36},
                       {"Image/btn_identifyagain.png", 124, 36},
                       {"Image/btn_apply.png", 124, 36},
                       {"Image/identifying.png", 124, 36},
                       {"Image/btn_clearduplicate.png", 148, 36},
                       {"Image/btn_ClearAll.png", 148, 36},
                       {"Image/btn_checkbox_no.png", 18, 18},
                       {"Image/btn_checkbox_yes.png", 18, 18},
                       {"Image/button_play.png", 24, 24},
                       {"Image/button_detail.png", 24, 24},
                       {"Image/button_search.png", 24, 24},
                       {"Image/button_music_stop.png", 12, 12},
                       {"Image/button_music_play.png", 12, 12},
                       {"pic/button_close.png", 20, 20},
                       {"pic/button_Restart.png", 90, 28},
                       {"pic/button_Restart_later.png", 90, 28},
                       {"pic/button_yes.png", 90, 28},
                       {"pic/button_no.png", 90, 28},
                       {"pic/button_ok.png", 90, 28},
                       {"pic/button_cancel.png", 90, 28}};

QString resource(const QString& name)
{
    return QIOrvoUtil::getResourcePath() + '/' + name;
}

/// The frames of an animation, each whole.
QList<QImage> framesOf(const QString& path)
{
    QList<QImage> frames;
    QMovie movie(path);
    for (int i = 0; i < movie.frameCount(); ++i)
        if (movie.jumpToFrame(i))
            frames.append(movie.currentImage().convertToFormat(QImage::Format_ARGB32));
    return frames;
}
} // namespace

class TestSkin : public QObject
{
    Q_OBJECT

private slots:
    void picturesHaveTheirSizes_data();
    void picturesHaveTheirSizes();
    void stripsHaveFourCellsThatDiffer_data();
    void stripsHaveFourCellsThatDiffer();
    void everyPictureThatTheSourcesNameIsThere();
    void switchesGlideOnceAndEndAsTheButtonBegins_data();
    void switchesGlideOnceAndEndAsTheButtonBegins();
    void endlessAnimationsTurnSmoothly_data();
    void endlessAnimationsTurnSmoothly();
    void denseScreensGetTheDoubledPicture();
    void eitherSeparatorNamesAPicture();
    void wordsOfEveryButtonAreKnown();
};

void TestSkin::picturesHaveTheirSizes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSize>("size");
    for (const Size& picture : pictures)
        QTest::newRow(picture.name) << QString(picture.name) << QSize(picture.width, picture.height);
}

void TestSkin::picturesHaveTheirSizes()
{
    QFETCH(QString, name);
    QFETCH(QSize, size);
    QCOMPARE(QImageReader(resource(name)).size(), size);
    QVERIFY(!QImageReader(resource(name)).read().isNull());
    QCOMPARE(QImageReader(SkinPicture::doubledPath(resource(name))).size(), size * 2);
}

void TestSkin::stripsHaveFourCellsThatDiffer_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSize>("cell");
    for (const Size& strip : strips)
        QTest::newRow(strip.name) << QString(strip.name) << QSize(strip.width, strip.height);
}

void TestSkin::stripsHaveFourCellsThatDiffer()
{
    QFETCH(QString, name);
    QFETCH(QSize, cell);
    for (const int scale : {1, 2}) {
        const QImage strip(scale == 1 ? resource(name) : SkinPicture::doubledPath(resource(name)));
        QCOMPARE(strip.size(), QSize(cell.width() * 4, cell.height()) * scale);
        QList<QImage> cells;
        for (int i = 0; i < 4; ++i)
            cells.append(strip.copy(i * cell.width() * scale, 0, cell.width() * scale, strip.height()));
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < i; ++j)
                QVERIFY2(cells.at(i) != cells.at(j), qPrintable(QString("cells %1 and %2").arg(j).arg(i)));
    }
}

void TestSkin::everyPictureThatTheSourcesNameIsThere()
{
    const QRegularExpression named("\"(?:/Image/|\\\\\\\\pic\\\\\\\\)?([A-Za-z0-9_]+\\.(?:png|gif))\"");
    int found = 0;
    QDirIterator sources(QString(MELODRIFT_SOURCES), {"*.cpp", "*.h"}, QDir::Files,
                         QDirIterator::Subdirectories);
    while (sources.hasNext()) {
        QFile source(sources.next());
        QVERIFY(source.open(QIODevice::ReadOnly));
        auto names = named.globalMatch(QString::fromUtf8(source.readAll()));
        while (names.hasNext()) {
            const QString name = names.next().captured(1);
            if (name == "name.png") // as a comment calls any picture
                continue;
            const bool there =
                QFile::exists(resource("Image/" + name)) || QFile::exists(resource("pic/" + name));
            QVERIFY2(there, qPrintable(source.fileName() + " names " + name));
            ++found;
        }
    }
    QVERIFY(found > 20);
}

void TestSkin::switchesGlideOnceAndEndAsTheButtonBegins_data()
{
    QTest::addColumn<QString>("movie");
    QTest::addColumn<QString>("next");
    QTest::newRow("to local") << "Image/b_local_music_clean1.gif"
                              << "Image/button_local_music_clean.png";
    QTest::newRow("to iTunes") << "Image/b_itunes_music_clean1.gif"
                               << "Image/button_itunes_music_clean.png";
}

void TestSkin::switchesGlideOnceAndEndAsTheButtonBegins()
{
    QFETCH(QString, movie);
    QFETCH(QString, next);
    for (const int scale : {1, 2}) {
        const QString path = scale == 1 ? resource(movie) : SkinPicture::doubledPath(resource(movie));
        const QList<QImage> frames = framesOf(path);
        // As the file says; a movie would take its own lateness off.
        QImageReader timing(path);
        int milliseconds = 0;
        while (!timing.read().isNull())
            milliseconds += timing.nextImageDelay();
        QCOMPARE(timing.loopCount(), 0);
        QVERIFY2(qAbs(milliseconds - 690) <= 40, qPrintable(QString::number(milliseconds)));
        QVERIFY(frames.size() * 1000 / 690 >= 25);
        const QImage strip(scale == 1 ? resource(next) : SkinPicture::doubledPath(resource(next)));
        const QImage cell =
            strip.copy(0, 0, strip.width() / 4, strip.height()).convertToFormat(QImage::Format_ARGB32);
        int far = 0;
        for (int y = 0; y < cell.height(); ++y)
            for (int x = 0; x < cell.width(); ++x) {
                const QRgb wanted = cell.pixel(x, y);
                const QRgb shown = frames.last().pixel(x, y);
                if (qAlpha(wanted) < 255)
                    continue;
                far = qMax(far,
                           qMax(qAbs(qRed(wanted) - qRed(shown)), qMax(qAbs(qGreen(wanted) - qGreen(shown)),
                                                                       qAbs(qBlue(wanted) - qBlue(shown)))));
            }
        QVERIFY2(far <= 12, qPrintable(QString::number(far)));
    }
}

void TestSkin::endlessAnimationsTurnSmoothly_data()
{
    QTest::addColumn<QString>("movie");
    for (const char* name :
         {"Image/dynamic_scanning.gif", "Image/dynamic_scanning_small.gif", "Image/deletingMusic.gif"})
        QTest::newRow(name) << QString(name);
}

void TestSkin::endlessAnimationsTurnSmoothly()
{
    QFETCH(QString, movie);
    QMovie endless(resource(movie));
    endless.jumpToFrame(0);
    QCOMPARE(endless.loopCount(), -1);
    const QList<QImage> frames = framesOf(resource(movie));
    QVERIFY(frames.size() >= 20);
    for (int i = 1; i < frames.size(); ++i)
        QVERIFY(frames.at(i) != frames.at(i - 1));
}

void TestSkin::denseScreensGetTheDoubledPicture()
{
    const SkinPicture picture(resource("Image/button_ok.png"));
    QCOMPARE(picture.size(), QSize(456, 32));
    QCOMPARE(picture.image(1).size(), QSize(456, 32));
    QCOMPARE(picture.image(2).size(), QSize(912, 64));
    QCOMPARE(picture.image(2).devicePixelRatio(), 2.0);
}

void TestSkin::eitherSeparatorNamesAPicture()
{
    QCOMPARE(SkinPicture(resource("pic\\button_yes.png")).size(), QSize(360, 28));
    // One backslash at the beginning stands for the skin; two do for a computer's name.
    const SkinPicture rooted("\\pic\\button_yes.png");
    QCOMPARE(rooted.size(), QSize(360, 28));
    QCOMPARE(rooted.image(2).size(), QSize(720, 56));
    QCOMPARE(rooted.file(), resource("pic/button_yes.png"));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("does not load"));
    QVERIFY(SkinPicture("\\\\pic\\button_yes.png").size().isEmpty());
}

void TestSkin::wordsOfEveryButtonAreKnown()
{
    for (const Size& strip : strips)
        if (QString(strip.name) != "Image/button_menu.png")
            QVERIFY2(!SkinWords::of(strip.name).name.isEmpty(), strip.name);
}

QTEST_MAIN(TestSkin)
#include "tst_skin.moc"
