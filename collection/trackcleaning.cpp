#include "collection/trackcleaning.h"

#include <cstdint>
#include <vector>

namespace {
/// Each stroke writes the library file anew; what it begins is seen through.
constexpr int tracksAtAStroke = 500;
} // namespace

QString TrackCleaning::carryOut(const CleaningPlan::Remove& remove, const Told& told,
                                const std::function<bool()>& goOn)
{
    const QVector<Going> going = all();
    QString reason = whyNotAsLeft(m_asRead, FileState::of(m_library));
    for (int done = 0; done < going.size() && reason.isEmpty() && goOn(); done += tracksAtAStroke)
        reason = takeOut(going.mid(done, tracksAtAStroke), remove, told);
    return reason;
}

QVector<TrackCleaning::Going> TrackCleaning::all() const
{
    QVector<Going> going;
    for (const CleaningPlan::Group& group : m_plan.groups())
        for (const CleaningPlan::Decision& decision : group)
            if (decision.losesTrack)
                going.append({&group, &decision});
    return going;
}

QString TrackCleaning::takeOut(const QVector<Going>& stroke, const CleaningPlan::Remove& remove,
                               const Told& told)
{
    QVector<Going> leaving;
    std::vector<std::uint64_t> ids;
    for (const Going& going : stroke) {
        Outcome outcome;
        outcome.whyNot = CleaningPlan::whyNoneMayGo(*going.group);
        if (!outcome.whyNot.isEmpty()) {
            told(*going.decision, outcome);
            continue;
        }
        leaving.append(going);
        ids.push_back(going.decision->copy.track);
    }
    QString reason = ids.empty() ? QString() : m_step.takeOut(m_library, ids);
    if (reason.isEmpty())
        for (const Going& going : leaving)
            removeFile(going, remove, told);
    return reason;
}

void TrackCleaning::removeFile(const Going& going, const CleaningPlan::Remove& remove, const Told& told) const
{
    const CleaningPlan::Decision& decision = *going.decision;
    Outcome outcome;
    outcome.isOut = true;
    if (decision.fate == CleaningPlan::Fate::Goes) {
        outcome.whyNot = m_plan.whyItMayNotGo(*going.group, decision);
        if (outcome.whyNot.isEmpty())
            outcome.whyNot = remove(decision.copy.path, decision.copy.state);
        outcome.isGone = outcome.whyNot.isEmpty();
    }
    told(decision, outcome);
}
