#pragma once

#include "audiocore/saveproblem.h"
#include "itunes/editproblem.h"
#include "itunes/itunesmusiclibrary.h"

#include <QString>
#include <QVector>

/// What the foot of the window says of what happened, in words. Titles are quoted, and long ones cut short.
namespace FootLines {
/// A field that a save changed in the file though the user did not touch it.
struct SideEffect
{
    enum Field { Cover, Title, Artist, Album, Genre, Year, Track, OtherPictures };

    Field field;
    QString before; ///< empty for a field that was not there; no text for covers, a number for other pictures
    QString after;  ///< empty for a field that went
};

QString saved(const QString& title, const QVector<SideEffect>& alsoChanged = {});
/// All but the cover, which was too large for the file.
QString savedWithoutCover(const QString& title);
QString leftWithoutSaving(const QString& title);
/// Of a file that was chosen as the cover.
QString coverNotTaken(const QString& fileName, const QString& reason);
/// In words, behind a colon.
QString reasonOf(SaveProblem problem);
/// The same of a track of the music library; `media` is the problem of its file, when it is that.
QString reasonOf(iTunesEditProblem problem, SaveProblem media);
/// Of a local song.
QString notSaved(const QString& title, SaveProblem problem);
/// Of a track of the music library.
QString notSaved(const QString& title, iTunesEditProblem problem, SaveProblem media);

/// What a deletion did with the files of songs. Counts are of songs.
struct Deletion
{
    int toTrash = 0;
    int forGood = 0;
    QString whyForGood;      ///< "there is no trash on that disk"; may be empty
    int stayed = 0;          ///< that should have gone
    QString firstThatStayed; ///< its name; copies have one title
    QString whyItStayed;
};
/// Empty when nothing was deleted and nothing stayed.
QString deleted(const Deletion& deletion);
/// What a deletion did with tracks of the music library, whose files stay.
struct TakingOut
{
    int tracks = 0;
    int stayed = 0; ///< that should have gone
    QString firstThatStayed;
    iTunesEditProblem whyItStayed = ITUNES_EDIT_DONE;
};
/// Empty when nothing was taken out and nothing stayed.
QString takenOut(const TakingOut& takingOut);

/// What can be taken back: "the edit of ...", "the deletion of ...".
QString nameOfEdit(const QString& title);
QString nameOfDeletion(int songs);
QString nameOfTakingOut(int tracks);
/// So many pictures did not come back.
QString editTakenBack(const QString& title, int picturesLost = 0);
QString editNotTakenBack(const QString& title, const QString& reason);
/// What taking a deletion back did with the files of songs.
struct Return
{
    int songs = 0;
    int stayed = 0;          ///< files that should have come back
    QString firstThatStayed; ///< its name
    QString whyItStayed;
};
QString broughtBack(const Return& back);
/// Of tracks that were taken out of the music library: all are in it again, or none is.
QString tracksBack(int tracks);
QString takingOutNotTakenBack(int tracks, const QString& reason);

/// What came of adding files.
struct Intake
{
    int files = 0; ///< that were read, or could not be
    int unreadable = 0;
    int windowsMedia = 0; ///< passed over, beside the files
    bool ended = false;   ///< by the user, before all of it was done
    int wanted = 0;       ///< files that were found by then
};
/// Empty when all is well.
QString takenIn(const Intake& intake);

enum class Opened { Folder, WebPage, HelpPage };
QString noOpener(Opened what);
QString noSoundDevice();

/// Of a scan of the music library that found no tracks; empty for one that did. `line` is where the file is
/// broken; 0 when that is not known.
QString nothingScanned(iTunesReading found, quint64 line = 0);

/// `status` is the identifier's (IdentifyStatus), one that found something.
QString identified(int status);
/// `status` is the identifier's (IdentifyStatus); empty for one that tells of no failure, or of what the
/// user did himself.
QString notIdentified(int status);
/// What a key for identifying by sound would add, and where to get one.
QString keyOffer();
} // namespace FootLines
