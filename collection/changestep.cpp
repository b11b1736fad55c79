#include "collection/changestep.h"

#include "base/platform.h"
#include "collection/fileplace.h"
#include "itunes/tracktaking.h"

#include <QDateTime>

using Safety = HistoryJournal::Safety;

namespace {
QString asText(const std::string& text)
{
    return QString::fromStdString(text);
}

QString notToBeTakenBack(const QString& reason)
{
    return QStringLiteral("it could not be taken back: %1").arg(reason);
}

/// What of the change the file does not hold yet.
TagTexts differing(const TagTexts& change, const TagTexts& held)
{
    TagTexts left;
    for (auto text = change.texts.begin(); text != change.texts.end(); ++text)
        if (held.texts.value(text.key()) != text.value())
            left.texts.insert(text.key(), text.value());
    if (change.picture && *change.picture != held.picture.value_or(QByteArray()))
        left.picture = change.picture;
    return left;
}

std::string coverName(const QByteArray& cover)
{
    return cover.isEmpty() ? std::string() : KeptCovers::nameOf(cover);
}

FileChange changeOf(const std::string& path, const base::FileState& state, const TagTexts& held,
                    const TagTexts& change)
{
    FileChange edit;
    edit.kind = FileChange::Kind::Edited;
    edit.path = path;
    edit.before = state;
    for (auto text = change.texts.begin(); text != change.texts.end(); ++text)
        edit.fields.append({text.key(), held.texts.value(text.key()), text.value()});
    edit.coverChanged = change.picture.has_value();
    if (edit.coverChanged) {
        edit.oldCover = coverName(held.picture.value_or(QByteArray()));
        edit.newCover = coverName(*change.picture);
    }
    return edit;
}
} // namespace

ChangeStep::ChangeStep(std::unique_ptr<HistoryJournal> journal, const KeptCovers& covers,
                       const std::string& what)
    : m_journal(std::move(journal)), m_covers(covers), m_what(what), m_number(m_journal->lastStep() + 1)
{
}

ChangeStep::~ChangeStep()
{
    QString borne;
    if (m_begun)
        append(HistorySteps::endLine(m_number), Safety::PowerCut, borne);
}

/// The first lines begin the step.
bool ChangeStep::append(const std::string& lines, Safety safety, QString& reason)
{
    const std::string begin =
        m_begun ? std::string()
                : HistorySteps::beginLine(m_number, QDateTime::currentSecsSinceEpoch(), m_what);
    base::Failure failure;
    const bool done = m_journal->append(begin + lines, safety, failure);
    m_begun = m_begun || done;
    if (!done)
        reason = notToBeTakenBack(asText(failure.text));
    return done;
}

QString ChangeStep::moveToTrash(const std::string& path, const FileState& state)
{
    const int number = m_next++;
    bool isWritten = false;
    const auto announce = [&](const base::TrashedFile& planned, std::string& error) {
        FileChange change;
        change.kind = FileChange::Kind::Trashed;
        change.path = planned.path;
        change.before = planned.state;
        change.trash = planned.trash;
        change.nameInTrash = planned.name;
        QString reason;
        isWritten =
            append(HistorySteps::changeLine(m_number, number, change), Safety::Kill, reason) || isWritten;
        error = reason.toStdString();
        return reason.isEmpty();
    };
    base::TrashedFile taken;
    std::string error;
    const base::FileState expected = state.exists() ? state.file : base::FileState();
    if (m_trash.take(path, expected, taken, error, announce) == base::Trash::Taking::Done)
        return QString();
    QString borne; // the file is where it was, which says the same
    if (isWritten)
        append(HistorySteps::notDoneLine(m_number, number), Safety::Kill, borne);
    return asText(error);
}

QString ChangeStep::deleteForGood(const std::string& path, const FileState& state)
{
    FileChange change;
    change.path = FilePlace::of(path).path().toStdString();
    change.before = state.file;
    QString reason = removeIfUnchanged(path, state);
    QString borne;
    if (reason.isEmpty())
        append(HistorySteps::changeLine(m_number, m_next++, change), Safety::Kill, borne);
    return reason;
}

QString ChangeStep::edit(const std::string& path, const TagTexts& change, TagFiles& tags, Edited& edited)
{
    edited = Edited::No;
    const std::string file = base::realPath(path);
    const FileState before = FileState::of(file);
    if (!before.exists())
        return QStringLiteral("the file is gone");
    TagTexts held;
    QString reason = tags.read(file, held);
    const TagTexts wanted = differing(change, held);
    if (!reason.isEmpty() || wanted.isEmpty())
        return reason;
    const FileChange edit = changeOf(file, before.file, held, wanted);
    if (!edit.oldCover.empty() && edit.coverChanged)
        reason = m_covers.keep(held.picture.value_or(QByteArray()));
    if (!reason.isEmpty())
        return notToBeTakenBack(reason);
    if (!whyNotAsLeft(before, FileState::of(file)).isEmpty())
        return QStringLiteral("another program is changing the file");
    return writeEdit(edit, wanted, tags, edited);
}

QString ChangeStep::takeOut(const std::string& library, const std::vector<std::uint64_t>& tracks)
{
    const int number = m_next++;
    FileChange change;
    change.kind = FileChange::Kind::TakenOut;
    change.path = base::realPath(library);
    change.before = FileState::of(change.path).file;
    change.tracks = int(tracks.size());
    bool isWritten = false;
    const auto announce = [&](const std::string& taken) {
        const QByteArray bytes = QByteArray::fromStdString(taken);
        change.taken = KeptCovers::nameOf(bytes);
        QString reason = m_covers.keep(bytes);
        if (!reason.isEmpty())
            return notToBeTakenBack(reason).toStdString();
        isWritten = append(HistorySteps::changeLine(m_number, number, change), Safety::PowerCut, reason);
        return reason.toStdString();
    };
    std::string reason;
    const iTunesTaking taking = takeTracksOut(change.path, tracks, announce, reason);
    QString borne; // the library holds the tracks, which says the same
    if (taking == iTunesTaking::Refused && isWritten)
        append(HistorySteps::notDoneLine(m_number, number), Safety::Kill, borne);
    return asText(reason);
}

QString ChangeStep::writeEdit(const FileChange& edit, const TagTexts& change, TagFiles& tags, Edited& edited)
{
    const int number = m_next++;
    QString reason;
    if (!append(HistorySteps::changeLine(m_number, number, edit), Safety::PowerCut, reason))
        return reason;
    reason = tags.write(edit.path, change);
    const FileState after = FileState::of(edit.path);
    const bool isUntouched = after.exists() && after.file == edit.before;
    QString borne; // what the file holds tells whether it was done, too
    append(isUntouched ? HistorySteps::notDoneLine(m_number, number)
                       : HistorySteps::leftLine(m_number, number, after.file),
           Safety::Kill, borne);
    edited = isUntouched ? Edited::No : Edited::Yes;
    return reason;
}
