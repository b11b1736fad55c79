#pragma once

#include <QAccessibleWidget>
#include <QHash>
#include <QPointer>

class SortHeader;

/// The header of a table by its columns, each of which can be pressed to have the table ordered by it.
class AccessibleHeader : public QAccessibleWidget
{
public:
    explicit AccessibleHeader(SortHeader* header);
    ~AccessibleHeader() override;

    /// That of what holds the table: to who hears it, the header stands beside it.
    QAccessibleInterface* parent() const override;
    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QString text(QAccessible::Text which) const override;

private:
    SortHeader& header() const;

    mutable QHash<int, QAccessible::Id> m_columns;
};

class AccessibleColumn : public QAccessibleInterface, public QAccessibleActionInterface
{
public:
    AccessibleColumn(SortHeader* header, int column);

    int column() const { return m_column; }

    bool isValid() const override;
    QObject* object() const override { return nullptr; }
    QWindow* window() const override;
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    /// The description says in which order the table is, if it is by this column.
    QString text(QAccessible::Text which) const override;
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override;
    QAccessible::Role role() const override { return QAccessible::ColumnHeader; }
    QAccessible::State state() const override;
    void* interface_cast(QAccessible::InterfaceType type) override;

    QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString& name) override;
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    QPointer<SortHeader> m_header;
    int m_column;
};
