#include "common/qimagebutton.h"
#include "common/qmessagedlg.h"
#include "qiorvoutil.h"

#include <QApplication>
#include <QMessageBox>
#include <QProcess>
#include <QScreen>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTextEdit>
#include <QTimer>
#include <QtTest>

namespace {
const char* const withoutPictures = "--without-pictures";

QImage skin(const char* name)
{
    return SkinPicture(QIOrvoUtil::getResourcePath() + "/pic/" + name).image(qApp->devicePixelRatio());
}

/// The colour of the pixel at a point.
QRgb at(const QImage& image, int x, int y)
{
    const qreal ratio = image.devicePixelRatio();
    return image.pixel(int(x * ratio), int(y * ratio));
}

/// But for the rounding of stretched pictures.
bool alike(QRgb a, QRgb b)
{
    return qAbs(qRed(a) - qRed(b)) <= 2 && qAbs(qGreen(a) - qGreen(b)) <= 2 && qAbs(qBlue(a) - qBlue(b)) <= 2;
}

QImage shown(QWidget& widget)
{
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

void drag(QWidget& dialog, const QPoint& from, const QPoint& by)
{
    const QPoint start = dialog.pos() + from;
    const auto send = [&dialog](QEvent::Type type, const QPoint& global, Qt::MouseButton button) {
        QMouseEvent event(type, dialog.mapFromGlobal(global), global, button, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&dialog, &event);
    };
    send(QEvent::MouseButtonPress, start, Qt::LeftButton);
    send(QEvent::MouseMove, start + by / 2, Qt::NoButton);
    send(QEvent::MouseMove, start + by, Qt::NoButton);
    send(QEvent::MouseButtonRelease, start + by, Qt::LeftButton);
}

/// The widget alone, without what lies behind it.
QImage bare(QWidget& widget)
{
    QImage image(widget.size() * widget.devicePixelRatioF(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(widget.devicePixelRatioF());
    image.fill(Qt::transparent);
    widget.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

/// Runs in a process of its own, from a folder where no picture lies.
int showWithoutPictures()
{
    QMessageDlg dialog;
    dialog.SetMessageStyle(0x200);
    dialog.SetMessageStyle(0x400);
    dialog.move(50, 50);
    drag(dialog, QPoint(20, 10), QPoint(30, 30));
    const bool moved = dialog.pos() != QPoint(50, 50);
    QTimer::singleShot(0, &dialog, [&dialog] {
        QTest::mouseClick(dialog.findChild<QImageButton*>("m_btnOk"), Qt::LeftButton);
    });
    const bool answered = dialog.exec() == 1;
    return !moved && answered ? 0 : 1;
}
} // namespace

class TestQMessageDlg : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_dialog.reset(); }

    void hasItsDefaults();
    void theFlagsChooseTheButtons_data();
    void theFlagsChooseTheButtons();
    void onlyTheFirstButtonAnswersOne_data();
    void onlyTheFirstButtonAnswersOne();
    void theTextIsPlain();
    void theLongestLineInCharactersGivesTheWidth();
    void everyLineHasRoom_data();
    void everyLineHasRoom();
    void aVeryLongMessageStaysOnTheScreen_data();
    void aVeryLongMessageStaysOnTheScreen();
    void aLargerFontGetsMoreRoom();
    void theTitleStripDragsTheBox_data();
    void theTitleStripDragsTheBox();
    void theBorderIsPaintedFromThePictures();
    void aLongTitleEndsBeforeTheCloseButton();
    void missingPicturesAreLogged();
    void theInformationBoxShowsTextAndTitle();

private:
    QImageButton* button(const char* name) const { return m_dialog->findChild<QImageButton*>(name); }
    QTextEdit* message() const { return m_dialog->findChild<QTextEdit*>("m_textMessage"); }

    std::unique_ptr<QMessageDlg> m_dialog;
};

void TestQMessageDlg::init()
{
    m_dialog = std::make_unique<QMessageDlg>();
}

void TestQMessageDlg::hasItsDefaults()
{
    QCOMPARE(m_dialog->windowTitle(), QString("Zarnovik Fetcher"));
    QVERIFY(m_dialog->windowFlags() & Qt::FramelessWindowHint);
    QVERIFY(QMessageDlg::GetAppPath().isEmpty());
    QCOMPARE(button("m_btnOk")->accessibleName(), QString("OK"));
    QCOMPARE(button("m_btnClose")->toolTip(), QString("Close"));
    m_dialog->SetTitle("Title");
    QCOMPARE(m_dialog->windowTitle(), QString("Title"));
    m_dialog->SetMessage("Message");
    QCOMPARE(message()->toPlainText(), QString("Message"));
    QCOMPARE(m_dialog->accessibleDescription(), QString("Message"));
}

void TestQMessageDlg::theFlagsChooseTheButtons_data()
{
    QTest::addColumn<unsigned int>("flags");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<QString>("firstPicture");
    QTest::addColumn<QString>("secondPicture");
    const auto row = [](const char* name, unsigned int flags, const char* first, const char* second,
                        const char* firstPicture, const char* secondPicture) {
        QTest::newRow(name) << flags << QString(first) << QString(second) << QString(firstPicture)
                            << QString(secondPicture);
    };
    row("restart", 0x200, "Restart", "Restart later", "button_Restart.png", "button_Restart_later.png");
    row("restart wins", 0x600, "Restart", "Restart later", "button_Restart.png", "button_Restart_later.png");
    row("yes or no", 0x400, "Yes", "No", "button_yes.png", "button_no.png");
    row("neither", 0, "OK", "Cancel", "button_ok.png", "button_cancel.png");
    row("others", 0x901, "OK", "Cancel", "button_ok.png", "button_cancel.png");
}

void TestQMessageDlg::theFlagsChooseTheButtons()
{
    QFETCH(unsigned int, flags);
    QFETCH(QString, first);
    QFETCH(QString, second);
    QFETCH(QString, firstPicture);
    QFETCH(QString, secondPicture);
    m_dialog->SetMessageStyle(flags);
    QCOMPARE(button("m_btnOk")->accessibleName(), first);
    QCOMPARE(button("m_btnCancel")->accessibleName(), second);
    const auto looks = [](QWidget* widget, const QString& picture) {
        QImageButton expected;
        expected.setBtnImage(QIOrvoUtil::getResourcePath() + "/pic/" + picture);
        return widget->size() == QSize(90, 28) && bare(*widget) == bare(expected);
    };
    QVERIFY(looks(button("m_btnOk"), firstPicture));
    QVERIFY(looks(button("m_btnCancel"), secondPicture));
}

void TestQMessageDlg::onlyTheFirstButtonAnswersOne_data()
{
    QTest::addColumn<unsigned int>("flags");
    QTest::addColumn<QString>("way");
    QTest::addColumn<int>("answer");
    for (const unsigned int flags : {0u, 0x200u, 0x400u})
        for (const char* way : {"m_btnOk", "m_btnCancel", "m_btnClose", "escape", "enter"})
            QTest::addRow("%s, style %x", way, flags)
                << flags << QString(way) << int(QString(way) == "m_btnOk" || QString(way) == "enter");
}

void TestQMessageDlg::onlyTheFirstButtonAnswersOne()
{
    QFETCH(unsigned int, flags);
    QFETCH(QString, way);
    QFETCH(int, answer);
    m_dialog->SetMessage("Text");
    m_dialog->SetMessageStyle(flags);
    QTimer::singleShot(0, m_dialog.get(), [this, way] {
        if (way == "escape")
            QTest::keyClick(m_dialog.get(), Qt::Key_Escape);
        else if (way == "enter")
            QTest::keyClick(m_dialog.get(), Qt::Key_Return);
        else
            QTest::mouseClick(m_dialog->findChild<QImageButton*>(way), Qt::LeftButton);
    });
    QCOMPARE(m_dialog->exec(), answer);
    QVERIFY(!m_dialog->isVisible());
}

void TestQMessageDlg::theTextIsPlain()
{
    m_dialog->SetMessage("<b>1 < 2</b>\r\n&amp;");
    QCOMPARE(message()->toPlainText(), QString("<b>1 < 2</b>\n&amp;"));
    QVERIFY(message()->isReadOnly());
}

void TestQMessageDlg::theLongestLineInCharactersGivesTheWidth()
{
    const QString narrow = QString("i").repeated(120);
    const QString wide = QString("W").repeated(45);
    const auto width = [this](const QString& text) {
        m_dialog->SetMessage(text);
        return m_dialog->width();
    };
    const int asNarrow = width(narrow);
    QVERIFY(m_dialog->fontMetrics().horizontalAdvance(wide) >
            m_dialog->fontMetrics().horizontalAdvance(narrow));
    QVERIFY(width(wide) > asNarrow);
    // Fewer characters do not count, however wide they are.
    QCOMPARE(width(narrow + '\n' + wide), asNarrow);
    QCOMPARE(width(wide + '\n' + narrow), asNarrow);
    QVERIFY(message()->width() >= m_dialog->fontMetrics().horizontalAdvance(narrow));
    QCOMPARE(width(""), width("A short text"));
}

void TestQMessageDlg::everyLineHasRoom_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("lines");
    QTest::newRow("none") << "" << 1;
    QTest::newRow("one") << "The update has been installed." << 1;
    QTest::newRow("two") << "The update has been installed.\nRestart now?" << 2;
    QTest::newRow("empty ones count") << "First\n\n\nFourth\n" << 5;
    QTest::newRow("a wide one with few characters wraps")
        << QString("i").repeated(120) + '\n' + QString("W").repeated(50) << 3;
    QTest::newRow("twenty") << QString("A line of the message\n").repeated(19) + "and the last" << 20;
}

void TestQMessageDlg::everyLineHasRoom()
{
    QFETCH(QString, text);
    QFETCH(int, lines);
    m_dialog->SetMessage(text);
    m_dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_dialog.get(), patience));
    QVERIFY(message()->height() >= lines * (m_dialog->fontMetrics().height() - 1));
    QVERIFY(message()->height() < (lines + 1) * (m_dialog->fontMetrics().lineSpacing() + 1));
    QCOMPARE(message()->verticalScrollBar()->maximum(), 0);
    QCOMPARE(message()->horizontalScrollBar()->maximum(), 0);
    QVERIFY(message()->geometry().bottom() < button("m_btnOk")->y());
    QVERIFY(m_dialog->rect().contains(message()->geometry()));
    QVERIFY(m_dialog->rect().contains(button("m_btnOk")->geometry()));
    QVERIFY(m_dialog->rect().contains(button("m_btnCancel")->geometry()));
    QVERIFY(button("m_btnOk")->geometry().right() < button("m_btnCancel")->x());
}

