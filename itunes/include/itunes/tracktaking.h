#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// For programs that have a later run take back what they did; GetMusicInfo need not have been called. The
// library file is named by its path, bytes as the system has them, behind all links. One thread at a time.

enum class iTunesTaking {
    Done,
    Refused, ///< nothing was changed
    Waits    ///< for the disk: it was answered and survives, but the file does not say so yet
};

/// Told, before anything is changed, what putTracksBack wants; a reason ends it there.
using iTunesAnnounce = std::function<std::string(const std::string& taken)>;

/// Takes tracks, by persistent identifier, out of the library file and out of all its playlists, all of them
/// or none, and writes the file before it answers; their media files stay. Each has to be there once. Unless
/// it was done, `reason` says why, and the log does in one line.
iTunesTaking takeTracksOut(const std::string& library, const std::vector<std::uint64_t>& persistentIds,
                           const iTunesAnnounce& announce, std::string& reason);

/// Has the tracks stand in the library file again that `taken` is of, and at their places in its playlists:
/// the file is byte for byte as it was before them. True also where it holds them all already. False with the
/// reason, and a line in the log: nothing was changed, as where anybody changed it in another way since.
bool putTracksBack(const std::string& library, const std::string& taken, std::string& reason);
