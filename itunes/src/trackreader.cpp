#include "trackreader.h"

#include "location.h"

#include <limits>

using itunes::TrackReader;

namespace {
bool isSet(std::string_view text)
{
    return text == "true" || itunes::numberOf(text) > 0;
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
    m_id = 0;
    m_remote = false;
}

void TrackReader::trackHas(const Pair& pair)
{
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
        m_record.kind = m_kind.keep(pair.text, texts);
        break;
    case Field::Size:
        m_record.size = numberOf(pair.text);
        break;
    case Field::TotalTime:
        m_record.duration = numberOf(pair.text);
        break;
    case Field::TrackNumber:
        m_record.trackNumber = numberOf(pair.text);
        break;
    case Field::Year:
        m_record.year = numberOf(pair.text);
        break;
    case Field::BitRate:
        m_record.bitRate = numberOf(pair.text);
        break;
    case Field::SampleRate:
        m_record.sampleRate = numberOf(pair.text);
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
    case Field::HasVideo:
    case Field::Movie:
    case Field::TvShow:
    case Field::MusicVideo:
    case Field::Podcast:
    case Field::Audiobook:
        m_record.skipB = m_record.skipB || isSet(pair.text);
        break;
    case Field::Other:
    case Field::TrackId:
        break;
    }
}

void TrackReader::trackEnds(const Span& whole)
{
    (void)whole;
    if (m_store.count() == std::numeric_limits<int>::max())
        return;
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
    m_record.name = texts.keep(edit.name);
    m_record.artist = texts.keep(edit.artist);
    m_record.album = texts.keep(edit.album);
    m_record.genre = texts.keep(edit.genre);
    m_record.year = std::uint64_t(edit.year);
}
