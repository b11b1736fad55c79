#include "library/mediatags.h"

#include "audiocore/iaudiotag.h"
#include "base/failure.h"
#include "base/filebytes.h"
#include "base/log.h"
#include "base/platform.h"
#include "base/text.h"

#include <cerrno>
#include <memory>

namespace {
using Tag = std::unique_ptr<IAudioTag, ReleaseTag>;

/// Null when the file cannot be read.
Tag openTag(const std::string& mediaPath)
{
    base::FileState state;
    if (!base::stateOf(mediaPath, state) || !state.regular)
        return nullptr;
    Tag tag(CreateTag());
    return tag && tag->Open(base::toUtf32(mediaPath).c_str()) == 0 ? std::move(tag) : nullptr;
}

std::vector<char> pictureOf(IAudioTag& tag)
{
    const std::int32_t count = tag.GetItemCount();
    for (std::int32_t i = 0; i < count; ++i) {
        const TagItem item = tag.GetItem(i);
        const char* const bytes = static_cast<const char*>(item.data);
        if (item.type == TAG_PICTURE && item.size > 0)
            return {bytes, bytes + item.size};
    }
    return {};
}

bool putText(IAudioTag& tag, TagItemType type, const std::optional<std::string>& text)
{
    if (!text)
        return true;
    std::u32string characters = base::toUtf32(*text);
    const auto size = std::int32_t(characters.size() * sizeof(char32_t));
    return tag.RemoveItem(type) == 0 &&
           (size == 0 || tag.SetItem({-1, type, 0, size, characters.data()}) == 0);
}

bool putYear(IAudioTag& tag, const std::optional<std::int32_t>& year)
{
    return !year || putText(tag, TAG_YEAR, *year ? std::to_string(*year) : std::string());
}

bool putPicture(IAudioTag& tag, std::vector<char> picture)
{
    if (picture.empty() || picture == pictureOf(tag))
        return true;
    const auto size = std::int32_t(picture.size());
    return tag.RemoveItem(TAG_PICTURE) == 0 && tag.SetItem({-1, TAG_PICTURE, 1, size, picture.data()}) == 0;
}
SaveProblem problemOfUnreadable(const std::string& mediaPath)
{
    const std::unique_ptr<base::SystemFile> file = base::SystemFile::open(mediaPath, false);
    if (file)
        return SAVE_NOT_SAFE; // there is one, without music that can be read
    switch (base::kindOf(errno)) {
    case base::Failure::Kind::Gone:
        return SAVE_FILE_GONE;
    case base::Failure::Kind::NoPermission:
        return SAVE_NO_PERMISSION;
    default:
        return SAVE_OTHER_PROBLEM;
    }
}
} // namespace

std::vector<char> itunes::readPicture(const std::string& mediaPath)
{
    const Tag tag = openTag(mediaPath);
    return tag ? pictureOf(*tag) : std::vector<char>();
}

SaveProblem itunes::writeTags(const std::string& mediaPath, const TrackEdit& edit,
                              const std::vector<char>& picture)
{
    const Tag tag = openTag(mediaPath);
    if (!tag) {
        base::logLine(mediaPath, "the tag was not saved: there is no such music file");
        return problemOfUnreadable(mediaPath);
    }
    const bool put = putText(*tag, TAG_TITLE, edit.name) && putText(*tag, TAG_ARTIST, edit.artist) &&
                     putText(*tag, TAG_ALBUM, edit.album) && putText(*tag, TAG_GENRE, edit.genre) &&
                     putYear(*tag, edit.year) && putPicture(*tag, picture);
    if (!put)
        return SAVE_OTHER_PROBLEM;
    tag->Save();
    return SaveProblemOf(tag.get());
}
