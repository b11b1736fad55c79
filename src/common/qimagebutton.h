#pragma once

#include "common/stripbutton.h"

/// A push button drawn from one horizontal strip of four equal cells: normal, hover, pressed, disabled.
class QImageButton : public StripButton
{
    Q_OBJECT

public:
    explicit QImageButton(QWidget* parent = nullptr);

    /// Takes the strip and fixes the size to a quarter of its width; false, and the size as it was, when the
    /// file holds no picture. Does not repaint.
    bool setBtnImage(const QString& path);
    /// The caption drawn over the strip, and the button's accessible name. Repaints at once.
    void setBtnText(const QString& text);
    QString btnText() const { return m_strText; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void describe(const QString& picturePath);

    QString m_strText;
};
