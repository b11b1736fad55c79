#include "common/qimagewidget.h"
#include "common/retractlabel.h"
#include "common/screenplace.h"
#include "covers/coverloader.h"
#include "showmusicinfowidget.h"
#include "songfixtures.h"
#include "songs/songcover.h"
#include "startup.h"

#include <QTemporaryDir>
#include <QtTest>

class TestShowMusicInfoWidget : public QObject
{
    Q_OBJECT

public:
    static void initMain() { Startup::beforeApplication(); }

private slots:
    void initTestCase();

    void isACardWithoutAFrame();
    void showsTheSong_data();
    void showsTheSong();
    void lyricsAreNotFilled();
    void aMissingCoverShowsTheGenericOne();
    void showsTheCover();
    void everyCaptionFits();
    void aPressAnywhereClosesIt();
    void escapeClosesIt();
    void windowsStayOnTheScreen_data();
    void windowsStayOnTheScreen();

private:
    static QString textOf(const ShowMusicInfoWidget& card, const char* label)
    {
        return card.findChild<RetractLabel*>(label)->getName();
    }
};

void TestShowMusicInfoWidget::initTestCase()
{
    Startup::afterApplication();
    Fixtures::genericCover();
}

void TestShowMusicInfoWidget::isACardWithoutAFrame()
{
    QWidget row;
    ShowMusicInfoWidget card(&row);
    QVERIFY(card.isWindow());
    QCOMPARE(card.windowTitle(), QStringLiteral("Melodrift"));
    QVERIFY(card.windowFlags().testFlag(Qt::FramelessWindowHint));
    QCOMPARE(card.windowFlags() & Qt::WindowType_Mask, Qt::WindowFlags(Qt::Dialog));
    QVERIFY(card.testAttribute(Qt::WA_TranslucentBackground));
    QCOMPARE(card.size(), QSize(300, 230));
    const QImage render = card.grab().toImage();
    QVERIFY(render.pixelColor(150, 100).alpha() > 250);
}

void TestShowMusicInfoWidget::showsTheSong_data()
{
    QTest::addColumn<bool>("local");
    QTest::newRow("iTunes") << false;
    QTest::newRow("local") << true;
}

void TestShowMusicInfoWidget::showsTheSong()
{
    QFETCH(bool, local);
    const Fixtures::ModeGuard mode(local);
    const auto song = Fixtures::makeSong(local);
    ShowMusicInfoWidget card;
    card.setMusicInfo(&song->info);
    QCOMPARE(textOf(card, "m_labName"), QString::fromUtf8("Täxt"));
    QCOMPARE(textOf(card, "m_labArtist"), QStringLiteral("Artist"));
    QCOMPARE(textOf(card, "m_labAlbum"), QStringLiteral("Album"));
    QCOMPARE(textOf(card, "m_labGenre"), QStringLiteral("Genre"));
    QCOMPARE(textOf(card, "m_labYear"), QStringLiteral("1999"));
    QCOMPARE(textOf(card, "m_labTrack"), QStringLiteral("7"));
}

void TestShowMusicInfoWidget::lyricsAreNotFilled()
{
    const Fixtures::ModeGuard mode(true);
    const auto song = Fixtures::makeSong(true);
    ShowMusicInfoWidget card;
    card.setMusicInfo(&song->info);
    QVERIFY(textOf(card, "m_labLyrics").isEmpty());
}

void TestShowMusicInfoWidget::aMissingCoverShowsTheGenericOne()
{
    const Fixtures::ModeGuard mode(true);
    const QTemporaryDir folder;
    const auto song = Fixtures::makeSong(true);
    QCOMPARE(SongCover::shownPath(&song->info), CoverLoader::genericCoverPath());
    song->info.localInfo->coverPath = folder.filePath("gone");
    QCOMPARE(SongCover::shownPath(&song->info), CoverLoader::genericCoverPath());
    song->info.localInfo->coverPath = Fixtures::saveBytes("no picture", folder.filePath("text"));
    QCOMPARE(SongCover::shownPath(&song->info), CoverLoader::genericCoverPath());
    QCOMPARE(SongCover::shownPath(nullptr), CoverLoader::genericCoverPath());
}

void TestShowMusicInfoWidget::showsTheCover()
{
    const Fixtures::ModeGuard mode(true);
    const QTemporaryDir folder;
    Fixtures::Texts texts;
    texts.coverPath =
        Fixtures::savePicture(Fixtures::plain(50, 50, QColor(200, 10, 20)), folder.filePath("cover"));
    const auto song = Fixtures::makeSong(true, texts);
    ShowMusicInfoWidget card;
    card.setMusicInfo(&song->info);
    const auto* cover = card.findChild<QImageWidget*>("m_coverWidget");
    QCOMPARE(card.grab().toImage().pixelColor(cover->geometry().center()), QColor(200, 10, 20));
}

void TestShowMusicInfoWidget::everyCaptionFits()
{
    ShowMusicInfoWidget card;
    QStringList captions;
    for (const QLabel* label : card.findChildren<QLabel*>()) {
        if (qobject_cast<const RetractLabel*>(label))
            continue;
        captions.append(label->text());
        QVERIFY2(label->sizeHint().width() <= label->width(), qPrintable(label->text()));
    }
    QCOMPARE(captions,
             QStringList({"Title:", "Artist:", "Album:", "Genre:", "Year:", "Track NO:", "Lyrics:"}));
}

void TestShowMusicInfoWidget::aPressAnywhereClosesIt()
{
    ShowMusicInfoWidget card;
    for (const char* name : {"m_coverWidget", "m_labName", "label"}) {
        card.show();
        QVERIFY(QTest::qWaitForWindowExposed(&card, patience));
        QTest::mousePress(card.windowHandle(), Qt::LeftButton, Qt::NoModifier,
                          card.findChild<QWidget*>(name)->geometry().center());
        QVERIFY2(!card.isVisible(), name);
        QTest::mouseRelease(&card, Qt::LeftButton);
    }
}

void TestShowMusicInfoWidget::escapeClosesIt()
{
    ShowMusicInfoWidget card;
    card.show();
    QTest::keyClick(&card, Qt::Key_Control);
    QVERIFY(card.isVisible());
    QTest::keyClick(&card, Qt::Key_Escape);
    QVERIFY(!card.isVisible());
}

void TestShowMusicInfoWidget::windowsStayOnTheScreen_data()
{
    QTest::addColumn<QRect>("window");
    QTest::addColumn<QPoint>("place");
    QTest::newRow("inside") << QRect(500, 300, 300, 230) << QPoint(500, 300);
    QTest::newRow("left of it") << QRect(-250, 300, 300, 230) << QPoint(0, 300);
    QTest::newRow("above") << QRect(500, -1, 300, 230) << QPoint(500, 20);
    QTest::newRow("beyond the right bottom") << QRect(1900, 1070, 300, 230) << QPoint(1620, 850);
    QTest::newRow("too large") << QRect(-5, -5, 3000, 2000) << QPoint(0, 20);
}

void TestShowMusicInfoWidget::windowsStayOnTheScreen()
{
    QFETCH(QRect, window);
    QFETCH(QPoint, place);
    QCOMPARE(ScreenPlace::inside(window, QRect(0, 20, 1920, 1060)), place);
}

QTEST_MAIN(TestShowMusicInfoWidget)
#include "tst_showmusicinfowidget.moc"
