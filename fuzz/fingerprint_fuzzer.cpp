// Arbitrary bytes as a music file to be fingerprinted.

#include "audiocore/log.h"
#include "identify/fingerprint.h"
#include "inputfile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const InputFile file;
    static const bool quiet = (SetAudioCoreLogSink([](const char*) {}), true);
    static_cast<void>(quiet);
    file.write(data, size);
    const std::u32string path = file.path();
    const audiocore::Cancellation never;
    audiocore::fingerprintOf({path.begin(), path.end()}, never);
    return 0;
}
