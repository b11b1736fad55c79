#include "collection/songidentifier.h"

#include "audiocore/iaudioidentifier.h"
#include "base/text.h"
#include "collection/coretags.h"
#include "collection/fileplace.h"
#include "collection/tagitems.h"

namespace {
void takeFoundText(IAudioIdentifier& identifier, int type, TagTexts& tags)
{
    const TagItem item = identifier.GetItem(type);
    if (item.size > 0)
        tags.texts.insert(TagFields::names().at(type), TagItems::textOf(item));
}

void takeFoundPicture(IAudioIdentifier& identifier, TagTexts& tags)
{
    const TagItem item = identifier.GetItem(TAG_PICTURE);
    if (item.size > 0)
        tags.picture = QByteArray(static_cast<const char*>(item.data), item.size);
}
} // namespace

bool FoundSong::isFound() const
{
    return status == IDENTIFY_FOUND || isFoundByTags();
}

bool FoundSong::isFoundByTags() const
{
    return status == IDENTIFY_FOUND_BY_TAGS;
}

bool FoundSong::isUnknown() const
{
    return status == IDENTIFY_NO_MATCH || status == IDENTIFY_NO_KEY || status == IDENTIFY_TOO_SHORT;
}

bool FoundSong::wantsKey() const
{
    return (isFoundByTags() || status == IDENTIFY_NO_KEY) && !IdentifiesBySound();
}

SongIdentifier::SongIdentifier() : m_identifier(CreateIdentifier()) {}

SongIdentifier::~SongIdentifier()
{
    DestroyIdentifier(m_identifier);
}

void SongIdentifier::open(const std::string& path)
{
    if (!m_identifier)
        return;
    // The folders of a song say who sings it, also of one that is named from within them.
    const std::string whole = FilePlace::of(path).path().toStdString();
    m_identifier->Open(base::nameToUtf32(whole.empty() ? path : whole).c_str());
}

FoundSong SongIdentifier::identify()
{
    FoundSong found;
    if (!m_identifier)
        return found;
    m_identifier->Identify(0, 0, 0);
    found.status = m_identifier->GetStatus();
    if (!found.isFound())
        return found;
    found.score = IdentificationScore(m_identifier);
    for (int type = 0; type < TagFields::names().size(); ++type)
        takeFoundText(*m_identifier, type, found.tags);
    takeFoundPicture(*m_identifier, found.tags);
    return found;
}

void SongIdentifier::cancel()
{
    if (m_identifier)
        m_identifier->Cancel();
}
