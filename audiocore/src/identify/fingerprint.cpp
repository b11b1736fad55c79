#include "identify/fingerprint.h"

#include "tags/parsedmedia.h"

#include <chromaprint.h>

#include <memory>
#include <new>

using audiocore::Fingerprint;

namespace {
constexpr int fingerprintedSeconds = 120;

struct FreeContext
{
    void operator()(ChromaprintContext* context) const { chromaprint_free(context); }
};
struct FreeFingerprint
{
    void operator()(char* text) const { chromaprint_dealloc(text); }
};
using Context = std::unique_ptr<ChromaprintContext, FreeContext>;

std::string textOf(ChromaprintContext* context)
{
    char* text = nullptr;
    int items = 0;
    // An empty fingerprint has a text, too.
    if (!chromaprint_finish(context) || !chromaprint_get_raw_fingerprint_size(context, &items) ||
        items == 0 || !chromaprint_get_fingerprint(context, &text))
        return std::string();
    const std::unique_ptr<char, FreeFingerprint> owned(text);
    return text;
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
    const int sampleRate = context ? chromaprint_get_sample_rate(context.get()) : 0;
    if (!context || !chromaprint_start(context.get(), sampleRate, 1))
        throw std::bad_alloc(); // all that keeps it from starting
    const DecodedPart part = decodeBeginning(path, fingerprintedSeconds, sampleRate, cancellation,
                                             [&context](const std::int16_t* samples, std::size_t count) {
                                                 chromaprint_feed(context.get(), samples, int(count));
                                             });
    fingerprint.result = part.result;
    if (part.result != Decoding::Done)
        return fingerprint;
    fingerprint.text = textOf(context.get());
    fingerprint.milliseconds = lengthOf(path, part.milliseconds);
    return fingerprint;
}
