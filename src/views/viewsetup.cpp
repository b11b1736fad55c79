#include "views/viewsetup.h"

#include "common/sortheader.h"
#include "common/style.h"

#include <QHeaderView>
#include <QListView>
#include <QTableView>

namespace {
void colourTexts(QWidget* view)
{
    QPalette palette = view->palette();
    palette.setColor(QPalette::Text, Style::text);
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
    view->setHorizontalHeader(new SortHeader(view));
    view->verticalHeader()->hide();
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->horizontalHeader()->setDefaultSectionSize(130);
    view->horizontalHeader()->setStretchLastSection(true);
    view->horizontalHeader()->setHighlightSections(false);
    view->horizontalHeader()->setStyleSheet(
        QStringLiteral("QHeaderView{background:%1}"
                       "QHeaderView::section{background:%1;color:%2;border:0;"
                       "border-bottom:1px solid %3;border-right:1px solid %4;padding:5px 6px}")
            .arg(Style::header.name(), Style::text.name(), Style::line.name(), Style::headerLine.name()));
    view->verticalHeader()->setDefaultSectionSize(26);
    view->setFocusPolicy(Qt::NoFocus);
    colourTexts(view);
}
