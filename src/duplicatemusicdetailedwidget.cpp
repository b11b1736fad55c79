#include "duplicatemusicdetailedwidget.h"

#include "collection/counttext.h"
#include "common/keyuse.h"
#include "common/screenplace.h"
#include "common/screenreader.h"
#include "common/style.h"
#include "common/textfit.h"
#include "dupmusicbarwidget.h"
#include "loadplayerthread.h"
#include "playsongwidget.h"
#include "songs/bestsong.h"
#include "songs/clearingwords.h"
#include "ui_duplicatemusicdetailedwidget.h"

#include <QApplication>
#include <QHelpEvent>
#include <QLayout>
#include <QPainter>
#include <QScrollBar>
#include <QSet>
#include <QToolTip>

#include <utility>

DuplicateMusicDetailedWidget::DuplicateMusicDetailedWidget(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::DuplicateMusicDetailedWidget>()),
      m_pPlaySongWidget(std::make_unique<PlaySongWidget>())
{
    ui->setupUi(this);
    ui->scrollArea->viewport()->setAutoFillBackground(false);
    ui->m_scrollAreaWidget->setAutoFillBackground(false);
    ui->scrollArea->setFocusPolicy(Qt::NoFocus); // keys go from row to row
    ScreenReader::setRole(*ui->verticalLayoutWidget_2, QAccessible::List);
    ui->m_btnClearOne->setBtnImage(SkinPicture::path("btn_clearduplicate.png"));
    ui->m_btnClearAll->setBtnImage(SkinPicture::path("btn_ClearAll.png"));
    ui->m_btnClearOne->setChangesFiles(true);
    ui->m_btnClearAll->setChangesFiles(true);
    ui->m_btnClearAll->installEventFilter(this);
    connect(&KeyUse::instance(), &KeyUse::changed, ui->m_scrollAreaWidget, QOverload<>::of(&QWidget::update));
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) { goTo(now); });
    connect(ui->m_btnClearOne, SIGNAL(clicked()), this, SLOT(SlotOnBtnDeleteSongWasSelected()));
    connect(ui->m_btnClearAll, SIGNAL(clicked()), this, SLOT(SlotOnBtnDeleteAllSong()));
    connect(m_pPlaySongWidget.get(), &PlaySongWidget::emitTold, this,
            &DuplicateMusicDetailedWidget::emitTold);
    connect(m_pPlaySongWidget.get(), SIGNAL(emitSongStopBtnHidden()), this, SLOT(SlotSongStopBtnHidden()));
    connect(m_pPlaySongWidget.get(), SIGNAL(emitSongPlayBtnHidden()), this, SLOT(SlotSongPlayBtnHidden()));
}

DuplicateMusicDetailedWidget::~DuplicateMusicDetailedWidget()
{
    disconnect(qApp, nullptr, this, nullptr); // the focus moves on once the rest of this goes
}

void DuplicateMusicDetailedWidget::SetDuplicateMusicDetailedInfo(QList<QMusicInfo*>* list)
{
    m_pMusicList = list;
    hideRows();
    clearRows();
    if (!m_pMusicList)
        return;
    for (QMusicInfo* song : qAsConst(*m_pMusicList)) {
        DupMusicbarWidget* row = addRow(song);
        if (m_listBarWidget.size() == 1)
            row->SlotOnBtnCheckBox(); // the first song is kept unless the user wants otherwise
    }
    putRowsInTabOrder();
    setRowAtHand(m_listBarWidget.value(0));
    markBestRow();
    ui->m_scrollAreaWidget->show();
    ui->scrollArea->verticalScrollBar()->setValue(0);
    showButtons(true);
    show();
    LoadPlayerThread::startSoon();
}

/// While rows come or go: each that does so before the user's eyes looks at all the others.
void DuplicateMusicDetailedWidget::hideRows()
{
    ui->m_scrollAreaWidget->hide();
}

