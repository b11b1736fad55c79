// Arbitrary bytes as a music file: nothing that nobody could show, and the same when it is read again.

#include "audiocore/log.h"
#include "base/filebytes.h"
#include "media/soundlimits.h"
#include "promise.h"
#include "tags/parsedmedia.h"
#include "tags/taglimits.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

using audiocore::ParsedMedia;

namespace {
/// One input in so many is read twice. A second reading takes as long as the first: where millions come, some
/// are enough to see what differs.
#ifdef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION
constexpr std::size_t readTwice = 16;
#else
constexpr std::size_t readTwice = 1;
#endif

void expectShowable(const ParsedMedia& media)
{
    const bool music = media.format != AUDIO_FORMAT_UNKNOWN;
    promise(music || media.items.empty(), "what is no music has no items");
    promise(audiocore::isSampleRate(media.properties.sampleRate) == music, "music has a rate");
    promise(media.properties.milliseconds >= 0 && media.properties.bitsPerSecond >= 0,
            "lengths and rates are no less than zero");
    int former = -1;
    for (const ParsedMedia::Item& item : media.items) {
        promise(item.type > former, "items are in order, one of each type");
        former = item.type;
        promise(item.text.empty() != item.picture.isEmpty(), "an item is a text or a picture");
        promise(item.text.find(U'\0') == std::u32string::npos, "texts hold no zeros");
        promise(long(item.picture.size()) <= audiocore::mostTagBytes, "pictures are bounded");
    }
}

void expectSame(const ParsedMedia& a, const ParsedMedia& b)
{
    promise(a.format == b.format && a.audioBegin == b.audioBegin && a.items.size() == b.items.size() &&
                a.properties.milliseconds == b.properties.milliseconds &&
                a.properties.sampleRate == b.properties.sampleRate &&
                a.properties.bitsPerSecond == b.properties.bitsPerSecond,
            "properties are the same twice");
    for (std::size_t i = 0; i < a.items.size(); ++i)
        promise(a.items[i].type == b.items[i].type && a.items[i].text == b.items[i].text &&
                    a.items[i].picture == b.items[i].picture,
                "items are the same twice");
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool quiet = (SetAudioCoreLogSink([](const char*) {}), true);
    static_cast<void>(quiet);
    base::MemoryFile file(std::string(reinterpret_cast<const char*>(data), size));
    const std::shared_ptr<const ParsedMedia> media = audiocore::parsedMedia(file, "input");
    expectShowable(*media);
    if (size % readTwice == 0)
        expectSame(*media, *audiocore::parsedMedia(file, "input"));
    return 0;
}
