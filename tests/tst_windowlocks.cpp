// What of the window does not answer for a while, and that it looks so.
#include "keysfixture.h"
#include "manynames.h"
#include "sanitized.h"
#include "views/viewveil.h"

#include <QDir>
#include <QKeyEvent>
#include <QMenuBar>
#include <QRegularExpression>
#include <QScrollBar>

class TestWindowLocks : public KeysFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepareFoot(); }
    void cleanup() { clearFoot(); }

    void anIntakeLocksWhatDoesNotAnswer();
    void displayButtonsLookLockedDuringAnIntakeAlone();
    void escapeEndsAnIntake();
    void escapeEndsTheSearchForFiles();
    void theFocusComesBackAfterAnIntake();
    void anEndOfBeforeEndsNoOther();
    void viewsLookLockedWhileASongIsIdentified_data();
    void viewsLookLockedWhileASongIsIdentified();
    void aViewThatIsLockedScrolls();

private:
    inline static const int many = sanitized ? 8000 : 40000;

    QStringList manyPaths() const;
    QList<QWidget*> lockable() const;
    bool isVeiled(const QWidget* view) const { return view->findChild<ViewVeil*>()->isVisible(); }
    CenterWidget* center() const { return part<CenterWidget>("m_middleMusicWidget"); }
    void escapeAtProgress();
    QVector<QImage> displayButtons() const
    {
        return {part<QWidget>("m_btnGridDisplay")->grab().toImage(),
                part<QWidget>("m_btnTableDisplay")->grab().toImage()};
    }
};

QStringList TestWindowLocks::manyPaths() const
{
    QStringList paths;
    // One that is read twice in a row is read once.
    const QStringList two = {tone("one", "One"), tone("two", "Two", "Pop", "flac")};
    for (int i = 0; i < many; ++i)
        paths.append(two.at(i % 2));
    return paths;
}

QList<QWidget*> TestWindowLocks::lockable() const
{
    QList<QWidget*> widgets = {m_window->findChild<QMenuBar*>()};
    for (const char* name : {"m_btnMusicAll", "m_btnTableDisplay", "m_btnStarScan", "m_btnLocalClean",
                             "m_findField", "m_allMusicListView", "m_btnMore", "m_footLine"})
        widgets.append(part<QWidget>(name));
    return widgets;
}

/// As soon as files are read: before that they are looked for.
void TestWindowLocks::escapeAtProgress()
{
    connect(center(), &CenterWidget::emitIntakeProgress, this, [this](int done) {
        if (done > 0)
            QCoreApplication::postEvent(m_window.get(),
                                        new QKeyEvent(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier));
    });
}

void TestWindowLocks::anIntakeLocksWhatDoesNotAnswer()
{
    fill(true, {"Anchor"});
    click("m_btnMusicUndefined"); // the row of all songs can be chosen then
    int looks = 0;
    connect(center(), &CenterWidget::emitIntakeProgress, this, [&] {
        ++looks;
        for (const QWidget* widget : lockable())
            QVERIFY2(!widget->isEnabled(), qPrintable(widget->objectName()));
        QVERIFY(part<QLabel>("m_tipsLabel")->text().endsWith("\nPress Esc to stop."));
    });
    m_dialogs->expect([&](QWidget* dialog) { // nothing is locked when the user is asked
        for (const QWidget* widget : lockable())
            QVERIFY2(widget->isEnabled(), qPrintable(widget->objectName()));
        dialog->close();
    });
    center()->TakeDroppedPaths(manyPaths());
    QVERIFY(looks > 0);
    QVERIFY(!part<QLabel>("m_tipsLabel")->text().contains("Esc"));
}

/// The chosen one, which never answers, as well; and both as ever while a song is identified.
void TestWindowLocks::displayButtonsLookLockedDuringAnIntakeAlone()
{
    fill(true, {"Anchor"});
    const QVector<QImage> open = displayButtons();
    center()->SlotForbidToClickView(true);
    QCOMPARE(displayButtons(), open);
    center()->SlotForbidToClickView(false);
    QVector<QImage> locked;
    connect(center(), &CenterWidget::emitIntakeProgress, this, [&] { locked = displayButtons(); });
    escapeAtProgress();
    m_dialogs->expectButton("m_btnType");
    center()->TakeDroppedPaths(manyPaths());
    QCOMPARE(locked.size(), 2);
    for (int i = 0; i < 2; ++i)
        QVERIFY(locked.at(i) != open.at(i));
    QVERIFY(locked.at(0) != open.at(1));
    QVERIFY(locked.at(1) != open.at(0));
    QCOMPARE(displayButtons(), open);
}

