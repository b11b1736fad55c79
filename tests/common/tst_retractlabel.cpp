#include "common/retractlabel.h"
#include "common/textfit.h"
#include "startup.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <QTextDocument>
#include <QtTest>
#include <QVBoxLayout>

class TestRetractLabel : public QObject
{
    Q_OBJECT

public:
    static void initMain() { Startup::beforeApplication(); }

private slots:
    void initTestCase() { Startup::afterApplication(); }

    void aFittingTextIsShownWhole();
    void aLongTextIsShortenedAndTold();
    void theLongestFittingBeginningIsShown_data();
    void theLongestFittingBeginningIsShown();
    void graphemesAreNeverCut();
    void longTextsTakeFewLayouts();
    void aTinyLabelShowsDots();
    void aNewSizeIsANewLayout();
    void markupIsText();
    void markupIsTextInTheTip();
    void theTipOfAVastTextTakesNoTime();
    void theTextWidthIsNotMeasured();
    void renamingKeepsTheExtension_data();
    void renamingKeepsTheExtension();
    void theSameNameIsNoRename();
    void forbiddenCharactersNeverStay();
    void anotherWindowEndsTheEdit();
    void losingTheFocusAccepts();
    void theEditorCanBeClosedUnheard();
    void anotherEndingIsPartOfTheNewName();
    void aNameLeftAsItWasIsNoRename();
    void anEmptiedNameIsItsExtension();
    void withoutAnEditorNothingIsRenamed();

private:
    static QLineEdit* editorOf(const RetractLabel& label) { return label.findChild<QLineEdit*>(); }
    static void open(RetractLabel& label);
    static const QLabel* tipOf(RetractLabel& label);
};

/// Hovers over the label; the tip that comes, null when none does.
const QLabel* TestRetractLabel::tipOf(RetractLabel& label)
{
    QHelpEvent hover(QEvent::ToolTip, QPoint(1, 1), QPoint(1, 1));
    QApplication::sendEvent(&label, &hover);
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (const QWidget* window : windows)
        if (window->windowType() == Qt::ToolTip && window->isVisible())
            return qobject_cast<const QLabel*>(window);
    return nullptr;
}

void TestRetractLabel::open(RetractLabel& label)
{
    label.window()->show();
    label.window()->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(label.window(), patience));
    label.setCanEditText(true);
}

void TestRetractLabel::aFittingTextIsShownWhole()
{
    RetractLabel label;
    label.resize(200, 20);
    label.setText(QStringLiteral("Harbour"));
    QCOMPARE(label.text(), QStringLiteral("Harbour"));
    QCOMPARE(label.getName(), QStringLiteral("Harbour"));
    QVERIFY(label.toolTip().isEmpty());
}

void TestRetractLabel::aLongTextIsShortenedAndTold()
{
    RetractLabel label;
    label.resize(80, 20);
    const QString name = QStringLiteral("A title that is far too long for its label");
    label.setText(name);
    QVERIFY(label.text().endsWith(QLatin1String("...")));
    QVERIFY(name.startsWith(label.text().chopped(3)));
    QCOMPARE(label.toolTip(), name);
    QCOMPARE(label.getName(), name);
    label.setText(QStringLiteral("Short"));
    QCOMPARE(label.text(), QStringLiteral("Short"));
    QVERIFY(label.toolTip().isEmpty());
}

void TestRetractLabel::theLongestFittingBeginningIsShown_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSize>("size");
    const QString words = QStringLiteral("Salt and Honey, recorded live at the harbour in 1987 ");
    for (const QSize& size : {QSize(60, 18), QSize(120, 18), QSize(120, 40), QSize(33, 90)})
        for (int times = 1; times <= 3; ++times)
            QTest::addRow("%d x %d, %d", size.width(), size.height(), times) << words.repeated(times) << size;
}

/// Dropping one character after the other finds the same.
void TestRetractLabel::theLongestFittingBeginningIsShown()
{
    QFETCH(QString, name);
    QFETCH(QSize, size);
    RetractLabel label;
    label.resize(size);
    label.setText(name);
    const QRect box(QPoint(0, 0), size);
    const auto height = [&](const QString& text) {
        return label.fontMetrics().boundingRect(box, Qt::TextWrapAnywhere, text).height();
    };
    QString expected = name;
    for (int dropped = 1; height(expected) > size.height() && dropped <= name.size(); ++dropped)
        expected = name.left(name.size() - dropped) + QLatin1String("...");
    QCOMPARE(label.text(), expected);
}

void TestRetractLabel::graphemesAreNeverCut()
{
    // A letter with a combining mark, a character beyond the basic plane, and a family of three joined ones.
    const QString graphemes[] = {QString::fromUtf8("e\xCC\x81"), QString::fromUtf8("\xF0\x9D\x84\x9E"),
                                 QString::fromUtf8("\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA7")};
    for (const QString& grapheme : graphemes) {
        const QString name = grapheme.repeated(60);
        for (int width = 20; width < 200; width += 7) {
            RetractLabel label;
            label.resize(width, 20);
            label.setText(name);
            QVERIFY(label.text().endsWith(QLatin1String("...")));
            QCOMPARE((label.text().size() - 3) % grapheme.size(), 0);
        }
    }
}

