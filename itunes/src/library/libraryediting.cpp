#include "library/libraryediting.h"

#include "base/failure.h"
#include "base/filebytes.h"
#include "library/libraryreading.h"
#include "xml/bytesource.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>

using itunes::ByteSource;
using itunes::Splice;

namespace {
constexpr std::size_t blockSize = 1024 * 1024;

/// Writes a file from its beginning, in large blocks.
class BlockWriter
{
public:
    BlockWriter(base::FileBytes& file, itunes::Encoding encoding) : m_file(file), m_encoding(encoding) {}

    void add(std::string_view text)
    {
        if (m_encoding == itunes::Encoding::Utf8)
            m_block += text;
        else
            m_block += itunes::encoded(std::string(text), m_encoding);
        if (m_block.size() >= blockSize)
            write();
    }
    /// True when everything is on the disk.
    bool finish()
    {
        write();
        return m_whole && m_file.sync();
    }

private:
    void write()
    {
        m_whole = m_whole && m_file.writeAt(m_offset, m_block.data(), m_block.size()) == m_block.size();
        m_offset += std::int64_t(m_block.size());
        m_block.clear();
    }

    base::FileBytes& m_file;
    itunes::Encoding m_encoding;
    std::string m_block;
    std::int64_t m_offset = 0;
    bool m_whole = true;
};

bool copySpliced(const base::FileBytes& from, base::FileBytes& to, const std::vector<Splice>& splices,
                 std::string& error)
{
    ByteSource source(from);
    BlockWriter writer(to, source.encoding());
    std::vector<char> block(source.roomForAll(blockSize));
    std::uint64_t begin = 0; // of the block
    std::uint64_t done = 0;
    auto splice = splices.begin();
    for (std::size_t got = source.read(block.data(), block.size()); got > 0;
         got = source.read(block.data(), block.size())) {
        const std::uint64_t end = begin + got;
        const auto copyTo = [&](std::uint64_t place) {
            if (place > done)
                writer.add({block.data() + (done - begin), std::size_t(place - done)});
            done = std::max(done, place);
        };
        for (; splice != splices.end() && splice->old.begin < end; ++splice) {
            copyTo(splice->old.begin);
            writer.add(source.isDeclaredOther() ? itunes::inReferences(splice->text) : splice->text);
            done = std::max(done, splice->old.end);
        }
        copyTo(end);
        begin = end;
    }
    const bool written = writer.finish();
    if (source.failed())
        error = itunes::notReadToItsEnd;
    else if (!written)
        error = "the new file cannot be written, the disk may be full";
    return written && !source.failed();
}
} // namespace

bool itunes::findSplices(const base::FileBytes& library, const TrackChanges& changes, LibrarySplices& found,
                         base::Failure& failure)
{
    std::vector<Splice>& splices = found.all;
    EntrySplices entries(changes);
    if (!walkFile(library, entries, failure))
        return false;
    splices = entries.splices();
    found.tracksLeft = entries.tracksLeft();
    found.editsWithoutTrack = entries.editsWithoutTrack();
    const std::unordered_set<std::uint64_t> deleted = entries.deleted();
    if (!deleted.empty()) {
        PlaylistSplices items(deleted);
        if (!walkFile(library, items, failure))
            return false;
        splices.insert(splices.end(), items.splices().begin(), items.splices().end());
    }
    // New fields behind the same place keep their order.
    std::stable_sort(splices.begin(), splices.end(),
                     [](const Splice& a, const Splice& b) { return a.old.begin < b.old.begin; });
    return true;
}

bool itunes::writeSpliced(const base::FileBytes& library, base::FileBytes& copy,
                          const LibrarySplices& splices, std::string& error)
{
    return copySpliced(library, copy, splices.all, error);
}

bool itunes::isComplete(const LibraryContents& copy, const LibrarySplices& splices, std::string& error)
{
    if (copy.tracks == splices.tracksLeft)
        return true;
    error = "the new file does not hold the tracks that it should";
    return false;
}
