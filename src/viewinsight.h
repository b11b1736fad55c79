#pragma once

#include "songs/spokenwords.h"

#include <functional>

class ChoiceButton;
class QAbstractItemView;
class QWidget;
class SongViews;
class ViewFocus;

/// Which of the four views shows, by what is chosen in the navigation pane and by the buttons that choose
/// between grid and table; with it goes what has the focus for views, by the name of what it shows. GUI
/// thread only.
class ViewInSight
{
public:
    using Kind = SpokenWords::List;
    struct Buttons
    {
        ChoiceButton& grid;
        ChoiceButton& table;
        QWidget& open; ///< files, where they are dropped
        QWidget& more; ///< files, beside those that show
    };

    /// The grid of songs, hidden. The area holds the views and the buttons, and owns what has the focus; all
    /// must outlive this. While there are no songs the place where files are dropped may be what is seen. The
    /// area accepts drops where files make songs.
    ViewInSight(SongViews& views, const Buttons& buttons, std::function<bool()> dropsAreSeen, QWidget* area);

    QAbstractItemView& view() const { return *m_view; }
    ViewFocus& focus() const { return *m_focus; }
    Kind kind() const { return m_kind; }
    bool isGrid() const { return m_isGrid; }
    bool dropsAreSeen() const { return m_dropsAreSeen(); }

    /// The view of the kind, which has its list already.
    void show(Kind kind);
    void showAs(bool grid);
    /// The same view, or the place where files are dropped.
    void showAnew();
    void setVisible(bool visible);

private:
    void setGrid(bool grid);
    void name(int shown, int all) const;

    SongViews& m_views;
    Buttons m_buttons;
    std::function<bool()> m_dropsAreSeen;
    const QWidget& m_area;
    QAbstractItemView* m_view;
    ViewFocus* m_focus;
    Kind m_kind = Kind::All;
    bool m_isGrid = true;
};
