#pragma once

#include "trackstore.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace itunes {
/// The one library of the process. All calls from any thread.
class MusicLibrary
{
public:
    static MusicLibrary& instance();

    void setOption(const std::string& path);
    void read(iTunesTrackRecord** records, int* count);
    /// The location of a track with a file; nothing for another.
    std::optional<std::string> locationOf(std::uint64_t id);
    void close();

private:
    std::mutex m_mutex;
    std::string m_option;
    std::shared_ptr<TrackStore> m_store;
    std::shared_ptr<TrackStore> m_former; ///< the views may still show it while a new reading begins
};
} // namespace itunes
