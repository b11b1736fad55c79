#include "views/accessiblesong.h"
#include "views/spokenrows.h"
#include "views/viewfocus.h"

#include <QListView>
#include <QSignalSpy>
#include <QTableView>
#include <QtTest>

#include <memory>

namespace {
/// Many songs, which count how often one was asked for its words.
class ManySongs : public QAbstractListModel, public SpokenRows
{
public:
    explicit ManySongs(int count) : m_count(count) {}
    int rowCount(const QModelIndex& = QModelIndex()) const override { return m_count; }
    QVariant data(const QModelIndex&, int) const override { return QVariant(); }
    QString nameOf(int row) const override
    {
        ++m_asked;
        return QString("Song %1").arg(row);
    }
    QString restOf(int row) const override { return QString("About %1").arg(row); }
    void setCount(int count)
    {
        beginResetModel();
        m_count = count;
        endResetModel();
    }
    int asked() const { return m_asked; }

private:
    int m_count;
    mutable int m_asked = 0;
};
} // namespace

/// The views as those hear them who have the screen read out.
class TestAccessibleSongs : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theListHasWhatTheViewShows();
    void aListOfManyIsNotWalked();
    void theViewsThemselvesTellNothing();
    void whatAViewTellsOfASongConcernsTheSong();
    void aHiddenViewHasNoItems();
    void theMarkedSongIsSelected();
    void theMarkedSongHasTheFocusOfTheList();
    void aPressIsAClick();
    void aSongCanBePlayed();
    void aLockedViewTakesNoPress();
    void aPressOnWhatIsGoneDoesNothing();
    void anotherListHasOtherItems();
    void aShorterListLosesItsItems();
    void aSongIsFoundByItsPlace();

private:
    static QAccessibleInterface* of(QObject* object) { return QAccessible::queryAccessibleInterface(object); }
    QAccessibleInterface* list() const { return of(m_focus); }
    void press(int row, const QString& action = QAccessibleActionInterface::pressAction()) const
    {
        list()->child(row)->actionInterface()->doAction(action);
        QCoreApplication::processEvents();
    }

    std::unique_ptr<ManySongs> m_songs;
    std::unique_ptr<QWidget> m_area;
    QListView* m_grid = nullptr;
    QTableView* m_table = nullptr;
    ViewFocus* m_focus = nullptr;
};

void TestAccessibleSongs::init()
{
    m_songs = std::make_unique<ManySongs>(100000);
    m_area = std::make_unique<QWidget>();
    m_area->resize(400, 300);
    m_grid = new QListView(m_area.get());
    m_table = new QTableView(m_area.get());
    auto* other = new QListView(m_area.get());
    for (QAbstractItemView* view :
         {static_cast<QAbstractItemView*>(m_grid), static_cast<QAbstractItemView*>(m_table),
          static_cast<QAbstractItemView*>(other)}) {
        view->setModel(m_songs.get());
        view->setFocusPolicy(Qt::NoFocus);
        view->resize(400, 300);
        view->setVisible(view == m_grid);
    }
    m_grid->setUniformItemSizes(true);
    m_focus = new ViewFocus({m_grid, m_table, other, other}, m_area.get());
    m_focus->follow(*m_grid);
    m_area->show();
    QApplication::setActiveWindow(m_area.get());
    m_focus->setFocus();
}

void TestAccessibleSongs::cleanup()
{
    m_area.reset();
    m_songs.reset();
}

void TestAccessibleSongs::theListHasWhatTheViewShows()
{
    QCOMPARE(list()->role(), QAccessible::List);
    QCOMPARE(list()->childCount(), 100000);
    QAccessibleInterface* const last = list()->child(99999);
    QVERIFY(last->isValid());
    QCOMPARE(last->role(), QAccessible::ListItem);
    QCOMPARE(last->text(QAccessible::Name), QString("Song 99999"));
    QCOMPARE(last->text(QAccessible::Description), QString("About 99999"));
    QCOMPARE(last->parent(), list());
    QCOMPARE(list()->indexOfChild(last), 99999);
    QCOMPARE(last->window(), m_area->windowHandle());
    QCOMPARE(list()->child(100000), nullptr);
    QCOMPARE(list()->child(-1), nullptr);
    QCOMPARE(list()->child(5), list()->child(5));
    QVERIFY(last->state().offscreen);
    QVERIFY(!list()->child(0)->state().offscreen);
    QVERIFY(list()->tableInterface()); // by which nobody asks for all items at once
    QCOMPARE(list()->tableInterface()->cellAt(7, 0), list()->child(7));
}

void TestAccessibleSongs::aListOfManyIsNotWalked()
{
    QVERIFY(list()->isValid());
    list()->text(QAccessible::Name);
    list()->state();
    list()->childCount();
    m_grid->setCurrentIndex(m_songs->index(50000, 0));
    QCOMPARE(list()->focusChild(), list()->child(50000));
    list()->childAt(10, 10);
    QCOMPARE(m_songs->asked(), 0);
    list()->child(3)->text(QAccessible::Name);
    QCOMPARE(m_songs->asked(), 1);
}

void TestAccessibleSongs::theViewsThemselvesTellNothing()
{
    for (QWidget* view : {static_cast<QWidget*>(m_grid), static_cast<QWidget*>(m_table)}) {
        QCOMPARE(of(view)->role(), QAccessible::Client);
        QCOMPARE(of(view)->childCount(), 0);
    }
    QListView other; // nothing has the focus for it
    other.setModel(m_songs.get());
    QCOMPARE(of(&other)->role(), QAccessible::List);
}