void TestRetractLabel::longTextsTakeFewLayouts()
{
    for (const int length : {4000, 10000, 1000000}) {
        int layouts = 0;
        const QString shown = TextFit::elided(QString(length, QLatin1Char('x')), [&](const QString& text) {
            ++layouts;
            return text.size() <= 40;
        });
        QCOMPARE(shown, QString(37, QLatin1Char('x')) + QLatin1String("..."));
        QVERIFY2(layouts <= 14, qPrintable(QString::number(layouts)));
    }
}

void TestRetractLabel::aTinyLabelShowsDots()
{
    RetractLabel label;
    label.resize(1, 1);
    label.setText(QStringLiteral("Harbour"));
    QCOMPARE(label.text(), QStringLiteral("..."));
    QCOMPARE(label.toolTip(), QStringLiteral("Harbour"));
}

void TestRetractLabel::aNewSizeIsANewLayout()
{
    QWidget window;
    auto* label = new RetractLabel;
    auto* layout = new QVBoxLayout(&window);
    layout->addWidget(label);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    label->setText(QStringLiteral("A title of some length"));
    window.resize(60, 60);
    window.show();
    QTRY_VERIFY(label->text().endsWith(QLatin1String("...")));
    window.resize(600, 60);
    QTRY_COMPARE(label->text(), QStringLiteral("A title of some length"));
    QVERIFY(label->toolTip().isEmpty());
}

void TestRetractLabel::markupIsText()
{
    RetractLabel label;
    QCOMPARE(label.textFormat(), Qt::PlainText);
}

void TestRetractLabel::markupIsTextInTheTip()
{
    RetractLabel label;
    label.resize(40, 20);
    const QString name = QStringLiteral("<h1>Salt</h1> & <img src='x'> &amp;\nHoney");
    label.setText(name);
    QCOMPARE(label.toolTip(), name);
    const QLabel* tip = tipOf(label);
    QVERIFY(tip);
    QTextDocument shown;
    shown.setHtml(tip->text());
    QCOMPARE(shown.toPlainText(), name);
    label.setText(QStringLiteral("a"));
    QHelpEvent hover(QEvent::ToolTip, QPoint(1, 1), QPoint(1, 1));
    QApplication::sendEvent(&label, &hover);
    QVERIFY(!hover.isAccepted());
}

void TestRetractLabel::theTipOfAVastTextTakesNoTime()
{
    RetractLabel label;
    label.resize(80, 20);
    const QString name = QStringLiteral("<b>vast</b> ").repeated(100000);
    label.setText(name);
    QCOMPARE(label.toolTip(), name);
    const QLabel* tip = tipOf(label);
    QVERIFY(tip);
    QTextDocument shown;
    shown.setHtml(tip->text());
    QVERIFY(shown.toPlainText().size() <= 4000);
    QVERIFY(shown.toPlainText().endsWith(QLatin1String("...")));
    QVERIFY(name.startsWith(shown.toPlainText().chopped(3)));
}

void TestRetractLabel::theTextWidthIsNotMeasured()
{
    RetractLabel label;
    label.setText(QStringLiteral("Harbour"));
    QCOMPARE(label.getTextWidth(), -1); // oddity 43
}

void TestRetractLabel::renamingKeepsTheExtension_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("opened");
    QTest::addColumn<QString>("renamed");
    QTest::newRow("extension") << "song.mp3"
                               << "song"
                               << "new.mp3";
    QTest::newRow("two dots") << "a.b.mp3"
                              << "a.b"
                              << "new.mp3";
    QTest::newRow("no dot") << "song"
                            << "song"
                            << "new";
    QTest::newRow("dot at the end") << "song."
                                    << "song"
                                    << "new.";
}

void TestRetractLabel::renamingKeepsTheExtension()
{
    QFETCH(QString, name);
    QFETCH(QString, opened);
    QFETCH(QString, renamed);
    RetractLabel label;
    label.resize(200, 24);
    label.setText(name);
    QSignalSpy changes(&label, SIGNAL(emitChangeName()));
    open(label);
    QLineEdit* editor = editorOf(label);
    QVERIFY(editor->isVisible());
    QVERIFY(editor->hasFocus());
    QCOMPARE(editor->geometry(), label.rect());
    QCOMPARE(editor->text(), opened);
    QCOMPARE(editor->selectedText(), opened);
    QTest::keyClicks(editor, QStringLiteral("new"));
    QTest::keyClick(editor, Qt::Key_Return);
    QVERIFY(editor->isHidden());
    QCOMPARE(label.text(), renamed);
    QCOMPARE(label.getName(), renamed);
    QCOMPARE(changes.size(), 1);
}

void TestRetractLabel::theSameNameIsNoRename()
{
    RetractLabel label;
    label.resize(200, 24);
    label.setText(QStringLiteral("song.mp3"));
    QSignalSpy changes(&label, SIGNAL(emitChangeName()));
    open(label);
    QTest::keyClick(editorOf(label), Qt::Key_Return);
    QVERIFY(editorOf(label)->isHidden());
    QCOMPARE(changes.size(), 0);
}

