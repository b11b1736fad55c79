#pragma once

#include "common/skinpicture.h"
#include "common/stripbutton.h"

#include <QWidget>

#include <memory>

/// The handle of a qSliderCtrl: a button drawn from a strip of four cells, without a caption.
class QSliderCtrlBtn : public StripButton
{
    Q_OBJECT

public:
    explicit QSliderCtrlBtn(QWidget* parent = nullptr);

    /// Takes the strip and resizes to one of its cells. Always true.
    bool setBtnImage(const QString& path);
    void setStatePress();
    void setStateNormal();
    /// Whether the handle is held.
    bool getMove() const { return state() == StatePressed; }

signals:
    /// The pointer moved while the handle has the mouse; `offset` is where the handle was taken hold of, in
    /// points from its left edge.
    void mouseMove(QMouseEvent* event, int offset);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void enterEvent(QEvent* event) override;

private:
    int m_nOffset = 0;
};

/// A horizontal slider drawn from pictures: a track, a filled part over it up to the position, and, if it is
/// given a picture, a handle. Positions are points from the left edge; what the user does is told as a
/// fraction from 0 to 1.
class qSliderCtrl : public QWidget
{
    Q_OBJECT

public:
    explicit qSliderCtrl(QWidget* parent = nullptr);
    ~qSliderCtrl() override;

    /// Takes the track and resizes to it, 20 points high at least. Always true.
    bool setBottomImage(const QString& path);
    /// Takes the filled part. Always true.
    bool setTopImage(const QString& path);
    /// Makes the handle and puts it at the left end; once there is a track, the slider grows by the width of
    /// the handle it had. Always true.
    bool setBtnImage(const QString& path);

    /// The range of setValue; 0 to 10000 before the first call.
    void setValueRange(long long min, long long max);
    /// Moves to a value without a signal. A value outside the range stands at the left end, one above it too.
    void setValue(int value);
    /// What the last setValue asked for, counted from the range's minimum; what the user did since is not in
    /// it.
    float getValue() const;
    long long minimum() const { return m_nMin; }
    long long maximum() const { return m_nMax; }
    /// As if the user had moved it there: to 0 at the left end, 1 at the right end.
    void moveTo(double fraction);

    /// Draws track and filled part with round ends.
    void setCircle(bool circle);
    /// How wide the round ends in the pictures are, in points; 8 before the first call.
    void setCircleLenght(int length);
    /// Writes the value over the slider, with a percent sign.
    void showValueText(bool show);
    /// From now on the user cannot move the slider.
    void setDisableMove();
    /// From now on the handle shows only while the pointer is over the slider.
    void setBtnHide();
    void setWidth(int width);

public slots:
    void btnMouseMove(QMouseEvent* event, int offset);

signals:
    /// The user moved the slider: to 0 at the left end, 1 at the right end.
    void sendProgressValue(double fraction);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void enterEvent(QEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    int globalLeft() const { return mapToGlobal(QPoint()).x(); }
    double fraction() const;
    void moveHandle(int x);
    void takePosition(int position);
    QRect trackRect() const;
    QRect filledRect() const;
    void paintPiece(QPainter& painter, const SkinPicture* picture, const QRect& target) const;
    void paintValue(QPainter& painter) const;

    std::unique_ptr<SkinPicture> m_pBottomPixmap;
    std::unique_ptr<SkinPicture> m_pTopPixmap;
    int m_nBottomHeight = 0;
    QSliderCtrlBtn* m_pBtn = nullptr;
    int m_nPos = 0;
    long long m_nMin = 0;
    long long m_nMax = 10000;
    float m_fPos = 0; ///< of the last setValue, before it is cut to whole points
    int m_nBtnY = 0;
    int m_nBtnWidth = 0;
    bool m_bBtnHide = false;
    bool m_bCircle = false;
    int m_nCircleLength = 8;
    bool m_bShowValue = false;
    bool m_bMoveEnable = true;
};