void TestWindowLocks::escapeEndsAnIntake()
{
    fill(true, {"Anchor"});
    escapeAtProgress();
    m_dialogs->expectButton("m_btnType");
    center()->TakeDroppedPaths(manyPaths());
    const auto said =
        QRegularExpression("^Stopped: ([0-9,]+) of ([0-9,]+) files were added\\.$").match(told());
    QVERIFY2(said.hasMatch(), qPrintable(told()));
    const int added = said.captured(1).remove(',').toInt();
    QCOMPARE(said.captured(2).remove(',').toInt(), many);
    QVERIFY(added > 0 && added < many);
    QCOMPARE(part<QListView>("m_allMusicListView")->model()->rowCount(), 1 + added);
    QVERIFY(!center()->ListsAreInUse());
}

/// Nothing is added then, and nothing asked.
void TestWindowLocks::escapeEndsTheSearchForFiles()
{
    switchToLocal();
    const QString path = tone("one", "One");
    ManyNames::give(path, m_folder->filePath("many"), many);
    QCoreApplication::postEvent(m_window.get(),
                                new QKeyEvent(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier));
    m_dialogs->expectButton("m_btnType");
    center()->TakeDroppedPaths({m_folder->filePath("many")});
    QVERIFY2(told().startsWith("Stopped: "), qPrintable(told()));
    const bool none = told() == "Stopped: no file was added."; // or the search was over in a blink
    QCOMPARE(m_dialogs->texts.isEmpty(), none);
    QCOMPARE(part<QWidget>("m_btnOpen")->isVisible(), true);
    for (const QWidget* widget : {part<QWidget>("m_btnStarScan"), part<QWidget>("m_leftMusicWidget")})
        QVERIFY(widget->isEnabled());
}

void TestWindowLocks::theFocusComesBackAfterAnIntake()
{
    fill(true, {"Anchor"});
    part<QWidget>("m_findField")->setFocus();
    escapeAtProgress();
    m_dialogs->expect([](QWidget* dialog) { dialog->close(); });
    center()->TakeDroppedPaths(manyPaths());
    QCOMPARE(m_window->focusWidget(), part<QWidget>("m_findField"));
}

void TestWindowLocks::anEndOfBeforeEndsNoOther()
{
    fill(true, {"Anchor"});
    escapeAtProgress();
    m_dialogs->expectButton("m_btnType");
    center()->TakeDroppedPaths(manyPaths());
    const int songs = part<QListView>("m_allMusicListView")->model()->rowCount();
    line()->clear();
    add({tone("next", "Next")});
    QCOMPARE(part<QListView>("m_allMusicListView")->model()->rowCount(), songs + 1);
    QCOMPARE(told(), QString());
}

void TestWindowLocks::viewsLookLockedWhileASongIsIdentified_data()
{
    bothModesAndDisplays();
}

/// Songs, whose clicks do nothing then, and not groups.
void TestWindowLocks::viewsLookLockedWhileASongIsIdentified()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Anchor"});
    showTable(table);
    clickShown(0);
    const QImage open = view()->grab().toImage();
    center()->SlotForbidToClickView(true);
    QVERIFY(isVeiled(view()));
    QVERIFY(view()->grab().toImage() != open);
    QCOMPARE(view()->viewport()->cursor().shape(), Qt::ForbiddenCursor);
    clickShown(1);
    QCOMPARE(row(), 0);
    for (const char* groups : {"m_dupMusicListView", "m_dupMusicTableView"})
        QVERIFY(part<QWidget>(groups)->findChild<ViewVeil*>()->isHidden());
    center()->SlotForbidToClickView(false);
    QVERIFY(!isVeiled(view()));
    QCOMPARE(view()->viewport()->cursor().shape(), Qt::ArrowCursor);
    QCOMPARE(view()->grab().toImage(), open);
}

/// It stays over what is to be seen, and in nobody's way.
void TestWindowLocks::aViewThatIsLockedScrolls()
{
    QStringList titles;
    for (int i = 0; i < 60; ++i)
        titles.append(QString("Song %1").arg(i));
    fill(false, titles);
    center()->SlotForbidToClickView(true);
    m_window->resize(1000, 700);
    QCoreApplication::processEvents();
    QScrollBar* const bar = view()->verticalScrollBar();
    bar->setValue(bar->maximum());
    const auto* const veil = view()->findChild<ViewVeil*>();
    QCOMPARE(veil->geometry(), view()->viewport()->geometry());
    QVERIFY(veil->testAttribute(Qt::WA_TransparentForMouseEvents));
    QVERIFY(bar->isEnabled() && bar->value() > 0);
}

QTEST_MAIN(TestWindowLocks)
#include "tst_windowlocks.moc"
