#include "songs/footlines.h"

#include "audiocore/iaudioidentifier.h"
#include "collection/counttext.h"
#include "collection/identificationtext.h"
#include "collection/saveproblemtext.h"
#include "common/textfit.h"

#include <QStringList>

namespace {
constexpr int longestTitle = 60; // characters; the line has more to say
constexpr int longestValue = 30;

QString cut(const QString& text, int longest)
{
    return TextFit::elided(text, [longest](const QString& candidate) { return candidate.size() <= longest; });
}

QString quoted(const QString& title)
{
    return QLatin1Char('"') + cut(title, longestTitle) + QLatin1Char('"');
}

QString nameOf(FootLines::SideEffect::Field field)
{
    switch (field) {
    case FootLines::SideEffect::Cover:
        return QStringLiteral("cover");
    case FootLines::SideEffect::Title:
        return QStringLiteral("title");
    case FootLines::SideEffect::Artist:
        return QStringLiteral("artist");
    case FootLines::SideEffect::Album:
        return QStringLiteral("album");
    case FootLines::SideEffect::Genre:
        return QStringLiteral("genre");
    case FootLines::SideEffect::Year:
        return QStringLiteral("year");
    case FootLines::SideEffect::Track:
    case FootLines::SideEffect::OtherPictures:
        break;
    }
    return QStringLiteral("track number");
}

/// "its genre changed from Électro to Pop".
QString told(const FootLines::SideEffect& effect)
{
    if (effect.field == FootLines::SideEffect::OtherPictures)
        return effect.before == QLatin1String("1")
                   ? QStringLiteral("its other picture was taken out")
                   : QStringLiteral("its %1 other pictures were taken out").arg(effect.before);
    const QString its = QLatin1String("its ") + nameOf(effect.field);
    const QString before = cut(effect.before, longestValue);
    const QString after = cut(effect.after, longestValue);
    if (effect.field == FootLines::SideEffect::Cover)
        return its + QLatin1String(" was taken out");
    if (after.isEmpty())
        return its + QLatin1Char(' ') + before + QLatin1String(" was taken out");
    if (before.isEmpty())
        return its + QLatin1String(" was set to ") + after;
    return its + QLatin1String(" changed from ") + before + QLatin1String(" to ") + after;
}

QString notSavedFor(const QString& title, const QString& reason)
{
    return quoted(title) + QLatin1String(" could not be saved: ") + reason + QLatin1Char('.');
}

/// Behind what is told of so many that stayed.
QString whoStayed(const QString& first, const QString& why, int count)
{
    const QString more =
        count > 1 ? QStringLiteral(" and %1 more").arg(CountText::number(quint64(count - 1))) : QString();
    return QStringLiteral(": %1 (%2)%3.").arg(quoted(first), why, more);
}
} // namespace

QString FootLines::saved(const QString& title, const QVector<SideEffect>& alsoChanged)
{
    QStringList changes;
    for (const SideEffect& effect : alsoChanged)
        changes.append(told(effect));
    const QString also =
        changes.isEmpty() ? QString() : QLatin1String("; ") + changes.join(QLatin1String(", "));
    return QLatin1String("Saved ") + quoted(title) + also + QLatin1Char('.');
}

QString FootLines::savedWithoutCover(const QString& title)
{
    return QLatin1String("Saved ") + quoted(title) +
           QLatin1String(" without the new cover: it is too large for the file.");
}

QString FootLines::leftWithoutSaving(const QString& title)
{
    return QLatin1String("Left ") + quoted(title) + QLatin1String(" without saving.");
}

QString FootLines::coverNotTaken(const QString& fileName, const QString& reason)
{
    return quoted(fileName) + QLatin1String(" is not taken as the cover: ") + reason + QLatin1Char('.');
}

QString FootLines::reasonOf(SaveProblem problem)
{
    return SaveProblemText::of(problem);
}

