#include "views/viewsetup.h"

#include <QHeaderView>
#include <QListView>
#include <QTableView>

namespace {
void colourTexts(QWidget* view)
{
    QPalette palette = view->palette();
    palette.setColor(QPalette::Text, QColor(0x28, 0x40, 0x4F));
    view->setPalette(palette);
}
} // namespace

void ViewSetup::grid(QListView* view)
{
    view->setViewMode(QListView::IconMode);
    view->setResizeMode(QListView::Adjust);
    view->setIconSize(QSize(100, 120));
    view->setGridSize(QSize(120, 140));
    view->setMovement(QListView::Snap);
    view->setDragDropMode(QAbstractItemView::DragDrop);
    view->setFrameShape(QFrame::NoFrame);
    view->setUniformItemSizes(true);
    view->setFocusPolicy(Qt::NoFocus);
    colourTexts(view);
}

void ViewSetup::table(QTableView* view)
{
    view->setFrameShape(QFrame::NoFrame);
    view->setShowGrid(false);
    view->verticalHeader()->hide();
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->horizontalHeader()->setDefaultSectionSize(130);
    view->horizontalHeader()->setStretchLastSection(true);
    view->horizontalHeader()->setHighlightSections(false);
    view->horizontalHeader()->setStyleSheet(
        QStringLiteral("QHeaderView{background:#EAF4FB}"
                       "QHeaderView::section{background:#EAF4FB;color:#28404F;border:0;"
                       "border-bottom:1px solid #C9DDE9;border-right:1px solid #D9E8F2;padding:5px 6px}"));
    view->verticalHeader()->setDefaultSectionSize(26);
    view->setFocusPolicy(Qt::NoFocus);
    colourTexts(view);
}
