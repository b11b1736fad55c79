#include "audiocore/iaudiodecoder.h"

#include "base/registry.h"
#include "base/text.h"
#include "tags/parsedmedia.h"

#include <algorithm>
#include <limits>

namespace {
struct DecoderState
{
    AudioFormat format = AUDIO_FORMAT_UNKNOWN;
    audiocore::MpegStream properties;
};

std::int32_t bounded(std::int64_t number)
{
    return std::int32_t(std::clamp<std::int64_t>(number, 0, std::numeric_limits<std::int32_t>::max()));
}

class Decoder final : public IAudioDecoder
{
public:
    std::int32_t Open(const char32_t* path) override
    {
        const auto own = state();
        *own = DecoderState();
        const std::optional<std::string> name = base::nameFromUtf32(path ? path : U"");
        if (!name || name->empty())
            return 1;
        const auto media = audiocore::parsedMedia(*name);
        own->format = media->format;
        own->properties = media->properties;
        return own->format == AUDIO_FORMAT_UNKNOWN ? 1 : 0;
    }
    void Reserved1() override {}
    std::int32_t Close() override
    {
        *state() = DecoderState();
        return 0;
    }
    std::int32_t GetDuration() override { return bounded(state()->properties.milliseconds); }
    std::int32_t GetFormat() override { return state()->format; }
    std::int32_t GetSampleRate() override { return state()->properties.sampleRate; }
    void Reserved6() override {}
    void Reserved7() override {}
    std::int32_t GetBitrate() override { return bounded(state()->properties.bitsPerSecond); }

private:
    std::shared_ptr<DecoderState> state() const { return base::Registry<DecoderState>::instance().of(this); }
};
} // namespace

IAudioDecoder* CreateDecoder()
{
    return base::Registry<DecoderState>::instance().make<Decoder>();
}
