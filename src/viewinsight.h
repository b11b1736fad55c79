#pragma once

class QAbstractItemView;
class QWidget;
class SongViews;
class ViewFocus;

/// Which of the four views shows, by the buttons that choose between grid and table; with it goes what has
/// the focus for views. GUI thread only.
class ViewInSight
{
public:
    struct Buttons
    {
        QWidget& grid;
        QWidget& table;
    };

    /// The grid of songs, hidden. The area holds the views and the buttons, and owns what has the focus; all
    /// must outlive this.
    ViewInSight(SongViews& views, const Buttons& buttons, QWidget* area);

    QAbstractItemView& view() const { return *m_view; }
    ViewFocus& focus() const { return *m_focus; }
    bool isGrid() const { return m_isGrid; }

    /// Of either kind, from the next time on that one is chosen.
    void setGrid(bool grid);
    /// Hides the view in sight in favour of that of groups or of songs, which is hidden yet.
    void choose(bool groups);
    void setVisible(bool visible);

private:
    SongViews& m_views;
    Buttons m_buttons;
    QAbstractItemView* m_view;
    ViewFocus* m_focus;
    bool m_isGrid = true;
};
