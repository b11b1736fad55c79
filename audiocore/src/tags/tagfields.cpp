#include "tags/tagfields.h"

#include "audiocore/tagitem.h"
#include "base/text.h"
#include "tags/tagreading.h"

#include <algorithm>

using audiocore::TagContent;
using audiocore::TagEdits;

bool TagEdits::isEmpty() const
{
    return !picture &&
           std::none_of(texts.begin(), texts.end(), [](const auto& text) { return text.has_value(); });
}

TagContent audiocore::readTags(const MediaFile& media)
{
    TagReading reading;
    media.file->read(reading);
    return reading.takeContent();
}

std::string audiocore::shownText(int type, const std::string& text)
{
    if (type == TAG_YEAR)
        return base::yearOf(text);
    return type == TAG_TRACK ? base::trackOf(text) : text;
}

TagEdits audiocore::changesOf(const TagEdits& edits, const TagContent& content)
{
    TagEdits changes;
    for (size_t type = 0; type < size_t(textTypes); ++type) {
        const auto& edit = edits.texts[type];
        if (!edit)
            continue;
        const std::string shown = shownText(int(type), *edit);
        if (shown != content.texts[type])
            changes.texts[type] = shown;
    }
    const int wanted = edits.picture && !edits.picture->isEmpty() ? 1 : 0;
    if (edits.picture && (*edits.picture != content.picture || content.pictures != wanted))
        changes.picture = edits.picture;
    return changes;
}
