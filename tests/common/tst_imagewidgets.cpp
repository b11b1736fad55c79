#include "common/choicebutton.h"
#include "common/qimagebutton.h"
#include "common/qimagedialog.h"
#include "common/qimagewidget.h"
#include "common/skinpicture.h"
#include "fixtures.h"

#include <QFile>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

namespace {
const QRgb cellColours[] = {qRgb(10, 200, 10), qRgb(200, 200, 10), qRgb(10, 10, 200), qRgb(120, 120, 120)};

/// Lets a test set what nothing in the program sets.
class MovableDialog : public QImageDialog
{
public:
    using QImageDialog::m_bMoveEnable;
    using QImageDialog::QImageDialog;
};
} // namespace

class TestImageWidgets : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void aButtonTakesAQuarterOfItsStrip();
    void aMissingStripKeepsTheSizeAndPaintsTheCaptionAlone();
    void anOddStripRoundsDown();
    void theStateFollowsTheMouse();
    void leavingPressedKeepsThePressedLook();
    void disablingShowsTheFourthCellAndEnablingTheFirst();
    void theFourthCellOfAChoiceIsTheChosenLook();
    void aChoiceThatIsLockedIsFaint();
    void otherButtonsDoNotPress();
    void aDoubleClickChangesFilesByOneButtonOnly();
    void clicksAndKeysWorkAsOnEveryButton();
    void theCaptionStartsAtItsPoint();
    void withoutAStripTheBaseButtonPaintsItself();
    void namesAndToolTipsComeFromThePicture();
    void aDialogTakesTheSizeOfItsFace();
    void aDialogMovesByItsTitleBandOnlyWhenEnabled();
    void aWidgetShowsItsPictureScaled();
    void oneStripIsReadOnceForAllButtons();
    void aPictureBeyondTheLimitIsNone();
    void aWidgetReportsEveryPress();
    void aGrabbedWidgetFollowsThePointer();
    void theApplicationPathIsKnownOnceAWidgetWasMade();

private:
    QString path(const char* name) const { return m_folder.filePath(name); }
    static QRgb centre(QWidget& widget) { return widget.grab().toImage().pixel(widget.width() - 5, 5); }

    QTemporaryDir m_folder;
};

void TestImageWidgets::initTestCase()
{
    QImage strip(400, 40, QImage::Format_RGB32);
    for (int cell = 0; cell < 4; ++cell)
        for (int x = 0; x < 100; ++x)
            for (int y = 0; y < 40; ++y)
                strip.setPixel(cell * 100 + x, y, cellColours[cell]);
    QVERIFY(strip.save(path("strip.png")));
    QVERIFY(strip.copy(0, 0, 399, 40).save(path("odd.png")));
    QVERIFY(strip.copy(0, 0, 200, 120).save(path("face.png")));
}

void TestImageWidgets::aButtonTakesAQuarterOfItsStrip()
{
    QImageButton button;
    QVERIFY(button.setBtnImage(path("strip.png")));
    QCOMPARE(button.size(), QSize(100, 40));
    QCOMPARE(button.minimumSize(), button.maximumSize());
    QCOMPARE(centre(button), cellColours[0]);
}

void TestImageWidgets::aMissingStripKeepsTheSizeAndPaintsTheCaptionAlone()
{
    QImageButton button;
    QVERIFY(button.setBtnImage(path("strip.png")));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("does not load"));
    QVERIFY(!button.setBtnImage(path("missing.png")));
    QCOMPARE(button.size(), QSize(100, 40));
    const QImage bare = button.grab().toImage();
    button.setBtnText("X");
    QVERIFY(button.grab().toImage() != bare);
}

void TestImageWidgets::anOddStripRoundsDown()
{
    QImageButton button;
    QVERIFY(button.setBtnImage(path("odd.png")));
    QCOMPARE(button.width(), 99);
}

void TestImageWidgets::theStateFollowsTheMouse()
{
    QImageButton button;
    button.setBtnImage(path("strip.png"));
    QEvent enter(QEvent::Enter);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(&button, &enter);
    QCOMPARE(button.state(), int(QImageButton::StateHover));
    QCOMPARE(centre(button), cellColours[1]);
    QTest::mousePress(&button, Qt::LeftButton);
    QCOMPARE(button.state(), int(QImageButton::StatePressed));
    QCOMPARE(centre(button), cellColours[2]);
    QTest::mouseRelease(&button, Qt::LeftButton);
    // Not hover, although the pointer is still there.
    QCOMPARE(button.state(), int(QImageButton::StateNormal));
    QApplication::sendEvent(&button, &enter);
    QApplication::sendEvent(&button, &leave);
    QCOMPARE(button.state(), int(QImageButton::StateNormal));
    QTest::mousePress(&button, Qt::LeftButton);
    QApplication::sendEvent(&button, &enter);
    QCOMPARE(button.state(), int(QImageButton::StateHover));
}

