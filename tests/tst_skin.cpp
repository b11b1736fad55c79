#include "common/skinpicture.h"
#include "common/skinwords.h"
#include "common/style.h"
#include "contrast.h"
#include "qiorvoutil.h"

#include <QDirIterator>
#include <QImageReader>
#include <QMovie>
#include <QPainter>
#include <QRegularExpression>
#include <QtTest>

#include <algorithm>
#include <numeric>

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
                         {"Image/pic_best.png", 14, 14},
                         {"Image/view_scan.png", 220, 130},
                         {"Image/view_tidy.png", 220, 130},
                         {"Image/view_nothing.png", 220, 130},
                         {"Image/menu_home.png", 16, 16},
                         {"Image/menu_about.png", 16, 16},
                         {"Image/menu_help.png", 16, 16},
                         {"Image/menu_exit.png", 16, 16},
                         {"pic/message_top.png", 64, 32},
                         {"pic/message_bottom.png", 64, 1},
                         {"pic/message_line_left.png", 1, 64},
                         {"pic/message_line_right.png", 1, 64},
                         {"pic/msg_title_icon.png", 20, 20}};

const Size strips[] = {{"Image/btn_startscan.png", 136, 44},
                       {"Image/add_music.png", 136, 44},
                       {"Image/button_Scanning.png", 136, 44},
                       {"Image/scan_again.png", 136, 44},
                       {"Image/button_itunes_music_clean.png", 220, 44},
                       {"Image/button_local_music_clean.png", 220, 44},
                       {"Image/button_menu.png", 200, 44},
                       {"Image/button_preview_left.png", 34, 26},
                       {"Image/button_preview_right.png", 34, 26},
                       {"Image/button_addmore.png", 92, 26},
                       {"Image/button_open.png", 200, 52},
                       {"Image/btn_msg_startscan.png", 114, 32},
                       {"Image/button_addmusic.png", 114, 32},
                       {"Image/button_ok.png", 114, 32},
                       {"Image/button_cancel.png", 114, 32},
                       {"Image/button_continue.png", 114, 32},
                       {"Image/button_library.png", 188, 36},
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

/// Words that no button picture carries: the file that gives them their colour, how that is named there, the
/// colour itself, and the darkest part of the ground that they lie on.
struct Caption
{
    const char* source;
    const char* name;
    QColor ink;
    QColor ground;
};

const Caption captions[] = {
    {"src/navigationbutton.cpp", "Style::text", Style::text, Style::pane},
    {"src/navigationbutton.cpp", "Style::chosen", Style::chosen, "#E0F1FB"},
    {"src/common/footline.cpp", "Style::text", Style::text, "#E0EEF7"},
    {"src/common/textlink.cpp", "Style::chosen", Style::chosen, "#E0EEF7"},
    {"src/mainmenu.cpp", "Style::menuText", Style::menuText, "#DCEFFA"},
    {"src/views/viewsetup.cpp", "Style::text.name()", Style::text, Style::header}, // column titles
    {"src/views/viewsetup.cpp", "QPalette::Text, Style::text", Style::text, Style::stripe},
    {"src/views/viewnotice.cpp", "Style::muted", Style::muted, "#FFFFFF"},
    {"src/dropzone.cpp", "Style::muted", Style::muted, "#EAF5FB"},
    {"src/findstrip.cpp", "Style::muted", Style::muted, "#FFFFFF"},
    {"src/common/findfield.cpp", "PlaceholderText, Style::muted", Style::muted, "#FFFFFF"},
    {"src/deletingmusicwaitingdlg.cpp", "Style::text", Style::text, "#FFFFFF"},
    {"src/deletedupmusicinfodlg.cpp", "Style::dangerText", Style::dangerText, "#FDFEFF"},
    {"src/deletedupmusicinfodlg.cpp", "Style::muted", Style::muted, "#FDFEFF"},
    {"src/introducethissofedialog.cpp", "Style::chosen", Style::chosen, "#EEF7FC"},
    {"src/startup.cpp", "Style::text", Style::text, Style::window}, // of what the system draws
    {"src/views/paintdupnumberdelegate.cpp", "Style::textOnColour", Style::textOnColour, "#CE4237"},
    {"forms/duplicatemusicdetailedwidget.ui", "#4F6B7C", Style::muted, "#FFFFFF"},
    {"forms/musicdetailedinfowidget.ui", "#4F6B7C", Style::muted, Style::panel},
    {"forms/showmusicinfowidget.ui", "#4F6B7C", Style::muted, "#F0F8FD"},
    {"forms/playsongwidget.ui", "#4F6B7C", Style::muted, "#F2F9FD"},
    {"src/dupmusicbarwidget.cpp", "Style::muted", Style::muted, Style::groupRow},
    {"art/palette.toml", "#567284", "#567284", Style::panel}, // hints in pictures
    {"art/palette.toml", "#3F6179", "#3F6179", "#E6F1F8"}};   // the side of the switch that is off

/// What buttons lie on: white, the navigation pane, the rows of a duplicate group.
const char* const grounds[] = {"#FFFFFF", "#F4F4F4", "#E7F7FF"};

QString resource(const QString& name)
{
    return QIOrvoUtil::getResourcePath() + '/' + name;
}

/// The file of a picture at a scale of 1 or 2.
QString fileOf(const QString& name, int scale)
{
    return scale == 1 ? resource(name) : SkinPicture::doubledPath(resource(name));
}

bool isListed(const QString& name)
{
    const auto named = [&](const Size& row) { return name == row.name; };
    return std::any_of(std::begin(pictures), std::end(pictures), named) ||
           std::any_of(std::begin(strips), std::end(strips), named);
}

/// The picture on a ground, pixel by pixel and without any transparency.
QImage laidOn(const QColor& ground, const QImage& picture)
{
    QImage laid(picture.size(), QImage::Format_RGB32);
    laid.fill(ground);
    QPainter(&laid).drawImage(laid.rect(), picture);
    return laid;
}

/// Levels from 0 to 255.
int farthestChannel(QRgb a, QRgb b)
{
    return qMax(qAbs(qRed(a) - qRed(b)), qMax(qAbs(qGreen(a) - qGreen(b)), qAbs(qBlue(a) - qBlue(b))));
}

/// What two opaque pictures of the same size differ by on average.
double meanDifference(const QImage& a, const QImage& b)
{
    qint64 sum = 0;
    for (int y = 0; y < a.height(); ++y) {
        const auto* lineA = reinterpret_cast<const QRgb*>(a.constScanLine(y));
        const auto* lineB = reinterpret_cast<const QRgb*>(b.constScanLine(y));
        for (int x = 0; x < a.width(); ++x)
            sum += farthestChannel(lineA[x], lineB[x]);
    }
    return double(sum) / (qint64(a.width()) * a.height());
}

/// The names in a source, each with its folder and extension: literals that end as pictures do, and those
/// that stand for a PNG without saying so.
QStringList picturesNamedIn(const QString& source)
{
    static const QRegularExpression literal(
        R"x((SkinPicture::path\()?"(/Image/|\\\\pic\\\\)?([A-Za-z0-9_]+)(\.png|\.gif)?")x");
    QStringList names;
    auto matches = literal.globalMatch(source);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        const QString folder = match.captured(2);
        const QString extension = match.captured(4);
        if (match.captured(1).isEmpty() && folder.isEmpty() && extension.isEmpty())
            continue;
        names.append((folder.contains("pic") ? "pic/" : "Image/") + match.captured(3) +
                     (extension.isEmpty() ? ".png" : extension));
    }
    return names;
}