/// All at once: one by one, each would look at all the others.
void DuplicateMusicDetailedWidget::deleteRows(const QList<DupMusicbarWidget*>& rows)
{
    const QSet<QWidget*> going(rows.begin(), rows.end());
    QLayout& listed = *ui->m_ListverticalLayout;
    for (int place = listed.count() - 1; place >= 0; --place)
        if (going.contains(listed.itemAt(place)->widget()))
            delete listed.takeAt(place);
    QLayout& whole = *ui->m_scrollAreaWidget->layout();
    whole.setEnabled(false);
    qDeleteAll(rows);
    whole.setEnabled(true);
    whole.invalidate();
}

void DuplicateMusicDetailedWidget::clearRows()
{
    deleteRows(std::exchange(m_listBarWidget, {}));
    m_pCurPlayBar = nullptr; // what it started plays on
}

/// They come before what clears them, though they are made later. The last one goes there first: the toolkit
/// looks from each back to the next that takes the focus, and what was taken out leaves all that takes none.
void DuplicateMusicDetailedWidget::putRowsInTabOrder()
{
    QWidget* former = ui->m_btnClearOne;
    do
        former = former->previousInFocusChain();
    while (former->focusPolicy() == Qt::NoFocus); // of which no order can be made
    for (auto row = m_listBarWidget.crbegin(); row != m_listBarWidget.crend(); ++row)
        (*row)->putInTabOrder(former);
}

DupMusicbarWidget* DuplicateMusicDetailedWidget::addRow(QMusicInfo* song)
{
    auto* row = new DupMusicbarWidget(this);
    m_listBarWidget.append(row);
    row->SetDupMusicInfo(song);
    connect(row, SIGNAL(emitStartPlaySong(QMusicInfo*)), this, SLOT(SlotStartPlaySong(QMusicInfo*)));
    connect(row, &DupMusicbarWidget::emitTold, this, &DuplicateMusicDetailedWidget::emitTold);
    connect(row, SIGNAL(emitStopSong()), m_pPlaySongWidget.get(), SLOT(SlotOnBtnPause()));
    ui->m_ListverticalLayout->addWidget(row);
    row->show();
    return row;
}

/// Of rows that match their songs. A hint alone: nothing is kept or deleted by it.
void DuplicateMusicDetailedWidget::markBestRow()
{
    const int best = BestSong::positionIn(*m_pMusicList);
    for (int position = 0; position < m_listBarWidget.size(); ++position)
        m_listBarWidget.at(position)->setBest(position == best);
    countRows();
}

/// For those who hear it.
void DuplicateMusicDetailedWidget::countRows()
{
    const int count = m_listBarWidget.size() - m_listBarWidget.count(nullptr);
    ui->verticalLayoutWidget_2->setAccessibleName(QStringLiteral("Songs of this group, ") +
                                                  CountText::of(quint64(count), "song", "songs"));
}

DupMusicbarWidget* DuplicateMusicDetailedWidget::rowAtHand() const
{
    return isVisible() ? m_listBarWidget.value(m_rowAtHand) : nullptr;
}

DupMusicbarWidget* DuplicateMusicDetailedWidget::rowAt(const QPoint& place) const
{
    const QWidget* const viewport = ui->scrollArea->viewport();
    const bool inSight = isVisible() && viewport->rect().contains(viewport->mapFromGlobal(place));
    for (DupMusicbarWidget* row : m_listBarWidget)
        if (inSight && row && row->rect().contains(row->mapFromGlobal(place)))
            return row;
    return nullptr;
}

void DuplicateMusicDetailedWidget::setRowAtHand(DupMusicbarWidget* row)
{
    m_rowAtHand = m_listBarWidget.indexOf(row);
    for (DupMusicbarWidget* each : qAsConst(m_listBarWidget))
        if (each)
            each->setAtHand(each == row);
}

/// Keys act on the row that has the focus.
void DuplicateMusicDetailedWidget::goTo(const QWidget* focus)
{
    for (DupMusicbarWidget* row : qAsConst(m_listBarWidget))
        if (row && row->isAncestorOf(focus))
            setRowAtHand(row);
}

