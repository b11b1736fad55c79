// Arbitrary bytes as a music file that is edited; the last two of them choose the edits. What says that it is
// done reads as wanted, has kept all else that readers are shown, plays as before, and needs no further edit.

#include "audiocore/log.h"
#include "audiocore/tagitem.h"
#include "base/filebytes.h"
#include "media/checkedstream.h"
#include "promise.h"
#include "tags/parsedmedia.h"
#include "tags/tagediting.h"
#include "tags/tagfields.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>

using audiocore::CheckedStream;
using audiocore::ParsedMedia;
using audiocore::TagEdits;
using base::MemoryFile;

namespace {
constexpr std::size_t choiceSize = 2;
constexpr std::int64_t growth = 1 << 20; // beyond that the memory is a full disk
constexpr unsigned pictureBit = 1u << audiocore::textTypes;

/// One bit of `which` for each text and one for the picture; `how` shifts the values among them.
TagEdits editsOf(unsigned which, unsigned how)
{
    static const std::string texts[] = {
        "",         "A",    "Vinterljus \xC3\xA4",  "\xE5\xA4\x9C\xE3\x81\xAE", "1999", "7/12", "2018-03-04",
        "(17)Rock", " \t ", std::string(2000, 'x'), "a\"<&>\xF0\x9F\x8E\xB5"};
    static const std::string pictures[] = {"", std::string("\xFF\xD8\xFF\xE0 jpeg", 9),
                                           "\x89PNG\r\n\x1A\n" + std::string(3000, 'p')};
    TagEdits edits;
    for (unsigned type = 0; type < unsigned(audiocore::textTypes); ++type)
        if (which & (1u << type))
            edits.texts[type] = texts[(how + type) % std::size(texts)];
    const std::string& picture = pictures[how % std::size(pictures)];
    if (which & pictureBit)
        edits.picture = TagLib::ByteVector(picture.data(), unsigned(picture.size()));
    return edits;
}

const ParsedMedia::Item* itemOf(const ParsedMedia& media, int type)
{
    const auto item = std::find_if(media.items.begin(), media.items.end(),
                                   [type](const ParsedMedia::Item& one) { return one.type == type; });
    return item == media.items.end() ? nullptr : &*item;
}

bool same(const ParsedMedia::Item* a, const ParsedMedia::Item* b)
{
    return a == b || (a && b && a->text == b->text && a->picture == b->picture);
}

void expectKept(const ParsedMedia& before, const ParsedMedia& after, const TagEdits& edits)
{
    for (int type = 0; type < audiocore::textTypes; ++type)
        if (!edits.texts[std::size_t(type)])
            promise(same(itemOf(before, type), itemOf(after, type)), "a text that was not edited is kept");
    if (!edits.picture)
        promise(same(itemOf(before, TAG_PICTURE), itemOf(after, TAG_PICTURE)),
                "a picture that was not edited is kept");
    promise(before.format == after.format && before.properties.sampleRate == after.properties.sampleRate,
            "format and rate are kept");
    promise(std::abs(before.properties.milliseconds - after.properties.milliseconds) <= 100,
            "the length is kept");
}

/// False for what is no music.
bool read(MemoryFile& file, ParsedMedia& media)
{
    CheckedStream stream(file, "input", CheckedStream::Mode::Read);
    return audiocore::readMedia(stream, media).empty();
}

void edit(const std::string& bytes, const TagEdits& edits)
{
    MemoryFile original(bytes);
    ParsedMedia before;
    if (!read(original, before))
        return;
    const TagEdits wanted = audiocore::neededEdits(before, edits).edits;
    if (wanted.isEmpty())
        return;
    MemoryFile copy(bytes, std::int64_t(bytes.size()) + growth);
    std::string error;
    const bool done = audiocore::editCopy(copy, "input", wanted, before, error);
    promise(done == error.empty(), "what is not done has a reason");
    promise(original.bytes() == bytes, "the original stays as it is");
    if (!done)
        return;
    ParsedMedia after;
    promise(read(copy, after), "what was edited can be read");
    expectKept(before, after, wanted);
    promise(audiocore::neededEdits(after, edits).edits.isEmpty(), "the same edits change nothing more");
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool quiet = (SetAudioCoreLogSink([](const char*) {}), true);
    static_cast<void>(quiet);
    if (size < choiceSize)
        return 0;
    const std::string bytes(reinterpret_cast<const char*>(data), size - choiceSize);
    try {
        edit(bytes, editsOf(data[size - 2], data[size - 1]));
    } catch (const audiocore::EndlessReading&) {
        return 0; // told as a failure by whoever saves
    }
    return 0;
}
