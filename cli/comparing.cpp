#include "cli/comparing.h"

#include "cli/interruption.h"
#include "collection/contentsearch.h"
#include "collection/fingerprintcache.h"
#include "collection/soundsearch.h"

QVector<QVector<int>> Comparing::groupsOf(const SongList& songs)
{
    if (Interruption::hasCome())
        return {};
    m_songs = &songs;
    m_console.beginProgress();
    if (m_order.by == SongList::By::Content)
        return ContentSearch::groups(songs, *this);
    if (m_order.by == SongList::By::Sound) {
        FingerprintCache cache(FingerprintCache::usersFolder());
        return SoundSearch::groups(songs, cache, *this);
    }
    return songs.groups();
}

void Comparing::failed(int song, const std::string& reason)
{
    ++m_failures;
    m_tellFailed(m_songs->pathOf(song), reason);
}

void Comparing::cannotSearch(const std::string& reason)
{
    failed(0, reason);
}

bool Comparing::goesOn(int done, int of)
{
    if (done < m_done)
        m_console.beginProgress();
    m_done = done;
    m_console.progress(std::uint64_t(done), [of] { return std::uint64_t(of); });
    return !Interruption::hasCome();
}
