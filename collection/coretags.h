#pragma once

#include "collection/tagfiles.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <string>

/// The fields that users name, and the audio core's types of them.
namespace TagFields {
constexpr int none = -1;

/// "title", "artist", "album", "genre", "year", "track".
const QStringList& names();
/// A TagItemType, or none.
int typeOf(const QString& name);
} // namespace TagFields

/// The tags of music files through the audio core, by those names. Any thread.
class CoreTags final : public TagFiles
{
public:
    QString read(const std::string& path, TagTexts& held) override;
    QString write(const std::string& path, const TagTexts& change) override;

    /// Whether the bytes begin as a picture of the kinds that songs carry: JPEG or PNG.
    static bool isPicture(const QByteArray& bytes);
};