void DuplicateMusicDetailedWidget::moveRowAtHand(int steps)
{
    DupMusicbarWidget* const row = isVisible() ? m_listBarWidget.value(m_rowAtHand + steps) : nullptr;
    if (!row)
        return;
    setRowAtHand(row);
    ui->scrollArea->ensureWidgetVisible(row, 0, 0);
    ScreenReader::announce(*row);
}

void DuplicateMusicDetailedWidget::clear()
{
    if (ui->m_btnClearOne->isVisible())
        SlotOnBtnDeleteSongWasSelected();
}

QList<QMusicInfo*> DuplicateMusicDetailedWidget::songsOfRows(bool kept) const
{
    QList<QMusicInfo*> songs;
    for (const DupMusicbarWidget* row : m_listBarWidget)
        if (row && row->isKept() == kept && row->song())
            songs.append(row->song());
    return songs;
}

void DuplicateMusicDetailedWidget::SlotOnBtnDeleteSongWasSelected()
{
    if (!m_deleteDlg.isNotToAskAgain() && !userAgrees())
        return;
    SlotDeleteSongWasSelected();
}

bool DuplicateMusicDetailedWidget::userAgrees()
{
    QApplication::setOverrideCursor(Qt::WaitCursor); // thousands of files are looked for
    m_deleteDlg.setSongs(songsOfRows(false), keptSongs());
    QApplication::restoreOverrideCursor();
    ScreenPlace::putOver(m_deleteDlg, m_deleteDlg.rect(), *window());
    return m_deleteDlg.exec() == QDialog::Accepted;
}

/// Oddity 26: asks nothing.
void DuplicateMusicDetailedWidget::SlotOnBtnDeleteAllSong()
{
    if (!deleteUncheckedSongs())
        return;
    emit emitDeleteAllDupMusic();
    showButtons(false);
}

void DuplicateMusicDetailedWidget::SlotDeleteSongWasSelected()
{
    deleteUncheckedSongs();
    emit emitGroupCleared();
}

/// From the last row on. Oddity 25: the songs are those of the list, the marks those of the rows.
QList<QMusicInfo*> DuplicateMusicDetailedWidget::uncheckedSongs() const
{
    QList<QMusicInfo*> songs;
    for (int position = m_listBarWidget.size() - 1; position >= 0; --position) {
        QMusicInfo* const song = m_pMusicList->value(position);
        if (!song)
            break;
        if (isUnchecked(position))
            songs.append(song);
    }
    return songs;
}

bool DuplicateMusicDetailedWidget::isUnchecked(int position) const
{
    const DupMusicbarWidget* const row = m_listBarWidget.at(position);
    return row && !row->isKept();
}

/// False where the program ends before all of them are deleted.
bool DuplicateMusicDetailedWidget::deleteUncheckedSongs()
{
    if (!m_pMusicList)
        return true;
    const QList<QMusicInfo*> songs = uncheckedSongs();
    QList<DupMusicbarWidget*> rows;
    int position = m_listBarWidget.size(); // of the row whose song went last
    const int gone = m_clearing.run(songs, keptSongs(), *window(), [&](QMusicInfo* song) {
        do {
            --position;
        } while (!isUnchecked(position));
        rows.append(takeRow(position));
        emit emitDeleteDupMusicWasSelected(song);
    });
    hideRows();
    deleteRows(rows);
    if (gone > 0)
        emit emitSongsWent();
    showRowsThatAreLeft();
    update();
    return gone == songs.size();
}

void DuplicateMusicDetailedWidget::showRowsThatAreLeft()
{
    if (m_listBarWidget.size() == 1)
        removeLastRow();
    else if (!rowsMatchSongs())
        showKeeping(m_pMusicList, keptSongs()); // or the next deletion would take another row's song
    else
        markBestRow();
    setRowAtHand(m_listBarWidget.value(0));
    ui->m_scrollAreaWidget->show();
}

DupMusicbarWidget* DuplicateMusicDetailedWidget::takeRow(int position)
{
    DupMusicbarWidget* const row = m_listBarWidget.takeAt(position);
    if (row == m_pCurPlayBar)
        m_pCurPlayBar = nullptr;
    return row;
}

