#include "common/skinpicture.h"
#include "mainwindow.h"
#include "programwindow.h"
#include "startup.h"

#include <QApplication>
#include <QDesktopWidget>
#include <QIcon>
#include <QPainter>
#include <QtTest>

/// What the program's window looks like and where it stands, before anything is done with it.
class TestProgramWindow : public QObject
{
    Q_OBJECT

public:
    static void initMain() { Startup::beforeApplication(); }

private slots:
    void initTestCase();
    void theApplicationHasItsIcon();
    void itStandsInTheMiddleOfTheDesktop();
    void itIsNeverSmallerThanItsSkin();
    void itPaintsItsPictures_data();
    void itPaintsItsPictures();

private:
    /// The window without what lies in it, whose parts cover some of the pictures.
    QImage painted() const;

    std::unique_ptr<MainWindow> m_window;
};

void TestProgramWindow::initTestCase()
{
    Startup::afterApplication();
    QVERIFY(QApplication::windowIcon().isNull());
    m_window = makeProgramWindow();
}

QImage TestProgramWindow::painted() const
{
    QImage image(m_window->size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::magenta);
    m_window->render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

void TestProgramWindow::theApplicationHasItsIcon()
{
    const QIcon logo(SkinPicture::path("logo.png"));
    const QSize size(256, 256);
    QVERIFY(logo.availableSizes().contains(size));
    QCOMPARE(m_window->windowIcon().pixmap(size).toImage(), logo.pixmap(size).toImage());
}

void TestProgramWindow::itStandsInTheMiddleOfTheDesktop()
{
    const QSize desktop = QApplication::desktop()->size();
    QCOMPARE(m_window->pos(), QPoint((desktop.width() - 1120) / 2, (desktop.height() - 713) / 2));
    QVERIFY(m_window->pos() != QPoint(0, 0)); // where every other window starts
    QVERIFY(!m_window->isVisible());
}

void TestProgramWindow::itIsNeverSmallerThanItsSkin()
{
    QCOMPARE(m_window->minimumSize(), QSize(1000, 700));
}

void TestProgramWindow::itPaintsItsPictures_data()
{
    QTest::addColumn<QString>("picture");
    QTest::addColumn<QRect>("place");
    QTest::newRow("head") << "bg_banner.png" << QRect(0, 0, 1120, 102);
    QTest::newRow("foot") << "bg_foot.png" << QRect(0, 713 - 26, 1120, 26);
    QTest::newRow("right column") << "bg_right_nofile.png" << QRect(1120 - 329, 102, 330, 713 - 128);
}

void TestProgramWindow::itPaintsItsPictures()
{
    QFETCH(QString, picture);
    QFETCH(QRect, place);
    QImage expected(m_window->size(), QImage::Format_ARGB32_Premultiplied);
    expected.fill(Qt::magenta);
    QPainter(&expected).drawImage(place, QImage(SkinPicture::path(qPrintable(picture))));
    QImage empty(place.size(), expected.format());
    empty.fill(Qt::magenta);
    QVERIFY(expected.copy(place) != empty);
    QCOMPARE(painted().copy(place), expected.copy(place));
}

QTEST_MAIN(TestProgramWindow)
#include "tst_programwindow.moc"
