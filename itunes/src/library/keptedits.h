#pragma once

#include "base/platform.h"
#include "library/mediatags.h"
#include "library/trackedit.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>

namespace itunes {
/// What an edit of a track found.
struct KeptEdit
{
    std::uint64_t id = 0;
    TrackValues values; ///< of the track, as its user saw it
    TrackEdit edit;     ///< what brings them back into its entry
    std::string mediaPath;
    MediaTags tags;         ///< what brings them back into its media file
    base::FileState before; ///< of the media file
    base::FileState after;
};

/// The last edits, for taking them back: a hundred of them and 64 MB of pictures, and no more. Calls from one
/// thread at a time.
class KeptEdits
{
public:
    static constexpr std::size_t most = 100;
    static constexpr std::size_t mostPictureBytes = std::size_t(64) * 1024 * 1024;

    void add(KeptEdit edit);
    /// The last one of the track, which is forgotten.
    std::optional<KeptEdit> take(std::uint64_t id);
    /// The edit was taken back: its media file is again the one that earlier edits left.
    void tookBack(const KeptEdit& edit, const base::FileState& media);
    void forget();
    /// That all of them take.
    std::size_t bytes() const;

private:
    std::deque<KeptEdit> m_edits; ///< the newest last
};
} // namespace itunes
