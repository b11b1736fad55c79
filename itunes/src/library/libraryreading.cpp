#include "library/libraryreading.h"

#include "base/failure.h"
#include "base/filebytes.h"
#include "base/platform.h"
#include "base/text.h"
#include "library/trackreader.h"

#include <algorithm>
#include <functional>
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
    std::vector<char> block(64 * 1024);
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

/// False when it cannot be read whole, of which `broken` hears then.
bool readInto(itunes::TrackStore& store, const base::FileBytes& file, const itunes::TrackChanges& changes,
              const std::function<void(const base::FileBytes&, const itunes::XmlScanner&)>& broken)
{
    itunes::ByteSource source(file);
    itunes::XmlScanner scanner(source);
    itunes::TrackReader reader(store, changes);
    if (!walkLibrary(scanner, reader)) {
        broken(file, scanner);
        return false;
    }
    store.finish();
    return true;
}
} // namespace

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

std::string itunes::describeError(const base::FileBytes& file, const XmlScanner& scanner)
{
    const Position position = positionOf(file, scanner.errorOffset());
    return "line " + std::to_string(position.line) + ", column " + std::to_string(position.column) + ": " +
           scanner.error();
}

std::unique_ptr<itunes::TrackStore> itunes::readLibrary(const std::string& path, const TrackChanges& changes,
                                                        ReadingFailure& failure)
{
    const File file = openLibrary(path, failure.failure);
    if (!file)
        return nullptr;
    auto store = std::make_unique<TrackStore>();
    const auto broken = [&](const base::FileBytes& bytes, const XmlScanner& scanner) {
        failure.failure = {describeError(bytes, scanner), base::Failure::Kind::NotSafe};
        failure.line = positionOf(bytes, scanner.errorOffset()).line;
    };
    return readInto(*store, base::SystemFile(file.get()), changes, broken) ? std::move(store) : nullptr;
}

std::unique_ptr<itunes::TrackStore> itunes::readLibrary(const base::FileBytes& file,
                                                        const TrackChanges& changes, std::string& error)
{
    auto store = std::make_unique<TrackStore>();
    const auto broken = [&error](const base::FileBytes& bytes, const XmlScanner& scanner) {
        error = describeError(bytes, scanner);
    };
    return readInto(*store, file, changes, broken) ? std::move(store) : nullptr;
}