void TestQMessageDlg::aVeryLongMessageStaysOnTheScreen_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("one word") << QString("x").repeated(5000000);
    QTest::newRow("words") << QString("word ").repeated(1000000);
    QTest::newRow("lines") << QString("line\n").repeated(1000000);
    QTest::newRow("line feeds") << QString("\n").repeated(5000000);
}

void TestQMessageDlg::aVeryLongMessageStaysOnTheScreen()
{
    QFETCH(QString, text);
    m_dialog->SetMessage(text);
    m_dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_dialog.get(), patience));
    const QSize screen = m_dialog->screen()->availableSize();
    QVERIFY(m_dialog->width() < screen.width());
    QVERIFY(m_dialog->height() < screen.height());
    QVERIFY(message()->verticalScrollBar()->maximum() > 0);
    QCOMPARE(message()->horizontalScrollBar()->maximum(), 0);
    QVERIFY(message()->toPlainText().size() >= qMin(text.size(), 30000));
    // It can be read to its end by keyboard alone.
    message()->setFocus();
    QTest::keyClick(message(), Qt::Key_End);
    QTRY_COMPARE(message()->verticalScrollBar()->value(), message()->verticalScrollBar()->maximum());
}

void TestQMessageDlg::aLargerFontGetsMoreRoom()
{
    m_dialog->SetMessage(QString("A line of some length, longer than the least width\n").repeated(3));
    const QSize before = m_dialog->size();
    m_dialog->setFont(QFont(m_dialog->font().family(), 18));
    QVERIFY(m_dialog->width() > before.width());
    QVERIFY(m_dialog->height() > before.height());
}