/// As the file says; a movie would take its own lateness off.
QList<int> delaysOf(const QString& path)
{
    QList<int> delays;
    QImageReader timing(path);
    while (!timing.read().isNull())
        delays.append(timing.nextImageDelay());
    return delays;
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
    void everyPictureThatTheSourcesNameIsListed();
    void switchesGlideOnceAndEndAsTheButtonBegins_data();
    void switchesGlideOnceAndEndAsTheButtonBegins();
    void endlessAnimationsTurnSmoothly_data();
    void endlessAnimationsTurnSmoothly();
    void denseScreensGetTheDoubledPicture();
    void eitherSeparatorNamesAPicture();
    void wordsOfEveryButtonAreKnown();
    void captionsCanBeRead_data();
    void captionsCanBeRead();
    void formsAndCodeHaveOnePalette();
    void onlyTheStyleWritesColoursDown();

private:
    static void compareCells(const QImage& strip);
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
    for (const int scale : {1, 2})
        QCOMPARE(QImageReader(fileOf(name, scale)).read().size(), size * scale);
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
        const QImage strip(fileOf(name, scale));
        QCOMPARE(strip.size(), QSize(cell.width() * 4, cell.height()) * scale);
        for (const char* ground : grounds) {
            compareCells(laidOn(ground, strip));
            if (QTest::currentTestFailed())
                return;
        }
    }
}

void TestSkin::compareCells(const QImage& strip)
{
    constexpr double visible = 4;
    const int width = strip.width() / 4;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < i; ++j) {
            const double difference = meanDifference(strip.copy(i * width, 0, width, strip.height()),
                                                     strip.copy(j * width, 0, width, strip.height()));
            QVERIFY2(difference >= visible,
                     qPrintable(QString("cells %1 and %2 differ by %3").arg(j).arg(i).arg(difference)));
        }
}

