#include "common/qimagewidget.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QPainter>

#include <cmath>

QString QImageWidget::s_strAppPath;

QImageWidget::QImageWidget(QWidget* parent, Qt::WindowFlags flags) : QWidget(parent, flags)
{
    if (s_strAppPath.isEmpty())
        s_strAppPath = QCoreApplication::applicationDirPath() + QLatin1Char('/');
}

QImageWidget::~QImageWidget() = default;

bool QImageWidget::SetImageBackgroud(const QString& path, bool keepSize)
{
    m_pPixmap = std::make_unique<SkinPicture>(path);
    if (!keepSize && !m_pPixmap->size().isEmpty())
        setFixedSize(m_pPixmap->size());
    repaint();
    return true;
}

void QImageWidget::paintEvent(QPaintEvent*)
{
    if (!m_pPixmap)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(rect(), m_pPixmap->image(painter));
}

void QImageWidget::mousePressEvent(QMouseEvent* event)
{
    if (m_bGrabEnable)
        m_bPressed = true;
    emit widgetClick();
    QWidget::mousePressEvent(event);
}

void QImageWidget::mouseMoveEvent(QMouseEvent* event)
{
    // Oddity 48: the corner goes to the pointer.
    if (m_bGrabEnable && m_bPressed)
        move(int(std::lround(event->screenPos().x())), int(std::lround(event->screenPos().y())));
    QWidget::mouseMoveEvent(event);
}

void QImageWidget::mouseReleaseEvent(QMouseEvent* event)
{
    m_bPressed = false;
    QWidget::mouseReleaseEvent(event);
}
