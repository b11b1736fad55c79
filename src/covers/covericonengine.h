#pragma once

#include <QIconEngine>
#include <QPixmap>

#include <functional>

/// Draws one square cover at whatever size is asked for, no larger than its own. The pixels stay with whoever
/// made the engine, so an icon that a model or a view holds on to keeps no picture alive.
class CoverIconEngine : public QIconEngine
{
public:
    /// Answers the cover with the given edge in pixels, at most the cover's own.
    using Scaler = std::function<QPixmap(int edge)>;

    CoverIconEngine(int edge, Scaler scaled);

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) const override;
    QString key() const override;
    QIconEngine* clone() const override;

private:
    int m_edge;
    Scaler m_scaled;
};