QString FootLines::reasonOf(iTunesEditProblem problem, SaveProblem media)
{
    switch (problem) {
    case ITUNES_TRACK_GONE:
        return QStringLiteral("the track is no longer in the library");
    case ITUNES_TRACK_AMBIGUOUS:
        return QStringLiteral("several tracks of the library have its identifier");
    case ITUNES_TRACK_WITHOUT_FILE:
        return QStringLiteral("the track has no file on this computer");
    case ITUNES_PICTURE_UNREADABLE:
        return QStringLiteral("the chosen picture cannot be read");
    case ITUNES_MEDIA_NOT_SAVED:
        return reasonOf(media);
    case ITUNES_LIBRARY_IN_USE:
        return QStringLiteral("another program is changing the library");
    case ITUNES_LIBRARY_BROKEN:
        return QStringLiteral("the library file is broken");
    case ITUNES_LIBRARY_READ_ONLY:
        return QStringLiteral("the library file is read-only");
    case ITUNES_LIBRARY_FOLDER_READ_ONLY:
        return QStringLiteral("the folder of the library is read-only");
    case ITUNES_LIBRARY_DISK_READ_ONLY:
        return QStringLiteral("the disk of the library is read-only");
    case ITUNES_LIBRARY_NO_PERMISSION:
        return QStringLiteral("you have no permission to change the library");
    case ITUNES_LIBRARY_DISK_FULL:
        return QStringLiteral("the disk of the library is full");
    case ITUNES_LIBRARY_GONE:
        return QStringLiteral("the library file is gone");
    case ITUNES_CHANGED_SINCE:
        return QStringLiteral("another program made changes since");
    case ITUNES_NOT_KEPT:
        return QStringLiteral("it is too long ago");
    default:
        return QStringLiteral("the log tells why");
    }
}

QString FootLines::notSaved(const QString& title, SaveProblem problem)
{
    return notSavedFor(title, reasonOf(problem));
}

QString FootLines::notSaved(const QString& title, iTunesEditProblem problem, SaveProblem media)
{
    return notSavedFor(title, reasonOf(problem, media));
}

QString FootLines::deleted(const Deletion& deletion)
{
    QStringList sentences;
    if (deletion.toTrash > 0)
        sentences.append(CountText::of(quint64(deletion.toTrash), "song", "songs") +
                         QLatin1String(" moved to the trash."));
    if (deletion.forGood > 0)
        sentences.append(
            CountText::of(quint64(deletion.forGood), "song", "songs") + QLatin1String(" deleted for good") +
            (deletion.whyForGood.isEmpty() ? QString() : QLatin1String(": ") + deletion.whyForGood) +
            QLatin1Char('.'));
    if (deletion.stayed > 0)
        sentences.append(CountText::of(quint64(deletion.stayed), "file", "files") +
                         QLatin1String(" could not be deleted") +
                         whoStayed(deletion.firstThatStayed, deletion.whyItStayed, deletion.stayed));
    return sentences.join(QLatin1Char(' '));
}

QString FootLines::takenOut(const TakingOut& takingOut)
{
    QStringList sentences;
    if (takingOut.tracks > 0)
        sentences.append(CountText::of(quint64(takingOut.tracks), "track", "tracks") +
                         QLatin1String(takingOut.tracks == 1
                                           ? " taken out of the library; its file stays."
                                           : " taken out of the library; their files stay."));
    if (takingOut.stayed > 0)
        sentences.append(CountText::of(quint64(takingOut.stayed), "track", "tracks") +
                         QLatin1String(" could not be taken out of the library") +
                         whoStayed(takingOut.firstThatStayed,
                                   reasonOf(takingOut.whyItStayed, SAVE_NO_PROBLEM), takingOut.stayed));
    return sentences.join(QLatin1Char(' '));
}

QString FootLines::nameOfEdit(const QString& title)
{
    return QLatin1String("the edit of ") + quoted(title);
}

QString FootLines::nameOfDeletion(int songs)
{
    return QLatin1String("the deletion of ") + CountText::of(quint64(songs), "song", "songs");
}

QString FootLines::nameOfTakingOut(int tracks)
{
    return QLatin1String("the deletion of ") + CountText::of(quint64(tracks), "track", "tracks");
}

QString FootLines::editTakenBack(const QString& title, int picturesLost)
{
    QString lost;
    if (picturesLost > 0)
        lost = QStringLiteral("; %1 of its pictures %2 out")
                   .arg(CountText::number(quint64(picturesLost)),
                        QLatin1String(picturesLost == 1 ? "stays" : "stay"));
    return QLatin1String("Took back ") + nameOfEdit(title) + lost + QLatin1Char('.');
}