void TestQMessageDlg::theTitleStripDragsTheBox_data()
{
    QTest::addColumn<QPoint>("from");
    QTest::addColumn<bool>("moves");
    QTest::newRow("top row") << QPoint(100, 0) << true;
    QTest::newRow("middle") << QPoint(100, 16) << true;
    QTest::newRow("last row") << QPoint(1, 31) << true;
    QTest::newRow("below") << QPoint(100, 32) << false;
    QTest::newRow("far below") << QPoint(100, 70) << false;
}

void TestQMessageDlg::theTitleStripDragsTheBox()
{
    QFETCH(QPoint, from);
    QFETCH(bool, moves);
    m_dialog->move(60, 40);
    m_dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_dialog.get(), patience));
    const QPoint start = m_dialog->pos();
    drag(*m_dialog, from, QPoint(31, -12));
    QCOMPARE(m_dialog->pos(), moves ? start + QPoint(31, -12) : start);
}

void TestQMessageDlg::theBorderIsPaintedFromThePictures()
{
    m_dialog->SetMessage("Message");
    const QImage box = shown(*m_dialog);
    const int right = m_dialog->width() - 1;
    const int bottom = m_dialog->height() - 1;
    QCOMPARE(box.size(), m_dialog->size() * qApp->devicePixelRatio());
    const QRgb line = skin("message_bottom.png").pixel(0, 0);
    for (const QPoint& edge : {QPoint(0, 60), QPoint(right, 60), QPoint(70, bottom), QPoint(0, bottom),
                               QPoint(right, bottom), QPoint(0, 0), QPoint(right, 0)})
        QCOMPARE(at(box, edge.x(), edge.y()), line);
    QVERIFY(at(box, 1, 60) != line);
    QVERIFY(at(box, right - 1, 60) != line);
    QVERIFY(at(box, 70, bottom - 1) != line);
    // The strip at the full density of the screen, row by row.
    const QImage strip = skin("message_top.png");
    const int ratio = int(qApp->devicePixelRatio());
    QCOMPARE(strip.height(), 32 * ratio);
    for (int row = 0; row < strip.height(); ++row)
        QVERIFY(alike(box.pixel((right - 45) * ratio, row), strip.pixel(5, row)));
    QVERIFY(at(box, 20, 16) != at(box, 5, 16)); // the icon
}

