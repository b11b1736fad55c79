#include "covers/covericonengine.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>

CoverIconEngine::CoverIconEngine(int edge, Scaler scaled) : m_edge(edge), m_scaled(std::move(scaled)) {}

void CoverIconEngine::paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state)
{
    // The rectangle is in points; a denser screen has more pixels in it.
    const qreal density = painter->device()->devicePixelRatioF();
    const QPixmap picture = pixmap(rect.size() * density, mode, state);
    if (picture.isNull())
        return;
    QRect target(QPoint(), QSize(qMin(rect.width(), rect.height()), qMin(rect.width(), rect.height())));
    target.moveCenter(rect.center());
    painter->drawPixmap(target, picture);
}

QPixmap CoverIconEngine::pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state)
{
    const QPixmap picture = m_scaled(actualSize(size, mode, state).width());
    if (mode == QIcon::Normal || picture.isNull() || !qApp)
        return picture;
    QStyleOption option;
    option.palette = QGuiApplication::palette();
    return QApplication::style()->generatedIconPixmap(mode, picture, &option);
}

QSize CoverIconEngine::actualSize(const QSize& size, QIcon::Mode, QIcon::State)
{
    const int edge = qMin(m_edge, qMin(size.width(), size.height()));
    return {edge, edge};
}

QList<QSize> CoverIconEngine::availableSizes(QIcon::Mode, QIcon::State) const
{
    return {QSize(m_edge, m_edge)};
}

QString CoverIconEngine::key() const
{
    return QStringLiteral("CoverIconEngine");
}

QIconEngine* CoverIconEngine::clone() const
{
    return new CoverIconEngine(*this);
}
