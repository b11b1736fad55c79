#pragma once

#include <QString>
#include <QStringList>

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
    QString newCoverPath;   ///< file of a picture chosen in place of the cover; empty when none was
    bool coverKept = false; ///< the chosen picture is the one that the song has: what the file holds stays
};

/// Takes edits over into songs and saves them. GUI thread only; what is slow about a save is felt there.
namespace SongEditing {
struct Outcome
{
    bool coverChanged = false; ///< views are to show the cover anew
    bool coverUsed = false;    ///< a chosen cover is not for the next edit any more
};

/// What the genre box offers; the first is none.
QStringList genres();

/// Whether an apply without a chosen cover takes the song's own out of its file.
bool takesCoverOut(const QMusicInfo* song);

/// Takes the edit over into the song, whatever becomes of saving it: to the file's tag in the local clean
/// mode, through the iTunes library in the iTunes clean mode. A save that fails leaves the file or the
/// library whole and is logged.
Outcome apply(QMusicInfo& song, const SongEdit& edit);

/// Puts the edit into an open tag in place of what it held and saves it. Without a chosen cover the picture
/// is removed; one that is kept stays as the tag holds it now. The result of the save.
int writeTag(IAudioTag& tag, const SongEdit& edit);
} // namespace SongEditing
