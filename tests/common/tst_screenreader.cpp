#include "common/qimagebutton.h"
#include "common/qimagewidget.h"
#include "common/qsliderctrl.h"
#include "common/retractlabel.h"
#include "common/screenreader.h"

#include <QDialog>
#include <QLineEdit>
#include <QMainWindow>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

/// What those hear of the kit who have the screen read out.
class TestScreenReader : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { ScreenReader::install(); }
    void init();
    void cleanup() { m_panel.reset(); }

    void whatIsHiddenIsNotThere();
    void whatSaysNothingIsNotThere();
    void aHiddenPanelTakesItsPartsAlong();
    void aPanelWithANameIsAGroup();
    void windowsAndDialogsSayWhatTheyAre();
    void theProgramHasTheWindowsThatShow();
    void aRoleThatIsGivenCounts();
    void aTextThatDoesNotFitIsWhole();
    void aRichTextIsReadWithoutItsMarks();
    void anEditorHasTheNameOfItsLabel();
    void aPictureIsThereByItsName();
    void aPictureWithATipCanBePressed();
    void theSliderHasItsRangeAndValue();
    void aValueThatIsSetMovesTheSlider();
    void whatIsDestroyedIsForgotten();

private:
    static QAccessibleInterface* of(QObject* object) { return QAccessible::queryAccessibleInterface(object); }
    QStringList names() const
    {
        QStringList all;
        const QAccessibleInterface* const panel = of(m_panel.get());
        for (int i = 0; i < panel->childCount(); ++i) {
            all.append(panel->child(i)->text(QAccessible::Name));
            if (panel->indexOfChild(panel->child(i)) != i)
                all.append("which has another place");
        }
        return all;
    }
    static QLabel* label(const QString& text, QWidget* parent)
    {
        auto* label = new QLabel(text, parent);
        label->show();
        return label;
    }

    std::unique_ptr<QWidget> m_panel;
};

void TestScreenReader::init()
{
    m_panel = std::make_unique<QWidget>();
    m_panel->resize(400, 300);
}

void TestScreenReader::whatIsHiddenIsNotThere()
{
    label("first", m_panel.get());
    QLabel* const second = label("second", m_panel.get());
    label("third", m_panel.get());
    QCOMPARE(names(), QStringList({"first", "second", "third"}));
    second->hide();
    QCOMPARE(names(), QStringList({"first", "third"}));
    QCOMPARE(of(m_panel.get())->child(2), nullptr);
    QCOMPARE(of(m_panel.get())->indexOfChild(of(second)), -1);
    second->show();
    QCOMPARE(names(), QStringList({"first", "second", "third"}));
}

void TestScreenReader::whatSaysNothingIsNotThere()
{
    (new QWidget(m_panel.get()))->show(); // as an outline, or a place for pictures
    QLabel* const empty = label(QString(), m_panel.get());
    (new QImageWidget(m_panel.get()))->show();
    QCOMPARE(names(), QStringList());
    empty->setText("12 of 40");
    QCOMPARE(names(), QStringList({"12 of 40"}));
}

void TestScreenReader::aHiddenPanelTakesItsPartsAlong()
{
    auto* inner = new QWidget(m_panel.get());
    label("inside", inner);
    QCOMPARE(of(m_panel.get())->childCount(), 1);
    QCOMPARE(of(inner)->childCount(), 1);
    QCOMPARE(of(inner)->parent(), of(m_panel.get()));
    inner->hide();
    QCOMPARE(of(m_panel.get())->childCount(), 0);
}

void TestScreenReader::aPanelWithANameIsAGroup()
{
    auto* inner = new QWidget(m_panel.get());
    label("inside", inner);
    QCOMPARE(of(inner)->role(), QAccessible::Client);
    inner->setAccessibleName("Song details");
    QCOMPARE(of(inner)->role(), QAccessible::Grouping);
    QCOMPARE(of(inner)->text(QAccessible::Name), QString("Song details"));
}

void TestScreenReader::windowsAndDialogsSayWhatTheyAre()
{
    QCOMPARE(of(m_panel.get())->role(), QAccessible::Window);
    QDialog dialog;
    dialog.setWindowTitle("Question");
    QCOMPARE(of(&dialog)->role(), QAccessible::Dialog);
    QCOMPARE(of(&dialog)->text(QAccessible::Name), QString("Question"));
    QMainWindow window;
    auto* central = new QWidget;
    label("inside", central);
    window.setCentralWidget(central);
    QCOMPARE(of(&window)->role(), QAccessible::Window);
    QCOMPARE(of(&window)->childCount(), 1);
    QCOMPARE(of(&window)->child(0), of(central));
}

void TestScreenReader::theProgramHasTheWindowsThatShow()
{
    QAccessibleInterface* const program = of(qApp);
    QCOMPARE(program->role(), QAccessible::Application);
    QCOMPARE(program->childCount(), 0);
    QDialog dialog;
    m_panel->show();
    dialog.show();
    QCOMPARE(program->childCount(), 2);
    QVERIFY(program->indexOfChild(of(&dialog)) >= 0);
    QCOMPARE(of(m_panel.get())->parent(), program);
    dialog.hide();
    QCOMPARE(program->childCount(), 1);
    QCOMPARE(program->child(0), of(m_panel.get()));
    QCOMPARE(program->child(1), nullptr);
    QCOMPARE(program->indexOfChild(of(&dialog)), -1);
}

