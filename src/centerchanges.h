#pragma once

#include "songs/songundo.h"

#include <QList>
#include <QObject>
#include <QSet>

class CenterFoot;
class DuplicateMusicDetailedWidget;
class GroupDeletion;
class ModeSongs;
class MusicDetailedInfoWidget;
class QWidget;
class ShownGroup;
class SongViews;
class ViewInSight;
struct QMusicInfo;

/// What follows in the content area once songs came, were edited or deleted, or are as they were before: they
/// are classified anew, the views and panels show it, and the counts are told. GUI thread only.
class CenterChanges : public QObject
{
    Q_OBJECT

public:
    struct Parts
    {
        ModeSongs& songs;
        SongViews& views;
        ViewInSight& inSight;
        ShownGroup& group;
        MusicDetailedInfoWidget& details;
        DuplicateMusicDetailedWidget& rows;
        GroupDeletion& deletion;
        CenterFoot& foot;
    };

    /// The area holds the parts and owns this.
    CenterChanges(const Parts& parts, QWidget* area);

    /// The songs of an iTunes scan.
    void classify();
    /// Those of the local mode.
    void classifyLocal();
    void logCounts() const;
    void clearClassification();

    /// By the panel of one song.
    void edited();
    /// The same song, though nobody clicked it.
    void editedAgain();
    /// Marks the song of the panel, or none.
    void markShownSong();

    /// By the panel of one group: songs of it, then the group as far as that was asked for.
    void remove(QMusicInfo* song);
    void showWhatIsLeft();
    void groupCleared();
    /// Every group is reduced to its first song, while the user waits.
    void clearAll();
    /// The deletion has edited the lists.
    void allCleared();

    void takeBack();
    void showUndone(const SongUndo::Undone& undone);

signals:
    void undefinedCounted(int count);
    void groupsCounted(int count);
    void counted(int all, int undefined, int groups);

private:
    void tellCounts();

    Parts m_parts;
    QWidget* m_area;
    QSet<QMusicInfo*> m_left; ///< the lists since the views were shown anew
};
