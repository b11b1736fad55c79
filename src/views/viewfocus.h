#pragma once

#include <QWidget>

#include <array>

class QAbstractItemView;

/// Has the focus of the keyboard for views that take none themselves: below the one that shows, as large as
/// it, with nothing of its own to be seen. A press on a view brings the focus here. While no view shows this
/// is where a focus stays that nothing else may have, out of sight and out of the reach of Tab. To those who
/// have the screen read out it is the view: they hear of the mark as it moves, while the focus is here.
class ViewFocus : public QWidget
{
    Q_OBJECT

public:
    /// The views have to be children of the parent, and outlive this.
    ViewFocus(const std::array<QAbstractItemView*, 4>& views, QWidget* parent);

    /// What has the focus for this view; null for none.
    static ViewFocus* of(const QAbstractItemView& view);

    /// Lies under this view from now on, if that is not hidden.
    void follow(QAbstractItemView& view);
    /// That view; null while it is hidden.
    QAbstractItemView* view() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

private:
    void announceMark();

    QAbstractItemView* m_followed = nullptr;
};
