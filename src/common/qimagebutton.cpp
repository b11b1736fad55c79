#include "common/qimagebutton.h"

#include "common/skinwords.h"
#include "common/style.h"

#include <QPainter>

QImageButton::QImageButton(QWidget* parent) : StripButton(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    QPalette captions = palette();
    captions.setColor(QPalette::ButtonText, Style::text);
    // A caption stays readable on the fourth cell, which navigation uses for the chosen row.
    captions.setColor(QPalette::Disabled, QPalette::ButtonText, Style::chosen);
    setPalette(captions);
}

bool QImageButton::setBtnImage(const QString& path)
{
    const QSize cell = loadStrip(path);
    describe(stripFile());
    if (cell.height() == 0)
        return false;
    setFixedSize(cell);
    update();
    return true;
}

void QImageButton::describe(const QString& picturePath)
{
    const SkinWords::Words words = SkinWords::of(picturePath);
    if (words.name.isEmpty())
        return;
    setAccessibleName(words.name);
    if (!words.inPicture)
        setToolTip(words.name);
}

void QImageButton::setBtnText(const QString& text)
{
    m_strText = text;
    setAccessibleName(text);
    repaint();
}

void QImageButton::paintEvent(QPaintEvent* event)
{
    StripButton::paintEvent(event);
    if (!hasStrip())
        return;
    QPainter painter(this);
    painter.setFont(Style::buttonFont());
    painter.drawText(32, 27, m_strText);
}
