#include "centerfixture.h"
#include "centerwidget.h"
#include "dupmusicinfo.h"
#include "fixtures.h"
#include "guidriver.h"
#include "manynames.h"
#include "qiorvoutil.h"
#include "sanitized.h"

#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

namespace {
/// Enough files for more than a blink.
const int many = sanitized ? 6000 : 20000;
} // namespace

/// How the content area takes files in.
class TestCenterIntake : public CenterFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepare(); }
    void cleanup() { clear(); }

    void confirmingClassifiesWhatWasAdded();
    void unconfirmedSongsAreClassifiedWithTheNextIntake();
    void theSameFileTwiceIsTwoSongs();
    void aDropWithoutMusicOffersTheDialog();
    void theDialogTakesWindowsMediaToo();
    void aCancelledDialogChangesNothing();
    void scanningWithoutFilesSaysSo();
    void switchingModesEmptiesAndRefusesDrops();
    void dropsLandOnTheListToo();
    void ctrlOOpensTheDialogInTheLocalModeOnly();
    void addMoreOpensTheDialogWhereSongsShow();
    void aDialogThatOutlivesItsModeAddsNothing();
    void aMessageThatOutlivesItsModeScansNothing();
    void longIntakesShowProgressAndTakeNoInput();
    void closingDuringAnIntakeEndsIt();
    void groupsOfTheCollectionAreRight();
};

void TestCenterIntake::confirmingClassifiesWhatWasAdded()
{
    QSignalSpy counts(m_center.get(), SIGNAL(emitMusicCount(int, int, int)));
    QSignalSpy finished(m_center.get(), SIGNAL(emitFinishScanninglocalMusic()));
    QSignalSpy navigation(m_center.get(), SIGNAL(emitSetNavigViewBtn()));
    add({tone("a", "Same"), tone("b", "Same", "flac"), tone("c", ""), tone("d", "Other")});
    QCOMPARE(m_dialogs->texts,
             QStringList({"Add file(s) successfully! \nClick Start Scan to clean up right away!"}));
    QCOMPARE(counts.count(), 1);
    QCOMPARE(counts.first(), QVariantList({4, 1, 1}));
    QCOMPARE(finished.count(), 1);
    QCOMPARE(navigation.count(), 1);
    QCOMPARE(m_center->ReturnUndefinedMusicCount(), 1);
    QCOMPARE(m_center->ReturnDuplicateMusicCount(), 1);
    QVERIFY(view<QListView>("m_allMusicListView")->isVisible());
    QVERIFY(!m_center->findChild<QWidget*>("m_btnOpen")->isHidden());
    QCOMPARE(m_local_add_or_ScanAgain, 1);
}

void TestCenterIntake::unconfirmedSongsAreClassifiedWithTheNextIntake()
{
    QSignalSpy counts(m_center.get(), SIGNAL(emitMusicCount(int, int, int)));
    drop({tone("a", "One")}); // its message is closed, not confirmed
    QCOMPARE(counts.count(), 0);
    add({tone("b", "Two")});
    QCOMPARE(counts.last(), QVariantList({2, 0, 0}));
}

void TestCenterIntake::theSameFileTwiceIsTwoSongs()
{
    QSignalSpy counts(m_center.get(), SIGNAL(emitMusicCount(int, int, int)));
    const QString path = tone("a", "One");
    add({path, path});
    QCOMPARE(counts.last(), QVariantList({2, 0, 1}));
}

void TestCenterIntake::aDropWithoutMusicOffersTheDialog()
{
    const QString windowsMedia = tone("song", "One", "wma");
    bool fileDialogOpened = false;
    m_dialogs->expectButton("m_btnType");
    m_dialogs->expect([&fileDialogOpened](QWidget* dialog) {
        fileDialogOpened = qobject_cast<QFileDialog*>(dialog);
        dialog->close();
    });
    drop({windowsMedia});
    QCOMPARE(m_dialogs->texts, QStringList({"Add file(s) failed! Please add music files again."}));
    QVERIFY(fileDialogOpened);
    QCOMPARE(m_local_add_or_ScanAgain, 0);
    // The second button only closes the message.
    m_dialogs->expectButton("m_btnCancel");
    drop({windowsMedia});
    QCOMPARE(m_dialogs->texts.size(), 2);
}

void TestCenterIntake::theDialogTakesWindowsMediaToo()
{
    QSignalSpy counts(m_center.get(), SIGNAL(emitMusicCount(int, int, int)));
    const QString path = tone("song", "One", "wma");
    m_dialogs->expect([path](QWidget* widget) {
        auto* dialog = qobject_cast<QFileDialog*>(widget);
        QVERIFY(dialog);
        QCOMPARE(dialog->windowTitle(), QString("open"));
        QCOMPARE(dialog->nameFilters(),
                 QStringList({"music files(*.mp3 *.m4a *.ape *.aac *.flac *.wma *.wav *.ogg)"}));
        dialog->findChild<QLineEdit*>("fileNameEdit")->setText(path);
        QTest::keyClick(dialog->findChild<QLineEdit*>("fileNameEdit"), Qt::Key_Return);
    });
    m_dialogs->expectButton("m_btnType");
    QTest::mouseClick(m_center->findChild<QImageButton*>("m_btnOpen"), Qt::LeftButton);
    QCOMPARE(counts.count(), 1);
    QCOMPARE(counts.first(), QVariantList({1, 0, 0}));
}

