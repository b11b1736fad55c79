#include "songs/filechanges.h"

#include "audiocore/iaudiotag.h"
#include "audiocore/saveproblem.h"
#include "songs/footlines.h"
#include "songs/songfields.h"

#include <QFileInfo>

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

class Edit final : public Change
{
public:
    Edit(const FileChanges::Before& before, const FileState& after, QMusicInfo* song)
        : m_before(before), m_after(after), m_song(song)
    {
    }

    TakenBack takeBack(ChangeHistory& older, const Progress&) override
    {
        TakenBack result;
        result.kind = TakenBack::Kind::Edit;
        result.song = m_song;
        const QString reason = restore(result.picturesLost);
        if (!reason.isEmpty()) {
            result.failed.append({m_before.path, reason});
            return result;
        }
        result.paths.append(m_before.path);
        older.fileCameBack(m_before.path, m_before.state, FileState::of(m_before.path));
        return result;
    }
    QString name() const override
    {
        return FootLines::nameOfEdit(m_song ? SongFields::shownName(m_song)
                                            : QFileInfo(m_before.path).fileName());
    }
    qint64 pictureBytes() const override { return m_before.content.picture.size(); }
    void fileCameBack(const QString& path, const FileState& was, const FileState& is) override
    {
        if (path == m_before.path && isUntouched(m_after, was))
            m_after = is;
    }

private:
    /// The reason why not, which the log has then, too; else empty.
    QString restore(int& picturesLost) const
    {
        const FileState now = FileState::of(m_before.path);
        if (!now.exists())
            return logged(QStringLiteral("the file is gone"));
        if (!isUntouched(m_after, now))
            return logged(QStringLiteral("another program changed the file since"));
        const Tag tag = openTag(m_before.path);
        if (tag && m_before.content.picture.size() > qint64(LargestPictureFor(tag.get())))
            return logged(QStringLiteral("its cover is larger than what can be written"));
        if (tag && save(*tag) == 0) {
            picturesLost = m_before.content.pictures - TagContent::of(*tag).pictures;
            return QString();
        }
        return FootLines::reasonOf(tag ? SaveProblemOf(tag.get()) : SAVE_OTHER_PROBLEM);
    }
    /// Several pictures that the edit left in the file stay there.
    int save(IAudioTag& tag) const
    {
        const TagContent& before = m_before.content;
        const bool stayed = before.pictures > 1 && TagContent::of(tag).pictures == before.pictures;
        return stayed ? before.saveTexts(tag) : before.save(tag);
    }
    QString logged(const QString& reason) const
    {
        qWarning("%s: the edit is not taken back: %s", qUtf8Printable(m_before.path), qUtf8Printable(reason));
        return reason;
    }

    const FileChanges::Before m_before;
    FileState m_after;
    QMusicInfo* const m_song;
};

class Deletion final : public Change
{
public:
    Deletion(const RemovedFiles& files, const QVector<RemovedSong>& songs) : m_files(files), m_songs(songs) {}

    TakenBack takeBack(ChangeHistory&, const Progress& progress) override
    {
        TakenBack result;
        result.kind = TakenBack::Kind::Deletion;
        result.removed = m_songs;
        FileReturn back;
        bool goesOn = true;
        for (int i = 0; i < m_files.trashed.size(); ++i) {
            const RemovedFiles::Trashed& file = m_files.trashed.at(i);
            goesOn = goesOn && progress(i, m_files.trashed.size());
            const QString reason = goesOn ? back.bringBack(file) : QStringLiteral("the program was ended");
            if (reason.isEmpty())
                result.paths.append(file.path);
            else
                result.failed.append({file.path, reason});
        }
        for (const RemovedFiles::Told& file : m_files.deleted)
            result.failed.append({file.path, QStringLiteral("it was deleted for good")});
        return result;
    }
    QString name() const override { return FootLines::nameOfDeletion(m_files.trashed.size()); }

private:
    const RemovedFiles m_files;
    const QVector<RemovedSong> m_songs;
};
} // namespace

FileChanges::Before FileChanges::Before::of(const QString& path)
{
    Before before = {path, FileState::of(path), {}};
    if (const Tag tag = openTag(path))
        before.content = TagContent::of(*tag);
    return before;
}

std::unique_ptr<Change> FileChanges::edit(const Before& before, QMusicInfo* song)
{
    const FileState after = FileState::of(before.path);
    if (!after.exists() || isUntouched(before.state, after))
        return nullptr;
    return std::make_unique<Edit>(before, after, song);
}

std::unique_ptr<Change> FileChanges::deletion(const RemovedFiles& files, const QVector<RemovedSong>& songs)
{
    return files.trashed.isEmpty() ? nullptr : std::make_unique<Deletion>(files, songs);
}
