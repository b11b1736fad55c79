#include "songs/trackhistory.h"

#include "itunes/takeback.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace {
bool takeBackAll(const QVector<quint64>& tracks)
{
    const std::vector<std::uint64_t> ids(tracks.begin(), tracks.end());
    return takeBackDeletions(ids.data(), ids.size()) != 0;
}
} // namespace

void TrackHistory::addEdit(quint64 track)
{
    add({TakenBack::Kind::Edit, {track}});
}

void TrackHistory::addDeletion(const QVector<quint64>& tracks)
{
    if (!tracks.isEmpty())
        add({TakenBack::Kind::Deletion, tracks});
}

/// The oldest step makes room.
void TrackHistory::add(const Step& step)
{
    m_steps.push_back(step);
    if (steps() > mostSteps)
        m_steps.pop_front();
}

TrackHistory::TakenBack TrackHistory::takeBack()
{
    if (m_steps.empty())
        return TakenBack();
    const Step step = std::move(m_steps.back());
    m_steps.pop_back();
    const bool isDone = step.kind == TakenBack::Kind::Edit ? takeBackEdit(step.tracks.first()) != 0
                                                           : takeBackAll(step.tracks);
    if (isDone)
        return {step.kind, step.tracks, ITUNES_EDIT_DONE, SAVE_NO_PROBLEM};
    return {step.kind, step.tracks, iTunesLastEditProblem(), SaveProblem(iTunesMediaProblem())};
}
