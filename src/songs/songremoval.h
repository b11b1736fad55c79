#pragma once

#include "collection/fileremoval.h"
#include "collection/keptfiles.h"
#include "itunes/editproblem.h"

#include <QList>
#include <QSet>
#include <QVector>

#include <optional>

class IAudioTag;
struct DupMusicInfo;
struct QMusicInfo;

/// The lists of songs that a deletion edits. None is owned.
struct SongLists
{
    QList<QMusicInfo*>* all = nullptr;
    QList<DupMusicInfo*>* groups = nullptr;
    QList<QMusicInfo*>* undefined = nullptr;
    QList<IAudioTag*>* tags = nullptr; ///< local mode: one per song of `all`, same index
};

/// A song that left the lists, what it left there with, and its place.
struct RemovedSong
{
    QMusicInfo* song = nullptr;
    IAudioTag* tag = nullptr; ///< closed; null in the iTunes mode, and where none could be made
    int position = 0;         ///< in the list of all songs, of which those before it had left already
};

/// Taking songs out of the collection: into the trash, off the disk or out of the iTunes library, and out of
/// the lists. Songs and groups are never freed here.
namespace SongRemoval {
/// Whether songs are files in the mode in force, and not tracks of the iTunes library.
bool songsAreFiles();
/// What these songs need on disk; nothing where they are tracks. Any thread.
KeptFiles filesOf(const QList<QMusicInfo*>& songs);
/// Lets go of the song's file (`tag` may be null) and has what its path names removed, a link itself and
/// never a folder. A file that a kept song would lose stays, and one that is not as it was when it was
/// listed, or saved by us. Any thread.
void removeFile(const QMusicInfo& song, IAudioTag* tag, const KeptFiles& kept, FileRemoval& removal);

/// Takes the song out of the lists of songs, and the last entry, whichever song that is, out of the group at
/// `currentGroup`; a group that falls to one song leaves the list of groups. Nothing where it was not in the
/// list of all songs.
std::optional<RemovedSong> leaveLists(const SongLists& lists, QMusicInfo* song, qint64 currentGroup);
/// The same for a song that may have its file yet: it loses that first, as removeFile() does it, unless it is
/// not in the list of all songs.
std::optional<RemovedSong> removeOne(const SongLists& lists, QMusicInfo* song, qint64 currentGroup,
                                     const KeptFiles& kept, FileRemoval& removal);

/// A song that is to go, and the first song of its group, which stays; null where several do.
struct Removal
{
    QMusicInfo* song;
    QMusicInfo* kept;
};
/// Deletes the songs' tracks from the iTunes library at one stroke; what became of each is logged and
/// answered. Any thread.
QVector<iTunesEditProblem> removeTracks(const QVector<Removal>& plan);
/// What reduces every group to its first song, in the order of doing: group by group, from the last song on.
/// Groups of fewer than two songs ask for nothing.
QVector<Removal> planOfAll(const QList<DupMusicInfo*>& groups);
/// Takes the songs of the plan out of the lists and empties the list of groups; groups of two songs and more
/// keep their first one. Takes as long as the lists are, however many songs go. The songs that were in the
/// list of all songs, from the last one on.
QVector<RemovedSong> removeAll(const SongLists& lists, const QVector<Removal>& plan);

/// Puts songs that left the list of all songs one after another back to their places there, their tags as
/// well; undefined songs and groups are to be found anew. Those in `away` stay out. Takes as long as the list
/// is for thousands of songs that left in the order of one deletion.
void putBack(const SongLists& lists, const QVector<RemovedSong>& removed, const QSet<QMusicInfo*>& away);
} // namespace SongRemoval
