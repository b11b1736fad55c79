#pragma once

#include "audiocore/tagitem.h"

/// How an identification ended. 1 and 4 mean that there are items; every other value is a failure, each with
/// a line in the log.
enum IdentifyStatus : std::int32_t {
    IDENTIFY_NOT_RUN = 0,         ///< nothing was identified since Open
    IDENTIFY_FOUND = 1,           ///< items, found by the sound
    IDENTIFY_CANCELLED = 2,       ///< Cancel was called
    IDENTIFY_NO_MATCH = 3,        ///< the services know no such recording, neither by sound nor by tags
    IDENTIFY_FOUND_BY_TAGS = 4,   ///< items, found by what the file's tags or its name say
    IDENTIFY_NO_FILE = 5,         ///< no file was opened, or it cannot be read
    IDENTIFY_NO_AUDIO = 6,        ///< no audio that can be decoded, and nothing known by tags
    IDENTIFY_TOO_SHORT = 7,       ///< too little audio for a fingerprint, and nothing known by tags
    IDENTIFY_NO_KEY = 8,          ///< no application key to ask by sound, and nothing known by tags
    IDENTIFY_BAD_ADDRESS = 9,     ///< a service's address is neither HTTPS nor of this machine
    IDENTIFY_NO_CONNECTION = 10,  ///< a service was not reached, or broke off, or took too long
    IDENTIFY_REFUSED = 11,        ///< a service answered with an error
    IDENTIFY_NOT_UNDERSTOOD = 12, ///< a service's answer makes no sense
    IDENTIFY_NO_MEMORY = 13
};

/// Identifies one music file with online services: a fingerprint of its first two minutes names the
/// recording, or else a search for what the file says of itself; the recording gives the texts and, where it
/// can be had, the front cover. Network access happens in Identify alone.
///
/// The rules of IAudioTag about slots, handles and results hold here too. Calls on one object come from one
/// thread at a time, except Cancel, which any thread may call at any moment. Several objects may work at
/// once; they share the services' rate limits.
class IAudioIdentifier
{
public:
    /// Slot 0. Takes the file at `path`, as IAudioTag takes it; nothing is read yet. Drops the items and the
    /// status of the last run.
    virtual std::int32_t Open(const char32_t* path) = 0;
    /// Slots 1 and 2, not called.
    virtual void Reserved1() = 0;
    virtual void Reserved2() = 0;
    /// Slot 3. Lets go of the file, the items and the status.
    virtual std::int32_t Close() = 0;
    /// Slot 4. Identifies the opened file and returns when that is done, cancelled or failed, within 30
    /// seconds; 0 when there are items. The arguments have no effect.
    virtual std::int32_t Identify(std::int32_t, std::int32_t, std::int32_t) = 0;
    /// Slot 5. Ends a running Identify within a fifth of a second. Before Identify it holds for the coming
    /// run: of the opened file, or of the first one when none was opened yet. After a run it has no effect.
    virtual std::int32_t Cancel() = 0;
    /// Slot 6. An IdentifyStatus.
    virtual std::int32_t GetStatus() = 0;
    /// Slot 7. The item of the type `index`, 0 to 9; of size 0 when it is absent. Stays owned by the object,
    /// valid until the next Open, Identify or Close on it.
    virtual TagItem GetItem(std::int32_t index) = 0;

protected:
    ~IAudioIdentifier() = default;
};

/// A new identifier, or null when memory is short or the engine's module is missing, which is in the log
/// then. The first call loads the module.
IAudioIdentifier* CreateIdentifier();
/// Whether there is an application key to identify by sound with; false before the first CreateIdentifier.
/// Reads a file. Any thread.
bool IdentifiesBySound();
/// How good the match is that the last run found, 0 to 100: what the service thinks of the sound, or how well
/// the recording fits the tags; 0 where nothing was found. The rules of IAudioIdentifier about threads hold.
int IdentificationScore(const IAudioIdentifier* identifier);
/// Frees an identifier and its items; null is allowed. No call on it may be under way or follow, Cancel
/// included.
void DestroyIdentifier(IAudioIdentifier* identifier);
