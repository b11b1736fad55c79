#pragma once

#include "common/canbesilent.h"

#include <QAccessibleWidget>

/// A window, or a part of one that holds others: those that show and have something to say.
class AccessiblePanel : public QAccessibleWidget, public CanBeSilent
{
public:
    using QAccessibleWidget::QAccessibleWidget;

    /// Of a widget: a role in place of the one that its kind of window has.
    static constexpr const char* roleProperty = "accessibleRole";
    static bool holdsWidgets(const QWidget& widget);

    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessible::Role role() const override;
    bool isSilent() const override;

private:
    QList<QWidget*> parts() const;
};

/// The program by its windows that show.
class AccessibleProgram : public QAccessibleApplication
{
public:
    int childCount() const override { return windows().size(); }
    QAccessibleInterface* child(int index) const override { return windows().value(index); }
    int indexOfChild(const QAccessibleInterface* child) const override;

private:
    QList<QAccessibleInterface*> windows() const;
};
