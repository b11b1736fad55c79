#pragma once

#include <QAbstractItemModel>
#include <QList>

/// A model of the records in a flat list. Reads the list in place: it is not owned, and whoever changes it
/// resets or refreshes the model. The internal pointer of an index is its row's record. GUI thread only.
template <typename Record>
class FlatListModel : public QAbstractItemModel
{
public:
    using QAbstractItemModel::QAbstractItemModel;

    /// After the list was changed in place.
    void refresh()
    {
        beginResetModel();
        endResetModel();
    }

    /// Invalid for a row that the list does not have.
    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override
    {
        if (row < 0 || column < 0 || parent.isValid() || !m_pList || row >= m_pList->size())
            return QModelIndex();
        return createIndex(row, column, m_pList->at(row));
    }
    QModelIndex parent(const QModelIndex&) const override { return QModelIndex(); }
    int rowCount(const QModelIndex& parent = QModelIndex()) const override
    {
        return m_pList && !parent.isValid() ? m_pList->size() : 0;
    }
    int columnCount(const QModelIndex& parent = QModelIndex()) const override
    {
        return m_pList && !parent.isValid() ? m_nColumnCount : 0;
    }

    /// The record of an index; null for an index without one.
    Record* nodeFromIndex(const QModelIndex& index) const
    {
        return index.isValid() ? static_cast<Record*>(index.internalPointer()) : nullptr;
    }

protected:
    void setSource(QList<Record*>* list, int columns, bool flag)
    {
        beginResetModel();
        m_pList = list;
        m_nColumnCount = columns;
        m_bReserved = flag;
        endResetModel();
    }
    bool isGrid() const { return m_nColumnCount == 1; }

private:
    QList<Record*>* m_pList = nullptr;
    int m_nColumnCount = 1;
    bool m_bReserved = false;
};
