#include "audiocore/musicbytes.h"

#include "base/filebytes.h"
#include "base/log.h"
#include "base/platform.h"
#include "media/checkedstream.h"
#include "media/formats.h"
#include "tags/id3v2frames.h"
#include "tags/mediafile.h"
#include "tags/musicplaces.h"
#include "tags/tagkind.h"
#include "tags/tagplaces.h"
#include "tags/tagsource.h"

#include <algorithm>
#include <memory>
#include <new>
#include <string>

using audiocore::CheckedStream;
using audiocore::FormatRow;
using audiocore::MusicPlaces;
using TagLib::ByteVector;

namespace {
constexpr std::size_t blockSize = std::size_t(256) * 1024;

/// None for a file of no format that is known.
MusicPlaces placesIn(CheckedStream& stream)
{
    MusicPlaces places(stream.length());
    const long begin = audiocore::behindId3v2(stream);
    audiocore::TagSource source(stream);
    const long end = audiocore::findApe(source).begin;
    const ByteVector head = stream.readAt(begin, audiocore::longestMagic);
    const FormatRow* row = audiocore::rowByMagic(audiocore::id3v2::viewOf(head));
    if (!row && !audiocore::rowByFrames(stream, begin))
        return places;
    const bool isTakenApart = row && row->tags && row->tags->findMusic &&
                              row->tags->findMusic(stream, begin, end, places) && !places.areTooMany() &&
                              !stream.ranDry();
    if (!isTakenApart) {
        places = MusicPlaces(stream.length());
        places.add(begin, end);
    }
    return places;
}

MusicBytesStatus failed(MusicBytesStatus status, const std::string& path, const char* reason)
{
    base::logLine(path, reason);
    return status;
}

/// Hands out the parts of the file, which has to be as it was when they were looked for.
MusicBytesStatus read(const base::FileBytes& file, const MusicPlaces& places, const TakeMusicBytes& take,
                      const std::string& path)
{
    const auto buffer = std::make_unique<char[]>(blockSize);
    for (const MusicPlaces::Part& part : places.parts())
        for (std::int64_t done = 0; done < part.size;) {
            const auto count = std::size_t(std::min<std::int64_t>(part.size - done, blockSize));
            if (file.readAt(part.begin + done, buffer.get(), count) != count)
                return failed(MUSIC_BYTES_NO_FILE, path, "cannot be read to its end");
            if (!take(buffer.get(), count))
                return MUSIC_BYTES_ENDED;
            done += std::int64_t(count);
        }
    return MUSIC_BYTES_READ;
}

using Use = std::function<MusicBytesStatus(const base::FileBytes& file, const MusicPlaces& places)>;

MusicBytesStatus lookInto(const char* path, const Use& use)
{
    try {
        const std::unique_ptr<base::SystemFile> file = base::SystemFile::open(path, false);
        if (!file || !file->size())
            return failed(MUSIC_BYTES_NO_FILE, path, "is no file that can be read");
        CheckedStream stream(*file, path, CheckedStream::Mode::Read);
        const MusicPlaces places = placesIn(stream);
        if (stream.readFailed())
            return failed(MUSIC_BYTES_NO_FILE, path, "cannot be read to its end");
        if (places.bytes() == 0)
            return failed(MUSIC_BYTES_NO_MUSIC, path, "holds no music that is known");
        return use(*file, places);
    } catch (const std::bad_alloc&) {
        return failed(MUSIC_BYTES_NO_MEMORY, path, "is too much for the memory that is left");
    } catch (const audiocore::EndlessReading& damage) {
        return failed(MUSIC_BYTES_NO_MUSIC, path, damage.what());
    }
}
} // namespace

MusicBytesStatus ReadMusicBytes(const char* path, const TakeMusicBytes& take)
{
    return lookInto(path, [&](const base::FileBytes& file, const MusicPlaces& places) {
        return read(file, places, take, path);
    });
}

MusicBytesStatus MeasureMusicBytes(const char* path, std::int64_t& count)
{
    return lookInto(path, [&count](const base::FileBytes&, const MusicPlaces& places) {
        count = places.bytes();
        return MUSIC_BYTES_READ;
    });
}