void TestCenterIntake::aCancelledDialogChangesNothing()
{
    m_center->OnBtnOpenFile(); // the driver closes the dialog
    QVERIFY(m_dialogs->texts.isEmpty());
    QCOMPARE(m_local_add_or_ScanAgain, 0);
}

void TestCenterIntake::scanningWithoutFilesSaysSo()
{
    QSignalSpy counts(m_center.get(), SIGNAL(emitMusicCount(int, int, int)));
    m_center->setLocalMusicInfo();
    QCOMPARE(m_dialogs->texts, QStringList({"Sorry,Please add file from local."}));
    QCOMPARE(counts.count(), 0);
}

void TestCenterIntake::switchingModesEmptiesAndRefusesDrops()
{
    add({tone("a", "Same"), tone("b", "Same")});
    clickRow(view<QListView>("m_allMusicListView"), 0);
    m_center->SwitchToiTunesCleanModel();
    QVERIFY(!QIOrvoUtil::m_cleanMode);
    QVERIFY(!m_center->acceptDrops());
    QCOMPARE(m_center->ReturnDuplicateMusicCount(), 0);
    QCOMPARE(view<QListView>("m_allMusicListView")->model()->rowCount(), 0);
    QVERIFY(view<QListView>("m_allMusicListView")->isVisible());
    QVERIFY(m_center->findChild<QWidget*>("m_btnOpen")->isHidden());
    QVERIFY(m_center->findChild<QWidget*>("m_musicDetailedWidget")->isHidden());
    m_center->TakeDroppedPaths({m_folder->path()});
    QVERIFY(m_dialogs->texts.size() == 1); // that of the intake before
    m_center->SwitchToLocalCleanModel();
    QVERIFY(QIOrvoUtil::m_cleanMode);
    QVERIFY(m_center->acceptDrops());
    QVERIFY(m_center->findChild<QWidget*>("m_btnOpen")->isVisible());
    QVERIFY(view<QListView>("m_allMusicListView")->isHidden());
}

void TestCenterIntake::dropsLandOnTheListToo()
{
    QSignalSpy counts(m_center.get(), SIGNAL(emitMusicCount(int, int, int)));
    add({tone("a", "One")});
    // As the window system delivers it: to the widget under the pointer, and up until someone takes it.
    m_dialogs->expectButton("m_btnType");
    drop({tone("b", "Two")}, view<QListView>("m_allMusicListView")->viewport());
    QCOMPARE(counts.last(), QVariantList({2, 0, 0}));
}

void TestCenterIntake::ctrlOOpensTheDialogInTheLocalModeOnly()
{
    int opened = 0;
    m_dialogs->expect([&opened](QWidget* dialog) {
        opened += qobject_cast<QFileDialog*>(dialog) ? 1 : 0;
        dialog->close();
    });
    m_center->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_center.get(), patience));
    QTest::keyClick(m_center.get(), Qt::Key_O, Qt::ControlModifier);
    QCOMPARE(opened, 1);
    m_center->SwitchToiTunesCleanModel();
    QTest::keyClick(m_center.get(), Qt::Key_O, Qt::ControlModifier);
    QCOMPARE(opened, 1);
}

void TestCenterIntake::addMoreOpensTheDialogWhereSongsShow()
{
    auto* const more = m_center->findChild<QImageButton*>("m_btnMore");
    QVERIFY(more->isHidden()); // the place for drops has a button of its own
    add({tone("a", "One")});
    for (const auto show : {&CenterWidget::slotShowDuplicateMusicView, &CenterWidget::OnBtnTableView,
                            &CenterWidget::slotShowAllmusicView}) {
        (m_center.get()->*show)();
        QVERIFY(more->isVisible());
    }
    const QString second = tone("b", "Two");
    m_dialogs->expect([&](QWidget* dialog) {
        QVERIFY(qobject_cast<QFileDialog*>(dialog));
        dialog->findChild<QLineEdit*>("fileNameEdit")->setText(second);
        QMetaObject::invokeMethod(dialog, "accept");
    });
    m_dialogs->expectButton("m_btnType");
    QTest::mouseClick(more, Qt::LeftButton);
    QCOMPARE(view<QListView>("m_allMusicListView")->model()->rowCount(), 2);
    QVERIFY(more->isVisible());
    m_center->SwitchToiTunesCleanModel();
    QVERIFY(more->isHidden());
    m_center->slotShowAllmusicView();
    QVERIFY(more->isHidden());
}

