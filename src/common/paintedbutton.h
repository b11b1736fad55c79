#pragma once

#include <QAbstractButton>

/// A button without a strip: the derived one paints it, anew when the pointer comes or goes. Tab reaches it,
/// and Return and Space click it. A press elsewhere takes the focus to none.
class PaintedButton : public QAbstractButton
{
public:
    explicit PaintedButton(QWidget* parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent* event) override;
};