void TestImageWidgets::leavingPressedKeepsThePressedLook()
{
    QImageButton button;
    button.setBtnImage(path("strip.png"));
    QTest::mousePress(&button, Qt::LeftButton);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(&button, &leave);
    QCOMPARE(button.state(), int(QImageButton::StatePressed));
    QTest::mouseRelease(&button, Qt::LeftButton, Qt::NoModifier, QPoint(500, 500));
    QCOMPARE(button.state(), int(QImageButton::StateNormal));
}

void TestImageWidgets::disablingShowsTheFourthCellAndEnablingTheFirst()
{
    QImageButton button;
    button.setBtnImage(path("strip.png"));
    QEvent enter(QEvent::Enter);
    QApplication::sendEvent(&button, &enter);
    button.setEnabled(false);
    QCOMPARE(button.state(), int(QImageButton::StateDisabled));
    QCOMPARE(centre(button), cellColours[3]);
    QApplication::sendEvent(&button, &enter);
    QCOMPARE(button.state(), int(QImageButton::StateDisabled));
    button.setEnabled(true);
    QCOMPARE(button.state(), int(QImageButton::StateNormal));
    QCOMPARE(centre(button), cellColours[0]);
}

void TestImageWidgets::theFourthCellOfAChoiceIsTheChosenLook()
{
    ChoiceButton button;
    button.setBtnImage(path("strip.png"));
    for (const bool enabled : {true, false, true}) {
        button.setEnabled(enabled);
        button.setChosen(true);
        QCOMPARE(centre(button), cellColours[3]);
    }
    button.setChosen(false);
    QCOMPARE(centre(button), cellColours[0]);
    QEvent enter(QEvent::Enter);
    QApplication::sendEvent(&button, &enter);
    QCOMPARE(centre(button), cellColours[1]);
}

/// The chosen one only with all around it: it is disabled anyway.
void TestImageWidgets::aChoiceThatIsLockedIsFaint()
{
    QWidget pane;
    pane.setPalette(Qt::white);
    pane.resize(200, 40);
    auto* const chosen = new ChoiceButton(&pane);
    auto* const other = new ChoiceButton(&pane);
    chosen->setBtnImage(path("strip.png"));
    other->setBtnImage(path("strip.png"));
    other->move(100, 0);
    chosen->setEnabled(false);
    chosen->setChosen(true);
    const auto colours = [&] {
        const QImage shown = pane.grab().toImage();
        return QVector<QRgb>{shown.pixel(50, 20), shown.pixel(150, 20)};
    };
    const QVector<QRgb> open = {cellColours[3], cellColours[0]};
    QCOMPARE(colours(), open);
    pane.setEnabled(false);
    const QVector<QRgb> locked = colours();
    for (int i = 0; i < 2; ++i)
        QVERIFY(qGray(locked.at(i)) > qGray(open.at(i)) + 40);
    QVERIFY(locked.at(0) != locked.at(1)); // which one is chosen is still to be seen
    pane.setEnabled(true);
    QCOMPARE(colours(), open);
    other->setEnabled(false);
    QCOMPARE(colours(), (QVector<QRgb>{open.at(0), locked.at(1)}));
}

void TestImageWidgets::otherButtonsDoNotPress()
{
    QImageButton button;
    button.setBtnImage(path("strip.png"));
    QTest::mousePress(&button, Qt::RightButton);
    QCOMPARE(button.state(), int(QImageButton::StateNormal));
}

