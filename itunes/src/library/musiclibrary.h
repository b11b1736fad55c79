#pragma once

#include "itunes/itunesmusiclibrary.h"
#include "library/artwork.h"
#include "library/editresult.h"
#include "library/keptedits.h"
#include "library/libraryfile.h"
#include "library/libraryplace.h"
#include "library/trackedit.h"
#include "library/trackstore.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace itunes {
/// The one library of the process. All calls from any thread.
class MusicLibrary
{
public:
    static MusicLibrary& instance();

    void setOption(const std::string& path);
    /// Where the library is looked for from now on.
    LibraryPlaces places();
    /// Looks for the library and writes what an earlier run left, all in the background.
    void prepare();
    void read(iTunesTrackRecord** records, int* count);
    /// Of the last reading; empty when it went well. Valid until the next one.
    const char* problem();
    struct Reading
    {
        iTunesReading result = ITUNES_READ;
        std::uint64_t line = 0; ///< where the file is broken
    };
    Reading lastReading();
    void close();

    /// The location of a track with a file; nothing for another.
    std::optional<std::string> locationOf(std::uint64_t id);
    /// What the values say anew against what the caller has last seen is written, and nothing else.
    EditResult edit(std::uint64_t id, const TrackValues& values, const std::string& coverPath);
    /// Takes the last edit of the track back that is kept.
    EditResult takeBackEdit(std::uint64_t id);
    iTunesEditProblem remove(std::uint64_t id) { return remove(std::vector<std::uint64_t>{id}).front(); }
    /// All at one stroke; an answer for each.
    std::vector<iTunesEditProblem> remove(const std::vector<std::uint64_t>& ids);
    /// Takes the deletions of these tracks back, of all or of none.
    iTunesEditProblem bringBack(const TrackSet& ids);
    /// That is kept for taking changes back.
    std::size_t bytesKept();
    bool writeArtwork(std::uint64_t id, const std::string& path);

private:
    /// What a change of one track needs.
    struct Access
    {
        std::shared_ptr<LibraryFile> file;
        std::shared_ptr<TrackStore> store;
        std::string mediaPath; ///< empty for a track without a file
        TrackValues lastSeen;  ///< by the caller
    };

    void prepareFile(const std::string& path, unsigned uses);
    std::shared_ptr<LibraryFile> fileAt(const std::string& path);
    std::shared_ptr<LibraryFile> lastFile();
    /// Nothing with the problem, which the log tells.
    std::optional<Access> accessTo(std::uint64_t id, iTunesEditProblem& problem);
    void noteEdit(const Access& track, const TrackValues& values, KeptEdit edit);

    std::mutex m_optionMutex; ///< never held while a disk is asked
    std::string m_option;
    std::mutex m_mutex;  ///< for all below
    unsigned m_uses = 0; ///< counts readings and closings
    std::string m_path;  ///< of the last reading
    std::shared_ptr<LibraryFile> m_file;
    std::shared_ptr<TrackStore> m_store;
    std::shared_ptr<TrackStore> m_former; ///< the views may still show it while a new reading begins
    std::string m_problem;
    Reading m_reading;
    KeptEdits m_edits; ///< of m_store
    Artwork m_artwork;
};
} // namespace itunes
