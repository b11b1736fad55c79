#pragma once

#include "common/skinpicture.h"

#include <QPushButton>

#include <memory>

/// A push button drawn from one horizontal strip of four equal cells: normal, hover, pressed, disabled.
class QImageButton : public QPushButton
{
    Q_OBJECT

public:
    enum State { StateNormal = 0, StateHover = 1, StatePressed = 2, StateDisabled = 3 };

    explicit QImageButton(QWidget* parent = nullptr);
    ~QImageButton() override;

    /// Takes the strip and fixes the size to a quarter of its width; false, and the size as it was, when the
    /// file holds no picture. Does not repaint.
    bool setBtnImage(const QString& path);
    /// The caption drawn over the strip, and the button's accessible name. Repaints at once.
    void setBtnText(const QString& text);
    QString btnText() const { return m_strText; }
    int state() const { return m_nState; }

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void enterEvent(QEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void describe(const QString& picturePath);
    void changeState(int state);
    void paintStrip(QPainter& painter) const;
    void paintFocus(QPainter& painter) const;

    std::unique_ptr<SkinPicture> m_pImage;
    int m_nState = StateNormal;
    QString m_strText;
};
