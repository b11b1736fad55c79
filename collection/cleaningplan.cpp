#include "collection/cleaningplan.h"

#include <QHash>

#include <algorithm>

namespace {
using Decision = CleaningPlan::Decision;
using Fate = CleaningPlan::Fate;
using Group = CleaningPlan::Group;

QString sharedFile()
{
    return QStringLiteral("a song that is kept has the same file");
}

bool isThere(const SongCopy& copy)
{
    return copy.state.exists() && (!copy.state.file.link || FileState::of(copy.path).exists());
}

/// As it was found, and what it leads to is there.
bool isAsFound(const SongCopy& copy)
{
    return copy.state.exists() && FileState::ofEntry(copy.path) == copy.state && isThere(copy);
}

Group undecided(const QVector<SongCopy>& copies)
{
    Group group;
    group.reserve(copies.size());
    for (const SongCopy& copy : copies)
        group.append(Decision{copy, Fate::Stays, QString(), 0, false});
    return group;
}

const Decision* keptOf(const Group& group)
{
    const auto* const found = std::find_if(
        group.begin(), group.end(), [](const Decision& decision) { return decision.fate == Fate::Kept; });
    return found == group.end() ? nullptr : found;
}
} // namespace

CleaningPlan::CleaningPlan(const QVector<QVector<SongCopy>>& groups, const QVector<KeepRule>& rules,
                           const std::vector<std::string>& others)
{
    for (const std::string& path : others)
        m_kept.add(path);
    m_groups.reserve(groups.size());
    for (const QVector<SongCopy>& copies : groups) {
        m_groups.append(undecided(copies));
        decide(m_groups.last(), rules);
    }
    QSet<FilePlace::Place> leaving;
    for (Group& group : m_groups)
        letGo(group, leaving);
    addUp();
}

/// Which one is kept, and by which rule: the last one that had a choice.
void CleaningPlan::decide(Group& group, const QVector<KeepRule>& rules)
{
    QVector<SongCopy> copies;
    QVector<int> left;
    for (int position = 0; position < group.size(); ++position) {
        copies.append(group.at(position).copy);
        if (!copies.last().whyItStays.isEmpty())
            m_kept.add(copies.last().path);
        if (isThere(copies.last()))
            left.append(position);
        else
            group[position].reason = QStringLiteral("the file is gone");
    }
    if (left.isEmpty())
        return;
    QString reason =
        left.size() > 1 ? QStringLiteral("is the first of several alike") : QStringLiteral("is the only one");
    for (const KeepRule& rule : rules) {
        const QVector<int> chosen = rule.choose(copies, left);
        if (chosen.size() < left.size())
            reason = rule.reason();
        left = chosen;
    }
    Decision& kept = group[left.first()];
    kept.fate = Fate::Kept;
    kept.reason = reason;
    m_kept.add(kept.copy.path);
}

/// Once it is known what is kept in all groups.
void CleaningPlan::letGo(Group& group, QSet<FilePlace::Place>& leaving)
{
    const bool hasKept = keptOf(group) != nullptr;
    for (Decision& decision : group) {
        if (decision.fate == Fate::Kept)
            continue;
        decision.losesTrack = hasKept && decision.copy.track != 0;
        if (decision.reason.isEmpty())
            decision.reason = decision.copy.whyItStays;
        if (!decision.reason.isEmpty())
            continue;
        const FilePlace place = FilePlace::of(decision.copy.path);
        if (m_kept.wouldLose(place)) {
            decision.reason = sharedFile();
        } else if (place.known && leaving.contains(place.place)) {
            decision.reason = QStringLiteral("it is a file that goes already, by another path");
        } else {
            decision.fate = Fate::Goes;
            leaving.insert(place.place);
        }
    }
}

/// A file takes room until its last name is gone.
void CleaningPlan::addUp()
{
    QHash<FilePlace::FileId, quint64> names;
    for (Group& group : m_groups)
        for (Decision& decision : group) {
            m_tracksGoing += decision.losesTrack;
            if (decision.fate != Fate::Goes)
                continue;
            const base::FileState& file = decision.copy.state.file;
            const quint64 gone = file.links > 1 ? ++names[FilePlace::FileId(file.device, file.inode)] : 1;
            decision.freed = !file.link && gone >= file.links ? file.size : 0;
            m_bytesFreed += decision.freed;
            ++m_going;
        }
}

QString CleaningPlan::whyNoneMayGo(const Group& group)
{
    const Decision* const kept = keptOf(group);
    return kept && isAsFound(kept->copy)
               ? QString()
               : QStringLiteral("the copy that is kept in its place is not as it was found");
}

QString CleaningPlan::whyItMayNotGo(const Group& group, const Decision& decision) const
{
    const QString reason = whyNoneMayGo(group);
    return reason.isEmpty() && m_kept.wouldLose(decision.copy.path) ? sharedFile() : reason;
}

bool CleaningPlan::carryOut(const Remove& remove, const Told& told,
                            const std::function<bool(int done)>& goOn) const
{
    int done = 0;
    for (const Group& group : m_groups) {
        for (const Decision& decision : group) {
            if (decision.fate != Fate::Goes)
                continue;
            if (!goOn(done++))
                return false;
            const QString reason = whyItMayNotGo(group, decision);
            told(decision, reason.isEmpty() ? remove(decision.copy.path, decision.copy.state) : reason);
        }
    }
    return true;
}
