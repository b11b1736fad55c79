#pragma once

#include "common/footline.h"
#include "songs/songundo.h"
#include "waitedwork.h"

#include <QObject>

class RemovalTally;

/// What the content area has the foot of the window say: what became of songs, and the links behind it, to
/// the next group and to taking the newest change back. Owns those changes, and with them the songs that left
/// the lists; panels may still show one. GUI thread only.
class CenterFoot : public QObject
{
    Q_OBJECT

public:
    /// After a change of it the offer is made anew.
    SongUndo& undo() { return m_undo; }

    /// What has no words is no news.
    void tell(const FootText& told);
    /// Ends a deletion. The row of the group to go on with is -1 for none.
    void tellOfDeletion(const RemovalTally& tally, int nextGroup = -1);
    void offerUndo();
    /// Takes the newest change back, if there is one, while the user waits before the window. Returns when
    /// all of it is told.
    void takeBack(const SongLists& lists, QWidget& window);
    /// Meanwhile the lists are to be left alone.
    bool isTakingBack() const { return m_work.isRunning(); }
    /// Nothing can be taken back any more.
    void forgetSteps();
    /// The same, and frees the songs that left: no view or panel may show one.
    void forgetChanges();

signals:
    void told(const FootText& told);
    /// Without a caption there is nothing to take back.
    void undoOffered(const FootText::Link& link);
    /// The user clicked a link.
    void undoChosen();
    void groupChosen(int row);
    /// Songs or lists are as they were before; handled before anything is told of it.
    void undone(const SongUndo::Undone& undone);

private:
    SongUndo m_undo;
    WaitedWork m_work;
};
