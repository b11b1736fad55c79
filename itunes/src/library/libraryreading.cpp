#include "library/libraryreading.h"

#include "base/filebytes.h"
#include "base/platform.h"
#include "base/text.h"
#include "library/trackreader.h"

#include <algorithm>
#include <utility>
#include <vector>

using itunes::File;

namespace {
constexpr std::int64_t largestLibrary = std::int64_t(2) << 30;

struct Position
{
    std::uint64_t line = 1;
    std::uint64_t column = 1;
};

/// Counts anew from the beginning: only a broken file pays for it.
Position positionOf(const base::FileBytes& file, std::uint64_t offset)
{
    itunes::ByteSource source(file);
    Position position;
    std::vector<char> block(source.roomForAll(64 * 1024));
    for (std::size_t got = 1; got > 0 && offset > 0; offset -= got) {
        got = source.read(block.data(), block.size());
        got = std::size_t(std::min<std::uint64_t>(got, offset));
        for (std::size_t i = 0; i < got; ++i) {
            position.column += base::continuesUtf8(block[i]) ? 0 : 1;
            if (block[i] == '\n') {
                ++position.line;
                position.column = 1;
            }
        }
    }
    return position;
}

/// What the scanner found broken, with the line and the column of the file.
itunes::ReadingFailure brokenAt(const base::FileBytes& file, const itunes::XmlScanner& scanner)
{
    const Position position = positionOf(file, scanner.errorOffset());
    const std::string text = "line " + std::to_string(position.line) + ", column " +
                             std::to_string(position.column) + ": " + scanner.error();
    return {{text, base::Failure::Kind::NotSafe}, position.line};
}
} // namespace

const char* const itunes::notReadToItsEnd = "it cannot be read to its end";

File itunes::openLibrary(const std::string& path, base::Failure& failure)
{
    base::FileState state;
    File file(base::openFile(path, false));
    if (!file) {
        failure = base::systemFailure();
        return nullptr;
    }
    if (!base::stateOf(file.get(), state) || !state.regular) {
        failure = {"it is no file"};
        return nullptr;
    }
    if (state.size > largestLibrary) {
        failure = {"it is larger than 2 gigabytes"};
        return nullptr;
    }
    return file;
}

bool itunes::walkFile(const base::FileBytes& file, LibraryVisitor& visitor, ReadingFailure& failure)
{
    ByteSource source(file);
    XmlScanner scanner(source);
    const bool sound = walkLibrary(scanner, visitor);
    if (source.failed())
        failure.failure = {notReadToItsEnd};
    else if (!sound)
        failure = brokenAt(file, scanner);
    return sound && !source.failed();
}

bool itunes::walkFile(const base::FileBytes& file, LibraryVisitor& visitor, base::Failure& failure)
{
    ReadingFailure reading;
    const bool whole = walkFile(file, visitor, reading);
    if (!whole)
        failure = reading.failure;
    return whole;
}

std::unique_ptr<itunes::TrackStore> itunes::readLibrary(const std::string& path, const TrackChanges& changes,
                                                        ReadingFailure& failure)
{
    const File file = openLibrary(path, failure.failure);
    return file ? readLibrary(base::SystemFile(file.get()), changes, failure) : nullptr;
}

std::unique_ptr<itunes::TrackStore> itunes::readLibrary(const base::FileBytes& file,
                                                        const TrackChanges& changes, ReadingFailure& failure)
{
    auto store = std::make_unique<TrackStore>();
    TrackReader reader(*store, changes);
    if (!walkFile(file, reader, failure))
        return nullptr;
    store->finish();
    return store;
}
