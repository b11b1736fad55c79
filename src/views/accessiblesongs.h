#pragma once

#include <QAccessibleWidget>
#include <QHash>

class QAbstractItemView;
class ViewFocus;

/// The view in sight as those hear it who have the screen read out: a list of what it shows, by whatever has
/// the focus for it. Its items are made as they are asked for, and forgotten when the view shows another
/// list. The view itself tells nothing.
class AccessibleSongs : public QAccessibleWidget, public QAccessibleTableInterface
{
public:
    /// From now on every ViewFocus is told like that, and the views that it stands for. Once or more often.
    static void install();

    explicit AccessibleSongs(ViewFocus* focus);
    ~AccessibleSongs() override;

    int childCount() const override { return rowCount(); }
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QAccessibleInterface* focusChild() const override;
    void* interface_cast(QAccessible::InterfaceType type) override;

    QAccessibleInterface* caption() const override { return nullptr; }
    QAccessibleInterface* summary() const override { return nullptr; }
    QAccessibleInterface* cellAt(int row, int column) const override;
    int selectedCellCount() const override { return selectedRows().size(); }
    QList<QAccessibleInterface*> selectedCells() const override;
    QString columnDescription(int) const override { return QString(); }
    QString rowDescription(int) const override { return QString(); }
    int selectedColumnCount() const override { return 0; }
    int selectedRowCount() const override { return selectedRows().size(); }
    int columnCount() const override { return 1; }
    int rowCount() const override;
    QList<int> selectedColumns() const override { return {}; }
    QList<int> selectedRows() const override;
    bool isColumnSelected(int) const override { return false; }
    bool isRowSelected(int row) const override { return selectedRows().contains(row); }
    bool selectRow(int) override { return false; }
    bool selectColumn(int) override { return false; }
    bool unselectRow(int) override { return false; }
    bool unselectColumn(int) override { return false; }
    void modelChange(QAccessibleTableModelChangeEvent* event) override;

private:
    QAbstractItemView* view() const;

    mutable QHash<int, QAccessible::Id> m_items; ///< by row
    QHash<int, QAccessible::Id> m_formerItems;   ///< which only keep others from getting their ids
};
