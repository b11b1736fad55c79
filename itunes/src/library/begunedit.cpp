#include "library/begunedit.h"

#include "base/platform.h"
#include "library/artwork.h"
#include "library/librarycontents.h"
#include "library/location.h"
#include "library/mediatags.h"

#include <optional>
#include <vector>

using itunes::ChangeKind;
using itunes::CoverMark;
using itunes::JournalRecord;
using itunes::MediaMark;
using itunes::Redone;

namespace {
/// The picture that the edit puts into the media file, empty for none; nothing when it is lost.
std::optional<std::vector<char>> pictureOf(const CoverMark& cover, const std::string& mediaPath)
{
    if (cover.path.empty())
        return std::vector<char>();
    std::optional<std::vector<char>> picture = itunes::pictureFile(cover.path);
    if (picture && itunes::markOf(*picture, cover.path).hash == cover.hash)
        return picture;
    // Texts and picture come into the media file at one stroke: it may be there already.
    if (itunes::markOf(itunes::readPicture(mediaPath), cover.path).hash == cover.hash)
        return std::vector<char>();
    return std::nullopt;
}

/// A media file is written at one stroke: what is not as it was says again what it said.
Redone redoReversal(const JournalRecord& reversal, const std::string& mediaPath, std::string& reason)
{
    base::FileState media;
    if (!base::stateOf(mediaPath, media)) {
        reason = "its media file is gone";
        return Redone::Not;
    }
    const bool isUnwritten = MediaMark::of(media) == reversal.media;
    reason = isUnwritten ? "an edit was not taken back any more" : std::string();
    return isUnwritten ? Redone::NotBegun : Redone::Whole;
}
} // namespace

Redone itunes::redoEdit(const std::string& libraryPath, const JournalRecord& edit, std::string& reason)
{
    std::string location;
    if (!readLocation(libraryPath, edit.id, location, reason))
        return Redone::NotYet;
    const std::string mediaPath = pathOf(normalisedLocation(location));
    if (mediaPath.empty()) {
        reason = "its track is no longer in the library";
        return Redone::Not;
    }
    if (edit.kind == ChangeKind::Reversal)
        return redoReversal(edit, mediaPath, reason);
    const std::optional<std::vector<char>> picture = pictureOf(edit.cover, mediaPath);
    if (writeTags(mediaPath, tagsOf(edit.edit, picture.value_or(std::vector<char>()))) != SAVE_NO_PROBLEM) {
        reason = "its media file cannot be written";
        return Redone::Not;
    }
    if (picture)
        return Redone::Whole;
    reason = "its picture is no longer there";
    return Redone::WithoutPicture;
}
