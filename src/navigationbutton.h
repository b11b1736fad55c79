#pragma once

#include "common/qimagebutton.h"

/// A row of the navigation pane: a button with a mark before its caption, told apart by shape and not by
/// colour alone. The fourth cell of its strip is the look of the chosen row, whether or not rows can be
/// clicked at the moment.
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

    explicit NavigationButton(QWidget* parent = nullptr);

    void setMark(Mark mark);
    void setChosen(bool chosen);
    bool isChosen() const { return m_chosen; }

protected:
    int shownCell() const override;
    void paintEvent(QPaintEvent* event) override;

private:
    Mark m_mark = NoMark;
    bool m_chosen = false;
};
