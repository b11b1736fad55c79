#pragma once

#include "collection/tagfiles.h"

#include <string>

class IAudioIdentifier;

/// What the services know of a song.
struct FoundSong
{
    int status = 0; ///< the identifier's (IdentifyStatus)
    int score = 0;  ///< how good the match is, 0 to 100
    TagTexts
        tags; ///< fields by their names, without those that are not known; and the cover, where there is one

    bool isFound() const;
    /// By what the file says of itself, and not by its sound.
    bool isFoundByTags() const;
    /// The services were asked, and know no such song.
    bool isUnknown() const;
    /// A key might have found it by its sound, or have found it more surely.
    bool wantsKey() const;
};

/// Identifies songs by their files, one after the other. The first one that there is loads the engine, whose
/// pace and patience with the services hold for all. One thread at a time, but for cancel().
class SongIdentifier
{
public:
    SongIdentifier();
    ~SongIdentifier();
    SongIdentifier(const SongIdentifier&) = delete;
    SongIdentifier& operator=(const SongIdentifier&) = delete;

    /// False where the engine is missing, which the log tells.
    bool isReady() const { return m_identifier != nullptr; }
    /// Takes the file at the path, of bytes as the system has them; nothing is read yet.
    void open(const std::string& path);
    /// Asks for the file that is open; up to 30 seconds.
    FoundSong identify();
    /// Ends the run that is under way within a fifth of a second, or else the first one of the open file. Any
    /// thread.
    void cancel();

private:
    IAudioIdentifier* const m_identifier;
};
