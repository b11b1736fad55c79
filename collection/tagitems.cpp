#include "collection/tagitems.h"

#include "audiocore/iaudiotag.h"

#include <string>

QString TagItems::textOf(const TagItem& item)
{
    return QString::fromUcs4(static_cast<const char32_t*>(item.data), item.size / int(sizeof(char32_t)));
}

void TagItems::replaceText(IAudioTag& tag, int type, const QString& text)
{
    std::u32string wide = text.toStdU32String();
    tag.RemoveItem(type);
    tag.SetItem({-1, type, 0, qint32(wide.size() * sizeof(char32_t)), wide.data()});
}

void TagItems::replacePicture(IAudioTag& tag, QByteArray picture)
{
    tag.RemoveItem(TAG_PICTURE);
    tag.SetItem({-1, TAG_PICTURE, 1, picture.size(), picture.data()});
}
