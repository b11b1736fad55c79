#pragma once

#include <QWidget>

#include <array>

class QAbstractItemView;

/// Has the focus of the keyboard for views that take none themselves: below the one that shows, as large as
/// it, with nothing of its own to be seen. A press on a view brings the focus here. While no view shows this
/// is where a focus stays that nothing else may have, out of sight and out of the reach of Tab.
class ViewFocus : public QWidget
{
    Q_OBJECT

public:
    /// The views have to be children of the parent, and outlive this.
    ViewFocus(const std::array<QAbstractItemView*, 4>& views, QWidget* parent);

    /// Lies under this view from now on, if that is not hidden.
    void follow(const QAbstractItemView& view);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    const QAbstractItemView* m_followed = nullptr;
};
