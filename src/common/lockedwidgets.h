#pragma once

#include <QList>
#include <QPointer>
#include <QVector>
#include <QWidget>

/// Parts of a window that do not answer for a while, and look so. GUI thread only.
class LockedWidgets
{
public:
    /// Disables those that are enabled. Nothing where some are locked already.
    void lock(const QList<QWidget*>& widgets);
    /// Enables them again; what had the focus of the keyboard has it again.
    void unlock();

private:
    QVector<QPointer<QWidget>> m_widgets;
    QPointer<QWidget> m_focus;
};
