#pragma once

#include <QByteArray>
#include <QString>

class IAudioTag;
struct TagItem;

/// The items of an open tag as texts and pictures.
namespace TagItems {
/// Of an item that holds a text.
QString textOf(const TagItem& item);
/// In place of whatever the tag holds of that TagItemType.
void replaceText(IAudioTag& tag, int type, const QString& text);
/// The same for its picture; empty bytes for none.
void replacePicture(IAudioTag& tag, QByteArray picture);
} // namespace TagItems
