#include "songs/removaltally.h"

#include "songs/songfields.h"

using SongRemoval::FileRemoval;

void RemovalTally::addFile(const QMusicInfo& song, const FileRemoval& removal)
{
    switch (removal.way) {
    case FileRemoval::ToTrash:
        ++m_files.toTrash;
        break;
    case FileRemoval::ForGood:
        ++m_files.forGood;
        if (m_files.whyForGood.isEmpty())
            m_files.whyForGood = removal.reason;
        break;
    case FileRemoval::Stays:
        if (m_files.stayed++ > 0)
            break;
        m_files.firstThatStayed = SongFields::shownName(&song);
        m_files.whyItStayed = removal.reason;
        break;
    case FileRemoval::Nothing:
        break;
    }
}

void RemovalTally::addTrack(const QMusicInfo& song, iTunesEditProblem problem)
{
    if (problem == ITUNES_EDIT_DONE) {
        ++m_tracks.tracks;
        return;
    }
    if (m_tracks.stayed++ > 0)
        return;
    m_tracks.firstThatStayed = SongFields::shownName(&song);
    m_tracks.whyItStayed = problem;
}

void RemovalTally::add(const RemovalTally& other)
{
    if (m_files.stayed == 0) {
        m_files.firstThatStayed = other.m_files.firstThatStayed;
        m_files.whyItStayed = other.m_files.whyItStayed;
    }
    if (m_files.whyForGood.isEmpty())
        m_files.whyForGood = other.m_files.whyForGood;
    m_files.toTrash += other.m_files.toTrash;
    m_files.forGood += other.m_files.forGood;
    m_files.stayed += other.m_files.stayed;
    if (m_tracks.stayed == 0) {
        m_tracks.firstThatStayed = other.m_tracks.firstThatStayed;
        m_tracks.whyItStayed = other.m_tracks.whyItStayed;
    }
    m_tracks.tracks += other.m_tracks.tracks;
    m_tracks.stayed += other.m_tracks.stayed;
}

QString RemovalTally::line() const
{
    const QString files = FootLines::deleted(m_files);
    const QString tracks = FootLines::takenOut(m_tracks);
    return files.isEmpty() || tracks.isEmpty() ? files + tracks : files + QLatin1Char(' ') + tracks;
}
