#pragma once

#include <cstdint>

/// Format codes of IAudioDecoder::GetFormat.
enum AudioFormat : std::int32_t {
    AUDIO_FORMAT_UNKNOWN = -1,
    AUDIO_FORMAT_WAV = 0,
    AUDIO_FORMAT_WMA = 1,
    AUDIO_FORMAT_MP3 = 2,
    AUDIO_FORMAT_AAC = 3,
    AUDIO_FORMAT_M4A = 4,
    AUDIO_FORMAT_OGG = 5,
    AUDIO_FORMAT_APE = 6,
    AUDIO_FORMAT_FLAC = 7
};

/// Tells the stream properties of one music file. The rules of IAudioTag about slots, handles, threads and
/// results hold here too.
class IAudioDecoder
{
public:
    /// Slot 0. Reads the properties of the file at `path`, as IAudioTag takes it. Every property of a file
    /// that cannot be read is 0, its format AUDIO_FORMAT_UNKNOWN.
    virtual std::int32_t Open(const char32_t* path) = 0;
    /// Slot 1, not called.
    virtual void Reserved1() = 0;
    /// Slot 2. Lets go of the file; the properties read as those of no file afterwards.
    virtual std::int32_t Close() = 0;
    /// Slot 3. Length in milliseconds.
    virtual std::int32_t GetDuration() = 0;
    /// Slot 4. An AudioFormat, told from the stream and not from the file's name.
    virtual std::int32_t GetFormat() = 0;
    /// Slot 5. Sample rate in hertz.
    virtual std::int32_t GetSampleRate() = 0;
    /// Slots 6 and 7, not called.
    virtual void Reserved6() = 0;
    virtual void Reserved7() = 0;
    /// Slot 8. Bit rate in bits per second.
    virtual std::int32_t GetBitrate() = 0;

protected:
    ~IAudioDecoder() = default;
};

/// A new decoder object, or null when memory is short.
IAudioDecoder* CreateDecoder();
