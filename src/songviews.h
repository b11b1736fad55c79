#pragma once

class QListView;
class QTableView;

/// How the four song views look and behave.
namespace SongViews {
void initGrid(QListView* view);
void initTable(QTableView* view);
} // namespace SongViews
