#include "songs/tagcontent.h"

#include "audiocore/iaudiotag.h"
#include "audiocore/saveproblem.h"

#include <string>

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

void replaceText(IAudioTag& tag, qint32 type, const QString& text)
{
    std::u32string wide = text.toStdU32String();
    tag.RemoveItem(type);
    tag.SetItem({-1, type, 0, qint32(wide.size() * sizeof(char32_t)), wide.data()});
}

void replaceTexts(IAudioTag& tag, const TagContent& content)
{
    replaceText(tag, TAG_ARTIST, content.artist);
    replaceText(tag, TAG_TITLE, content.title);
    replaceText(tag, TAG_ALBUM, content.album);
    replaceText(tag, TAG_GENRE, content.genre);
    replaceText(tag, TAG_YEAR, content.year);
    replaceText(tag, TAG_TRACK, content.track);
}

void replacePicture(IAudioTag& tag, QByteArray picture)
{
    tag.RemoveItem(TAG_PICTURE);
    tag.SetItem({-1, TAG_PICTURE, 1, picture.size(), picture.data()});
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
            *place = QString::fromUcs4(static_cast<const char32_t*>(item.data), item.size / 4);
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
    replacePicture(tag, picture);
    return tag.Save();
}

int TagContent::saveTexts(IAudioTag& tag) const
{
    replaceTexts(tag, *this);
    return tag.Save();
}