void TestRetractLabel::forbiddenCharactersNeverStay()
{
    RetractLabel label;
    label.resize(200, 24);
    label.setText(QStringLiteral("song.mp3"));
    open(label);
    QLineEdit* editor = editorOf(label);
    QTest::keyClicks(editor, QStringLiteral("ab"));
    for (const char forbidden : {'/', ':', '*', '"', '<', '>', '|'}) {
        QTest::keyClick(editor, forbidden);
        QCOMPARE(editor->text(), QStringLiteral("ab"));
    }
    QTest::keyClicks(editor, QStringLiteral("\\?c")); // these may stand in a name
    QCOMPARE(editor->text(), QStringLiteral("ab\\?c"));
}

void TestRetractLabel::anotherWindowEndsTheEdit()
{
    RetractLabel label;
    label.resize(200, 24);
    label.setText(QStringLiteral("song.mp3"));
    open(label);
    QEvent deactivation(QEvent::WindowDeactivate);
    QApplication::sendEvent(&label, &deactivation);
    QVERIFY(editorOf(label)->isHidden());
    QVERIFY(label.isVisible());
}

void TestRetractLabel::losingTheFocusAccepts()
{
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    auto* label = new RetractLabel;
    auto* other = new QLineEdit;
    layout->addWidget(label);
    layout->addWidget(other);
    label->setText(QStringLiteral("song.mp3"));
    QSignalSpy changes(label, SIGNAL(emitChangeName()));
    open(*label);
    QTest::keyClicks(editorOf(*label), QStringLiteral("new"));
    other->setFocus();
    QCOMPARE(label->getName(), QStringLiteral("new.mp3"));
    QCOMPARE(changes.size(), 1);
    QVERIFY(editorOf(*label)->isHidden());
}

void TestRetractLabel::theEditorCanBeClosedUnheard()
{
    RetractLabel label;
    label.setCanEditText(false); // nothing to close yet
    label.resize(200, 24);
    label.setText(QStringLiteral("song.mp3"));
    open(label);
    label.setCanEditText(false);
    QVERIFY(editorOf(label)->isHidden());
}

/// Return is heard twice; the extension of the new name is none of the old one.
void TestRetractLabel::anotherEndingIsPartOfTheNewName()
{
    RetractLabel label;
    label.resize(200, 24);
    label.setText(QStringLiteral("song"));
    QSignalSpy changes(&label, SIGNAL(emitChangeName()));
    open(label);
    QTest::keyClicks(editorOf(label), QStringLiteral("a.b"));
    QTest::keyClick(editorOf(label), Qt::Key_Return);
    QCOMPARE(label.getName(), QStringLiteral("a.b"));
    QCOMPARE(changes.size(), 1);
}

void TestRetractLabel::aNameLeftAsItWasIsNoRename()
{
    RetractLabel label;
    label.resize(200, 24);
    QSignalSpy changes(&label, SIGNAL(emitChangeName()));
    label.setText(QStringLiteral("former.mp3"));
    open(label);
    QTest::keyClick(editorOf(label), Qt::Key_Escape);
    label.setText(QStringLiteral("Live: Salt/Honey.mp3"));
    open(label);
    QCOMPARE(editorOf(label)->text(), QStringLiteral("Live SaltHoney"));
    QTest::keyClick(editorOf(label), Qt::Key_Return);
    QCOMPARE(label.getName(), QStringLiteral("Live: Salt/Honey.mp3"));
    QCOMPARE(changes.size(), 0);
    open(label);
    QTest::keyClick(editorOf(label), Qt::Key_End);
    QTest::keyClick(editorOf(label), '2');
    QTest::keyClick(editorOf(label), ':');
    QTest::keyClick(editorOf(label), Qt::Key_Return);
    QCOMPARE(label.getName(), QStringLiteral("Live SaltHoney2.mp3"));
    QCOMPARE(changes.size(), 1);
}

void TestRetractLabel::anEmptiedNameIsItsExtension()
{
    RetractLabel label;
    label.resize(200, 24);
    label.setText(QStringLiteral("song.mp3"));
    open(label);
    QTest::keyClick(editorOf(label), Qt::Key_Delete);
    QTest::keyClick(editorOf(label), Qt::Key_Return);
    QCOMPARE(label.getName(), QStringLiteral(".mp3")); // oddity 43: who renames the file judges the name
}

void TestRetractLabel::withoutAnEditorNothingIsRenamed()
{
    RetractLabel label;
    label.setText(QStringLiteral("song.mp3"));
    QSignalSpy changes(&label, SIGNAL(emitChangeName()));
    label.NameChange(QStringLiteral("a:b"));
    label.RenameOK();
    QCOMPARE(label.getName(), QStringLiteral("song.mp3"));
    QCOMPARE(changes.size(), 0);
}

QTEST_MAIN(TestRetractLabel)
#include "tst_retractlabel.moc"
