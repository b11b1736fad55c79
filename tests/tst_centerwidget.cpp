#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "centerwidget.h"
#include "common/style.h"
#include "duplicatemusicdetailedwidget.h"
#include "dupmusicinfo.h"
#include "fixtures.h"
#include "guidriver.h"
#include "itunes/itunestrackrecord.h"
#include "musicdetailedinfowidget.h"
#include "qiorvoutil.h"
#include "qmusicinfo.h"
#include "startup.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QListView>
#include <QMimeData>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTableView>
#include <QTemporaryDir>
#include <QtTest>

class TestCenterWidget : public QObject
{
    Q_OBJECT

public:
    static void initMain()
    {
        qputenv("MELODRIFT_AUDIO_OUTPUT", "null");
        Startup::beforeApplication();
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    }

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void startsWithEveryViewHidden();
    void confirmingClassifiesWhatWasAdded();
    void unconfirmedSongsAreClassifiedWithTheNextIntake();
    void theSameFileTwiceIsTwoSongs();
    void aDropWithoutMusicOffersTheDialog();
    void theDialogTakesWindowsMediaToo();
    void aCancelledDialogChangesNothing();
    void scanningWithoutFilesSaysSo();
    void displayAndKindChooseTheView();
    void viewsLookAsTheyShould();
    void aClickSelectsInBothViewsAndShowsTheSong_data() { bothDisplays(); }
    void aClickSelectsInBothViewsAndShowsTheSong();
    void aClickOnAGroupShowsItsSongs_data() { bothDisplays(); }
    void aClickOnAGroupShowsItsSongs();
    void aBanKeepsClicksFromSongsButNotFromGroups();
    void aDoubleClickPlays_data() { bothDisplays(); }
    void aDoubleClickPlays();
    void panelsAreHeard();
    void panelsHear();
    void switchingModesEmptiesAndRefusesDrops();
    void dropsLandOnTheListToo();
    void iTunesSongsAreClassifiedInTheirOrder();
    void editsAreClassifiedAgain();
    void anEditKeepsThePlaceInTheList();
    void theOpenButtonLiesUnderTheView();
    void ctrlOOpensTheDialogInTheLocalModeOnly();
    void aDialogThatOutlivesItsModeAddsNothing();
    void aMessageThatOutlivesItsModeScansNothing();
    void longIntakesShowProgressAndTakeNoInput();
    void closingDuringAnIntakeEndsIt();
    void groupsOfTheCollectionAreRight();

private:
    template <typename View>
    View* view(const char* name) const
    {
        return m_center->findChild<View*>(name);
    }
    static void bothDisplays();
    void display(bool table) const;
    QString tone(const QString& name, const QString& title, const char* kind = "mp3") const;
    void drop(const QStringList& paths, QWidget* target = nullptr);
    void add(const QStringList& paths);
    static void clickItem(QAbstractItemView* view, int row, bool twice = false);

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<CenterWidget> m_center;
    std::unique_ptr<DialogDriver> m_dialogs;
};

void TestCenterWidget::initTestCase()
{
    Startup::afterApplication();
}

void TestCenterWidget::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_center = std::make_unique<CenterWidget>();
    m_dialogs = std::make_unique<DialogDriver>();
    m_center->resize(920, 585);
    m_center->show();
    m_center->SwitchToLocalCleanModel();
}

void TestCenterWidget::cleanup()
{
    m_center.reset();
    m_dialogs.reset();
    QIOrvoUtil::m_cleanMode = false;
    m_local_add_or_ScanAgain = 0;
}

/// Rows for tests of what grid and table have in common.
void TestCenterWidget::bothDisplays()
{
    QTest::addColumn<bool>("table");
    QTest::newRow("grid") << false;
    QTest::newRow("table") << true;
}

void TestCenterWidget::display(bool table) const
{
    if (table)
        m_center->OnBtnTableView();
    else
        m_center->OnBtnGridView();
}

QString TestCenterWidget::tone(const QString& name, const QString& title, const char* kind) const
{
    const QString path = Fixtures::copyTone(kind, m_folder->path(), name);
    AudioFile::write(path, {{TAG_TITLE, title}, {TAG_ARTIST, "A"}, {TAG_ALBUM, "B"}, {TAG_GENRE, "Pop"}});
    return path;
}