QString FootLines::editNotTakenBack(const QString& title, const QString& reason)
{
    return QLatin1String("The edit of ") + quoted(title) + QLatin1String(" cannot be taken back: ") + reason +
           QLatin1Char('.');
}

QString FootLines::broughtBack(const Return& back)
{
    QStringList sentences;
    if (back.songs > 0)
        sentences.append(
            CountText::of(quint64(back.songs), "song", "songs") +
            QLatin1String(back.songs == 1 ? " is back from the trash." : " are back from the trash."));
    if (back.stayed > 0)
        sentences.append(CountText::of(quint64(back.stayed), "file", "files") +
                         QLatin1String(" could not be brought back") +
                         whoStayed(back.firstThatStayed, back.whyItStayed, back.stayed));
    return sentences.join(QLatin1Char(' '));
}

QString FootLines::tracksBack(int tracks)
{
    return CountText::of(quint64(tracks), "track", "tracks") +
           QLatin1String(tracks == 1 ? " is back in the library." : " are back in the library.");
}

QString FootLines::takingOutNotTakenBack(int tracks, const QString& reason)
{
    return QLatin1String("The deletion of ") + CountText::of(quint64(tracks), "track", "tracks") +
           QLatin1String(" cannot be taken back: ") + reason + QLatin1Char('.');
}

namespace {
QString leftOutOf(const FootLines::Intake& intake)
{
    QStringList parts;
    if (intake.unreadable > 0)
        parts.append(QStringLiteral("%1 of %2 could not be read")
                         .arg(CountText::number(quint64(intake.unreadable)),
                              CountText::of(quint64(intake.files), "file", "files")));
    if (intake.windowsMedia > 0)
        parts.append(CountText::of(quint64(intake.windowsMedia), "WMA file", "WMA files") +
                     QLatin1String(intake.windowsMedia == 1 ? " was left out (add it with Ctrl+O)"
                                                            : " were left out (add them with Ctrl+O)"));
    return parts.isEmpty() ? QString() : parts.join(QLatin1String(", ")) + QLatin1Char('.');
}

QString stopped(const FootLines::Intake& intake)
{
    if (intake.files == 0)
        return QStringLiteral("Stopped: no file was added.");
    return QStringLiteral("Stopped: %1 of %2 were added.")
        .arg(CountText::number(quint64(intake.files)),
             CountText::of(quint64(intake.wanted), "file", "files"));
}
} // namespace

QString FootLines::takenIn(const Intake& intake)
{
    QString leftOut = leftOutOf(intake);
    if (!intake.ended)
        return leftOut;
    return leftOut.isEmpty() ? stopped(intake) : stopped(intake) + QLatin1Char(' ') + leftOut;
}

QString FootLines::noOpener(Opened what)
{
    const char* const things[] = {"folders", "web pages", "help pages"};
    return QStringLiteral("No program was found that opens %1.").arg(QLatin1String(things[int(what)]));
}

QString FootLines::noSoundDevice()
{
    return QStringLiteral("There is no sound device: the song runs silently.");
}

QString FootLines::nothingScanned(iTunesReading found, quint64 line)
{
    switch (found) {
    case ITUNES_NO_LIBRARY:
        return QStringLiteral("No library file was found.");
    case ITUNES_EMPTY:
        return QStringLiteral("The library file is empty.");
    case ITUNES_UNREADABLE:
        return QStringLiteral("The library file cannot be read.");
    case ITUNES_BROKEN:
        return line > 0 ? QStringLiteral("The library file is broken (line %1).").arg(CountText::number(line))
                        : QStringLiteral("The library file is broken.");
    case ITUNES_READ:
        break;
    }
    return QString();
}

QString FootLines::identified(int status)
{
    return status == IDENTIFY_FOUND_BY_TAGS ? QStringLiteral("Identified by its tags: please check.")
                                            : QStringLiteral("Identified by sound.");
}

QString FootLines::keyOffer()
{
    return IdentificationText::keyOffer();
}

QString FootLines::notIdentified(int status)
{
    const QString reason = IdentificationText::whyNot(status);
    return reason.isEmpty() ? reason : QStringLiteral("Not identified: %1.").arg(reason);
}
