#include "media/formats.h"

#include "media/loasframes.h"
#include "media/mpegframes.h"

#include <algorithm>
#include <iterator>
#include <set>

using audiocore::FormatRow;

namespace audiocore {
// Each in a file of its name: flactags.cpp and so on, with both of raw MPEG audio in mpegtags.cpp.
extern const TagKind flacTags, oggTags, apeTags, asfTags, wavTags, mp4Tags, mp3Tags, adtsTags;
} // namespace audiocore

namespace {
/// Where two would fit, the first counts.
constexpr FormatRow rows[] = {
    {AUDIO_FORMAT_FLAC, {{{0, "fLaC"}}}, nullptr, "flac", &audiocore::flacTags},
    {AUDIO_FORMAT_OGG, {{{0, {"OggS\0", 5}}}}, nullptr, "ogg", &audiocore::oggTags},
    {AUDIO_FORMAT_APE, {{{0, "MAC "}}}, nullptr, "ape", &audiocore::apeTags},
    {AUDIO_FORMAT_WMA, {{{0, "\x30\x26\xB2\x75\x8E\x66\xCF\x11"}}}, nullptr, "asf", &audiocore::asfTags},
    {AUDIO_FORMAT_WAV, {{{0, "RIFF"}, {8, "WAVE"}}}, nullptr, "wav", &audiocore::wavTags},
    {AUDIO_FORMAT_WAV, {{{0, "RF64"}, {8, "WAVE"}}}, nullptr, "wav", &audiocore::wavTags},
    {AUDIO_FORMAT_WAV, {{{0, "BW64"}, {8, "WAVE"}}}, nullptr, "wav", &audiocore::wavTags},
    {AUDIO_FORMAT_M4A, {{{4, "ftyp"}}}, nullptr, "mov", &audiocore::mp4Tags},
    {AUDIO_FORMAT_M4A, {{{4, "moov"}}}, nullptr, "mov", nullptr}, // as it was before it had a first atom
    {AUDIO_FORMAT_M4A, {{{4, "mdat"}}}, nullptr, "mov", nullptr},
    {AUDIO_FORMAT_M4A, {{{4, "wide"}}}, nullptr, "mov", nullptr},
    {AUDIO_FORMAT_M4A, {{{4, "free"}}}, nullptr, "mov", nullptr},
    {AUDIO_FORMAT_M4A, {{{4, "skip"}}}, nullptr, "mov", nullptr},
    {AUDIO_FORMAT_WAV, {{{0, "RIFX"}, {8, "WAVE"}}}, nullptr, "wav", nullptr}, // its numbers the other way
    {AUDIO_FORMAT_WAV, {{{0, "riff\x2E\x91\xCF\x11"}}}, nullptr, "w64", nullptr},
    {AUDIO_FORMAT_MP3, {}, audiocore::findsMp3, "mp3", &audiocore::mp3Tags},
    {AUDIO_FORMAT_AAC, {}, audiocore::findsAdts, "aac", &audiocore::adtsTags},
    {AUDIO_FORMAT_AAC, {}, audiocore::findsLoas, "loas", nullptr},
};

constexpr bool fitInMagic()
{
    for (const FormatRow& row : rows)
        for (const FormatRow::Magic& magic : row.magic)
            if (magic.place + magic.bytes.size() > audiocore::longestMagic)
                return false;
    return true;
}
static_assert(fitInMagic());

template <class Says>
const FormatRow* firstRow(Says says)
{
    const auto* const row = std::find_if(std::begin(rows), std::end(rows), says);
    return row == std::end(rows) ? nullptr : row;
}

bool begins(std::string_view head, const FormatRow& row)
{
    return !row.magic[0].bytes.empty() &&
           std::all_of(row.magic.begin(), row.magic.end(), [head](const FormatRow::Magic& magic) {
               return head.size() >= magic.place + magic.bytes.size() &&
                      head.substr(magic.place, magic.bytes.size()) == magic.bytes;
           });
}
} // namespace

const FormatRow* audiocore::rowByMagic(std::string_view head)
{
    return firstRow([head](const FormatRow& row) { return begins(head, row); });
}

const FormatRow* audiocore::rowByFrames(TagLib::IOStream& stream, long begin)
{
    constexpr long rightHere = 1;
    constexpr long behindRubbish = 1024 * 1024;
    const FormatRow* found = nullptr;
    for (const long searchLength : {rightHere, behindRubbish})
        if (!found)
            found = firstRow([&stream, begin, searchLength](const FormatRow& row) {
                return row.findsFrames && row.findsFrames(stream, begin, searchLength);
            });
    return found;
}

std::string audiocore::allDemuxers()
{
    std::set<std::string_view> demuxers;
    for (const FormatRow& row : rows)
        demuxers.insert(row.demuxer);
    std::string all;
    for (const std::string_view demuxer : demuxers)
        all += (all.empty() ? "" : ",") + std::string(demuxer);
    return all;
}