void TestQMessageDlg::aLongTitleEndsBeforeTheCloseButton()
{
    m_dialog->SetTitle(QString("WIDE ").repeated(500));
    QVERIFY(m_dialog->width() <= 600);
    const QImage longTitle = shown(*m_dialog);
    const int close = button("m_btnClose")->x();
    QVERIFY(close > 400);
    const QRgb ground = at(longTitle, close - 1, 16);
    for (int y = 6; y < 26; ++y)
        for (int x = close - 9; x < close; ++x)
            QVERIFY(qAbs(qRed(at(longTitle, x, y)) - qRed(ground)) < 60);
}

void TestQMessageDlg::missingPicturesAreLogged()
{
    // The pictures lie beside the program, so a copy of it elsewhere has none.
    QTemporaryDir elsewhere;
    const QString copy = elsewhere.filePath(QFileInfo(QCoreApplication::applicationFilePath()).fileName());
    QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), copy));
    QProcess bare;
    bare.start(copy, {withoutPictures});
    QVERIFY(bare.waitForFinished(patience));
    const QByteArray log = bare.readAllStandardError();
    QVERIFY2(bare.exitStatus() == QProcess::NormalExit && bare.exitCode() == 0, log);
    QStringList failures;
    for (const QByteArray& line : log.split('\n'))
        if (line.startsWith("QMessageDlg::"))
            failures.append(line.trimmed());
    QCOMPARE(failures, QStringList({"QMessageDlg::LoadBorderImg fail", "QMessageDlg::InitButton fail",
                                    "QMessageDlg::InitButton Load Cancel Image fail",
                                    "QMessageDlg::InitButton Load Restart Image fail",
                                    "QMessageDlg::InitButton Load Yes Image fail"}));
}

void TestQMessageDlg::theInformationBoxShowsTextAndTitle()
{
    bool seen = false;
    QTimer::singleShot(0, this, [&seen] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        QVERIFY(box);
        seen = true;
        QTimer::singleShot(0, box, SLOT(accept())); // also when a comparison below fails
        QCOMPARE(box->text(), QString::fromUtf8("Grüße <b>"));
        QCOMPARE(box->windowTitle(), QString::fromUtf8("Tïtle"));
        QCOMPARE(box->icon(), QMessageBox::Information);
        QCOMPARE(box->standardButtons(), QMessageBox::Ok);
        QCOMPARE(box->textFormat(), Qt::PlainText);
        QVERIFY(!box->parent());
        QVERIFY(!box->defaultButton());
    });
    ShowMessage("Gr\xC3\xBC\xC3\x9F"
                "e <b>",
                "T\xC3\xAF"
                "tle",
                0x200);
    QVERIFY(seen);
}

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    if (application.arguments().value(1) == withoutPictures)
        return showWithoutPictures();
    TestQMessageDlg test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}
#include "tst_qmessagedlg.moc"
