#include "common/qimagedialog.h"

#include "common/focusmark.h"
#include "common/screenplace.h"

#include <QMouseEvent>
#include <QPainter>

#include <cmath>

QString QImageDialog::s_strAppPath;

QImageDialog::QImageDialog(QWidget* parent, Qt::WindowFlags flags) : QDialog(parent, flags)
{
    new FocusMark(this);
}

QImageDialog::~QImageDialog() = default;

bool QImageDialog::SetImageBackgroud(const QString& path)
{
    m_pBackground = std::make_unique<SkinPicture>(path);
    if (!m_pBackground->size().isEmpty())
        setFixedSize(m_pBackground->size());
    return true;
}

void QImageDialog::setVisible(bool visible)
{
    if (visible && isHidden())
        setWindowFlag(Qt::WindowStaysOnTopHint, ScreenPlace::someStayOnTop());
    QDialog::setVisible(visible);
}

void QImageDialog::paintEvent(QPaintEvent*)
{
    if (!m_pBackground)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    // Rounded corners would be holes in a window with a frame, black ones where nothing composes windows.
    if (!(windowFlags() & Qt::FramelessWindowHint))
        painter.fillRect(rect(), palette().window());
    painter.drawImage(QPointF(0, 0), m_pBackground->image(painter));
}

void QImageDialog::mousePressEvent(QMouseEvent* event)
{
    m_rcDrag = geometry();
    m_rcDrag.setTopLeft(QPoint(int(std::lround(event->screenPos().x())) - x(),
                               int(std::lround(event->screenPos().y())) - y()));
    m_bPressed = event->button() == Qt::LeftButton;
    QDialog::mousePressEvent(event);
}

void QImageDialog::mouseMoveEvent(QMouseEvent* event)
{
    // The title band is 36 pixels high without its topmost row.
    const bool inTitleBand = m_rcDrag.top() >= 1 && m_rcDrag.top() <= 36;
    if (m_bPressed && m_bMoveEnable && inTitleBand)
        move(int(std::lround(event->screenPos().x())) - m_rcDrag.left(),
             int(std::lround(event->screenPos().y())) - m_rcDrag.top());
    QDialog::mouseMoveEvent(event);
}

void QImageDialog::mouseReleaseEvent(QMouseEvent* event)
{
    m_bPressed = false;
    QDialog::mouseReleaseEvent(event);
}
