#include "viewinsight.h"

#include "common/choicebutton.h"
#include "songviews.h"
#include "views/viewfocus.h"

#include <QAbstractItemView>

#include <utility>

ViewInSight::ViewInSight(SongViews& views, const Buttons& buttons, std::function<bool()> dropsAreSeen,
                         QWidget* area)
    : m_views(views), m_buttons(buttons), m_dropsAreSeen(std::move(dropsAreSeen)), m_area(*area),
      m_view(views.view(false, true)), m_focus(new ViewFocus(views.all(), area))
{
    QWidget::setTabOrder(&m_buttons.table, m_focus);
    QObject::connect(&m_views, &SongViews::listShown, m_focus,
                     [this](int shown, int all) { name(shown, all); });
    m_views.choose(false, true);
    setGrid(true);
}

void ViewInSight::setGrid(bool grid)
{
    m_isGrid = grid;
    m_buttons.grid.setEnabled(!grid);
    m_buttons.grid.setChosen(grid);
    m_buttons.table.setEnabled(grid);
    m_buttons.table.setChosen(!grid);
}

/// To those who hear it.
void ViewInSight::name(int shown, int all) const
{
    m_focus->setAccessibleName(SpokenWords::ofList(m_kind, shown, all));
}

void ViewInSight::show(Kind kind)
{
    m_kind = kind;
    m_view->hide();
    m_view = m_views.choose(kind == Kind::Duplicates, m_isGrid);
    showAnew();
}

void ViewInSight::showAs(bool grid)
{
    setGrid(grid);
    show(m_kind);
}

void ViewInSight::showAnew()
{
    const bool drops = dropsAreSeen();
    setVisible(!drops);
    m_buttons.open.lower();
    m_buttons.open.setFocusPolicy(drops ? Qt::StrongFocus : Qt::NoFocus);
}

void ViewInSight::setVisible(bool visible)
{
    m_view->setVisible(visible);
    m_buttons.more.setVisible(visible && m_area.acceptDrops());
    m_focus->follow(*m_view);
}
