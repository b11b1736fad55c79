#pragma once

class QListView;
class QTableView;

/// How a grid or a table of songs or groups looks and behaves; the widget stays its owner's.
namespace ViewSetup {
void grid(QListView* view);
void table(QTableView* view);
} // namespace ViewSetup
