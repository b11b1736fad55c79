#pragma once

#include "collection/fileremoval.h"
#include "collection/filestate.h"
#include "songs/tagcontent.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <deque>
#include <variant>

/// The changes of songs' files that can be taken back, the newest one first. Works on files alone: what the
/// lists and views show of them is the caller's. A step is forgotten once it was taken back, or could not be.
/// One thread at a time; taking back a save or thousands of deletions waits for the disk.
class ChangeHistory
{
public:
    static constexpr int mostSteps = 100;
    static constexpr qint64 mostPictureBytes = 64ll * 1024 * 1024;

    /// A song's file as it is before an edit.
    struct Before
    {
        QString path;
        FileState state;
        TagContent content;

        static Before of(const QString& path);
    };

    struct TakenBack
    {
        enum class Kind { Nothing, Edit, Deletion };

        Kind kind = Kind::Nothing;          ///< of the step; nothing where there was none
        QStringList paths;                  ///< files that are again as they were
        QVector<RemovedFiles::Told> failed; ///< files that were left as they are
        TagContent content;                 ///< what the file of an edit says again
    };

    /// After the edit. No step where the file is as it was.
    void addEdit(const Before& before);
    /// No step where nothing of it lies in the trash.
    void addDeletion(const RemovedFiles& files);
    bool isEmpty() const { return m_steps.empty(); }
    int steps() const { return int(m_steps.size()); }
    /// Takes the newest step back. A file that is gone, was written by others since, or whose path is taken,
    /// is left as it is.
    TakenBack takeBack();
    void forget();

private:
    struct Edit
    {
        Before before;
        FileState after;
    };
    using Step = std::variant<Edit, RemovedFiles>;

    void add(const Step& step);
    TakenBack takeBackEdit(const Edit& edit);
    static TakenBack takeBackDeletion(const RemovedFiles& files);

    std::deque<Step> m_steps; ///< the newest last
    qint64 m_pictureBytes = 0;
};
