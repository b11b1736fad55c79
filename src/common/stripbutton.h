#pragma once

#include "common/skinpicture.h"

#include <QPushButton>

#include <memory>

/// A push button whose look is one of four equal cells of a horizontal strip, and follows the pointer: what
/// the skinned buttons have in common. Without a strip it looks as the style draws it.
class StripButton : public QPushButton
{
public:
    enum State { StateNormal = 0, StateHover = 1, StatePressed = 2, StateDisabled = 3 };

    explicit StripButton(QWidget* parent = nullptr);
    ~StripButton() override;

    int state() const { return m_nState; }
    /// How far the shape in its strip is rounded at a corner, in points.
    qreal corner() const;
    /// Says that a click writes or deletes files, which none does by mistake: the second press of a double
    /// click is not for a button that came in the place of the one that took the first.
    void setChangesFiles(bool changes) { m_bChangesFiles = changes; }

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void enterEvent(QEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

    /// The cell drawn, 0 to 3: that of the state, unless a derived button knows better.
    virtual int shownCell() const { return m_nState; }
    /// How much of the ground a cell covers, 1 for all.
    virtual qreal cellOpacity() const { return 1; }
    /// Takes the strip; the size of one of its cells, in points.
    QSize loadStrip(const QString& path);
    /// The file that the strip was taken from.
    QString stripFile() const { return m_pImage ? m_pImage->file() : QString(); }
    bool hasStrip() const { return m_pImage != nullptr; }
    /// Repaints at once when the state is another one.
    void changeState(int state);

private:
    std::shared_ptr<const SkinPicture> m_pImage;
    int m_nState = StateNormal;
    bool m_bChangesFiles = false;
};
