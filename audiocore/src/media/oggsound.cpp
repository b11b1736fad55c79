#include "media/oggsound.h"

#include "base/checkedmath.h"
#include "media/checkedstream.h"
#include "media/oggsamples.h"
#include "media/soundlimits.h"

#include <algorithm>
#include <string_view>

namespace checked = base::checked;

using audiocore::CheckedStream;
using audiocore::MpegStream;
using audiocore::OggCodec;
using audiocore::OggPacket;
using audiocore::OggPackets;
using audiocore::OggPage;
using audiocore::OggStream;
using audiocore::SamplesOfPacket;
using TagLib::ByteVector;

namespace {
constexpr long mostHeaderBytes = 64 * 1024 * 1024;

/// How its packets tell their samples; the packets stand in front of the music afterwards.
SamplesOfPacket samplesOf(OggPackets& packets, const OggStream& music)
{
    ByteVector setup;
    music.eachHeader(packets, mostHeaderBytes, [&](const OggPacket& packet) {
        const unsigned int begin = packet.size - std::min(packet.size, audiocore::setupEnd);
        if (music.codec == OggCodec::Vorbis)
            setup = packets.bytesOf(packet, begin, packet.size);
        return true;
    });
    switch (music.codec) {
    case OggCodec::Vorbis:
        return audiocore::vorbisSamples(music.head, setup);
    case OggCodec::Opus:
        return audiocore::opusSamples;
    case OggCodec::Flac:
        return audiocore::flacSamples;
    case OggCodec::Speex:
        return audiocore::speexSamples(music.head);
    case OggCodec::Other:
        break;
    }
    return nullptr;
}

/// Where the music of a stream begins.
struct Beginning
{
    std::int64_t position = 0;
    long place = 0; ///< of the first page that has some
};

/// The first page with music says where that ends, and its packets how long it is.
Beginning beginningOf(CheckedStream& stream, const OggStream& music)
{
    OggPackets packets(stream, music.begin, music.serial);
    const SamplesOfPacket samples = samplesOf(packets, music);
    std::optional<OggPacket> packet = packets.next(mostHeaderBytes);
    if (!packet)
        return {0, music.begin};
    const OggPage first = packets.page();
    std::int64_t played = samples ? 0 : first.position;
    for (; samples && packet && packets.page().place == first.place; packet = packets.next(mostHeaderBytes))
        played += samples(packets.bytesOf(*packet, 0, audiocore::packetBeginning));
    return {std::max<std::int64_t>(checked::sum(first.position, -played), 0), first.place};
}

std::int64_t millisecondsOf(const OggStream& music, std::int64_t from, std::int64_t to)
{
    constexpr unsigned int preSkipPlace = 10;
    const std::int64_t skipped = music.codec == OggCodec::Opus ? music.head.toUShort(preSkipPlace, false) : 0;
    const std::int64_t samples = checked::sum(checked::sum(to, -from), -skipped);
    return checked::scaled(std::max<std::int64_t>(samples, 0), 1000, music.sampleRate());
}

/// As the header of FLAC tells it; 0 where it does not, and of all others.
std::int64_t millisecondsTold(const OggStream& music)
{
    constexpr unsigned int place = 30; // 36 bits
    if (music.codec != OggCodec::Flac)
        return 0;
    const std::int64_t highest = music.head.data()[place] & 15;
    return millisecondsOf(music, 0, highest << 32 | std::int64_t(music.head.toUInt(place + 1)));
}

bool contains(const std::vector<OggStream>& streams, const OggPage& page)
{
    return std::any_of(streams.begin(), streams.end(),
                       [&page](const OggStream& stream) { return stream.serial == page.serial; });
}

/// The last page with a position, of the music or of a stream that is none of these.
std::optional<OggPage> lastPage(CheckedStream& stream, const std::vector<OggStream>& streams,
                                const OggStream& music)
{
    constexpr long farthest = 1024 * 1024;
    constexpr std::string_view magic = "OggS";
    int looks = 1000;
    long step = 4 * 1024;
    for (long end = stream.length(); end > music.begin && stream.length() - end < farthest; step *= 2) {
        const long begin = std::max(music.begin, end - step);
        const ByteVector block =
            stream.readAt(begin, static_cast<unsigned long>(end - begin) + magic.size() - 1);
        const std::string_view view(block.data(), block.size());
        for (std::size_t found = view.rfind(magic); found != std::string_view::npos && looks-- > 0;
             found = found > 0 ? view.rfind(magic, found - 1) : std::string_view::npos) {
            std::optional<OggPage> page = OggPage::at(stream, begin + long(found));
            if (page && page->position >= 0 && (page->serial == music.serial || !contains(streams, *page)))
                return page;
        }
        end = begin;
    }
    return std::nullopt;
}

/// What the pages of music tell that a walk comes by.
struct Walk
{
    std::int64_t milliseconds = 0;
    std::int64_t bytes = 0;
};

/// Past so many pages, from one music to the next as long as decoders do: each alone, and of one codec.
Walk walk(CheckedStream& stream, const std::vector<OggStream>& first, const OggStream& firstMusic,
          long mostPages)
{
    Walk all;
    std::vector<OggStream> streams = first;
    OggStream music = firstMusic;
    Beginning beginning = beginningOf(stream, music);
    std::int64_t position = 0;
    const auto finish = [&] {
        all.milliseconds =
            checked::sum(all.milliseconds, millisecondsOf(music, beginning.position, position));
    };
    std::optional<OggPage> page = OggPage::at(stream, music.begin);
    for (long i = 0; page && i < mostPages; ++i) {
        if (page->beginsStream && !contains(streams, *page)) {
            finish();
            const bool alone = streams.size() == 1;
            streams = audiocore::oggStreams(stream, page->place);
            if (!alone || streams.size() != 1 || streams.front().codec != music.codec)
                return all;
            music = streams.front();
            beginning = beginningOf(stream, music);
            position = 0;
        }
        if (page->serial == music.serial && page->place >= beginning.place) {
            all.bytes += page->end - page->place;
            position = std::max(position, page->position);
        }
        page = OggPage::at(stream, page->end);
    }
    finish();
    return all;
}
} // namespace

MpegStream audiocore::measureOgg(CheckedStream& stream, const std::vector<OggStream>& streams,
                                 const OggStream& music)
{
    constexpr long measured = 2000;
    MpegStream sound;
    sound.sampleRate = music.sampleRate();
    if (!isSampleRate(sound.sampleRate))
        return sound;
    const std::optional<OggPage> last = lastPage(stream, streams, music);
    if (last && last->serial != music.serial) {
        const Walk all = walk(stream, streams, music, measured + stream.length() / 512);
        sound.milliseconds = all.milliseconds;
        sound.bitsPerSecond = checked::scaled(all.bytes, 8000, all.milliseconds);
        return sound;
    }
    const Beginning beginning = beginningOf(stream, music);
    sound.milliseconds = millisecondsTold(music);
    if (sound.milliseconds <= 0 && last)
        sound.milliseconds = millisecondsOf(music, beginning.position, last->position);
    const Walk part = streams.size() > 1 ? walk(stream, streams, music, measured)
                                         : Walk{sound.milliseconds, stream.length() - beginning.place};
    sound.bitsPerSecond = checked::scaled(part.bytes, 8000, part.milliseconds);
    return sound;
}
