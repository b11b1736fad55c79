#include "centerkeys.h"

#include "common/paintedbutton.h"
#include "duplicatemusicdetailedwidget.h"
#include "dupmusicbarwidget.h"
#include "dupmusicinfo.h"
#include "musicdetailedinfowidget.h"
#include "showmusicinfowidget.h"
#include "showngroup.h"
#include "songmenu.h"
#include "songviews.h"
#include "views/viewfocus.h"
#include "views/viewsteps.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QKeyEvent>
#include <QPushButton>

using ViewKeys::Command;

namespace {
/// A key without a meaning of its own that writes something.
bool isLetter(const QKeyEvent& event)
{
    const Qt::KeyboardModifiers others =
        event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier | Qt::GroupSwitchModifier);
    return others == Qt::NoModifier && !event.text().isEmpty() && event.text().at(0).isPrint();
}

ViewSteps::Layout layoutOf(const QAbstractItemView& view)
{
    const QAbstractItemModel& model = *view.model();
    const QRect first = view.visualRect(model.index(0, 0));
    const int rows = model.rowCount();
    int columns = 1;
    while (columns < rows && view.visualRect(model.index(columns, 0)).top() == first.top())
        ++columns;
    const QRect nextLine = view.visualRect(model.index(columns, 0));
    const int lineHeight = nextLine.isValid() ? nextLine.top() - first.top() : first.height();
    return {rows, columns, qMax(view.viewport()->height() / qMax(lineHeight, 1), 1)};
}
} // namespace

CenterKeys::CenterKeys(const Parts& parts, QWidget* area)
    : QObject(area), m_parts(parts), m_menu(new SongMenu({parts.views, parts.details, parts.rows}, area))
{
    connect(m_menu, &SongMenu::told, this, &CenterKeys::told);
    qApp->installEventFilter(this);
}

bool CenterKeys::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress || !watched->isWidgetType())
        return false;
    return hears(*static_cast<QWidget*>(watched)) && take(*static_cast<QKeyEvent*>(event));
}

/// Of the receivers that a key is offered to one after another, the first alone; and none with a text.
bool CenterKeys::hears(const QWidget& receiver) const
{
    const QWidget* const window = m_parts.focus.window();
    if (receiver.window() != window)
        return false;
    const QWidget* const focus = window->focusWidget();
    if (!focus)
        return &receiver == window;
    return &receiver == focus && (focus == &m_parts.focus || qobject_cast<const QAbstractButton*>(focus));
}

/// Space presses every button; Enter those that say so; arrows lead from none to another. A panel with fields
/// has keys of its own.
bool CenterKeys::isLeftTo(const QWidget* focus, Command command) const
{
    if (!qobject_cast<const QAbstractButton*>(focus))
        return false;
    if (m_parts.details.isEditing() && m_parts.details.isAncestorOf(focus))
        return true;
    const auto* push = qobject_cast<const QPushButton*>(focus);
    const bool takesEnter = push ? push->isDefault() : dynamic_cast<const PaintedButton*>(focus) != nullptr;
    return command == Command::ToggleKept || (command == Command::Play && takesEnter);
}

bool CenterKeys::take(const QKeyEvent& event)
{
    const Command command = ViewKeys::commandOf(event);
    if (isLeftTo(m_parts.focus.window()->focusWidget(), command))
        return ViewKeys::repeats(command); // by arrows, all of them
    if (command == Command::None || (command == Command::ToggleKept && m_jump.isGoingOn()))
        return isLetter(event) && jump(event);
    return (event.isAutoRepeat() && !ViewKeys::repeats(command)) || act(command, event.key());
}

bool CenterKeys::act(Command command, int key)
{
    switch (command) {
    case Command::ShowAll:
        emit navigationChosen(0);
        return true;
    case Command::ShowUndefined:
        emit navigationChosen(1);
        return true;
    case Command::ShowDuplicates:
        emit navigationChosen(2);
        return true;
    case Command::SwitchDisplay:
        emit displaySwitched();
        return true;
    default:
        QAbstractItemView* const view = m_parts.views.shownView();
        return view && view->isEnabled() && actOn(*view, command, key);
    }
}

bool CenterKeys::actOn(QAbstractItemView& view, Command command, int key)
{
    const int row = view.currentIndex().row();
    switch (command) {
    case Command::Move:
        mark(view, ViewSteps::from(row, key, layoutOf(view)), row);
        return true;
    case Command::Play:
        emit view.doubleClicked(view.currentIndex());
        return true;
    case Command::ToggleKept:
        if (DupMusicbarWidget* atHand = m_parts.rows.rowAtHand())
            atHand->SlotOnBtnCheckBox();
        return true;
    case Command::FormerRow:
    case Command::NextRow:
        m_parts.rows.moveRowAtHand(command == Command::NextRow ? 1 : -1);
        m_parts.focus.setFocus(Qt::OtherFocusReason);
        return true;
    case Command::FormerGroup:
    case Command::NextGroup:
        showGroupBeside(view, command == Command::NextGroup ? 1 : -1);
        return true;
    case Command::Edit:
        if (QMusicInfo* song = songAtHand(view))
            m_parts.details.edit(song);
        return true;
    case Command::ShowCard:
        showCard(view);
        return true;
    case Command::Clear:
        m_parts.rows.clear();
        return true;
    case Command::OpenMenu:
        m_menu->open(view);
        return true;
    default:
        return false;
    }
}

bool CenterKeys::jump(const QKeyEvent& event)
{
    QAbstractItemView* const view = m_parts.views.shownView();
    if (!view || !view->isEnabled())
        return false;
    const int former = view->currentIndex().row();
    mark(*view, m_jump.rowFor(event.text(), *view->model(), former), former);
    return true;
}

/// As a click does, but for the row that was marked before: what its panel is at goes on.
void CenterKeys::mark(QAbstractItemView& view, int row, int former)
{
    m_parts.focus.setFocus(Qt::OtherFocusReason);
    const bool isShown = row == former && (m_parts.details.isVisible() || m_parts.rows.isVisible());
    if (row >= 0 && !isShown)
        emit view.clicked(view.model()->index(row, 0));
}

void CenterKeys::showGroupBeside(QAbstractItemView& view, int steps)
{
    if (m_parts.views.showsGroups(view))
        mark(view, m_parts.group.rowBeside(steps), view.currentIndex().row());
}

/// Beside the row at hand, or over the song that is marked.
void CenterKeys::showCard(QAbstractItemView& view)
{
    DupMusicbarWidget* const row = m_parts.views.showsGroups(view) ? m_parts.rows.rowAtHand() : nullptr;
    QMusicInfo* const song = songAtHand(view);
    if (row) {
        m_parts.rows.moveRowAtHand(0);
        row->showCard(row->cardPlace());
    } else if (song) {
        view.scrollTo(view.currentIndex());
        const QPoint place = view.viewport()->mapToGlobal(view.visualRect(view.currentIndex()).center());
        delete m_card;
        m_card = new ShowMusicInfoWidget(&view);
        m_card->setMusicInfo(song);
        m_card->showAt(place, place);
    }
}

/// Of a group that of its row at hand.
QMusicInfo* CenterKeys::songAtHand(const QAbstractItemView& view) const
{
    if (!m_parts.views.showsGroups(view))
        return view.currentIndex().isValid() ? SongViews::songOf(view.currentIndex()) : nullptr;
    const DupMusicbarWidget* const row = m_parts.rows.rowAtHand();
    return row ? row->song() : nullptr;
}