/// The panel empties itself once only the kept song is left; its place in the list stays.
void DuplicateMusicDetailedWidget::removeLastRow()
{
    if (!m_listBarWidget.first())
        return;
    deleteRows({takeRow(0)});
    m_listBarWidget.append(nullptr);
    countRows();
    showButtons(false);
}

bool DuplicateMusicDetailedWidget::rowsMatchSongs() const
{
    if (m_listBarWidget.size() != m_pMusicList->size())
        return m_listBarWidget.isEmpty();
    for (int position = 0; position < m_listBarWidget.size(); ++position)
        if (m_listBarWidget.at(position)->song() != m_pMusicList->at(position))
            return false;
    return true;
}

void DuplicateMusicDetailedWidget::showKeeping(QList<QMusicInfo*>* list, const QList<QMusicInfo*>& kept)
{
    SetDuplicateMusicDetailedInfo(list);
    const QSet<QMusicInfo*> marked(kept.begin(), kept.end());
    for (DupMusicbarWidget* row : qAsConst(m_listBarWidget))
        if (!row->isKept() && marked.contains(row->song()))
            row->SlotOnBtnCheckBox();
}

void DuplicateMusicDetailedWidget::SlotStartPlaySong(QMusicInfo* song)
{
    play(song, true);
    auto* row = qobject_cast<DupMusicbarWidget*>(sender());
    if (row != m_pCurPlayBar && m_pCurPlayBar)
        m_pCurPlayBar->SetBtnPauseHidden();
    m_pCurPlayBar = row;
}

void DuplicateMusicDetailedWidget::SlotBeginToPlayTableViewMusic(QMusicInfo* song)
{
    play(song, false);
}

void DuplicateMusicDetailedWidget::play(QMusicInfo* song, bool fromDupBar)
{
    m_pPlaySongWidget->SetMusicPlayInfo(song, fromDupBar);
    m_pPlaySongWidget->ShowBeside(window()->frameGeometry(), whatIsToBeSeen());
}

/// The column of panels, and dialogs that wait or will.
QVector<QRect> DuplicateMusicDetailedWidget::whatIsToBeSeen() const
{
    const QWidget* const column = parentWidget() ? parentWidget() : this;
    QVector<QRect> seen = {QRect(column->mapToGlobal(QPoint(0, 0)), column->size())};
    for (const QWidget* other : QApplication::topLevelWidgets())
        if (other->isVisible() && qobject_cast<const QDialog*>(other))
            seen.append(other->frameGeometry());
    seen.append(ScreenPlace::dialogPlace(*window()));
    return seen;
}

void DuplicateMusicDetailedWidget::SlotSongStopBtnHidden()
{
    if (m_pCurPlayBar)
        m_pCurPlayBar->SetBtnPauseHidden();
}

void DuplicateMusicDetailedWidget::SlotSongPlayBtnHidden()
{
    if (m_pCurPlayBar)
        m_pCurPlayBar->SetBtnPlayHidden();
}

void DuplicateMusicDetailedWidget::SlotSetDeleteBtn(int count)
{
    if (count == 0)
        showButtons(false);
}

/// With what they mean.
void DuplicateMusicDetailedWidget::showButtons(bool visible)
{
    ui->m_btnClearAll->setVisible(visible);
    ui->m_btnClearOne->setVisible(visible);
    ui->m_labCaption->setVisible(visible);
}

/// What clearing all groups would do is counted when it is asked for.
bool DuplicateMusicDetailedWidget::eventFilter(QObject* watched, QEvent* event)
{
    const QList<DupMusicInfo*>* const groups = m_clearing.lists().groups;
    if (watched != ui->m_btnClearAll || event->type() != QEvent::ToolTip || !groups)
        return QWidget::eventFilter(watched, event);
    const QString words = ClearingWords::beforeAll(*groups, m_pMusicList, keptSongs());
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), TextFit::tip(words), ui->m_btnClearAll);
    return true;
}

void DuplicateMusicDetailedWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    painter.fillRect(0, 0, 1, height(), Style::groupLine);
}