void TestSkin::everyPictureThatTheSourcesNameIsListed()
{
    int found = 0;
    QDirIterator sources(QString(MELODRIFT_SOURCES), {"*.cpp", "*.h"}, QDir::Files,
                         QDirIterator::Subdirectories);
    while (sources.hasNext()) {
        QFile source(sources.next());
        QVERIFY(source.open(QIODevice::ReadOnly));
        for (const QString& name : picturesNamedIn(QString::fromUtf8(source.readAll()))) {
            if (name == "Image/name.png") // as a comment calls any picture
                continue;
            QVERIFY2(isListed(name), qPrintable(source.fileName() + " names " + name));
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
        const QString path = fileOf(movie, scale);
        const QList<QImage> frames = framesOf(path);
        const QList<int> delays = delaysOf(path);
        const int milliseconds = std::accumulate(delays.begin(), delays.end(), 0);
        QCOMPARE(QImageReader(path).loopCount(), 0);
        QVERIFY2(qAbs(milliseconds - 690) <= 40, qPrintable(QString::number(milliseconds)));
        QVERIFY(frames.size() * 1000 / 690 >= 25);
        const QImage strip(fileOf(next, scale));
        const QImage cell =
            strip.copy(0, 0, strip.width() / 4, strip.height()).convertToFormat(QImage::Format_ARGB32);
        int far = 0;
        for (int y = 0; y < cell.height(); ++y)
            for (int x = 0; x < cell.width(); ++x) {
                const QRgb wanted = cell.pixel(x, y);
                if (qAlpha(wanted) == 255)
                    far = qMax(far, farthestChannel(wanted, frames.last().pixel(x, y)));
            }
        QVERIFY2(far <= 4, qPrintable(QString::number(far)));
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
    for (const int scale : {1, 2}) {
        const QString path = fileOf(movie, scale);
        QMovie endless(path);
        endless.jumpToFrame(0);
        QCOMPARE(endless.loopCount(), -1);
        const QList<QImage> frames = framesOf(path);
        QVERIFY(frames.size() >= 20); // the file holds one turn
        for (int i = 0; i < frames.size(); ++i)
            QVERIFY(frames.at(i) != frames.at((i + 1) % frames.size()));
        for (const int delay : delaysOf(path))
            QVERIFY2(delay >= 20 && delay <= 100, qPrintable(QString::number(delay)));
    }
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

void TestSkin::captionsCanBeRead_data()
{
    QTest::addColumn<int>("number");
    int number = 0;
    for (const Caption& caption : captions)
        QTest::addRow("%s: %s", caption.source, caption.name) << number++;
}

void TestSkin::captionsCanBeRead()
{
    QFETCH(int, number);
    const Caption& caption = captions[number];
    QFile file(QString(MELODRIFT_SOURCES "/../") + caption.source);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY2(file.readAll().contains(caption.name), "the colour is another one now");
    if (*caption.name == '#')
        QCOMPARE(QColor(caption.name), caption.ink);
    const double measured = contrast(caption.ink, caption.ground);
    QVERIFY2(measured >= 4.5, qPrintable(QString::number(measured)));
}

/// A form cannot name the colours of the code: what it writes is one of them.
void TestSkin::formsAndCodeHaveOnePalette()
{
    const QStringList palette = {Style::ink.name(), Style::text.name(), Style::muted.name()};
    static const QRegularExpression literal("#[0-9A-Fa-f]{6}");
    QDirIterator forms(QString(MELODRIFT_SOURCES "/../forms"), {"*.ui"}, QDir::Files);
    int found = 0;
    while (forms.hasNext()) {
        QFile form(forms.next());
        QVERIFY(form.open(QIODevice::ReadOnly));
        auto matches = literal.globalMatch(QString::fromUtf8(form.readAll()));
        for (; matches.hasNext(); ++found) {
            const QString colour = matches.next().captured().toLower();
            QVERIFY2(palette.contains(colour), qPrintable(form.fileName() + " has " + colour));
        }
    }
    QVERIFY(found > 20);
}

/// Code takes its colours and families from one place.
void TestSkin::onlyTheStyleWritesColoursDown()
{
    static const QRegularExpression literal(
        R"x(#[0-9A-Fa-f]{6}\b|QColor\((0x)?[0-9A-Fa-f]+,|"(Tahoma|Arial)")x");
    QStringList others;
    QDirIterator sources(QString(MELODRIFT_SOURCES), {"*.cpp", "*.h"}, QDir::Files,
                         QDirIterator::Subdirectories);
    while (sources.hasNext()) {
        QFile source(sources.next());
        QVERIFY(source.open(QIODevice::ReadOnly));
        const bool isStyle = source.fileName().endsWith("/common/style.h");
        if (isStyle != literal.match(QString::fromUtf8(source.readAll())).hasMatch())
            others.append(source.fileName());
    }
    QVERIFY2(others.isEmpty(), qPrintable(others.join('\n')));
}

QTEST_MAIN(TestSkin)
#include "tst_skin.moc"
