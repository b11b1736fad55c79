#pragma once

#include "songs/removaltally.h"
#include "songs/songremoval.h"

#include <memory>

class DeleteAllDupMusicThread;
class DeletingMusicWaitingDlg;
class QObject;
class QWidget;

/// Reduces every duplicate group to its first song on a thread, while the user waits before a dialog. GUI
/// thread only.
class GroupDeletion
{
public:
    /// The owner's slot runs when the thread has edited the lists, and calls finish(). The thread waits for
    /// it.
    GroupDeletion(QObject* owner, const char* listsEdited);
    ~GroupDeletion();

    /// Returns once the dialog, which lies over the window, has closed; false, and nothing is deleted, where
    /// no thread can be had. The lists must outlive the run.
    bool run(const SongLists& lists, QWidget& window);
    /// From the beginning of a run to finish().
    bool isRunning() const { return m_bDeleting; }
    /// Closes the dialog. The songs that the run took out of the list of all songs, nobody's from then on.
    QVector<RemovedSong> finish();
    /// What the run that was finished last did with their files or tracks.
    RemovalTally takeTally();
    /// Ends a run after the file at hand; the owner's slot runs as ever.
    void stop();

private:
    QObject* m_owner;
    const char* m_listsEdited;
    std::unique_ptr<DeleteAllDupMusicThread> m_pDeleteThread;
    std::unique_ptr<DeletingMusicWaitingDlg> m_pWaitingDlg; ///< of the last run
    bool m_bDeleting = false;
};
