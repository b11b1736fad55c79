// Arbitrary bytes as a music library: read, and if that succeeds changed, written and read again. What was
// XML for another parser must be so afterwards.
#include "base/failure.h"
#include "base/filebytes.h"
#include "library/libraryediting.h"
#include "library/libraryreading.h"
#include "library/localtext.h"
#include "library/takenpieces.h"
#include "promise.h"

#include <expat.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

using base::MemoryFile;

namespace {
std::unique_ptr<itunes::TrackStore> read(const MemoryFile& library, const itunes::TrackChanges& changes)
{
    itunes::ReadingFailure failure;
    auto store = itunes::readLibrary(library, changes, failure);
    promise(!store == !failure.failure.text.empty(), "what cannot be read has a reason");
    return store;
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
    promise(promised.count() == written.count(), "as many tracks are written as were promised");
    for (int i = 0; i < promised.count(); ++i) {
        const iTunesTrackRecord& a = promised.records()[i];
        const iTunesTrackRecord& b = written.records()[i];
        promise(same(a.name, b.name) && same(a.artist, b.artist) && same(a.album, b.album) &&
                    same(a.genre, b.genre) && same(a.location, b.location) && a.year == b.year,
                "tracks are written as they were promised");
    }
}

/// Every other track is edited, the rest deleted.
itunes::TrackChanges changesOf(itunes::TrackStore& store, const itunes::TrackEdit& edit)
{
    itunes::TrackChanges changes;
    for (int i = 0; i < store.count(); ++i)
        if (const char* id = store.records()[i].persistentId)
            changes[std::strtoull(id, nullptr, 16)] = {i % 2 == 1, edit};
    return changes;
}

/// What goes comes back, byte for byte.
void expectTakenBack(const MemoryFile& library, const itunes::TrackChanges& changes)
{
    std::string error;
    base::Failure failure;
    itunes::LibrarySplices splices;
    itunes::TrackChanges deletions;
    itunes::TrackSet tracks;
    for (const auto& [id, change] : changes)
        deletions[id].deleted = true;
    promise(itunes::findSplices(library, deletions, splices, failure), "what was read can be deleted");
    for (const itunes::Splice& splice : splices.all)
        tracks.insert(splice.track);
    MemoryFile copy{std::string()};
    itunes::LibraryContents contents;
    promise(itunes::writeSpliced(library, copy, splices, error), "what was read can be written");
    itunes::TakenPieces taken;
    taken.begin(contents.state);
    taken.follow(contents.state, splices.all, contents);
    itunes::LibrarySplices back;
    back.all = taken.splicesFor(tracks);
    MemoryFile again{std::string()};
    promise(itunes::writeSpliced(copy, again, back, error) && again.bytes() == library.bytes(),
            "what was deleted comes back byte for byte");
}

/// The library with the changes as it is written; as it is where there is nothing to write.
MemoryFile changed(const MemoryFile& library, const itunes::TrackChanges& changes)
{
    std::string error;
    base::Failure failure;
    itunes::LibrarySplices splices;
    promise(itunes::findSplices(library, changes, splices, failure), "what was read can be changed");
    if (splices.all.empty())
        return library;
    MemoryFile copy{std::string()};
    itunes::LibraryContents contents;
    promise(itunes::writeSpliced(library, copy, splices, error) &&
                itunes::readContents(copy, contents, failure) && itunes::isComplete(contents, splices, error),
            "what was changed is a sound library");
    return copy;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const MemoryFile library(std::string(reinterpret_cast<const char*>(data), size));
    const std::unique_ptr<itunes::TrackStore> store = read(library, {});
    if (!store)
        return 0;
    const itunes::TrackChanges changes = changesOf(*store, editOf(data, size));
    const std::unique_ptr<itunes::TrackStore> promised = read(library, changes);
    promise(promised != nullptr, "what was read is read again");
    expectTakenBack(library, changes);
    const MemoryFile copy = changed(library, changes);
    const std::unique_ptr<itunes::TrackStore> written = read(copy, {});
    promise(written != nullptr, "what was written can be read");
    expectEqual(*promised, *written);
    promise(changed(copy, changes).bytes() == copy.bytes(), "the same changes change nothing more");
    promise(!isXml(library.bytes()) || isXml(copy.bytes()), "what was XML is XML");
    return 0;
}
