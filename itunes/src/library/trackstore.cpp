#include "library/trackstore.h"

#include "library/localtext.h"

#include <algorithm>
#include <cstring>
#include <limits>

using itunes::TextArena;
using itunes::TrackStore;

namespace {
constexpr std::size_t largestBlock = 256 * 1024;

bool before(const TrackStore::Place& place, std::uint64_t id)
{
    return place.id < id;
}
} // namespace

const char* TextArena::keep(std::string_view text)
{
    if (text.empty())
        return nullptr;
    const std::size_t needed = text.size() + 1;
    if (needed > m_left) {
        const std::size_t size = std::max(needed, m_nextSize);
        m_nextSize = std::min(m_nextSize * 2, largestBlock);
        m_blocks.push_back(std::make_unique<char[]>(size));
        m_free = m_blocks.back().get();
        m_left = size;
    }
    char* const copy = m_free;
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = 0;
    m_free += needed;
    m_left -= needed;
    return copy;
}

void TrackStore::add(const iTunesTrackRecord& record, std::uint64_t id)
{
    m_records.push_back(record);
    if (id != 0)
        m_places.push_back({id, record.location, record.name, record.artist, record.album, record.genre,
                            record.year, false});
}

void TrackStore::finish()
{
    m_records.shrink_to_fit();
    std::stable_sort(m_places.begin(), m_places.end(),
                     [](const Place& a, const Place& b) { return a.id < b.id; });
}

const TrackStore::Place* TrackStore::find(std::uint64_t id) const
{
    const auto found = std::lower_bound(m_places.begin(), m_places.end(), id, before);
    return found != m_places.end() && found->id == id && !found->gone ? &*found : nullptr;
}

bool TrackStore::isAmbiguous(std::uint64_t id) const
{
    const auto found = std::lower_bound(m_places.begin(), m_places.end(), id, before);
    return m_places.end() - found > 1 && found[1].id == id;
}

itunes::TrackValues TrackStore::valuesOf(const Place& place) const
{
    const auto edited = m_edited.find(place.id);
    if (edited != m_edited.end())
        return edited->second;
    // In the form that what comes back from the caller has.
    const bool fits = place.year <= std::uint64_t(std::numeric_limits<std::int32_t>::max());
    return {cleanText(place.name), cleanText(place.artist), cleanText(place.album), cleanText(place.genre),
            fits ? std::int32_t(place.year) : 0};
}

std::vector<std::uint64_t> TrackStore::identifiers() const
{
    std::vector<std::uint64_t> ids;
    ids.reserve(m_places.size());
    for (const Place& place : m_places)
        ids.push_back(place.id);
    return ids;
}

std::pair<std::size_t, std::size_t> TrackStore::placesOf(std::uint64_t id) const
{
    const auto first = std::lower_bound(m_places.begin(), m_places.end(), id, before);
    const auto last =
        std::find_if(first, m_places.end(), [id](const Place& place) { return place.id != id; });
    return {std::size_t(first - m_places.begin()), std::size_t(last - m_places.begin())};
}

void TrackStore::setGone(std::uint64_t id, bool gone)
{
    const auto [first, last] = placesOf(id);
    for (std::size_t at = first; at < last; ++at)
        m_places[at].gone = gone;
}

void TrackStore::forget(std::uint64_t id)
{
    setGone(id, true);
}

void TrackStore::remember(std::uint64_t id)
{
    setGone(id, false);
}

bool TrackStore::wasRead(std::uint64_t id) const
{
    const auto [first, last] = placesOf(id);
    return first < last;
}
