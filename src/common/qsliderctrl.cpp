#include "common/qsliderctrl.h"

#include "common/style.h"

#include <QDebug>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {
int globalX(const QMouseEvent* event)
{
    return int(std::lround(event->screenPos().x()));
}

/// Draws the part of the picture between two of its columns, in points, over the target.
void drawColumns(QPainter& painter, const QImage& image, int from, int to, const QRect& target)
{
    if (from >= to || target.isEmpty())
        return;
    const qreal ratio = image.devicePixelRatio();
    painter.drawImage(QRectF(target), image, QRectF(from * ratio, 0, (to - from) * ratio, image.height()));
}

/// Draws the picture over the target with its ends, `cap` points wide each, as they are and only the part
/// between them stretched. In a target too narrow for both ends each gets its half.
void drawWithCaps(QPainter& painter, const QImage& image, int cap, const QRect& target)
{
    const int width = int(image.width() / image.devicePixelRatio());
    const int widest = std::max(std::min(cap, width / 2), 0);
    const int left = std::min(widest, (target.width() + 1) / 2);
    const int right = std::min(widest, target.width() / 2);
    const QRect middle = target.adjusted(left, 0, -right, 0);
    drawColumns(painter, image, 0, left, QRect(target.x(), target.y(), left, target.height()));
    drawColumns(painter, image, widest, width - widest, middle);
    drawColumns(painter, image, width - right, width,
                QRect(middle.x() + middle.width(), target.y(), right, target.height()));
}
} // namespace

QSliderCtrlBtn::QSliderCtrlBtn(QWidget* parent) : StripButton(parent)
{
    setFocusPolicy(Qt::NoFocus); // keys do nothing with it
}

bool QSliderCtrlBtn::setBtnImage(const QString& path)
{
    resize(loadStrip(path));
    return true;
}

void QSliderCtrlBtn::setStatePress()
{
    changeState(StatePressed);
}

void QSliderCtrlBtn::setStateNormal()
{
    changeState(StateNormal);
}

void QSliderCtrlBtn::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        m_nOffset = globalX(event) - mapToGlobal(QPoint()).x();
    StripButton::mousePressEvent(event);
}

void QSliderCtrlBtn::mouseMoveEvent(QMouseEvent* event)
{
    emit mouseMove(event, m_nOffset);
}

void QSliderCtrlBtn::enterEvent(QEvent* event)
{
    setCursor(Qt::PointingHandCursor);
    StripButton::enterEvent(event);
}

qSliderCtrl::qSliderCtrl(QWidget* parent) : QWidget(parent) {}

qSliderCtrl::~qSliderCtrl() = default;

bool qSliderCtrl::setBottomImage(const QString& path)
{
    m_pBottomPixmap = std::make_unique<SkinPicture>(path);
    m_nBottomHeight = m_pBottomPixmap->size().height();
    resize(m_pBottomPixmap->size().width(), std::max(m_nBottomHeight, 20));
    update();
    return true;
}

bool qSliderCtrl::setTopImage(const QString& path)
{
    m_pTopPixmap = std::make_unique<SkinPicture>(path);
    update();
    return true;
}

bool qSliderCtrl::setBtnImage(const QString& path)
{
    delete m_pBtn;
    m_pBtn = new QSliderCtrlBtn(this);
    connect(m_pBtn, SIGNAL(mouseMove(QMouseEvent*, int)), this, SLOT(btnMouseMove(QMouseEvent*, int)));
    m_pBtn->setBtnImage(path);
    m_pBtn->setVisible(!m_bBtnHide);
    if (m_pBottomPixmap)
        resize(width() + m_nBtnWidth, height());
    m_nBtnWidth = m_pBtn->width();
    m_nBtnY = (height() - m_pBtn->height()) / 2;
    moveHandle(0);
    m_nPos = 0;
    update();
    return true;
}

void qSliderCtrl::setValueRange(long long min, long long max)
{
    m_nMin = min;
    m_nMax = max;
}

void qSliderCtrl::setValue(int value)
{
    m_fPos = 0;
    double position = 0;
    // Oddity 45: too large a value stands at the left end, not at the right one.
    if (value >= m_nMin && value <= m_nMax && m_nMin < m_nMax) {
        position = width() * (double(value) - double(m_nMin)) / (double(m_nMax) - double(m_nMin));
        m_fPos = float(position);
    }
    const int former = std::exchange(m_nPos, int(position));
    moveHandle(std::max(m_nPos - m_nBtnWidth / 2, 0));
    // Asked many times a second, most of the time for the place where it is.
    if (m_nPos != former || m_bShowValue)
        update();
}

float qSliderCtrl::getValue() const
{
    return width() > 0 ? float(double(m_fPos) * (double(m_nMax) - double(m_nMin)) / width()) : 0;
}

void qSliderCtrl::setCircle(bool circle)
{
    m_bCircle = circle;
    update();
}

