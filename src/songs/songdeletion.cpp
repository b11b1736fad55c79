#include "songs/songdeletion.h"

namespace {
/// Enough for what a stroke costs to be little beside them, and few enough to see how far it is.
constexpr int tracksAtOnce = 250;
} // namespace

SongDeletion::SongDeletion(const SongLists& lists)
{
    if (!SongRemoval::songsAreFiles() || !lists.all)
        return;
    m_tags.reserve(lists.all->size());
    for (int position = 0; position < lists.all->size(); ++position)
        m_tags.insert(lists.all->at(position), lists.tags->value(position));
}

void SongDeletion::keep(const QList<QMusicInfo*>& songs)
{
    m_kept = SongRemoval::filesOf(songs);
    m_keptSong = nullptr;
}

void SongDeletion::remove(const QVector<SongRemoval::Removal>& plan, const Progress& progress)
{
    m_done = 0;
    if (SongRemoval::songsAreFiles())
        removeFiles(plan, progress);
    else
        removeTracks(plan, progress);
}

void SongDeletion::removeFiles(const QVector<SongRemoval::Removal>& plan, const Progress& progress)
{
    for (; m_done < plan.size() && progress(m_done, plan.size()); ++m_done) {
        const SongRemoval::Removal& next = plan.at(m_done);
        const auto tag = m_tags.constFind(next.song);
        if (tag == m_tags.constEnd())
            continue;
        if (next.kept && next.kept != m_keptSong) {
            keep({next.kept});
            m_keptSong = next.kept;
        }
        SongRemoval::removeFile(*next.song, *tag, m_kept, m_removal);
        m_tags.remove(next.song);
    }
}

void SongDeletion::removeTracks(const QVector<SongRemoval::Removal>& plan, const Progress& progress)
{
    while (m_done < plan.size() && progress(m_done, plan.size())) {
        const QVector<SongRemoval::Removal> stroke = plan.mid(m_done, tracksAtOnce);
        const QVector<iTunesEditProblem> problems = SongRemoval::removeTracks(stroke);
        for (int i = 0; i < stroke.size(); ++i, ++m_done)
            m_tally.addTrack(*stroke.at(i).song, problems.at(i));
    }
}

RemovalTally SongDeletion::tally() const
{
    RemovalTally tally = m_tally;
    tally.addFiles(m_removal.removed());
    return tally;
}
