#pragma once

#include "songs/changehistory.h"
#include "songs/removaltally.h"
#include "songs/songremoval.h"

#include <QHash>
#include <QList>
#include <QVector>

/// Deletes the files of songs, or takes their tracks out of the iTunes library; the lists stay as they are.
/// One thread at a time; the lists are read by the constructor alone.
class SongDeletion
{
public:
    /// A song that is not in the list of all songs costs no file, and none loses one twice.
    explicit SongDeletion(const SongLists& lists);

    /// What deletions from now on leave on disk for the sake of these songs.
    void keep(const QList<QMusicInfo*>& songs);
    /// Deletes the songs of the plan, in its order; those without a kept song of their own as keep() said.
    /// Tracks go many at a stroke.
    void remove(const QVector<SongRemoval::Removal>& plan, const Progress& progress = goOn);
    /// How many songs of the plan are through: all of them, unless it was ended, in whatever way.
    int done() const { return m_done; }
    /// What became of all of them so far.
    RemovalTally tally() const;

private:
    void removeFiles(const QVector<SongRemoval::Removal>& plan, const Progress& progress);
    void removeTracks(const QVector<SongRemoval::Removal>& plan, const Progress& progress);

    QHash<const QMusicInfo*, IAudioTag*> m_tags; ///< of the songs that have their files yet; null for none
    KeptFiles m_kept;
    const QMusicInfo* m_keptSong = nullptr; ///< that m_kept is of
    FileRemoval m_removal;
    RemovalTally m_tally;
    int m_done = 0;
};
