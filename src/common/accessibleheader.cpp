#include "common/accessibleheader.h"

#include "common/sortheader.h"

#include <QApplication>
#include <QTimer>

AccessibleHeader::AccessibleHeader(SortHeader* header) : QAccessibleWidget(header, QAccessible::Grouping) {}

AccessibleHeader::~AccessibleHeader()
{
    for (const QAccessible::Id column : qAsConst(m_columns))
        QAccessible::deleteAccessibleInterface(column);
}

SortHeader& AccessibleHeader::header() const
{
    return *static_cast<SortHeader*>(widget());
}

QAccessibleInterface* AccessibleHeader::parent() const
{
    const QWidget* const table = header().parentWidget();
    return QAccessible::queryAccessibleInterface(table ? table->parentWidget() : nullptr);
}

int AccessibleHeader::childCount() const
{
    return header().count();
}

QAccessibleInterface* AccessibleHeader::child(int index) const
{
    if (index < 0 || index >= childCount())
        return nullptr;
    auto known = m_columns.constFind(index);
    if (known == m_columns.constEnd())
        known = m_columns.insert(
            index, QAccessible::registerAccessibleInterface(new AccessibleColumn(&header(), index)));
    return QAccessible::accessibleInterface(*known);
}

int AccessibleHeader::indexOfChild(const QAccessibleInterface* child) const
{
    const auto* const column = dynamic_cast<const AccessibleColumn*>(child);
    return column && column->parent() == this ? column->column() : -1;
}

QAccessibleInterface* AccessibleHeader::childAt(int x, int y) const
{
    const QPoint place = header().viewport()->mapFromGlobal({x, y});
    return header().viewport()->rect().contains(place) ? child(header().logicalIndexAt(place)) : nullptr;
}

QString AccessibleHeader::text(QAccessible::Text which) const
{
    return which == QAccessible::Name ? QStringLiteral("Columns") : QAccessibleWidget::text(which);
}

AccessibleColumn::AccessibleColumn(SortHeader* header, int column) : m_header(header), m_column(column) {}

bool AccessibleColumn::isValid() const
{
    return m_header && m_column < m_header->count();
}

QWindow* AccessibleColumn::window() const
{
    return m_header ? m_header->window()->windowHandle() : nullptr;
}

QAccessibleInterface* AccessibleColumn::parent() const
{
    return QAccessible::queryAccessibleInterface(m_header);
}

QString AccessibleColumn::text(QAccessible::Text which) const
{
    if (!isValid())
        return QString();
    return which == QAccessible::Name          ? m_header->caption(m_column)
           : which == QAccessible::Description ? m_header->orderOf(m_column)
                                               : QString();
}

QRect AccessibleColumn::rect() const
{
    if (!isValid() || !m_header->isVisible())
        return QRect();
    const QPoint corner(m_header->sectionViewportPosition(m_column), 0);
    return {m_header->viewport()->mapToGlobal(corner),
            QSize(m_header->sectionSize(m_column), m_header->height())};
}

QAccessible::State AccessibleColumn::state() const
{
    QAccessible::State state;
    state.invalid = !isValid();
    if (state.invalid)
        return state;
    const int left = m_header->sectionViewportPosition(m_column);
    state.offscreen = left >= m_header->width() || left + m_header->sectionSize(m_column) <= 0;
    state.disabled = !m_header->isEnabled();
    return state;
}

void* AccessibleColumn::interface_cast(QAccessible::InterfaceType type)
{
    return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this) : nullptr;
}

/// Later: what asks for it waits for the answer.
void AccessibleColumn::doAction(const QString& name)
{
    if (name != pressAction() || !isValid())
        return;
    const QPointer<SortHeader> header = m_header;
    QTimer::singleShot(0, m_header, [header, column = m_column] {
        if (header->isEnabled() && column < header->count() && !QApplication::activeModalWidget())
            emit header->sectionClicked(column);
    });
}
