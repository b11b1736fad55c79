#pragma once

#include "common/footline.h"
#include "views/titlejump.h"
#include "views/viewkeys.h"

#include <QObject>
#include <QPointer>

class DuplicateMusicDetailedWidget;
class MusicDetailedInfoWidget;
class QAbstractItemView;
class QKeyEvent;
class QWidget;
class ShowMusicInfoWidget;
class ShownGroup;
class SongMenu;
class SongViews;
class ViewFocus;
struct QMusicInfo;

/// What keys do in the content area. They work wherever the focus of its window is, but for fields, and for
/// buttons as far as these take them; what they do goes by the rows that the views show. GUI thread only.
class CenterKeys : public QObject
{
    Q_OBJECT

public:
    struct Parts
    {
        SongViews& views;
        ShownGroup& group;
        MusicDetailedInfoWidget& details;
        DuplicateMusicDetailedWidget& rows;
        ViewFocus& focus;
    };

    /// The area holds the parts and owns this.
    CenterKeys(const Parts& parts, QWidget* area);

signals:
    /// As a click on a row of the navigation pane, counted from the top.
    void navigationChosen(int row);
    /// From the grid to the table, or back.
    void displaySwitched();
    /// For the foot of the window.
    void told(const FootText& told);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool hears(const QWidget& receiver) const;
    bool isLeftTo(const QWidget* focus, ViewKeys::Command command) const;
    bool take(const QKeyEvent& event);
    bool act(ViewKeys::Command command, int key);
    bool actOn(QAbstractItemView& view, ViewKeys::Command command, int key);
    bool jump(const QKeyEvent& event);
    void mark(QAbstractItemView& view, int row, int former);
    void showGroupBeside(QAbstractItemView& view, int steps);
    void showCard(QAbstractItemView& view);
    QMusicInfo* songAtHand(const QAbstractItemView& view) const;

    Parts m_parts;
    SongMenu* m_menu;
    QPointer<ShowMusicInfoWidget> m_card; ///< of a song that is in no row; goes with its view
    TitleJump m_jump;
};
