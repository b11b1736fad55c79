#include "library/mediatags.h"

#include "audiocore/iaudiotag.h"
#include "base/failure.h"
#include "base/filebytes.h"
#include "base/log.h"
#include "base/platform.h"
#include "base/text.h"

#include <cerrno>
#include <memory>
#include <utility>

namespace {
using itunes::MediaTags;
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

/// A save would leave such a picture out, and write the texts.
bool isTooLarge(IAudioTag& tag, const std::vector<char>& picture)
{
    return picture.size() > LargestPictureFor(&tag) && picture != pictureOf(tag);
}

bool putPicture(IAudioTag& tag, const std::optional<std::vector<char>>& picture)
{
    if (!picture || *picture == pictureOf(tag))
        return true;
    std::vector<char> bytes = *picture;
    const auto size = std::int32_t(bytes.size());
    return tag.RemoveItem(TAG_PICTURE) == 0 &&
           (size == 0 || tag.SetItem({-1, TAG_PICTURE, 1, size, bytes.data()}) == 0);
}

std::string textOf(IAudioTag& tag, TagItemType type)
{
    const std::int32_t count = tag.GetItemCount();
    for (std::int32_t i = 0; i < count; ++i) {
        const TagItem item = tag.GetItem(i);
        if (item.type == type && item.size > 0)
            return base::toUtf8(
                       {static_cast<const char32_t*>(item.data), std::size_t(item.size) / sizeof(char32_t)})
                .value_or(std::string());
    }
    return std::string();
}

/// What the tag says where the other has something to say.
MediaTags formerOf(IAudioTag& tag, const MediaTags& tags)
{
    MediaTags former;
    const auto take = [&tag](TagItemType type, const std::optional<std::string>& text,
                             std::optional<std::string>& into) {
        if (text)
            into = textOf(tag, type);
    };
    take(TAG_TITLE, tags.name, former.name);
    take(TAG_ARTIST, tags.artist, former.artist);
    take(TAG_ALBUM, tags.album, former.album);
    take(TAG_GENRE, tags.genre, former.genre);
    take(TAG_YEAR, tags.year, former.year);
    if (tags.picture)
        former.picture = pictureOf(tag);
    if (former.picture == tags.picture)
        former.picture.reset();
    return former;
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

itunes::MediaTags itunes::tagsOf(const TrackEdit& edit, std::vector<char> picture)
{
    MediaTags tags{edit.name, edit.artist, edit.album, edit.genre, {}, {}};
    if (edit.year)
        tags.year = *edit.year ? std::to_string(*edit.year) : std::string();
    if (!picture.empty())
        tags.picture = std::move(picture);
    return tags;
}

SaveProblem itunes::writeTags(const std::string& mediaPath, const MediaTags& tags, MediaTags* former)
{
    const Tag tag = openTag(mediaPath);
    if (!tag) {
        base::logLine(mediaPath, "the tag was not saved: there is no such music file");
        return problemOfUnreadable(mediaPath);
    }
    if (tags.picture && isTooLarge(*tag, *tags.picture)) {
        base::logLine(mediaPath, "the tag was not saved: the picture has " +
                                     std::to_string(tags.picture->size()) + " bytes, the file takes " +
                                     std::to_string(LargestPictureFor(tag.get())) + " at the most");
        return SAVE_PICTURE_TOO_LARGE;
    }
    if (former)
        *former = formerOf(*tag, tags);
    const bool put = putText(*tag, TAG_TITLE, tags.name) && putText(*tag, TAG_ARTIST, tags.artist) &&
                     putText(*tag, TAG_ALBUM, tags.album) && putText(*tag, TAG_GENRE, tags.genre) &&
                     putText(*tag, TAG_YEAR, tags.year) && putPicture(*tag, tags.picture);
    if (!put)
        return SAVE_OTHER_PROBLEM;
    tag->Save();
    return SaveProblemOf(tag.get());
}
