#pragma once

#include "common/footline.h"

#include <QModelIndex>
#include <QObject>
#include <QPoint>

#include <functional>

class DuplicateMusicDetailedWidget;
class DupMusicbarWidget;
class MusicDetailedInfoWidget;
class QAbstractItemView;
class SongViews;
struct QMusicInfo;

/// The menu of a song: by a right click on it in a view or on its row of a group, or by a key where the mark
/// is. Of a group in a view it is the menu of the first song. None opens while a song is identified.
class SongMenu : public QObject
{
    Q_OBJECT

public:
    struct Parts
    {
        SongViews& views;
        MusicDetailedInfoWidget& details;
        DuplicateMusicDetailedWidget& rows;
    };

    /// Hears right clicks in the area, which holds the parts and owns this.
    SongMenu(const Parts& parts, QWidget* area);

    /// Where the mark of the view is, or the row at hand.
    void open(QAbstractItemView& view);

signals:
    /// For the foot of the window.
    void told(const FootText& told);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Subject
    {
        std::function<QMusicInfo*()> song; ///< null once it is gone
        std::function<void()> play;        ///< only while it is there
        bool playsByKey;                   ///< for what the key plays
    };

    void openAt(const QPoint& place);
    void openFor(QAbstractItemView& view, const QModelIndex& index, const QPoint& place);
    void openFor(DupMusicbarWidget& row, const QPoint& place);
    void popUp(const Subject& subject, const QPoint& place);

    Parts m_parts;
    QWidget* m_area;
};
