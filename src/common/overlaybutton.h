#pragma once

#include "common/paintedbutton.h"

/// A button that lies over a picture and lets it shine through: checkable, with a tick once it is checked.
class OverlayButton : public PaintedButton
{
    Q_OBJECT

public:
    explicit OverlayButton(QWidget* parent = nullptr);

    /// As wide as its caption and the tick need, 28 high.
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor face() const;
    void drawTick(QPainter& painter, const QPointF& centre) const;
};
