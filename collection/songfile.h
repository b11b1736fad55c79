#pragma once

#include "collection/filestate.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <string>

class IAudioDecoder;
class IAudioTag;

/// A song without a window: what a music file says of itself. 0 for a number that is not known.
struct SongFile
{
    std::string path; ///< the bytes that the system has
    QString title;
    QString artist;
    QString album;
    QString genre;
    int year = 0;
    int track = 0;
    int format = -1; ///< the audio core's code
    FileState state; ///< of what lies at the path itself, as it was before it was read
    std::uint64_t milliseconds = 0;
    std::uint64_t bitRate = 0;      ///< bits per second
    std::uint64_t sampleRate = 0;   ///< hertz
    std::uint64_t bytes = 0;        ///< of the file
    std::uint64_t coverBytes = 0;   ///< of the picture that lists show; 0 without one
    QString kind;                   ///< of a track in a music library, in its words
    std::uint64_t persistentId = 0; ///< of such a track, by which it is changed; 0 where it cannot be
    std::string whyNot;             ///< why the file could not be read; empty when it was

    /// Of a music library, which has a word for its kind.
    bool isTrack() const { return !kind.isNull(); }
    bool isRead() const { return whyNot.empty(); }
    static SongFile failed(const std::string& path, const std::string& reason);
};

/// Reads songs, one after the other. One object for each thread.
class SongFileReader
{
public:
    SongFileReader();
    ~SongFileReader();
    SongFileReader(const SongFileReader&) = delete;
    SongFileReader& operator=(const SongFileReader&) = delete;

    /// Fails with a reason, never otherwise.
    SongFile read(const std::string& path);
    /// Of a file that the audio core cannot read: the system's reason, or that it is no music.
    static std::string whyUnreadable(const std::string& path);

private:
    void readTag(SongFile& song);
    SongFile tryToRead(const std::string& path);

    IAudioTag* m_tag;
    IAudioDecoder* m_decoder;
};
