#include "media/formats.h"

#include <algorithm>

using audiocore::FormatRow;

namespace {
/// Where two would fit, the first counts.
constexpr FormatRow rows[] = {
    {AUDIO_FORMAT_FLAC, {{{0, "fLaC"}}}, "flac", nullptr},
    {AUDIO_FORMAT_OGG, {{{0, "OggS"}}}, "ogg", nullptr},
    {AUDIO_FORMAT_APE, {{{0, "MAC "}}}, "ape", nullptr},
    {AUDIO_FORMAT_WMA, {{{0, "\x30\x26\xB2\x75\x8E\x66\xCF\x11"}}}, "asf", nullptr},
    {AUDIO_FORMAT_WAV, {{{0, "RIFF"}, {8, "WAVE"}}}, "wav", nullptr},
    {AUDIO_FORMAT_M4A, {{{4, "ftyp"}}}, "mov", nullptr},
    {AUDIO_FORMAT_MP3, {}, "mp3", audiocore::measureMp3},
    {AUDIO_FORMAT_AAC, {}, "aac", audiocore::measureAdts},
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

bool begins(std::string_view head, const FormatRow& row)
{
    return !row.magic[0].bytes.empty() &&
           std::all_of(row.magic.begin(), row.magic.end(), [head](const FormatRow::Magic& magic) {
               return head.size() >= magic.place + magic.bytes.size() &&
                      head.substr(magic.place, magic.bytes.size()) == magic.bytes;
           });
}
} // namespace

const FormatRow* audiocore::rowOf(AudioFormat format)
{
    const auto* const row = std::find_if(std::begin(rows), std::end(rows),
                                         [format](const FormatRow& one) { return one.format == format; });
    return row == std::end(rows) ? nullptr : row;
}

AudioFormat audiocore::formatByMagic(std::string_view head)
{
    const auto* const row = std::find_if(std::begin(rows), std::end(rows),
                                         [head](const FormatRow& one) { return begins(head, one); });
    return row == std::end(rows) ? AUDIO_FORMAT_UNKNOWN : row->format;
}

std::string audiocore::allDemuxers()
{
    std::string all;
    for (const FormatRow& row : rows)
        all += (all.empty() ? "" : ",") + std::string(row.demuxer);
    return all;
}
