#include "collection/stepreturn.h"

#include "base/newfile.h"
#include "base/platform.h"
#include "collection/filestate.h"
#include "itunes/tracktaking.h"

#include <algorithm>

namespace {
enum class Side { Old, New };

/// Whether the file holds what the edit found, or what it put there.
bool holds(const TagTexts& held, const FileChange& edit, Side side)
{
    const QByteArray cover = held.picture.value_or(QByteArray());
    const std::string name = cover.isEmpty() ? std::string() : KeptCovers::nameOf(cover);
    return (!edit.coverChanged || name == (side == Side::Old ? edit.oldCover : edit.newCover)) &&
           std::all_of(edit.fields.begin(), edit.fields.end(), [&](const FileChange::Field& field) {
               return held.texts.value(field.name) == (side == Side::Old ? field.old : field.now);
           });
}

FileState thereAs(const base::FileState& state)
{
    return {QString(), state, true};
}
} // namespace

StepReturn::Result StepReturn::takeBack(HistoryStep& step, const Progress& progress)
{
    Result result;
    result.step = step.number;
    const int total = step.changesLeft();
    int done = 0;
    for (auto numbered = step.changes.rbegin(); numbered != step.changes.rend(); ++numbered) {
        FileChange& change = numbered->second;
        if (change.isBack)
            continue;
        if (!progress(done++, total))
            return result;
        const QString reason = takeBack(change);
        if (reason.isEmpty()) {
            note(step, numbered->first, change);
            result.paths.push_back(change.path);
        } else {
            result.failed.push_back({change.path, reason});
        }
    }
    result.isWhole = true;
    base::Failure borne; // then it is tried once more
    m_journal.append(HistorySteps::triedLine(step.number), HistoryJournal::Safety::PowerCut, borne);
    return result;
}

/// What is not written down is found as it is by the next one that takes the step back.
void StepReturn::note(const HistoryStep& step, int number, FileChange& change)
{
    const base::FileState now = FileState::ofEntry(change.path).file;
    base::Failure borne;
    m_journal.append(HistorySteps::backLine(step.number, number, now), HistoryJournal::Safety::Kill, borne);
    m_history.tookBack(change, now);
}

/// Has the file again as it was before the change, also where it is so already: after a kill nobody knows.
/// The reason why it stays as it is, or empty.
QString StepReturn::takeBack(const FileChange& change)
{
    switch (change.kind) {
    case FileChange::Kind::Trashed:
        return bringBack(change);
    case FileChange::Kind::Edited:
        return takeEditBack(change);
    case FileChange::Kind::TakenOut:
        return bringTracksBack(change);
    case FileChange::Kind::Deleted:
        break;
    }
    return QStringLiteral("it was deleted for good");
}

/// A kill may have come before it left its place, or after it came back there.
QString StepReturn::bringBack(const FileChange& change)
{
    std::string error;
    switch (m_trash.restore(change.trashedFile(), error)) {
    case base::Trash::Restoring::Done:
        return QString();
    case base::Trash::Restoring::Gone:
        return whyNotAsLeft(thereAs(m_history.found(change)), FileState::ofEntry(change.path)).isEmpty()
                   ? QString()
                   : QStringLiteral("it is not in the trash any more");
    default:
        return QString::fromStdString(error);
    }
}

/// What the library holds tells whether it was done.
QString StepReturn::bringTracksBack(const FileChange& change)
{
    const std::optional<QByteArray> taken = m_covers.find(change.taken);
    std::string reason;
    if (!taken)
        return QStringLiteral("what was taken out of it is not kept any more");
    return putTracksBack(change.path, taken->toStdString(), reason) ? QString()
                                                                    : QString::fromStdString(reason);
}

QString StepReturn::takeEditBack(const FileChange& edit)
{
    const FileState now = FileState::of(edit.path);
    const std::optional<base::FileState> left = m_history.left(edit);
    if (!left && now.exists()) // a kill may have ended the save, which left its copy
        base::removeLeftovers(base::realPath(edit.path));
    QString change = whyNotAsLeft(left ? thereAs(*left) : thereAs(edit.before), now);
    if (change.isEmpty())
        return left ? restore(edit) : QString();
    TagTexts held;
    if (!now.exists() || !m_tags.read(edit.path, held).isEmpty())
        return change;
    if (holds(held, edit, Side::Old))
        return QString();
    return !left && holds(held, edit, Side::New) ? restore(edit) : change;
}

QString StepReturn::restore(const FileChange& edit)
{
    TagTexts old;
    for (const FileChange::Field& field : edit.fields)
        old.texts.insert(field.name, field.old);
    if (edit.coverChanged && edit.oldCover.empty())
        old.picture = QByteArray();
    else if (edit.coverChanged)
        old.picture = m_covers.find(edit.oldCover);
    if (edit.coverChanged && !old.picture)
        return QStringLiteral("its old cover is not kept any more");
    return m_tags.write(edit.path, old);
}
