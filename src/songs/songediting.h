#pragma once

#include "audiocore/saveproblem.h"
#include "itunes/editproblem.h"
#include "songs/changehistory.h"
#include "songs/footlines.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>

class IAudioTag;
struct LocalMusicInfo;
struct QMusicInfo;

/// What the user typed for one song.
struct SongEdit
{
    QString title;
    QString artist;
    QString album;
    QString genre;
    int year = 0;
    int trackNumber = 0;
    QString newCoverPath;    ///< file of a picture chosen in place of the cover; empty when none was
    bool coverKept = false;  ///< the chosen picture is the one that the song has: what the file holds stays
    bool genreChosen = true; ///< by the user; else the genre is what the list of genres happened to show
};

/// Takes edits over into songs and saves them. GUI thread only; what is slow about a save is felt there.
namespace SongEditing {
struct Outcome
{
    bool coverChanged = false; ///< views are to show the cover anew
    bool coverUsed = false;    ///< a chosen cover is not for the next edit any more
    SaveProblem file = SAVE_NO_PROBLEM;
    iTunesEditProblem library = ITUNES_EDIT_DONE; ///< for a track; `file` is its media file's problem
    QVector<FootLines::SideEffect> alsoChanged;   ///< in the file, though the user did not touch it
    std::unique_ptr<Change> change = nullptr;     ///< what takes it back; null where nothing was written

    /// Whether the song shows what is nowhere saved.
    bool failed() const
    {
        return library != ITUNES_EDIT_DONE || (file != SAVE_NO_PROBLEM && file != SAVE_PICTURE_TOO_LARGE);
    }
};

/// What the genre box offers; the first is none.
QStringList genres();

/// Whether an apply without a chosen cover takes the song's own out of its file.
bool takesCoverOut(const QMusicInfo* song);

/// How many bytes a cover may have for the song's file. Without an answer there is no bound.
qint64 largestCover(const QMusicInfo& song);

/// Takes the edit over into the song, whatever becomes of saving it: to the file's tag in the local clean
/// mode, through the iTunes library in the iTunes clean mode. A save that fails leaves the file or the
/// library whole and is logged.
Outcome apply(QMusicInfo& song, const SongEdit& edit);
/// What the foot of the window says of it.
QString lineOf(const QMusicInfo& song, const Outcome& outcome);

/// After an edit that failed: the song takes what its file, or the music library, says. Whether it could be
/// read; the song stays as it is otherwise.
bool takeBack(QMusicInfo& song);

/// Puts the edit into an open tag in place of what it held and saves it. Without a chosen cover the picture
/// is removed; one that is kept stays as the tag holds it now. The result of the save.
int writeTag(IAudioTag& tag, const SongEdit& edit);
} // namespace SongEditing
