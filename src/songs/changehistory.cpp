#include "songs/changehistory.h"

#include "audiocore/iaudiotag.h"

#include <memory>

namespace {
using Tag = std::unique_ptr<IAudioTag, ReleaseTag>;

Tag openTag(const QString& path)
{
    Tag tag(CreateTag());
    if (tag)
        tag->Open(path.toStdU32String().c_str());
    return tag;
}

/// Whether nobody wrote the file between the two states.
bool isUntouched(const FileState& before, const FileState& now)
{
    return before.exists() && now.exists() && before.file.looksLike(now.file);
}
} // namespace

ChangeHistory::Before ChangeHistory::Before::of(const QString& path)
{
    Before before = {path, FileState::of(path), {}};
    if (const Tag tag = openTag(path))
        before.content = TagContent::of(*tag);
    return before;
}

void ChangeHistory::addEdit(const Before& before)
{
    const FileState after = FileState::of(before.path);
    if (after.exists() && !isUntouched(before.state, after))
        add(Edit{before, after});
}

void ChangeHistory::addDeletion(const RemovedFiles& files)
{
    if (!files.trashed.isEmpty())
        add(files);
}

/// The oldest steps make room.
void ChangeHistory::add(const Step& step)
{
    const auto pictureOf = [](const Step& any) {
        const auto* const edit = std::get_if<Edit>(&any);
        return edit ? qint64(edit->before.content.picture.size()) : 0;
    };
    m_steps.push_back(step);
    m_pictureBytes += pictureOf(step);
    while (int(m_steps.size()) > mostSteps || m_pictureBytes > mostPictureBytes) {
        m_pictureBytes -= pictureOf(m_steps.front());
        m_steps.pop_front();
    }
}

ChangeHistory::TakenBack ChangeHistory::takeBack()
{
    if (m_steps.empty())
        return TakenBack();
    const Step step = std::move(m_steps.back());
    m_steps.pop_back();
    if (const auto* const files = std::get_if<RemovedFiles>(&step))
        return takeBackDeletion(*files);
    const Edit& edit = std::get<Edit>(step);
    m_pictureBytes -= edit.before.content.picture.size();
    return takeBackEdit(edit);
}

ChangeHistory::TakenBack ChangeHistory::takeBackEdit(const Edit& edit)
{
    const QString& path = edit.before.path;
    TakenBack result;
    result.kind = TakenBack::Kind::Edit;
    const auto failed = [&](const char* reason) {
        result.failed.append({path, QString::fromLatin1(reason)});
        return result;
    };
    const FileState now = FileState::of(path);
    if (!now.exists())
        return failed("the file is gone");
    if (!isUntouched(edit.after, now))
        return failed("another program changed the file since");
    const Tag tag = openTag(path);
    if (!tag || edit.before.content.save(*tag) != 0)
        return failed("the file cannot be written");
    // For older steps it is the file again that they left.
    const FileState restored = FileState::of(path);
    for (Step& step : m_steps) {
        auto* const older = std::get_if<Edit>(&step);
        if (older && older->before.path == path && isUntouched(older->after, edit.before.state))
            older->after = restored;
    }
    result.paths.append(path);
    result.content = edit.before.content;
    return result;
}

ChangeHistory::TakenBack ChangeHistory::takeBackDeletion(const RemovedFiles& files)
{
    TakenBack result;
    result.kind = TakenBack::Kind::Deletion;
    FileReturn back;
    for (const RemovedFiles::Trashed& file : files.trashed) {
        const QString reason = back.bringBack(file);
        if (reason.isEmpty())
            result.paths.append(file.path);
        else
            result.failed.append({file.path, reason});
    }
    for (const RemovedFiles::Told& file : files.deleted)
        result.failed.append({file.path, QStringLiteral("it was deleted for good")});
    return result;
}

void ChangeHistory::forget()
{
    m_steps.clear();
    m_pictureBytes = 0;
}
