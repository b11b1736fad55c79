#pragma once

#include <cstdint>

/// What IAudioPlayer::GetState tells.
enum PlayerState : std::int32_t {
    PLAYER_STATE_EMPTY = 0,   ///< no file, or one that cannot be played
    PLAYER_STATE_OPENING = 1, ///< the file is still being opened
    PLAYER_STATE_PLAYING = 2,
    PLAYER_STATE_PAUSED = 3,  ///< also after Open, before the first Play
    PLAYER_STATE_FINISHED = 4 ///< the song has ended; lasts until it is sought, played or opened again
};

/// Plays the sound of one local music file.
///
/// The rules of IAudioTag about slots, threads and results hold here too; the handle is given back with
/// DestroyPlayer. No operation waits for the sound device. Without one, or when it goes away, the song runs
/// on silently in real time. Nothing but the named file is ever read: no configuration of other players, no
/// reference to another file or address that stands in it, no file beside it.
///
/// The environment variable MELODRIFT_AUDIO_OUTPUT, read by Open, chooses another output than the system's:
/// "null" plays silently in real time, "pcm:FILE" writes a WAV file as fast as it can.
class IAudioPlayer
{
public:
    /// Slot 0. Takes the regular file at `path`, zero-terminated UTF-32, of one of the formats that
    /// IAudioDecoder tells, and stands paused at its start. Waits half a second at the most: the duration is
    /// known then. The file before is let go.
    virtual std::int32_t Open(const char32_t* path) = 0;
    /// Slots 1 to 3, not called.
    virtual void Reserved1() = 0;
    virtual void Reserved2() = 0;
    virtual void Reserved3() = 0;
    /// Slot 4. Starts or goes on; a song that has ended starts anew.
    virtual std::int32_t Play() = 0;
    /// Slot 5. Stops the sound; the position stays.
    virtual std::int32_t Pause() = 0;
    /// Slot 6, not called.
    virtual void Reserved6() = 0;
    /// Slot 7. A PlayerState.
    virtual std::int32_t GetState() = 0;
    /// Slot 8. Length in milliseconds, the same that IAudioDecoder tells; 0 when nothing can be played.
    virtual std::int32_t GetDuration() = 0;
    /// Slot 9. Milliseconds from 0 to the duration; right after Seek already the new one.
    virtual std::int32_t GetPosition() = 0;
    /// Slot 10. Goes to a position in milliseconds, bounded by the duration; whether it plays stays as it is,
    /// and a song that has ended stands paused there.
    virtual std::int32_t Seek(std::uint64_t position) = 0;

protected:
    ~IAudioPlayer() = default;
};

/// A new player, or null when memory is short or the engine's module is missing, which is in the log then.
/// The first call loads the module. The playback engine needs the process's LC_NUMERIC to be "C" and the
/// first player sets it so where it is not: a program with threads does that itself before it starts them.
IAudioPlayer* CreatePlayer();
/// Loads the module ahead, which takes longer than a user should wait for a song's first sound. Any thread,
/// also while another creates a player. Of a missing module CreatePlayer tells again.
void PreparePlayer();
/// Whether a song that is played runs silently because there is no sound device, or none any more; that is
/// known once it plays. False where silence was asked for. The rules of IAudioPlayer about threads hold.
bool PlayerIsSilent(const IAudioPlayer* player);
/// Ends the playback and frees the player, also while it plays; null is allowed.
void DestroyPlayer(IAudioPlayer* player);
