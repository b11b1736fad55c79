#pragma once

#include <QPointer>
#include <QWidget>

/// Lies over a window and outlines whatever in it has the focus, while the user works by keys; but for
/// fields, which show it themselves. Moves nothing and hears nothing of the mouse.
class FocusMark : public QWidget
{
    Q_OBJECT

public:
    /// The window owns it.
    explicit FocusMark(QWidget* window);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void follow(QWidget* focus);
    void watch(bool on);
    void place();
    QRect visiblePart() const;

    QPointer<QWidget> m_focus; ///< outlined, where it is to be seen
};