void qSliderCtrl::setCircleLenght(int length)
{
    m_nCircleLength = length;
    update();
}

void qSliderCtrl::showValueText(bool show)
{
    m_bShowValue = show;
    update();
}

void qSliderCtrl::setDisableMove()
{
    m_bMoveEnable = false;
}

void qSliderCtrl::setBtnHide()
{
    m_bBtnHide = true;
    if (m_pBtn)
        m_pBtn->hide();
}

void qSliderCtrl::setWidth(int width)
{
    resize(width, 20);
}

double qSliderCtrl::fraction() const
{
    const int usable = width() - m_nBtnWidth;
    return usable > 0 ? double(m_nPos) / usable : 0;
}

void qSliderCtrl::moveTo(double fraction)
{
    if (!m_bMoveEnable)
        return;
    takePosition(int(std::clamp(fraction, 0.0, 1.0) * std::max(width() - m_nBtnWidth, 0)));
    repaint();
    emit sendProgressValue(std::clamp(fraction, 0.0, 1.0));
}

void qSliderCtrl::moveHandle(int x)
{
    if (m_pBtn)
        m_pBtn->move(x, m_nBtnY);
}

void qSliderCtrl::takePosition(int position)
{
    moveHandle(position);
    m_nPos = position;
}

void qSliderCtrl::mousePressEvent(QMouseEvent* event)
{
    if (!m_bMoveEnable)
        return;
    const int x = globalX(event) - globalLeft();
    const int half = m_nBtnWidth / 2;
    if (x < half || x > width() - half)
        return;
    takePosition(x - half);
    if (m_pBtn)
        m_pBtn->setStatePress();
    repaint();
    emit sendProgressValue(fraction());
}

void qSliderCtrl::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_bMoveEnable || (m_pBtn && !m_pBtn->getMove()))
        return;
    const int x = globalX(event) - globalLeft();
    const int half = m_nBtnWidth / 2;
    if (x < half)
        takePosition(0);
    else if (x > width() - half)
        takePosition(width() - m_nBtnWidth);
    else
        takePosition(x - half);
    repaint();
    const double moved = fraction();
    qDebug() << "slider moved to" << moved;
    emit sendProgressValue(moved);
}

void qSliderCtrl::btnMouseMove(QMouseEvent* event, int offset)
{
    if (!m_bMoveEnable)
        return;
    const int x = globalX(event) - offset - globalLeft();
    const int half = m_nBtnWidth / 2;
    // Oddity 46: dragged, the handle snaps to the left end from half its width on.
    if (x >= half && x <= width() - m_nBtnWidth)
        takePosition(x);
    else if (x <= half)
        takePosition(0);
    else
        takePosition(width() - m_nBtnWidth);
    repaint();
    emit sendProgressValue(fraction());
}

void qSliderCtrl::mouseReleaseEvent(QMouseEvent*)
{
    if (m_pBtn)
        m_pBtn->setStateNormal();
}

void qSliderCtrl::enterEvent(QEvent*)
{
    setCursor(Qt::PointingHandCursor);
    if (m_bBtnHide && m_pBtn)
        m_pBtn->show();
}

void qSliderCtrl::leaveEvent(QEvent*)
{
    if (m_bBtnHide && m_pBtn)
        m_pBtn->hide();
}

QRect qSliderCtrl::trackRect() const
{
    const int half = m_nBtnWidth / 2;
    return QRect(half, (height() - m_nBottomHeight) / 2, width() - 2 * half, m_nBottomHeight);
}

/// The part of the track left of the handle's middle.
QRect qSliderCtrl::filledRect() const
{
    QRect filled = trackRect();
    const int end = m_pBtn ? m_pBtn->x() + m_nBtnWidth / 2 : m_nPos;
    filled.setWidth(qBound(0, end - filled.x(), std::max(filled.width(), 0)));
    return filled;
}

void qSliderCtrl::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    paintPiece(painter, m_pBottomPixmap.get(), trackRect());
    const QRect filled = filledRect();
    // A filled part shorter than its round end would look like no part of the track; none is drawn yet.
    if (!m_bCircle || filled.width() > m_nCircleLength)
        paintPiece(painter, m_pTopPixmap.get(), filled);
    if (m_bShowValue)
        paintValue(painter);
}

void qSliderCtrl::paintPiece(QPainter& painter, const SkinPicture* picture, const QRect& target) const
{
    if (!picture || target.isEmpty())
        return;
    const QImage& image = picture->image(painter);
    if (image.isNull())
        return;
    drawWithCaps(painter, image, m_bCircle ? m_nCircleLength : 0, target);
}

void qSliderCtrl::paintValue(QPainter& painter) const
{
    painter.setFont(Style::font(8, QFont::DemiBold));
    painter.setPen(Style::textOnColour);
    const QRect room(0, 3, width(), height() - 2);
    painter.drawText(room, Qt::AlignCenter, QStringLiteral("%1%").arg(qint64(getValue())));
}
