#include "centerwidget.h"
#include "common/qimagebutton.h"
#include "common/qimagedialog.h"
#include "common/qimagewidget.h"
#include "common/skinlabel.h"
#include "common/skinmovie.h"
#include "dupmusicinfo.h"
#include "dupmusiclistmodel.h"
#include "mainwindow.h"
#include "musicdetailedinfowidget.h"
#include "musiclistmodel.h"
#include "showmusicinfowidget.h"
#include "songfixtures.h"
#include "views/covergriddelegate.h"
#include "views/paintdupnumberdelegate.h"
#include "views/viewsetup.h"

#include <QListView>
#include <QPainter>
#include <QTemporaryDir>
#include <QtTest>

using namespace Fixtures;

namespace {
const char* const kinds[] = {"button", "dialog", "widget"};

int ratio()
{
    return int(qApp->devicePixelRatio());
}

/// A widget of the kind that shows the picture.
std::unique_ptr<QWidget> showing(const QString& kind, const QString& path)
{
    if (kind == "button") {
        auto button = std::make_unique<QImageButton>();
        button->setBtnImage(path);
        return button;
    }
    if (kind == "dialog") {
        auto dialog = std::make_unique<QImageDialog>(nullptr, Qt::FramelessWindowHint);
        dialog->SetImageBackgroud(path);
        return dialog;
    }
    auto widget = std::make_unique<QImageWidget>();
    widget->SetImageBackgroud(path);
    return widget;
}

/// What the widget itself paints, pixel by pixel of the screen.
QImage painted(QWidget& widget)
{
    QImage image(widget.size() * ratio(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio());
    image.fill(Qt::transparent);
    widget.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

/// What the widget itself paints on a screen between the scales of the skin.
QImage paintedBetween(QWidget& widget)
{
    QImage image(widget.size() * 1.5, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(1.5);
    image.fill(Qt::transparent);
    widget.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

/// A picture as such a screen shows it, smoothly or with pixels left out.
QImage shownBetween(const QSize& size, const QImage& picture, const QRect& place, bool smooth)
{
    QImage image(size * 1.5, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(1.5);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, smooth);
    painter.drawImage(place, picture);
    return image;
}

int distance(QRgb a, QRgb b)
{
    return qAbs(qRed(a) - qRed(b)) + qAbs(qGreen(a) - qGreen(b)) + qAbs(qBlue(a) - qBlue(b));
}

/// Whether the widget shows the picture smoothly; judged by the pixels that tell.
bool isSmoothBetween(QWidget& widget, const QImage& picture, const QRect& place)
{
    const QImage shown = paintedBetween(widget);
    const QImage smooth = shownBetween(widget.size(), picture, place, true);
    const QImage rough = shownBetween(widget.size(), picture, place, false);
    int telling = 0;
    int smoothly = 0;
    for (int y = 0; y < shown.height(); ++y)
        for (int x = 0; x < shown.width(); ++x) {
            const QRgb wanted = smooth.pixel(x, y);
            if (qAlpha(wanted) < 255 || distance(wanted, rough.pixel(x, y)) < 24)
                continue;
            ++telling;
            smoothly += distance(wanted, shown.pixel(x, y)) < 12 ? 1 : 0;
        }
    return telling >= 20 && smoothly * 10 > telling * 9;
}

QImage finePicture(const char* name)
{
    return SkinPicture(SkinPicture::path(name)).image(2);
}

/// Four equal cells, white at the left of the point (10.5, 0) and black at the right of it.
QImage halved(int scale)
{
    QImage strip = plain(80 * scale, 12 * scale, Qt::white);
    QPainter painter(&strip);
    for (int cell = 0; cell < 4; ++cell) {
        const QRectF right(20 * cell + 10.5, 0, 9.5, 12);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillRect(QRectF(right.topLeft() * scale, right.size() * scale), Qt::black);
    }
    return strip;
}

/// The pixels between black and white in the first cell of the halved picture.
int blurredPixels(const QImage& image)
{
    int blurred = 0;
    for (int x = 0; x < 20 * ratio(); ++x) {
        const int grey = qGray(image.pixel(x, image.height() / 2));
        blurred += grey > 5 && grey < 250 ? 1 : 0;
    }
    return blurred;
}
} // namespace

/// Runs on a plain and on a dense screen: what is counted in points is the same on both.
class TestPixelRatio : public QObject
{
    Q_OBJECT

private slots:
    void sizesInPointsAreTheSame_data();
    void sizesInPointsAreTheSame();
    void everyPixelOfThePictureIsShown_data() { sizesInPointsAreTheSame_data(); }
    void everyPixelOfThePictureIsShown();
    void everyCellOfAStripIsShown();
    void anEdgeIsAsSharpAsTheScreen_data();
    void anEdgeIsAsSharpAsTheScreen();
    void aPictureWithoutAFinerOneKeepsItsSize();
    void ratiosBetweenTheScalesAreSmooth_data() { anEdgeIsAsSharpAsTheScreen_data(); }
    void ratiosBetweenTheScalesAreSmooth();
    void facesAreSmoothBetweenTheScales();
    void theHeaderIsSmoothBetweenTheScales();
    void animationsAreSmoothBetweenTheScales();
    void coversUseEveryPixel_data();
    void coversUseEveryPixel();
    void theCountsDiscIsAsFineAsTheScreen();

private:
    QString path(const char* name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

void TestPixelRatio::sizesInPointsAreTheSame_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QSize>("size");
    const auto row = [](const char* kind, const char* name, const QSize& size) {
        QTest::newRow(kind) << QString(kind) << QByteArray(name) << size;
    };
    row("button", "button_ok.png", QSize(114, 32));
    row("dialog", "bg_message.png", QSize(441, 145));
    row("widget", "bg_no_picture.png", QSize(200, 200));
}

void TestPixelRatio::sizesInPointsAreTheSame()
{
    QFETCH(QString, kind);
    QFETCH(QByteArray, name);
    QFETCH(QSize, size);
    const auto widget = showing(kind, SkinPicture::path(name.constData()));
    QCOMPARE(widget->size(), size);
    QCOMPARE(widget->minimumSize(), size);
    QCOMPARE(widget->maximumSize(), size);
    QCOMPARE(widget->devicePixelRatioF(), qreal(ratio()));
    QCOMPARE(widget->grab().size(), size * ratio());
}

void TestPixelRatio::everyPixelOfThePictureIsShown()
{
    QFETCH(QString, kind);
    QFETCH(QByteArray, name);
    QFETCH(QSize, size);
    const QString file = SkinPicture::path(name.constData());
    const auto widget = showing(kind, file);
    const QImage picture = QImage(ratio() == 2 ? SkinPicture::doubledPath(file) : file)
                               .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QCOMPARE(painted(*widget).copy(), picture.copy(QRect(QPoint(), size * ratio())));
}

void TestPixelRatio::everyCellOfAStripIsShown()
{
    const QString file = SkinPicture::path("btn_startscan.png");
    const QImage strip = QImage(ratio() == 2 ? SkinPicture::doubledPath(file) : file)
                             .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QImageButton button;
    button.setBtnImage(file);
    const auto shows = [&](int cell) {
        const QSize size = button.size() * ratio();
        return painted(button).copy() == strip.copy(QRect(QPoint(cell * size.width(), 0), size));
    };
    QVERIFY(shows(0));
    QEvent enter(QEvent::Enter);
    QApplication::sendEvent(&button, &enter);
    QVERIFY(shows(1));
    QTest::mousePress(&button, Qt::LeftButton);
    QVERIFY(shows(2));
    QTest::mouseRelease(&button, Qt::LeftButton);
    button.setEnabled(false);
    QVERIFY(shows(3));
}

void TestPixelRatio::anEdgeIsAsSharpAsTheScreen_data()
{
    QTest::addColumn<QString>("kind");
    for (const char* kind : kinds)
        QTest::newRow(kind) << QString(kind);
}

void TestPixelRatio::anEdgeIsAsSharpAsTheScreen()
{
    QFETCH(QString, kind);
    savePicture(halved(1), path("edge.png"));
    savePicture(halved(2), path("edge@2x.png"));
    savePicture(halved(1), path("alone.png"));
    const auto fine = showing(kind, path("edge.png"));
    const auto coarse = showing(kind, path("alone.png"));
    QCOMPARE(fine->size(), coarse->size());
    // The edge lies in the middle of a point: a plain screen blurs it, a dense one has a pixel that ends
    // there.
    QCOMPARE(blurredPixels(painted(*fine)), ratio() == 2 ? 0 : 1);
    QVERIFY(blurredPixels(painted(*coarse)) >= ratio());
}

void TestPixelRatio::aPictureWithoutAFinerOneKeepsItsSize()
{
    savePicture(halved(1), path("alone.png"));
    for (const char* kind : kinds) {
        const auto widget = showing(kind, path("alone.png"));
        QCOMPARE(widget->size(), QSize(kind == QString("button") ? 20 : 80, 12));
        const QImage image = painted(*widget);
        QCOMPARE(image.pixel(2 * ratio(), 2 * ratio()), QColor(Qt::white).rgb());
        QCOMPARE(image.pixel(18 * ratio(), 10 * ratio()), QColor(Qt::black).rgb());
    }
}

void TestPixelRatio::ratiosBetweenTheScalesAreSmooth()
{
    QFETCH(QString, kind);
    QImage columns = plain(80, 12, Qt::white);
    for (int x = 0; x < 80; x += 2)
        QPainter(&columns).fillRect(x, 0, 1, 12, Qt::black);
    savePicture(columns, path("columns.png"));
    const auto widget = showing(kind, path("columns.png"));
    const QImage image = paintedBetween(*widget);
    int mixed = 0;
    for (int x = 0; x < 30; ++x) {
        const int grey = qGray(image.pixel(x, 9));
        mixed += grey > 40 && grey < 215 ? 1 : 0;
    }
    QVERIFY2(mixed >= 8, qPrintable(QString::number(mixed)));
}

void TestPixelRatio::facesAreSmoothBetweenTheScales()
{
    ShowMusicInfoWidget card;
    QVERIFY(isSmoothBetween(card, finePicture("bg_music_detail.png"), QRect(0, 0, 300, 230)));
    MusicDetailedInfoWidget details;
    details.resize(330, 585);
    QVERIFY(isSmoothBetween(details, finePicture("bg_right.png"), QRect(0, 0, 330, 585)));
    CenterWidget center;
    center.resize(800, 585);
    auto* open = center.findChild<QWidget*>("m_btnOpen");
    open->show();
    painted(center); // places the button
    QVERIFY(isSmoothBetween(center, finePicture("bg_openfile.png"), QRect(25, open->y() - 284, 420, 260)));
}

void TestPixelRatio::theHeaderIsSmoothBetweenTheScales()
{
    MainWindow window;
    window.setTopImage(SkinPicture::path("bg_banner.png"));
    window.setFootImage(SkinPicture::path("bg_foot.png"));
    window.setBackgroundImage(SkinPicture::path("bg_right_nofile.png"));
    window.resize(1000, 700);
    QVERIFY(isSmoothBetween(window, finePicture("bg_banner.png"), QRect(0, 0, 1000, 102)));
    QVERIFY(isSmoothBetween(window, finePicture("bg_right_nofile.png"), QRect(671, 102, 330, 572)));
    auto* status = window.findChild<QLabel*>("m_movieLabel");
    QVERIFY(isSmoothBetween(*status, finePicture("pic_startscan.png"), QRect(0, 0, 50, 50)));
}

void TestPixelRatio::animationsAreSmoothBetweenTheScales()
{
    SkinLabel label;
    label.resize(220, 44);
    SkinMovie movie("b_local_music_clean1.gif");
    movie.startIn(&label);
    movie.setPaused(true);
    QVERIFY(isSmoothBetween(label, movie.currentImage(), QRect(0, 0, 220, 44)));
}

void TestPixelRatio::coversUseEveryPixel_data()
{
    QTest::addColumn<bool>("groups");
    QTest::newRow("songs") << false;
    QTest::newRow("groups of duplicates") << true;
}

void TestPixelRatio::coversUseEveryPixel()
{
    QFETCH(bool, groups);
    // White and black columns by turns, as fine as two pixels to the point show them.
    QImage stripes = plain(200, 200, Qt::white);
    for (int x = 1; x < 200; x += 2)
        for (int y = 0; y < 200; ++y)
            stripes.setPixel(x, y, qRgb(0, 0, 0));
    genericCover();
    Texts texts;
    texts.coverPath = savePicture(stripes, path("stripes"));
    const auto song = makeSong(false, texts);
    QList<QMusicInfo*> songs{&song->info};
    DupMusicInfo group;
    group.musicList.append(&song->info);
    QList<DupMusicInfo*> groupList{&group};

    MusicListModel songModel;
    songModel.setDataSourceList(&songs, 1, false);
    DupMusicListModel groupModel;
    groupModel.setDupMusicDataSource(&groupList, 1, false);
    CoverGridDelegate delegate;
    PaintDupNumberDelegate numbers;
    QListView view;
    ViewSetup::grid(&view);
    view.setItemDelegate(groups ? static_cast<QAbstractItemDelegate*>(&numbers) : &delegate);
    view.setModel(groups ? static_cast<QAbstractItemModel*>(&groupModel) : &songModel);
    view.resize(380, 300);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view, patience));

    const QImage drawn = view.viewport()->grab().toImage();
    const QRect cell = view.visualRect(view.model()->index(0, 0));
    const int row = (cell.top() + 60) * ratio();
    int black = 0;
    int grey = 0;
    for (int x = cell.left() * ratio(); x < (cell.right() + 1) * ratio(); ++x) {
        const int shade = qGray(drawn.pixel(x, row));
        black += shade < 5 ? 1 : 0;
        grey += shade >= 90 && shade <= 165 ? 1 : 0;
    }
    QCOMPARE(black, ratio() == 2 ? 100 : 0);
    QCOMPARE(grey, ratio() == 2 ? 0 : 100);
}

void TestPixelRatio::theCountsDiscIsAsFineAsTheScreen()
{
    genericCover();
    const auto song = makeSong(false);
    DupMusicInfo group;
    group.musicList.append(&song->info);
    QList<DupMusicInfo*> groupList{&group};
    DupMusicListModel model;
    model.setDupMusicDataSource(&groupList, 1, false);
    PaintDupNumberDelegate delegate;
    QListView view;
    ViewSetup::grid(&view);
    view.setItemDelegate(&delegate);
    view.setModel(&model);
    view.resize(380, 300);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view, patience));

    const QImage drawn = view.viewport()->grab().toImage();
    const QRect cell = view.visualRect(model.index(0, 0));
    const QString file = SkinPicture::path("pic_number.png");
    const QImage disc =
        QImage(ratio() == 2 ? SkinPicture::doubledPath(file) : file).convertToFormat(QImage::Format_ARGB32);
    const QPoint corner = QPoint(cell.right() - 21, cell.top() + 2) * ratio();
    int opaque = 0;
    // Above the count.
    for (int y = 0; y < 4 * ratio(); ++y)
        for (int x = 0; x < disc.width(); ++x)
            if (qAlpha(disc.pixel(x, y)) == 255) {
                QCOMPARE(drawn.pixel(corner + QPoint(x, y)), disc.pixel(x, y));
                ++opaque;
            }
    QVERIFY(opaque > 10 * ratio() * ratio());
}

QTEST_MAIN(TestPixelRatio)
#include "tst_pixelratio.moc"