void TestCenterWidget::drop(const QStringList& paths, QWidget* target)
{
    QWidget* receiver = target ? target : m_center.get();
    QMimeData data;
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls.append(QUrl::fromLocalFile(path));
    data.setUrls(urls);
    const QPoint middle = receiver->rect().center();
    QDragEnterEvent enter(middle, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(receiver, &enter);
    QDropEvent event(middle, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(receiver, &event);
    QTest::qWait(0);
    QTRY_VERIFY(!QApplication::activeModalWidget());
}

void TestCenterWidget::add(const QStringList& paths)
{
    m_dialogs->expectButton("m_btnType");
    drop(paths);
}

void TestCenterWidget::clickItem(QAbstractItemView* view, int row, bool twice)
{
    const QPoint place = view->visualRect(view->model()->index(row, 0)).center();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    if (twice)
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, place);
}

void TestCenterWidget::startsWithEveryViewHidden()
{
    const CenterWidget fresh;
    for (const char* name :
         {"m_allMusicListView", "m_allMusicTableView", "m_dupMusicListView", "m_dupMusicTableView"})
        QVERIFY(fresh.findChild<QWidget*>(name)->isHidden());
    QCOMPARE(fresh.findChild<QTableView*>("m_dupMusicTableView")->model()->columnCount(), 7);
    QVERIFY(fresh.findChild<QWidget*>("m_btnOpen")->isHidden());
    QVERIFY(fresh.findChild<QWidget*>("m_musicDetailedWidget")->isHidden());
    QVERIFY(!fresh.findChild<QWidget*>("m_btnGridDisplay")->isEnabled());
    QVERIFY(!fresh.acceptDrops());
}

void TestCenterWidget::confirmingClassifiesWhatWasAdded()
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

void TestCenterWidget::unconfirmedSongsAreClassifiedWithTheNextIntake()
{
    QSignalSpy counts(m_center.get(), SIGNAL(emitMusicCount(int, int, int)));
    drop({tone("a", "One")}); // its message is closed, not confirmed
    QCOMPARE(counts.count(), 0);
    add({tone("b", "Two")});
    QCOMPARE(counts.last(), QVariantList({2, 0, 0}));
}

void TestCenterWidget::theSameFileTwiceIsTwoSongs()
{
    QSignalSpy counts(m_center.get(), SIGNAL(emitMusicCount(int, int, int)));
    const QString path = tone("a", "One");
    add({path, path});
    QCOMPARE(counts.last(), QVariantList({2, 0, 1}));
}

void TestCenterWidget::aDropWithoutMusicOffersTheDialog()
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

void TestCenterWidget::theDialogTakesWindowsMediaToo()
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

void TestCenterWidget::aCancelledDialogChangesNothing()
{
    m_center->OnBtnOpenFile(); // the driver closes the dialog
    QVERIFY(m_dialogs->texts.isEmpty());
    QCOMPARE(m_local_add_or_ScanAgain, 0);
}

void TestCenterWidget::scanningWithoutFilesSaysSo()
{
    QSignalSpy counts(m_center.get(), SIGNAL(emitMusicCount(int, int, int)));
    m_center->setLocalMusicInfo();
    QCOMPARE(m_dialogs->texts, QStringList({"Sorry,Please add file from local."}));
    QCOMPARE(counts.count(), 0);
}

void TestCenterWidget::displayAndKindChooseTheView()
{
    add({tone("a", "Same"), tone("b", "Same")});
    const auto shown = [this] {
        QStringList names;
        for (const QAbstractItemView* each : m_center->findChildren<QAbstractItemView*>())
            if (each->isVisible() && each->objectName().startsWith("m_"))
                names.append(each->objectName());
        return names;
    };
    auto* grid = m_center->findChild<QImageButton*>("m_btnGridDisplay");
    auto* table = m_center->findChild<QImageButton*>("m_btnTableDisplay");
    QCOMPARE(shown(), QStringList({"m_allMusicListView"}));
    m_center->slotShowDuplicateMusicView();
    QCOMPARE(shown(), QStringList({"m_dupMusicListView"}));
    QTest::mouseClick(table, Qt::LeftButton);
    QCOMPARE(shown(), QStringList({"m_dupMusicTableView"}));
    QVERIFY(!table->isEnabled() && grid->isEnabled());
    m_center->slotShowUndefineMusicView();
    QCOMPARE(shown(), QStringList({"m_allMusicTableView"}));
    QCOMPARE(view<QTableView>("m_allMusicTableView")->model()->rowCount(), 0);
    QCOMPARE(view<QTableView>("m_allMusicTableView")->columnWidth(0), 500);
    m_center->slotShowDuplicateMusicView();
    QTest::mouseClick(grid, Qt::LeftButton);
    QCOMPARE(shown(), QStringList({"m_dupMusicListView"}));
    m_center->slotShowAllmusicView();
    QCOMPARE(shown(), QStringList({"m_allMusicListView"}));
    QCOMPARE(view<QListView>("m_allMusicListView")->model()->rowCount(), 2);
    m_center->ShowWidget();
    QCOMPARE(shown(), QStringList({"m_allMusicListView"}));
}

void TestCenterWidget::viewsLookAsTheyShould()
{
    for (const char* name : {"m_allMusicListView", "m_dupMusicListView"}) {
        const auto* list = view<QListView>(name);
        QCOMPARE(list->viewMode(), QListView::IconMode);
        QCOMPARE(list->resizeMode(), QListView::Adjust);
        QCOMPARE(list->iconSize(), QSize(100, 120));
        QCOMPARE(list->gridSize(), QSize(120, 140));
        QCOMPARE(list->movement(), QListView::Snap);
        QCOMPARE(list->dragDropMode(), QAbstractItemView::DragDrop);
        QCOMPARE(list->focusPolicy(), Qt::NoFocus);
        QCOMPARE(list->frameShape(), QFrame::NoFrame);
        QVERIFY(list->uniformItemSizes()); // or a hundred thousand songs take seconds to lay out
        QCOMPARE(list->palette().color(QPalette::Text), QColor(0x28, 0x40, 0x4F));
        QCOMPARE(list->palette().color(QPalette::Disabled, QPalette::Text), QColor(0x28, 0x40, 0x4F));
    }
    QCOMPARE(view<QListView>("m_allMusicListView")->font().pointSize(), 9);
    QVERIFY(view<QListView>("m_allMusicListView")->itemDelegate()->inherits("CoverGridDelegate"));
    QVERIFY(view<QListView>("m_dupMusicListView")->itemDelegate()->inherits("PaintDupNumberDelegate"));
    for (const char* name : {"m_allMusicTableView", "m_dupMusicTableView"}) {
        const auto* table = view<QTableView>(name);
        QCOMPARE(table->frameShape(), QFrame::NoFrame);
        QVERIFY(!table->showGrid());
        QVERIFY(table->verticalHeader()->isHidden());
        QCOMPARE(table->verticalHeader()->defaultSectionSize(), 26);
        QCOMPARE(table->horizontalHeader()->defaultSectionSize(), 130);
        QVERIFY(table->horizontalHeader()->stretchLastSection());
        QVERIFY(!table->horizontalHeader()->highlightSections());
        QVERIFY(table->horizontalHeader()->styleSheet().contains("background:" + Style::header.name()));
        QCOMPARE(table->selectionMode(), QAbstractItemView::SingleSelection);
        QCOMPARE(table->palette().color(QPalette::Text), QColor(0x28, 0x40, 0x4F));
        QCOMPARE(table->palette().color(QPalette::Disabled, QPalette::Text), QColor(0x28, 0x40, 0x4F));
        QCOMPARE(table->editTriggers(), QAbstractItemView::NoEditTriggers);
        QCOMPARE(table->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(table->focusPolicy(), Qt::NoFocus);
    }
}

void TestCenterWidget::aClickSelectsInBothViewsAndShowsTheSong()
{
    QFETCH(bool, table);
    add({tone("a", "One"), tone("b", "Two")});
    display(table);
    auto* panel = m_center->findChild<MusicDetailedInfoWidget*>();
    clickItem(view<QAbstractItemView>(table ? "m_allMusicTableView" : "m_allMusicListView"), 1);
    QVERIFY(panel->isVisible());
    QCOMPARE(panel->findChild<QLabel*>("m_titleName")->text(), QString("Two"));
    QCOMPARE(view<QListView>("m_allMusicListView")->currentIndex().row(), 1);
    QCOMPARE(view<QTableView>("m_allMusicTableView")->currentIndex().row(), 1);
    m_center->SlotHiddenMusicDetailedWidget();
    QVERIFY(panel->isHidden());
}

void TestCenterWidget::aClickOnAGroupShowsItsSongs()
{
    QFETCH(bool, table);
    add({tone("a", "One"), tone("b", "Two"), tone("c", "One"), tone("d", "Two"), tone("e", "Two")});
    m_center->slotShowDuplicateMusicView();
    display(table);
    auto* panel = m_center->findChild<DuplicateMusicDetailedWidget*>();
    clickItem(view<QAbstractItemView>(table ? "m_dupMusicTableView" : "m_dupMusicListView"), 1);
    QVERIFY(panel->isVisible());
    QCOMPARE(panel->keptSongs().size(), 1);
    QCOMPARE(panel->keptSongs().first()->localInfo->title, QString("Two"));
    QCOMPARE(view<QListView>("m_dupMusicListView")->currentIndex().row(), 1);
    QCOMPARE(view<QTableView>("m_dupMusicTableView")->currentIndex().row(), 1);
    m_center->SlotHiddenMusicDetailedWidget();
    QVERIFY(panel->isHidden());
}

void TestCenterWidget::aBanKeepsClicksFromSongsButNotFromGroups()
{
    QSignalSpy bans(m_center.get(), SIGNAL(emitForbidClickNavigBtn(bool)));
    add({tone("a", "Same"), tone("b", "Same")});
    m_center->SlotForbidToClickView(true);
    QCOMPARE(bans.last(), QVariantList({true}));
    clickItem(view<QListView>("m_allMusicListView"), 1);
    QVERIFY(m_center->findChild<QWidget*>("m_musicDetailedWidget")->isHidden());
    QCOMPARE(view<QTableView>("m_allMusicTableView")->currentIndex().row(), -1);
    m_center->slotShowDuplicateMusicView();
    clickItem(view<QListView>("m_dupMusicListView"), 0);
    QVERIFY(m_center->findChild<QWidget*>("m_dupMusicDetailedWidget")->isVisible());
    QCOMPARE(view<QTableView>("m_dupMusicTableView")->currentIndex().row(), 0);
    m_center->SlotForbidToClickView(false);
    m_center->slotShowAllmusicView();
    clickItem(view<QListView>("m_allMusicListView"), 1);
    QVERIFY(m_center->findChild<QWidget*>("m_musicDetailedWidget")->isVisible());
    m_center->SlotForbidToClickView(true);
    clickItem(view<QListView>("m_allMusicListView"), 0); // the mark stays where the song is that shows
    for (const QAbstractItemView* list :
         m_center->findChildren<QAbstractItemView*>(QRegularExpression(QStringLiteral("^m_allMusic"))))
        QCOMPARE(list->currentIndex().row(), 1);
    m_center->SlotForbidToClickView(false);
}

void TestCenterWidget::aDoubleClickPlays()
{
    QFETCH(bool, table);
    QList<QMusicInfo*> played;
    connect(m_center.get(), &CenterWidget::emitStartToPlayMusic, this,
            [&played](QMusicInfo* song) { played.append(song); });
    add({tone("a", "Same"), tone("b", "Same"), tone("c", "Other")});
    display(table);
    clickItem(view<QAbstractItemView>(table ? "m_allMusicTableView" : "m_allMusicListView"), 2, true);
    QCOMPARE(played.size(), 1);
    QCOMPARE(played.last()->localInfo->title, QString("Other"));
    m_center->slotShowDuplicateMusicView();
    clickItem(view<QAbstractItemView>(table ? "m_dupMusicTableView" : "m_dupMusicListView"), 0, true);
    QCOMPARE(played.size(), 2);
    QVERIFY(played.last()->localInfo->filePath.endsWith("a.mp3"));
    m_center->SlotDoubleClickDupMusicIndex(QModelIndex());
    m_center->SlotDoubleClickAllMusicIndex(QModelIndex());
    QCOMPARE(played.size(), 2);
}

/// What the panels of one song and of one group say reaches the lists.
void TestCenterWidget::panelsAreHeard()
{
    add({tone("a", "Same"), tone("b", "Same"), tone("c", "Same"), tone("d", "More"), tone("e", "More")});
    auto* details = m_center->findChild<MusicDetailedInfoWidget*>();
    auto* group = m_center->findChild<DuplicateMusicDetailedWidget*>();
    QSignalSpy classified(m_center.get(), SIGNAL(emitUndefinedMusicCount(int)));
    emit details->emitMusicInfoHasChanged();
    QCOMPARE(classified.size(), 1);
    emit details->emitMusicCoverHasChanged();
    QCOMPARE(classified.size(), 2);
    QSignalSpy bans(m_center.get(), SIGNAL(emitForbidClickNavigBtn(bool)));
    emit details->emitForbidToClickView(true);
    QCOMPARE(bans, QList<QVariantList>({{true}}));
    emit details->emitForbidToClickView(false);
    QCOMPARE(bans.size(), 2);

    QSignalSpy counts(m_center.get(), SIGNAL(emitMusicCount(int, int, int)));
    auto* model = view<QListView>("m_allMusicListView")->model();
    auto* last = static_cast<QMusicInfo*>(model->index(2, 0).internalPointer());
    emit group->emitDeleteDupMusicWasSelected(last);
    QCOMPARE(counts.last(), QVariantList({4, 0, 2}));
    QVERIFY(!QFile::exists(m_folder->filePath("c.mp3")));
    m_dialogs->expect([](QWidget*) {}); // the waiting dialog closes itself
    emit group->emitDeleteAllDupMusic();
    QCOMPARE(counts.last(), QVariantList({2, 0, 0}));
}

/// What the lists say reaches the panel of one group.
void TestCenterWidget::panelsHear()
{
    add({tone("a", "Same"), tone("b", "Same")});
    m_center->slotShowDuplicateMusicView();
    clickItem(view<QListView>("m_dupMusicListView"), 0);
    auto* group = m_center->findChild<DuplicateMusicDetailedWidget*>();
    const auto* clearAll = group->findChild<QWidget*>("m_btnClearAll");
    QVERIFY(clearAll->isVisible());
    emit m_center->emitDuplicateMusicCount(0);
    QVERIFY(clearAll->isHidden());
    const auto players = [] {
        int visible = 0;
        for (const QWidget* window : QApplication::topLevelWidgets())
            visible += window->inherits("PlaySongWidget") && window->isVisible() ? 1 : 0;
        return visible;
    };
    QCOMPARE(players(), 0);
    clickItem(view<QListView>("m_dupMusicListView"), 0, true);
    QCOMPARE(players(), 1);
}

void TestCenterWidget::switchingModesEmptiesAndRefusesDrops()
{
    add({tone("a", "Same"), tone("b", "Same")});
    clickItem(view<QListView>("m_allMusicListView"), 0);
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

void TestCenterWidget::dropsLandOnTheListToo()
{
    QSignalSpy counts(m_center.get(), SIGNAL(emitMusicCount(int, int, int)));
    add({tone("a", "One")});
    // As the window system delivers it: to the widget under the pointer, and up until someone takes it.
    m_dialogs->expectButton("m_btnType");
    drop({tone("b", "Two")}, view<QListView>("m_allMusicListView")->viewport());
    QCOMPARE(counts.last(), QVariantList({2, 0, 0}));
}

void TestCenterWidget::iTunesSongsAreClassifiedInTheirOrder()
{
    m_center->SwitchToiTunesCleanModel();
    QSignalSpy undefined(m_center.get(), SIGNAL(emitUndefinedMusicCount(int)));
    QSignalSpy groups(m_center.get(), SIGNAL(emitDuplicateMusicCount(int)));
    iTunesTrackRecord records[3] = {};
    QList<QMusicInfo*> songs;
    for (iTunesTrackRecord& record : records) {
        record.name = "Hello";
        record.artist = record.album = record.genre = "x";
        record.duration = 120000;
        songs.append(new QMusicInfo);
        songs.last()->track = &record;
    }
    records[2].genre = nullptr;
    m_center->setMusicInfoList(&songs);
    QCOMPARE(undefined.last(), QVariantList({1}));
    QCOMPARE(groups.last(), QVariantList({1}));
    QCOMPARE(view<QListView>("m_allMusicListView")->model()->rowCount(), 3);
    QList<QMusicInfo*> none;
    m_center->setMusicInfoList(&none);
    QCOMPARE(groups.last(), QVariantList({0}));
    m_center->SwitchToLocalCleanModel();
    qDeleteAll(songs);
}

void TestCenterWidget::editsAreClassifiedAgain()
{
    add({tone("a", "One"), tone("b", "Two")});
    QSignalSpy undefined(m_center.get(), SIGNAL(emitUndefinedMusicCount(int)));
    QSignalSpy groups(m_center.get(), SIGNAL(emitDuplicateMusicCount(int)));
    auto* model = view<QListView>("m_allMusicListView")->model();
    static_cast<QMusicInfo*>(model->index(1, 0).internalPointer())->localInfo->title = "One";
    m_center->SlotMusicInfoHaveBeEdited();
    QCOMPARE(undefined.last(), QVariantList({0}));
    QCOMPARE(groups.last(), QVariantList({1}));
    static_cast<QMusicInfo*>(model->index(0, 0).internalPointer())->localInfo->genre.clear();
    m_center->slotShowUndefineMusicView();
    m_center->SlotMusicInfoHaveBeEdited();
    QCOMPARE(undefined.last(), QVariantList({1}));
    QCOMPARE(model->rowCount(), 1); // the undefined view follows
}

void TestCenterWidget::anEditKeepsThePlaceInTheList()
{
    QStringList paths = {tone("song", "Title")};
    for (int i = 1; i < 60; ++i) {
        paths.append(m_folder->filePath(QString("song%1.mp3").arg(i)));
        QVERIFY(QFile::copy(paths.first(), paths.last()));
    }
    add(paths);
    auto* list = view<QListView>("m_allMusicListView");
    list->verticalScrollBar()->setValue(600);
    clickItem(list, 25);
    auto* panel = m_center->findChild<MusicDetailedInfoWidget*>();
    panel->SlotOnBtnEdit();
    panel->findChild<QLineEdit*>("m_lineTitle")->setText("Edited");
    panel->SlotOnBtnApply();
    QCOMPARE(list->verticalScrollBar()->value(), 600);
    QCOMPARE(list->currentIndex().row(), 25);
    QCOMPARE(list->currentIndex().data().toString(), QStringLiteral("Edited"));
    QCOMPARE(view<QTableView>("m_allMusicTableView")->currentIndex().row(), 25);
}

void TestCenterWidget::theOpenButtonLiesUnderTheView()
{
    auto* open = m_center->findChild<QImageButton*>("m_btnOpen");
    m_center->grab();
    QCOMPARE(open->pos(), QPoint((920 - open->width() - 330) / 2, 585 - 250));
    QCOMPARE(m_center->childAt(open->geometry().center()), open);
    QVERIFY(open->focusPolicy() != Qt::NoFocus);
    add({tone("a", "One")});
    QVERIFY(open->isVisible());
    QVERIFY(m_center->childAt(open->geometry().center()) != open);
    QCOMPARE(open->focusPolicy(), Qt::NoFocus);
}

void TestCenterWidget::ctrlOOpensTheDialogInTheLocalModeOnly()
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

void TestCenterWidget::aDialogThatOutlivesItsModeAddsNothing()
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

void TestCenterWidget::aMessageThatOutlivesItsModeScansNothing()
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

void TestCenterWidget::longIntakesShowProgressAndTakeNoInput()
{
    // Enough names of one file for more than a blink.
    const QString path = tone("model", "Same");
    QDir().mkpath(m_folder->filePath("many"));
    for (int i = 0; i < 20000; ++i)
        QFile::link(path, m_folder->filePath(QString("many/%1.mp3").arg(i)));
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
    QCOMPARE(progress.last().at(1).toInt(), 20000);
    QCOMPARE(counts.last(), QVariantList({20000, 0, 1}));
}

void TestCenterWidget::closingDuringAnIntakeEndsIt()
{
    const QString path = tone("model", "Same");
    QDir().mkpath(m_folder->filePath("many"));
    for (int i = 0; i < 20000; ++i)
        QFile::link(path, m_folder->filePath(QString("many/%1.mp3").arg(i)));
    connect(m_center.get(), &CenterWidget::emitIntakeProgress, m_center.get(), &CenterWidget::StopIntake);
    drop({m_folder->filePath("many")});
    QVERIFY(m_dialogs->texts.isEmpty());
    QVERIFY(!m_center->ListsAreInUse());
}

void TestCenterWidget::groupsOfTheCollectionAreRight()
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

QTEST_MAIN(TestCenterWidget)
#include "tst_centerwidget.moc"
