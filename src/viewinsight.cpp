#include "viewinsight.h"

#include "songviews.h"
#include "views/viewfocus.h"

#include <QAbstractItemView>

ViewInSight::ViewInSight(SongViews& views, const Buttons& buttons, QWidget* area)
    : m_views(views), m_buttons(buttons), m_view(views.view(false, true)),
      m_focus(new ViewFocus(views.all(), area))
{
    QWidget::setTabOrder(&m_buttons.table, m_focus);
    setGrid(true);
}

void ViewInSight::setGrid(bool grid)
{
    m_isGrid = grid;
    m_buttons.grid.setEnabled(!grid);
    m_buttons.table.setEnabled(grid);
}

void ViewInSight::choose(bool groups)
{
    m_view->hide();
    m_view = m_views.choose(groups, m_isGrid);
}

void ViewInSight::setVisible(bool visible)
{
    m_view->setVisible(visible);
    m_focus->follow(*m_view);
}
