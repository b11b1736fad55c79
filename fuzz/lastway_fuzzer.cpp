// Arbitrary bytes as what libavformat alone reads; the last byte chooses its demuxer. What it tells is
// bounded, and the same twice.

#include "audiocore/log.h"
#include "base/filebytes.h"
#include "media/checkedstream.h"
#include "media/formats.h"
#include "promise.h"
#include "tags/lastway.h"
#include "tags/tagfields.h"
#include "tags/taglimits.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>

using audiocore::CheckedStream;
using audiocore::FormatRow;
using audiocore::MediaFile;
using audiocore::MpegStream;
using audiocore::TagContent;

namespace {
const char* const demuxers[] = {"wav", "w64", "mov", "ogg", "asf", "ape", "flac", "loas"};

struct Told
{
    MpegStream sound;
    TagContent tags;
};

Told read(base::MemoryFile& file, const FormatRow& row)
{
    CheckedStream stream(file, "input", CheckedStream::Mode::Read);
    MediaFile media;
    media.file = audiocore::openLastWay(stream, row);
    return media.file ? Told{media.file->sound(), audiocore::readTags(media)} : Told();
}

void expectBounded(const Told& told)
{
    promise(told.sound.milliseconds >= 0 && told.sound.bitsPerSecond >= 0,
            "lengths and rates are no less than zero");
    for (const std::string& text : told.tags.texts)
        promise(text.size() <= 4 * audiocore::longestText, "texts are bounded"); // older ones grow as UTF-8
    promise(long(told.tags.picture.size()) <= audiocore::mostTagBytes, "pictures are bounded");
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool quiet = (SetAudioCoreLogSink([](const char*) {}), true);
    static_cast<void>(quiet);
    if (size < 1)
        return 0;
    base::MemoryFile file(std::string(reinterpret_cast<const char*>(data), size - 1));
    const FormatRow row{
        AUDIO_FORMAT_WAV, {}, nullptr, demuxers[data[size - 1] % std::size(demuxers)], nullptr};
    const Told first = read(file, row);
    expectBounded(first);
    const Told second = read(file, row);
    promise(first.sound.milliseconds == second.sound.milliseconds &&
                first.sound.sampleRate == second.sound.sampleRate && first.tags.texts == second.tags.texts &&
                first.tags.picture == second.tags.picture,
            "what is told is the same twice");
    return 0;
}