void TestCenterIntake::aDialogThatOutlivesItsModeAddsNothing()
{
    const QString path = tone("a", "One");
    m_dialogs->expect([&](QWidget* dialog) {
        m_center->SwitchToiTunesCleanModel();
        dialog->findChild<QLineEdit*>("fileNameEdit")->setText(path);
        QMetaObject::invokeMethod(dialog, "accept");
    });
    m_dialogs->expectButton("m_btnType");
    m_center->OnBtnOpenFile();
    QVERIFY(m_dialogs->texts.isEmpty());
    QCOMPARE(view<QListView>("m_allMusicListView")->model()->rowCount(), 0);
    QCOMPARE(m_local_add_or_ScanAgain, 0);
    // The button of the message about a drop without music opens no dialog there, either.
    m_center->SwitchToLocalCleanModel();
    m_dialogs = std::make_unique<DialogDriver>();
    bool opened = false;
    m_dialogs->expect([&](QWidget* dialog) {
        m_center->SwitchToiTunesCleanModel();
        QTest::mouseClick(dialog->findChild<QImageButton*>("m_btnType"), Qt::LeftButton);
    });
    m_dialogs->expect([&](QWidget* dialog) {
        opened = true;
        dialog->close();
    });
    drop({m_folder->filePath("nothing.txt")});
    QCOMPARE(m_dialogs->texts.size(), 1);
    QVERIFY(!opened);
}

void TestCenterIntake::aMessageThatOutlivesItsModeScansNothing()
{
    m_dialogs->expect([this](QWidget* dialog) {
        m_center->SwitchToiTunesCleanModel();
        QTest::mouseClick(dialog->findChild<QImageButton*>("m_btnType"), Qt::LeftButton);
    });
    drop({tone("a", "One")});
    QCOMPARE(m_dialogs->texts.size(), 1); // and none about missing files
    QVERIFY(m_center->findChild<QWidget*>("m_btnOpen")->isHidden());
    QVERIFY(view<QListView>("m_allMusicListView")->isVisible());
}

void TestCenterIntake::longIntakesShowProgressAndTakeNoInput()
{
    const QString path = tone("model", "Same");
    ManyNames::give(path, m_folder->filePath("many"), many);
    QSignalSpy progress(m_center.get(), SIGNAL(emitIntakeProgress(int, int)));
    bool switchedMeanwhile = true;
    auto* button = m_center->findChild<QPushButton*>("m_btnTableDisplay");
    QSignalSpy clicks(button, SIGNAL(clicked()));
    connect(m_center.get(), &CenterWidget::emitIntakeProgress, this, [&] {
        switchedMeanwhile = !m_center->ListsAreInUse();
        m_center->TakeDroppedPaths({path}); // nothing can start another one meanwhile
        for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease})
            QCoreApplication::postEvent(
                button, new QMouseEvent(type, QPointF(5, 5), Qt::LeftButton, Qt::LeftButton, {}));
    });
    QSignalSpy counts(m_center.get(), SIGNAL(emitMusicCount(int, int, int)));
    add({m_folder->filePath("many")});
    QVERIFY(progress.count() > 0);
    QVERIFY(!switchedMeanwhile);
    QVERIFY(clicks.isEmpty());
    QCOMPARE(progress.last().at(1).toInt(), many);
    QCOMPARE(counts.last(), QVariantList({many, 0, 1}));
}

void TestCenterIntake::closingDuringAnIntakeEndsIt()
{
    const QString path = tone("model", "Same");
    ManyNames::give(path, m_folder->filePath("many"), many);
    connect(m_center.get(), &CenterWidget::emitIntakeProgress, m_center.get(), &CenterWidget::StopIntake);
    drop({m_folder->filePath("many")});
    QVERIFY(m_dialogs->texts.isEmpty());
    QVERIFY(!m_center->ListsAreInUse());
}

void TestCenterIntake::groupsOfTheCollectionAreRight()
{
    QSignalSpy counts(m_center.get(), SIGNAL(emitMusicCount(int, int, int)));
    QStringList files;
    for (const QString& kind : Fixtures::formats())
        files.append(tone(kind, "Everywhere", qPrintable(kind)));
    files.removeAll(m_folder->filePath("wma.wma")); // no drop takes it
    add({m_folder->path()});
    QCOMPARE(counts.last(), QVariantList({7, 0, 1}));
    m_center->slotShowDuplicateMusicView();
    const auto* group = static_cast<const DupMusicInfo*>(
        view<QListView>("m_dupMusicListView")->model()->index(0, 0).internalPointer());
    // Songs whose lengths differ belong to it all the same; the opener is the first of a length that occurs
    // twice.
    QVERIFY(group->musicList.size() >= 2);
}

QTEST_MAIN(TestCenterIntake)
#include "tst_centerintake.moc"
