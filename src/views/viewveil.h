#pragma once

#include <QWidget>

class QAbstractScrollArea;

/// Lies over what a view shows while that cannot be clicked: because the view is disabled, or because whoever
/// hears its clicks does nothing with them. Lets the mouse through.
class ViewVeil : public QWidget
{
    Q_OBJECT

public:
    /// The view's.
    explicit ViewVeil(QAbstractScrollArea* view);

    /// Of a view that is enabled.
    void setLocked(bool locked);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void place();

    QAbstractScrollArea* m_view;
    bool m_locked = false;
};
