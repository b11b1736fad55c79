#include "identify/fingerprint.h"

#include "tags/parsedmedia.h"

#include <chromaprint.h>

#include <memory>
#include <new>

using audiocore::Cancellation;
using audiocore::DecodedPart;
using audiocore::Fingerprint;
using audiocore::RawFingerprint;

namespace {
constexpr int fingerprintedSeconds = 120;

struct FreeContext
{
    void operator()(ChromaprintContext* context) const { chromaprint_free(context); }
};
struct FreeFingerprint
{
    void operator()(void* made) const { chromaprint_dealloc(made); }
};
using Context = std::unique_ptr<ChromaprintContext, FreeContext>;

/// Has the context made the fingerprint of a file's beginning; whether there is one is for it to say.
DecodedPart feed(ChromaprintContext* context, const std::string& path, const Cancellation& cancellation)
{
    const int sampleRate = context ? chromaprint_get_sample_rate(context) : 0;
    if (!context || !chromaprint_start(context, sampleRate, 1))
        throw std::bad_alloc(); // all that keeps it from starting
    return audiocore::decodeBeginning(path, fingerprintedSeconds, sampleRate, cancellation,
                                      [context](const std::int16_t* samples, std::size_t count) {
                                          chromaprint_feed(context, samples, int(count));
                                      });
}

/// An empty one has a text, too.
bool isMade(ChromaprintContext* context)
{
    int items = 0;
    return chromaprint_finish(context) && chromaprint_get_raw_fingerprint_size(context, &items) && items > 0;
}

std::string textOf(ChromaprintContext* context)
{
    char* text = nullptr;
    if (!isMade(context) || !chromaprint_get_fingerprint(context, &text))
        return std::string();
    const std::unique_ptr<char, FreeFingerprint> owned(text);
    return text;
}

std::vector<std::uint32_t> valuesOf(ChromaprintContext* context)
{
    std::uint32_t* values = nullptr;
    int count = 0;
    if (!isMade(context) || !chromaprint_get_raw_fingerprint(context, &values, &count))
        return {};
    const std::unique_ptr<std::uint32_t, FreeFingerprint> owned(values);
    return std::vector<std::uint32_t>(values, values + count);
}

/// The length by the stream's own frames where there is one: a container's is a guess in some formats.
std::int64_t lengthOf(const std::string& path, std::int64_t byContainer)
{
    const std::int64_t byStream = audiocore::parsedMedia(path)->properties.milliseconds;
    return byStream > 0 ? byStream : byContainer;
}
} // namespace

Fingerprint audiocore::fingerprintOf(const std::string& path, const Cancellation& cancellation)
{
    Fingerprint fingerprint;
    const Context context(chromaprint_new(CHROMAPRINT_ALGORITHM_DEFAULT));
    const DecodedPart part = feed(context.get(), path, cancellation);
    fingerprint.result = part.result;
    if (part.result != Decoding::Done)
        return fingerprint;
    fingerprint.text = textOf(context.get());
    fingerprint.milliseconds = lengthOf(path, part.milliseconds);
    return fingerprint;
}

RawFingerprint audiocore::rawFingerprintOf(const std::string& path, const Cancellation& cancellation)
{
    const Context context(chromaprint_new(CHROMAPRINT_ALGORITHM_DEFAULT));
    RawFingerprint fingerprint;
    const DecodedPart part = feed(context.get(), path, cancellation);
    fingerprint.result = part.result == Decoding::Done && part.isCutShort ? Decoding::NoAudio : part.result;
    if (fingerprint.result == Decoding::Done)
        fingerprint.values = valuesOf(context.get());
    return fingerprint;
}