/// Where another button has come in the place of the first one, its second press is for that one unless it
/// would change files.
void TestImageWidgets::aDoubleClickChangesFilesByOneButtonOnly()
{
    QImageButton first;
    QImageButton second;
    for (QImageButton* button : {&first, &second}) {
        button->setBtnImage(path("strip.png"));
        button->show();
    }
    const auto doubleClick = [](QImageButton& button) {
        QMouseEvent press(QEvent::MouseButtonDblClick, QPointF(5, 5), Qt::LeftButton, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&button, &press);
        QTest::mouseRelease(&button, Qt::LeftButton, {}, {5, 5});
    };
    QSignalSpy firstClicks(&first, SIGNAL(clicked()));
    QSignalSpy secondClicks(&second, SIGNAL(clicked()));
    QTest::mouseClick(&first, Qt::LeftButton, {}, {5, 5});
    doubleClick(second);
    QCOMPARE(secondClicks.size(), 1);
    secondClicks.clear();
    first.setChangesFiles(true);
    second.setChangesFiles(true);
    QTest::mouseClick(&first, Qt::LeftButton, {}, {5, 5});
    firstClicks.clear();
    doubleClick(second);
    QCOMPARE(secondClicks.size(), 0);
    doubleClick(first);
    QCOMPARE(firstClicks.size(), 1);
    QTest::mouseClick(&second, Qt::LeftButton, {}, {5, 5});
    QCOMPARE(secondClicks.size(), 1);
}

void TestImageWidgets::clicksAndKeysWorkAsOnEveryButton()
{
    QImageButton button;
    button.setBtnImage(path("strip.png"));
    QSignalSpy clicked(&button, SIGNAL(clicked()));
    QTest::mouseClick(&button, Qt::LeftButton);
    QTest::keyClick(&button, Qt::Key_Space);
    QCOMPARE(clicked.count(), 2);
    button.setEnabled(false);
    QTest::mouseClick(&button, Qt::LeftButton);
    QCOMPARE(clicked.count(), 2);
    QVERIFY(button.focusPolicy() & Qt::TabFocus);
}

void TestImageWidgets::theCaptionStartsAtItsPoint()
{
    QImageButton button;
    button.setBtnImage(path("strip.png"));
    const QImage bare = button.grab().toImage();
    button.setBtnText("H");
    const QImage captioned = button.grab().toImage();
    QRect changed;
    for (int x = 0; x < bare.width(); ++x)
        for (int y = 0; y < bare.height(); ++y)
            if (bare.pixel(x, y) != captioned.pixel(x, y))
                changed |= QRect(x, y, 1, 1);
    QVERIFY(changed.left() >= 32 && changed.left() <= 34);
    QCOMPARE(changed.bottom(), 26); // the baseline is at 27
    QCOMPARE(button.accessibleName(), QString("H"));
}

void TestImageWidgets::withoutAStripTheBaseButtonPaintsItself()
{
    QImageButton button;
    button.resize(100, 40);
    const QImage bare = button.grab().toImage();
    button.setBtnText("Caption");
    QCOMPARE(button.grab().toImage(), bare);
}

void TestImageWidgets::namesAndToolTipsComeFromThePicture()
{
    QVERIFY(QFile::copy(path("strip.png"), path("button_ok.png")));
    QVERIFY(QFile::copy(path("strip.png"), path("button_preview_left.png")));
    QImageButton button;
    button.setBtnImage(path("button_ok.png"));
    QCOMPARE(button.accessibleName(), QString("OK"));
    QVERIFY(button.toolTip().isEmpty());
    button.setBtnImage(path("button_preview_left.png"));
    QVERIFY(!button.toolTip().isEmpty());
    // A name without an extension stands for a PNG.
    QVERIFY(button.setBtnImage(path("button_ok")));
}

void TestImageWidgets::aDialogTakesTheSizeOfItsFace()
{
    QImageDialog dialog;
    QVERIFY(dialog.SetImageBackgroud(path("face.png")));
    QCOMPARE(dialog.size(), QSize(200, 120));
    QCOMPARE(dialog.minimumSize(), dialog.maximumSize());
    QCOMPARE(dialog.grab().toImage().pixel(5, 5), cellColours[0]);
    QVERIFY(QImageDialog::GetApplicationPath().isEmpty());
}

