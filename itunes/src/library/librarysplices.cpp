#include "library/librarysplices.h"

#include <algorithm>

using itunes::EntrySplices;
using itunes::Field;
using itunes::PlaylistSplices;

namespace {
/// Fields that are edited, and those that a new one may follow, in the order that entries have.
constexpr std::array<Field, 10> order = {Field::TrackId,     Field::Name, Field::Artist, Field::Album,
                                         Field::Genre,       Field::Kind, Field::Size,   Field::TotalTime,
                                         Field::TrackNumber, Field::Year};
} // namespace

std::size_t EntrySplices::placeOf(Field field)
{
    std::size_t place = 0;
    while (place < places && order[place] != field)
        ++place;
    return place;
}

void EntrySplices::trackBegins(std::uint64_t key, std::uint64_t inside)
{
    for (Place& place : m_entry) {
        place.wholes.clear();
        place.text.clear();
    }
    m_id = 0;
    m_trackId = key;
    m_inside = inside;
    m_hasLead = false;
}

void EntrySplices::trackHas(const Pair& pair)
{
    if (!m_hasLead)
        m_lead = pair.lead;
    m_hasLead = true;
    if (pair.field == Field::PersistentId)
        m_id = identifierOf(pair.text);
    if (pair.field == Field::TrackId)
        m_trackId = numberOf(pair.text);
    const std::size_t at = placeOf(pair.field);
    if (at == places)
        return;
    Place& place = m_entry[at];
    place.wholes.push_back(pair.whole);
    place.value = pair.value;
    place.text = pair.text;
}

void EntrySplices::trackEnds(const Span& whole)
{
    ++m_tracks;
    const auto found = m_id ? m_changes.find(m_id) : m_changes.end();
    if (found == m_changes.end() || !found->second.deleted) {
        m_staying.push_back(m_trackId);
        if (found != m_changes.end()) {
            m_edited.insert(m_id);
            changeEntry(found->second.edit);
        }
        return;
    }
    ++m_gone;
    m_deleted[m_trackId] = m_id;
    m_splices.push_back({whole, std::string(), m_id, true});
}

std::unordered_map<std::uint64_t, std::uint64_t> EntrySplices::deleted() const
{
    std::unordered_map<std::uint64_t, std::uint64_t> numbers = m_deleted;
    for (const std::uint64_t number : m_staying)
        numbers.erase(number);
    return numbers;
}

std::size_t EntrySplices::editsWithoutTrack() const
{
    const auto edits = std::count_if(m_changes.begin(), m_changes.end(),
                                     [](const auto& change) { return !change.second.deleted; });
    return std::size_t(edits) - m_edited.size();
}

void EntrySplices::changeEntry(const TrackEdit& edit)
{
    change(Field::Name, "Name", edit.name);
    change(Field::Artist, "Artist", edit.artist);
    change(Field::Album, "Album", edit.album);
    change(Field::Genre, "Genre", edit.genre);
    const std::string& year = m_entry[placeOf(Field::Year)].text;
    if (edit.year && numberOf(year) != std::uint64_t(*edit.year))
        put(Field::Year, "Year", *edit.year ? std::to_string(*edit.year) : std::string(), "integer");
}

void EntrySplices::change(Field field, const char* key, const std::optional<std::string>& wanted)
{
    if (wanted)
        put(field, key, *wanted, "string");
}

void EntrySplices::put(Field field, const char* key, const std::string& wanted, const char* element)
{
    const Place& place = m_entry[placeOf(field)];
    if (place.text == wanted)
        return;
    if (wanted.empty()) {
        for (const Span& whole : place.wholes)
            m_splices.push_back({whole, std::string()});
        return;
    }
    const std::string tag = element;
    const std::string value = '<' + tag + '>' + escaped(wanted) + "</" + tag + '>';
    if (!place.wholes.empty()) {
        m_splices.push_back({place.value, value});
        return;
    }
    std::uint64_t behind = m_inside;
    for (std::size_t i = 0; i < placeOf(field); ++i)
        if (!m_entry[i].wholes.empty())
            behind = std::max(behind, m_entry[i].wholes.back().end);
    m_splices.push_back({{behind, behind}, m_lead + "<key>" + key + "</key>" + value});
}

void PlaylistSplices::playlistItem(std::uint64_t trackId, const Span& whole)
{
    const auto track = m_tracks.find(trackId);
    if (track != m_tracks.end())
        m_splices.push_back({whole, std::string(), track->second});
}
