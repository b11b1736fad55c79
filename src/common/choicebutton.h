#pragma once

#include "common/qimagebutton.h"

/// One of several buttons of which one is chosen: the fourth cell of its strip is the look of the chosen one,
/// whether it can be clicked or not. What does not answer for another reason than being chosen is faint.
class ChoiceButton : public QImageButton
{
    Q_OBJECT

public:
    explicit ChoiceButton(QWidget* parent = nullptr);

    virtual void setChosen(bool chosen);
    bool isChosen() const { return m_chosen; }

protected:
    int shownCell() const override;
    qreal cellOpacity() const override;

private:
    bool m_chosen = false;
};
