#include "songs/tagcontent.h"

#include "audiocore/iaudiotag.h"
#include "audiocore/saveproblem.h"
#include "collection/tagitems.h"

namespace {
/// Where the text of a type belongs; null for any other item.
template <typename Content>
auto placeIn(Content& content, int type) -> decltype(&content.title)
{
    switch (type) {
    case TAG_TITLE:
        return &content.title;
    case TAG_ARTIST:
        return &content.artist;
    case TAG_ALBUM:
        return &content.album;
    case TAG_GENRE:
        return &content.genre;
    case TAG_YEAR:
        return &content.year;
    case TAG_TRACK:
        return &content.track;
    default:
        return nullptr;
    }
}

void replaceTexts(IAudioTag& tag, const TagContent& content)
{
    TagItems::replaceText(tag, TAG_ARTIST, content.artist);
    TagItems::replaceText(tag, TAG_TITLE, content.title);
    TagItems::replaceText(tag, TAG_ALBUM, content.album);
    TagItems::replaceText(tag, TAG_GENRE, content.genre);
    TagItems::replaceText(tag, TAG_YEAR, content.year);
    TagItems::replaceText(tag, TAG_TRACK, content.track);
}
} // namespace

TagContent TagContent::of(IAudioTag& tag)
{
    TagContent content;
    content.pictures = int(PicturesIn(&tag));
    const int count = tag.GetItemCount();
    for (int i = 0; i < count; ++i) {
        const TagItem item = tag.GetItem(i);
        if (item.size <= 0)
            continue;
        if (item.dataKind != 0)
            content.picture = QByteArray(static_cast<const char*>(item.data), item.size);
        else if (QString* const place = placeIn(content, item.type))
            *place = TagItems::textOf(item);
    }
    return content;
}

QString TagContent::text(int type) const
{
    const QString* const place = placeIn(*this, type);
    return place ? *place : QString();
}

int TagContent::save(IAudioTag& tag) const
{
    replaceTexts(tag, *this);
    TagItems::replacePicture(tag, picture);
    return tag.Save();
}

int TagContent::saveTexts(IAudioTag& tag) const
{
    replaceTexts(tag, *this);
    return tag.Save();
}
