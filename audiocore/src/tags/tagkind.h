#pragma once

#include "media/mpegframes.h"

#include <memory>
#include <string>

namespace TagLib {
class AudioProperties;
}

namespace audiocore {
class CheckedStream;
class MusicPlaces;
class SoundView;
class TagReading;
struct FileEdits;

/// A music file that lies open in a stream, together with what its format makes of its tags. The stream must
/// outlive it. One thread.
class TaggedFile
{
public:
    virtual ~TaggedFile() = default;
    TaggedFile(const TaggedFile&) = delete;
    TaggedFile& operator=(const TaggedFile&) = delete;

    /// Whether there is anything that can be heard, as far as opening tells.
    virtual bool isMusic() = 0;
    virtual MpegStream sound() = 0;
    /// Hands in what its tags say, the one that is believed first at first.
    virtual void read(TagReading& reading) = 0;
    /// Bytes of a picture that may be written into it: its tag can hold it, and our own player still plays
    /// the file.
    virtual unsigned int largestPicture() = 0;
    /// Writes the edits. Why it did not work, empty on success; the file may be half written then. What was
    /// opened is of no use afterwards.
    virtual std::string write(const FileEdits& edits) = 0;

protected:
    TaggedFile() = default;
};

/// What a format does with tags: the row of the format names it.
struct TagKind
{
    /// The music starts at `audioBegin`. Null when the tag library has nothing for what is in there.
    std::unique_ptr<TaggedFile> (*open)(CheckedStream& stream, long audioBegin);
    /// Makes its own tags look like something to pass over; those that any file may have already do. False
    /// when decoders must not see the file. Null where there is nothing to do.
    bool (*hide)(CheckedStream& stream, long audioBegin, SoundView& view);
    /// Tells which parts of a file are its music, of which further tags follow from `end` on. False where it
    /// cannot be taken apart, or has none. Null where all from `audioBegin` to `end` is music.
    bool (*findMusic)(CheckedStream& stream, long audioBegin, long end, MusicPlaces& places);
};

/// All zeros for null.
MpegStream soundTold(const TagLib::AudioProperties* properties);

/// A file that the tag library reads, and whose sound it tells.
template <class File>
class LibraryRead : public TaggedFile
{
public:
    /// The stream must outlive it.
    LibraryRead(CheckedStream* stream, bool readProperties) : m_file(stream, readProperties) {}

    bool isMusic() override { return m_file.isValid() && m_file.audioProperties(); }
    MpegStream sound() override { return soundTold(m_file.audioProperties()); }

protected:
    File m_file;
};
} // namespace audiocore
