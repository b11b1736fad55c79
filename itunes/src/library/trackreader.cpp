#include "library/trackreader.h"

#include "base/text.h"
#include "library/location.h"

#include <algorithm>
#include <iterator>
#include <limits>

using itunes::TrackReader;

namespace {
bool isSet(std::string_view text)
{
    return text == "true" || itunes::numberOf(text) > 0;
}

bool saysNoSong(itunes::Field field)
{
    using itunes::Field;
    return field == Field::HasVideo || field == Field::Movie || field == Field::TvShow ||
           field == Field::MusicVideo || field == Field::Podcast || field == Field::Audiobook;
}

/// Old libraries tell films and audiobooks, and all of them the booklets of albums, by the kind alone.
bool isKindOfNoSong(std::string_view kind)
{
    constexpr std::string_view words[] = {"video", "movie", "pdf", "audible", "audiobook"};
    return std::any_of(std::begin(words), std::end(words), [kind](std::string_view word) {
        return std::search(kind.begin(), kind.end(), word.begin(), word.end(),
                           [](char a, char b) { return base::smallAscii(a) == b; }) != kind.end();
    });
}
} // namespace

const char* TrackReader::Repeated::keep(std::string_view text, TextArena& texts)
{
    if (text.empty())
        return nullptr;
    if (text != m_last)
        m_last = {texts.keep(text), text.size()};
    return m_last.data();
}

void TrackReader::trackBegins(std::uint64_t key, std::uint64_t inside)
{
    (void)key;
    (void)inside;
    m_record = {};
    m_numbers = {};
    m_id = 0;
    m_remote = false;
}

void TrackReader::trackHas(const Pair& pair)
{
    if (std::uint64_t* const number = numberFor(pair.field)) {
        *number = numberOf(pair.text);
        return;
    }
    TextArena& texts = m_store.texts();
    switch (pair.field) {
    case Field::Name:
        m_record.name = texts.keep(pair.text);
        break;
    case Field::Artist:
        m_record.artist = m_artist.keep(pair.text, texts);
        break;
    case Field::Album:
        m_record.album = m_album.keep(pair.text, texts);
        break;
    case Field::Genre:
        m_record.genre = m_genre.keep(pair.text, texts);
        break;
    case Field::Kind:
        takeKind(pair.text);
        break;
    case Field::PersistentId:
        // It names a file: nothing but digits passes.
        m_id = identifierOf(pair.text);
        m_record.persistentId = m_id ? texts.keep(pair.text) : nullptr;
        break;
    case Field::Location:
        m_record.location = texts.keep(normalisedLocation(pair.text));
        break;
    case Field::TrackType:
        m_remote = pair.text != "File";
        break;
    default:
        if (saysNoSong(pair.field) && isSet(pair.text))
            m_record.skipB = 1;
    }
}

void TrackReader::takeKind(std::string_view kind)
{
    m_record.kind = m_kind.keep(kind, m_store.texts());
    if (m_record.kind != m_judgedKind) {
        m_judgedKind = m_record.kind;
        m_judgedNoSong = isKindOfNoSong(kind);
    }
    m_record.skipB = m_record.skipB || m_judgedNoSong;
}

/// The record's number for a field; null for a field that is none.
std::uint64_t* TrackReader::numberFor(Field field)
{
    switch (field) {
    case Field::Size:
        return &m_numbers.size;
    case Field::TotalTime:
        return &m_numbers.duration;
    case Field::TrackNumber:
        return &m_numbers.trackNumber;
    case Field::Year:
        return &m_numbers.year;
    case Field::BitRate:
        return &m_numbers.bitRate;
    case Field::SampleRate:
        return &m_numbers.sampleRate;
    default:
        return nullptr;
    }
}

void TrackReader::trackEnds(const Span& whole)
{
    (void)whole;
    if (m_store.count() == std::numeric_limits<int>::max())
        return;
    m_record.size = m_numbers.size;
    m_record.duration = m_numbers.duration;
    m_record.trackNumber = m_numbers.trackNumber;
    m_record.year = m_numbers.year;
    m_record.bitRate = m_numbers.bitRate;
    m_record.sampleRate = m_numbers.sampleRate;
    const auto change = m_changes.find(m_id);
    if (change != m_changes.end()) {
        if (change->second.deleted)
            return;
        applyChange(change->second.edit);
    }
    m_record.skipA = m_remote || !m_record.location;
    m_store.add(m_record, m_id);
}

void TrackReader::applyChange(const TrackEdit& edit)
{
    TextArena& texts = m_store.texts();
    if (edit.name)
        m_record.name = texts.keep(*edit.name);
    if (edit.artist)
        m_record.artist = texts.keep(*edit.artist);
    if (edit.album)
        m_record.album = texts.keep(*edit.album);
    if (edit.genre)
        m_record.genre = texts.keep(*edit.genre);
    if (edit.year)
        m_record.year = std::uint64_t(*edit.year);
}
