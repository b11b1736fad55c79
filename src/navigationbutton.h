#pragma once

#include "common/qimagebutton.h"

/// A row of the navigation pane: a button with a mark before its caption, told apart by shape and not by
/// colour alone.
class NavigationButton : public QImageButton
{
    Q_OBJECT

public:
    enum Mark {
        NoMark,
        MarkNote,     ///< a note
        MarkQuestion, ///< a disc with a question mark
        MarkCopies    ///< two squares, one over the other
    };

    using QImageButton::QImageButton;

    void setMark(Mark mark);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Mark m_mark = NoMark;
};
