#pragma once

#include <QAccessibleWidget>

/// A window, or a part of one that holds others: those that show and have something to say. What has nothing
/// to say itself has no role.
class AccessiblePanel : public QAccessibleWidget
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

private:
    QList<QWidget*> parts() const;
};