void TestScreenReader::aRoleThatIsGivenCounts()
{
    auto* inner = new QWidget(m_panel.get());
    inner->show();
    QCOMPARE(of(m_panel.get())->childCount(), 0);
    ScreenReader::setRole(*inner, QAccessible::List);
    QCOMPARE(of(inner)->role(), QAccessible::List);
    QCOMPARE(of(m_panel.get())->childCount(), 1);
}

void TestScreenReader::aTextThatDoesNotFitIsWhole()
{
    const QString title = QString(300, QLatin1Char('m'));
    auto* text = new RetractLabel(m_panel.get());
    text->resize(60, 20);
    text->setText(title);
    text->show();
    QVERIFY(text->text() != title);
    QCOMPARE(names(), QStringList({title}));
    QCOMPARE(of(text)->role(), QAccessible::StaticText);
    QCOMPARE(of(text)->text(QAccessible::Description), QString()); // and not once more
}

void TestScreenReader::aRichTextIsReadWithoutItsMarks()
{
    label("<a href=\"https://a.example\">Home <b>page</b></a>", m_panel.get());
    label("a & b", m_panel.get());
    QCOMPARE(names(), QStringList({"Home page", "a & b"}));
}

void TestScreenReader::anEditorHasTheNameOfItsLabel()
{
    QLabel* const caption = label("Ti&tle:", m_panel.get());
    auto* editor = new QLineEdit(m_panel.get());
    caption->setBuddy(editor);
    QCOMPARE(names(), QStringList({"Title:", "Title:"}));
    const auto relations = of(caption)->relations();
    QCOMPARE(relations.size(), 1);
    QCOMPARE(relations.first().first, of(editor));
    QVERIFY(relations.first().second & QAccessible::Labelled);
}

void TestScreenReader::aPictureIsThereByItsName()
{
    auto* picture = new QImageWidget(m_panel.get());
    picture->show();
    QCOMPARE(of(m_panel.get())->childCount(), 0);
    picture->setAccessibleName("Cover");
    QCOMPARE(of(m_panel.get())->childCount(), 1);
    QCOMPARE(of(picture)->role(), QAccessible::Graphic);
    QVERIFY(of(picture)->actionInterface()->actionNames().isEmpty());
    // One that others lie on is a panel.
    QImageWidget face;
    label("inside", &face);
    QCOMPARE(of(&face)->role(), QAccessible::Window);
    QCOMPARE(of(&face)->childCount(), 1);
}

void TestScreenReader::aPictureWithATipCanBePressed()
{
    QImageWidget picture;
    picture.setAccessibleName("Cover");
    picture.setToolTip("click to add cover");
    QSignalSpy pressed(&picture, &QImageWidget::widgetClick);
    QAccessibleInterface* const part = of(&picture);
    QCOMPARE(part->role(), QAccessible::PushButton);
    QCOMPARE(part->text(QAccessible::Description), QString("click to add cover"));
    QCOMPARE(part->actionInterface()->actionNames(), QStringList(QAccessibleActionInterface::pressAction()));
    part->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QVERIFY(pressed.isEmpty()); // who asks is answered first
    QTRY_COMPARE(pressed.size(), 1);
    picture.setEnabled(false);
    QCOMPARE(part->role(), QAccessible::Graphic);
    part->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QCoreApplication::processEvents();
    QCOMPARE(pressed.size(), 1);
}

void TestScreenReader::theSliderHasItsRangeAndValue()
{
    qSliderCtrl slider;
    slider.resize(400, 20);
    slider.setValueRange(0, 10000);
    slider.setValue(2500);
    QAccessibleInterface* const part = of(&slider);
    QCOMPARE(part->role(), QAccessible::Slider);
    QCOMPARE(part->childCount(), 0);
    QVERIFY(part->valueInterface());
    QCOMPARE(part->valueInterface()->minimumValue().toDouble(), 0.0);
    QCOMPARE(part->valueInterface()->maximumValue().toDouble(), 10000.0);
    QCOMPARE(part->valueInterface()->currentValue().toDouble(), 2500.0);
}

void TestScreenReader::aValueThatIsSetMovesTheSlider()
{
    qSliderCtrl slider;
    slider.resize(400, 20);
    slider.setValueRange(100, 300);
    QSignalSpy moved(&slider, &qSliderCtrl::sendProgressValue);
    QAccessibleValueInterface* const value = of(&slider)->valueInterface();
    value->setCurrentValue(150);
    QCOMPARE(moved.takeFirst().first().toDouble(), 0.25);
    value->setCurrentValue(1e9);
    QCOMPARE(moved.takeFirst().first().toDouble(), 1.0);
    value->setCurrentValue(-1e9);
    QCOMPARE(moved.takeFirst().first().toDouble(), 0.0);
    slider.setDisableMove();
    value->setCurrentValue(150);
    QVERIFY(moved.isEmpty());
}

/// What is asked for while it goes must not stay: its place in memory is another's later.
void TestScreenReader::whatIsDestroyedIsForgotten()
{
    label("inside", m_panel.get());
    bool known = true;
    QObject* const gone = m_panel.get();
    connect(m_panel->findChild<QLabel*>(), &QObject::destroyed, this,
            [&known, gone] { known = QAccessible::queryAccessibleInterface(gone) != nullptr; });
    m_panel.reset();
    QVERIFY(!known);
}

QTEST_MAIN(TestScreenReader)
#include "tst_screenreader.moc"
