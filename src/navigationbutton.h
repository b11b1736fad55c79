#pragma once

#include "common/choicebutton.h"

/// A row of the navigation pane: a button with a mark before its caption, told apart by shape and not by
/// colour alone.
class NavigationButton : public ChoiceButton
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
    void setChosen(bool chosen) override;

protected:
    /// Of a row that is locked the words tell.
    qreal cellOpacity() const override { return 1; }
    void paintEvent(QPaintEvent* event) override;

private:
    Mark m_mark = NoMark;
};
