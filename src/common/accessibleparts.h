#pragma once

#include "common/canbesilent.h"

#include <QAccessibleWidget>

class QLabel;
class qSliderCtrl;

/// A label by its whole text, or by the name of its picture. Without either it is silent.
class AccessibleText : public QAccessibleWidget, public CanBeSilent
{
public:
    explicit AccessibleText(QLabel* label);

    bool isSilent() const override;
    QAccessible::Role role() const override;
    QString text(QAccessible::Text which) const override;
    QVector<QPair<QAccessibleInterface*, QAccessible::Relation>>
    relations(QAccessible::Relation match = QAccessible::AllRelations) const override;

private:
    QLabel* label() const;
    QString shown() const;
};

/// A picture with a name; one without is silent. Where a tool tip says what a press does, it can be
/// pressed.
class AccessiblePicture : public QAccessibleWidget, public CanBeSilent
{
public:
    using QAccessibleWidget::QAccessibleWidget;

    bool isSilent() const override;
    QAccessible::Role role() const override;
    QStringList actionNames() const override;
    void doAction(const QString& name) override;

private:
    bool takesPresses() const;
};

/// The slider by its range. A value that is set goes where the user would have moved it to.
class AccessibleSlider : public QAccessibleWidget, public QAccessibleValueInterface
{
public:
    explicit AccessibleSlider(QWidget* slider) : QAccessibleWidget(slider, QAccessible::Slider) {}

    int childCount() const override { return 0; } // its handle
    void* interface_cast(QAccessible::InterfaceType type) override;
    QVariant currentValue() const override;
    void setCurrentValue(const QVariant& value) override;
    QVariant maximumValue() const override;
    QVariant minimumValue() const override;
    QVariant minimumStepSize() const override { return 1; }

private:
    qSliderCtrl* slider() const;
};
