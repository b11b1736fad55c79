// Arbitrary bytes as a music file: read as the application does, then an edit of all items, then read again.

#include "audiocore/iaudiodecoder.h"
#include "audiocore/iaudiotag.h"
#include "audiocore/log.h"
#include "inputfile.h"

#include <cstdint>
#include <string>

namespace {

void readAll(IAudioTag* tag)
{
    volatile unsigned sum = 0;
    const std::int32_t count = tag->GetItemCount();
    for (std::int32_t i = 0; i < count; ++i) {
        const TagItem item = tag->GetItem(i);
        for (std::int32_t byte = 0; byte < item.size; ++byte)
            sum = sum + static_cast<const unsigned char*>(item.data)[byte];
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const InputFile file;
    static const bool quiet = (SetAudioCoreLogSink([](const char*) {}), true);
    static_cast<void>(quiet);
    file.write(data, size);
    const std::u32string path = file.path();

    IAudioTag* tag = CreateTag();
    tag->Open(path.c_str());
    readAll(tag);
    IAudioDecoder* decoder = CreateDecoder();
    decoder->Open(path.c_str());
    decoder->GetDuration();
    decoder->Close();

    std::u32string text = U"1999";
    for (const std::int32_t type : {1, 0, 2, 3, 4, 5}) {
        tag->RemoveItem(type);
        tag->SetItem({-1, type, 0, 16, text.data()});
    }
    char picture[] = "\xFF\xD8\xFF\xE0 a picture";
    tag->SetItem({-1, TAG_PICTURE, 1, sizeof picture, picture});
    if (tag->Save() == 0)
        readAll(tag);
    tag->Close();
    ::operator delete(decoder);
    ::operator delete(tag);
    return 0;
}