/// As the views tell it, a table with its headers.
void TestAccessibleSongs::whatAViewTellsOfASongConcernsTheSong()
{
    QAccessibleEvent inGrid(m_grid, QAccessible::SelectionAdd);
    inGrid.setChild(4);
    QCOMPARE(inGrid.accessibleInterface(), list()->child(4));
    QAccessibleEvent inTable(m_table, QAccessible::SelectionAdd);
    inTable.setChild((4 + 1) * 2 + 1);
    QCOMPARE(inTable.accessibleInterface(), of(m_table)); // out of sight
    m_grid->hide();
    m_table->show();
    m_focus->follow(*m_table);
    QCOMPARE(inTable.accessibleInterface(), list()->child(4));
}

void TestAccessibleSongs::aHiddenViewHasNoItems()
{
    QAccessibleInterface* const song = list()->child(0);
    m_grid->hide();
    m_focus->follow(*m_grid);
    QCOMPARE(list()->childCount(), 0);
    QCOMPARE(list()->child(0), nullptr);
    QVERIFY(!song->isValid());
    QCOMPARE(list()->childAt(5, 5), nullptr);
}

void TestAccessibleSongs::theMarkedSongIsSelected()
{
    QVERIFY(!list()->child(2)->state().selected);
    QVERIFY(list()->tableInterface()->selectedRows().isEmpty());
    m_grid->setCurrentIndex(m_songs->index(2, 0));
    QVERIFY(list()->child(2)->state().selected);
    QVERIFY(!list()->child(1)->state().selected);
    QCOMPARE(list()->tableInterface()->selectedCells(), QList<QAccessibleInterface*>{list()->child(2)});
    QCOMPARE(list()->child(2)->tableCellInterface()->rowIndex(), 2);
}

void TestAccessibleSongs::theMarkedSongHasTheFocusOfTheList()
{
    QTRY_VERIFY(m_focus->hasFocus());
    QCOMPARE(list()->focusChild(), nullptr);
    m_grid->setCurrentIndex(m_songs->index(2, 0));
    QCOMPARE(list()->focusChild(), list()->child(2));
    QVERIFY(list()->child(2)->state().focused);
    m_focus->clearFocus();
    QCOMPARE(list()->focusChild(), nullptr);
    QVERIFY(!list()->child(2)->state().focused);
}

void TestAccessibleSongs::aPressIsAClick()
{
    QSignalSpy clicked(m_grid, &QListView::clicked);
    m_focus->clearFocus();
    list()->child(4)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QVERIFY(clicked.isEmpty()); // who asks is answered first
    QTRY_COMPARE(clicked.size(), 1);
    QCOMPARE(clicked.first().first().toModelIndex().row(), 4);
    QVERIFY(m_focus->hasFocus());
    press(5, QAccessibleActionInterface::setFocusAction());
    QCOMPARE(clicked.size(), 2);
    press(5, "whatever");
    QCOMPARE(clicked.size(), 2);
}

void TestAccessibleSongs::aSongCanBePlayed()
{
    QSignalSpy played(m_grid, &QListView::doubleClicked);
    QSignalSpy clicked(m_grid, &QListView::clicked);
    QVERIFY(list()->child(4)->actionInterface()->actionNames().contains("Play"));
    press(4, AccessibleSong::playAction());
    QCOMPARE(played.size(), 1);
    QCOMPARE(played.first().first().toModelIndex().row(), 4);
    QVERIFY(clicked.isEmpty());
}

void TestAccessibleSongs::aLockedViewTakesNoPress()
{
    QSignalSpy clicked(m_grid, &QListView::clicked);
    m_grid->setEnabled(false);
    QVERIFY(list()->child(4)->state().disabled);
    press(4);
    QVERIFY(clicked.isEmpty());
}

void TestAccessibleSongs::aPressOnWhatIsGoneDoesNothing()
{
    QSignalSpy clicked(m_grid, &QListView::clicked);
    list()->child(4)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    m_songs->setCount(3);
    QCoreApplication::processEvents();
    QVERIFY(clicked.isEmpty());
}

/// Or the song in the place of the one that was heard last would be taken for that.
void TestAccessibleSongs::anotherListHasOtherItems()
{
    QAccessible::Id former = QAccessible::uniqueId(list()->child(2));
    for (int i = 0; i < 3; ++i) {
        QAccessibleTableModelChangeEvent reset(m_grid, QAccessibleTableModelChangeEvent::ModelReset);
        of(m_grid)->tableInterface()->modelChange(&reset); // as the view has it known
        QVERIFY(!QAccessible::accessibleInterface(former)->isValid());
        const QAccessible::Id now = QAccessible::uniqueId(list()->child(2));
        QVERIFY(now != former);
        QVERIFY(list()->child(2)->isValid());
        former = now;
    }
}

void TestAccessibleSongs::aShorterListLosesItsItems()
{
    QAccessibleInterface* const song = list()->child(10);
    m_songs->setCount(5);
    QVERIFY(!song->isValid());
    QCOMPARE(song->text(QAccessible::Name), QString());
    QVERIFY(song->state().invalid);
    QCOMPARE(song->rect(), QRect());
    QCOMPARE(list()->childCount(), 5);
}

void TestAccessibleSongs::aSongIsFoundByItsPlace()
{
    const QRect place = list()->child(3)->rect();
    QVERIFY(!place.isEmpty());
    QCOMPARE(list()->childAt(place.center().x(), place.center().y()), list()->child(3));
}

QTEST_MAIN(TestAccessibleSongs)
#include "tst_accessiblesongs.moc"
