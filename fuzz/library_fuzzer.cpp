// Arbitrary bytes as a music library: read, and if that succeeds changed, written and read again. What was
// XML for another parser must be so afterwards.
#include "audiocore/log.h"
#include "library/libraryreading.h"
#include "library/librarywrite.h"
#include "library/localtext.h"

#include <expat.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>

namespace {
/// One file in a folder of this process. Writing a library flushes to the disk: a TMPDIR in memory makes the
/// fuzzer many times faster.
std::string inputPath()
{
    std::string folder = (std::filesystem::temp_directory_path() / "melodrift-fuzz-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr)
        std::abort();
    return folder + "/input";
}

void write(const std::string& path, const std::uint8_t* data, std::size_t size)
{
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr || std::fwrite(data, 1, size, file) != size || std::fclose(file) != 0)
        std::abort();
}

std::unique_ptr<itunes::TrackStore> read(const std::string& path, const itunes::TrackChanges& changes)
{
    std::string error;
    return itunes::readLibrary(path, changes, error);
}

bool same(const char* a, const char* b)
{
    return a == b || (a && b && std::strcmp(a, b) == 0);
}

/// Whether another parser takes the document. One with a document type may lean on what only it resolves.
bool isXml(const std::string& document)
{
    XML_Parser const parser = XML_ParserCreate(nullptr);
    const bool sound = XML_Parse(parser, document.data(), int(document.size()), 1) == XML_STATUS_OK;
    XML_ParserFree(parser);
    return sound && document.find("<!DOCTYPE") == std::string::npos;
}

std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// An edit as the calls take it: the name always holds what XML forbids, and then bytes of the input.
itunes::TrackEdit editOf(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t longest = 40;
    const std::string bytes(data, data + std::min(size, longest));
    const std::string name = "a<&>\r\n\xEF\xBF\xBF\x01" + bytes;
    return {itunes::cleanText(name.c_str()), "", "\xC3\xA9", "Pop", 1999};
}

/// What is written must read as it was promised.
void expectEqual(itunes::TrackStore& promised, itunes::TrackStore& written)
{
    if (promised.count() != written.count())
        std::abort();
    for (int i = 0; i < promised.count(); ++i) {
        const iTunesTrackRecord& a = promised.records()[i];
        const iTunesTrackRecord& b = written.records()[i];
        if (!same(a.name, b.name) || !same(a.artist, b.artist) || !same(a.album, b.album) ||
            !same(a.genre, b.genre) || !same(a.location, b.location) || a.year != b.year)
            std::abort();
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string path = inputPath();
    static const bool quiet = (SetAudioCoreLogSink([](const char*) {}), true);
    static_cast<void>(quiet);
    write(path, data, size);

    const std::unique_ptr<itunes::TrackStore> store = read(path, {});
    if (!store)
        return 0;
    // Every other track is edited, the rest deleted.
    const itunes::TrackEdit edit = editOf(data, size);
    itunes::TrackChanges changes;
    for (int i = 0; i < store->count(); ++i)
        if (const char* id = store->records()[i].persistentId)
            changes[std::strtoull(id, nullptr, 16)] = {i % 2 == 1, edit};
    const std::unique_ptr<itunes::TrackStore> promised = read(path, changes);
    std::string error;
    itunes::Written result;
    if (!promised || !itunes::writeChanges(path, changes, result, error))
        std::abort();
    const std::unique_ptr<itunes::TrackStore> written = read(path, {});
    if (!written)
        std::abort();
    expectEqual(*promised, *written);
    if (isXml({data, data + size}) && !isXml(contentOf(path)))
        std::abort();
    return 0;
}
