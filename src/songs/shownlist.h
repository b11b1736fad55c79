#pragma once

#include "collection/textorder.h"
#include "songs/songcolumns.h"
#include "songs/songfind.h"

#include <QList>
#include <QSet>
#include <QStringList>
#include <QVector>

#include <algorithm>
#include <vector>

/// What a list is ordered by: a column of its table, or nothing.
struct ShownOrder
{
    int column = -1; ///< none: the list's own order
    bool backwards = false;

    bool isOwn() const { return column < 0; }
    /// A click on a column orders by it, the second one backwards, the third gives the list's own order back.
    ShownOrder afterClick(int clicked) const
    {
        if (clicked != column)
            return {clicked, false};
        return backwards ? ShownOrder() : ShownOrder{clicked, true};
    }
};

/// The list that views show of a true one: what is found of it, in the order asked for. The true list stays
/// as it is and its owner's; after a change of it the shown one is made anew. Songs or groups that a shown
/// list names must outlive that.
template <typename Record>
class ShownList
{
public:
    /// The true list itself while nothing narrows or orders it.
    QList<Record*>* list() { return m_isWhole ? m_source : &m_own; }
    const QList<Record*>* list() const { return m_isWhole ? m_source : &m_own; }
    QList<Record*>* source() const { return m_source; }
    bool isWhole() const { return m_isWhole; }
    int count() const { return list() ? list()->size() : 0; }
    int countOfAll() const { return m_source ? m_source->size() : 0; }
    /// -1 for what is not shown.
    int rowOf(const Record* record) const
    {
        return list() ? list()->indexOf(const_cast<Record*>(record)) : -1; // the list hands out what it holds
    }

    /// Another true list, or null, or one that changed.
    void show(QList<Record*>* source, SongFind& find)
    {
        m_source = source;
        m_rows.clear();
        narrow(find);
    }
    void refresh(SongFind& find) { show(m_source, find); }
    const ShownOrder& order() const { return m_order; }
    void orderBy(const ShownOrder& order, SongFind& find)
    {
        m_order = order;
        refresh(find);
    }
    /// After something else is looked for, and nothing else changed.
    void narrow(SongFind& find)
    {
        m_own.clear();
        m_isWhole = !m_source || (m_order.isOwn() && !find.isActive());
        if (m_isWhole)
            return;
        if (!m_order.isOwn() && m_rows.size() != m_source->size())
            m_rows = orderedRows();
        const std::vector<bool> found = foundRows(find);
        for (int i = 0; i < m_source->size(); ++i) {
            const int row = m_order.isOwn() ? i : m_rows.at(i);
            if (found[std::size_t(row)])
                m_own.append(m_source->at(row));
        }
    }
    /// Makes the first look for something a quick one.
    void prepare(SongFind& find) const
    {
        if (m_source)
            find.prepare(*m_source);
    }
    /// These left the true list: the same without them, and nothing is looked for or ordered again.
    void drop(const QSet<Record*>& gone)
    {
        const auto isGone = [&gone](Record* record) { return gone.contains(record); };
        m_own.erase(std::remove_if(m_own.begin(), m_own.end(), isGone), m_own.end());
        m_rows.clear();
    }

private:
    QVector<int> orderedRows() const
    {
        QStringList texts;
        texts.reserve(m_source->size());
        for (const Record* record : *m_source)
            texts.append(SongColumns::text(record, m_order.column));
        return TextOrder::sorted(texts, m_order.backwards);
    }
    /// In the order of the true list, in which texts lie one behind the other.
    std::vector<bool> foundRows(SongFind& find) const
    {
        std::vector<bool> found(std::size_t(m_source->size()), true);
        if (find.isActive())
            for (int row = 0; row < m_source->size(); ++row)
                found[std::size_t(row)] = find.finds(m_source->at(row));
        return found;
    }

    QList<Record*>* m_source = nullptr;
    QList<Record*> m_own;
    QVector<int> m_rows; ///< all of the true list, ordered; others until they are
    ShownOrder m_order;
    bool m_isWhole = true;
};
