#pragma once

#include "collection/keeprule.h"
#include "collection/keptfiles.h"

#include <QSet>
#include <QString>
#include <QVector>

#include <functional>
#include <string>
#include <vector>

/// What cleaning groups of copies would delete, and why the others stay. Made without touching a file. Paths
/// are bytes as the system has them. Any thread.
class CleaningPlan
{
public:
    enum class Fate {
        Kept, ///< the one copy of its group
        Goes,
        Stays ///< though another one is kept: it cannot go without harm, or need not
    };
    struct Decision
    {
        SongCopy copy;
        Fate fate = Fate::Stays;
        QString reason; ///< for what is kept and what stays
        qint64 freed =
            0; ///< bytes that going frees: none for a link, and for all names of a file but the last
        bool losesTrack = false; ///< leaves the music library that has it, whether or not its file goes
    };
    using Group = QVector<Decision>;

    /// Of each group the rules keep one copy: each rule chooses among those that the one before it left, and
    /// the first of those left at the end is it. A copy whose file is not there is never kept. Groups and
    /// copies keep their order. Takes time and memory in proportion to the number of copies. What `others`
    /// name stays as what is kept does.
    CleaningPlan(const QVector<QVector<SongCopy>>& groups, const QVector<KeepRule>& rules,
                 const std::vector<std::string>& others = {});

    const QVector<Group>& groups() const { return m_groups; }
    int going() const { return m_going; }
    qint64 bytesFreed() const { return m_bytesFreed; }
    int tracksGoing() const { return m_tracksGoing; }

    /// Why the others of a group are not to go now, or empty: what is kept of it is not as it was found.
    static QString whyNoneMayGo(const Group& group);
    /// The same for the file of one of them, which a kept one may need by now.
    QString whyItMayNotGo(const Group& group, const Decision& decision) const;

    /// What happened to one that was to go; the reason why it is still there, or empty.
    using Told = std::function<void(const Decision& decision, const QString& failure)>;
    /// Has one file taken away, which has to be in that state; the reason why not, or empty.
    using Remove = std::function<QString(const std::string& path, const FileState& state)>;
    /// Has all that goes taken away, in order. Looks anew before each: a file goes only while the copy that
    /// is kept in its place is as it was found, and no kept file would be lost. Asks before each whether to
    /// go on; false is answered with false, and the rest stays.
    bool carryOut(const Remove& remove, const Told& told, const std::function<bool(int done)>& goOn) const;

private:
    void decide(Group& group, const QVector<KeepRule>& rules);
    void letGo(Group& group, QSet<FilePlace::Place>& leaving);
    void addUp();

    QVector<Group> m_groups;
    KeptFiles m_kept;
    int m_going = 0;
    int m_tracksGoing = 0;
    qint64 m_bytesFreed = 0;
};