void TestImageWidgets::aDialogMovesByItsTitleBandOnlyWhenEnabled()
{
    MovableDialog dialog(nullptr, Qt::FramelessWindowHint);
    dialog.SetImageBackgroud(path("face.png"));
    dialog.move(100, 100);
    dialog.show();
    const auto drag = [&dialog](int y, Qt::MouseButton button = Qt::LeftButton) {
        dialog.move(100, 100);
        const auto send = [&dialog, button](QEvent::Type type, const QPoint& local, const QPoint& global) {
            QMouseEvent event(type, local, local, global, button, button, Qt::NoModifier);
            QApplication::sendEvent(&dialog, &event);
        };
        send(QEvent::MouseButtonPress, QPoint(50, y), QPoint(150, 100 + y));
        send(QEvent::MouseMove, QPoint(60, y + 5), QPoint(160, 105 + y));
        send(QEvent::MouseButtonRelease, QPoint(60, y + 5), QPoint(160, 105 + y));
        return dialog.pos();
    };
    QCOMPARE(drag(20), QPoint(100, 100));
    dialog.m_bMoveEnable = true;
    QCOMPARE(drag(0), QPoint(100, 100)); // the topmost row is no handle
    QCOMPARE(drag(1), QPoint(110, 105));
    QCOMPARE(drag(36), QPoint(110, 105));
    QCOMPARE(drag(37), QPoint(100, 100));
    QCOMPARE(drag(20, Qt::RightButton), QPoint(100, 100));
}

void TestImageWidgets::aWidgetShowsItsPictureScaled()
{
    QImageWidget widget;
    QVERIFY(widget.SetImageBackgroud(path("face.png")));
    QCOMPARE(widget.size(), QSize(200, 120));
    QImageWidget sized;
    sized.resize(50, 30);
    QVERIFY(sized.SetImageBackgroud(path("strip.png"), true));
    QCOMPARE(sized.size(), QSize(50, 30));
    const QImage shown = sized.grab().toImage();
    QCOMPARE(shown.pixel(3, 15), cellColours[0]);
    QCOMPARE(shown.pixel(47, 15), cellColours[3]);
}

void TestImageWidgets::aPictureBeyondTheLimitIsNone()
{
    const auto size = [this](const QSize& screen) {
        QFile file(path("screen.gif"));
        file.open(QIODevice::WriteOnly);
        file.write(Fixtures::gif(screen));
        file.close();
        return SkinPicture(file.fileName()).size();
    };
    QCOMPARE(size({3000, 300}), QSize(3000, 300));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("screen.gif does not load")));
    QVERIFY(size({16000, 16000}).isEmpty());
}

void TestImageWidgets::oneStripIsReadOnceForAllButtons()
{
    const QString file = path("shared.png");
    QVERIFY(QFile::copy(path("strip.png"), file));
    auto first = std::make_unique<QImageButton>();
    first->setBtnImage(file);
    QVERIFY(QFile::remove(file));
    QImageButton second;
    QVERIFY(second.setBtnImage(file));
    QCOMPARE(centre(second), cellColours[0]);
    first.reset();
    QCOMPARE(centre(second), cellColours[0]);
    second.setBtnImage(path("strip.png"));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("does not load"));
    QVERIFY(!second.setBtnImage(file)); // none holds it any more
    QVERIFY(QFile::copy(path("strip.png"), file));
    QVERIFY(second.setBtnImage(file)); // what was no picture is looked for again
}

void TestImageWidgets::aWidgetReportsEveryPress()
{
    QImageWidget widget;
    QSignalSpy clicks(&widget, SIGNAL(widgetClick()));
    QTest::mousePress(&widget, Qt::LeftButton);
    QTest::mousePress(&widget, Qt::RightButton);
    QTest::mouseRelease(&widget, Qt::RightButton);
    QCOMPARE(clicks.count(), 2);
}

void TestImageWidgets::aGrabbedWidgetFollowsThePointer()
{
    QImageWidget widget;
    QVERIFY(!widget.GetGrabEnable());
    const auto drag = [&widget] {
        widget.move(10, 10);
        QMouseEvent press(QEvent::MouseButtonPress, QPointF(5, 5), QPointF(5, 5), QPointF(15, 15),
                          Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&widget, &press);
        QMouseEvent moved(QEvent::MouseMove, QPointF(30, 40), QPointF(30, 40), QPointF(70.5, 80.4),
                          Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&widget, &moved);
        return widget.pos();
    };
    QCOMPARE(drag(), QPoint(10, 10));
    widget.SetGrabEnable(true);
    QCOMPARE(drag(), QPoint(71, 80)); // no offset is kept from the press
}

void TestImageWidgets::theApplicationPathIsKnownOnceAWidgetWasMade()
{
    const QImageWidget widget;
    QCOMPARE(QImageWidget::GetApplicationPath(), QCoreApplication::applicationDirPath() + "/");
}

QTEST_MAIN(TestImageWidgets)
#include "tst_imagewidgets.moc"
