#pragma once

#include "collection/fileremoval.h"
#include "songs/songremoval.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <deque>
#include <functional>
#include <memory>

class ChangeHistory;
struct FileState;
struct QMusicInfo;

/// Told how far a work of many files is, before each of them; false ends it there. On the thread that works.
using Progress = std::function<bool(int done, int total)>;
/// For work that nobody watches.
inline bool goOn(int, int)
{
    return true;
}

/// What taking a change back came to.
struct TakenBack
{
    enum class Kind {
        Nothing,
        Edit,
        Deletion, ///< of files
        TakingOut ///< of tracks of the music library
    };

    Kind kind = Kind::Nothing;          ///< of the change; nothing where there was none
    QStringList paths;                  ///< files that are again as they were
    QVector<RemovedFiles::Told> failed; ///< files that were left as they are
    QMusicInfo* song = nullptr;         ///< that was edited
    int picturesLost = 0;               ///< of its file, which a save cannot put back beside the cover
    QVector<RemovedSong> removed;       ///< songs that a deletion took out of the lists, in that order
    int tracks = 0;                     ///< that a deletion took out of the music library
    QString whyNoTrack;                 ///< the reason why none of them is back; empty where all are
};

/// A change that can be taken back, once. What the lists and views show of it is not its own: it hands back
/// whom they show. Songs must outlive it.
class Change
{
public:
    virtual ~Change() = default;
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;

    /// What is not any more as the change left it stays as it is, and has a reason. Tells the older changes
    /// which files came back. Waits for the disk. Files that it did not come to stay as they are, too.
    virtual TakenBack takeBack(ChangeHistory& older, const Progress& progress) = 0;
    /// What it was, in a few words, for a tool tip.
    virtual QString name() const = 0;
    /// Bytes of pictures that it keeps.
    virtual qint64 pictureBytes() const { return 0; }
    /// A newer change was taken back: the file that had been in the state `was` is so again, in the state
    /// `is`.
    virtual void fileCameBack(const QString& path, const FileState& was, const FileState& is);

protected:
    Change() = default;
};

/// The changes that can be taken back, the newest one first. One is forgotten once it was taken back, or
/// could not be; the oldest ones make room. One thread at a time.
class ChangeHistory
{
public:
    static constexpr int mostSteps = 100;
    static constexpr qint64 mostPictureBytes = 64ll * 1024 * 1024;

    /// Null is none.
    void add(std::unique_ptr<Change> change);
    bool isEmpty() const { return m_changes.empty(); }
    int steps() const { return int(m_changes.size()); }
    /// Of the newest one; empty without one.
    QString name() const { return isEmpty() ? QString() : m_changes.back()->name(); }
    /// Takes the newest one back.
    TakenBack takeBack(const Progress& progress = goOn);
    void fileCameBack(const QString& path, const FileState& was, const FileState& is);
    void forget();

private:
    std::deque<std::unique_ptr<Change>> m_changes; ///< the newest last
    qint64 m_pictureBytes = 0;
};
