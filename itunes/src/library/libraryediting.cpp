#include "library/libraryediting.h"

#include "base/failure.h"
#include "base/filebytes.h"
#include "base/hash.h"
#include "library/libraryreading.h"
#include "library/takenpieces.h"
#include "xml/bytesource.h"

#include <algorithm>
#include <string_view>

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

/// Copies a library block by block, with the splices in it.
class SplicedCopy
{
public:
    SplicedCopy(BlockWriter& writer, std::vector<Splice>& splices)
        : m_writer(writer), m_splices(splices), m_next(splices.begin())
    {
    }

    void add(std::string_view block)
    {
        while (!block.empty()) {
            const bool copies = m_next == m_splices.end() || m_at < m_next->old.begin;
            const std::string_view part = block.substr(0, copies ? untilNext() : replaced());
            if (copies)
                m_writer.add(part);
            else
                pass(part);
            m_at += part.size();
            block.remove_prefix(part.size());
        }
    }

private:
    std::size_t untilNext() const
    {
        return m_next == m_splices.end() ? std::string_view::npos : std::size_t(m_next->old.begin - m_at);
    }
    /// How many bytes of the library are left that the next splice takes the place of. Its text is written.
    std::size_t replaced()
    {
        if (!m_isWritten)
            m_writer.add(m_next->text);
        m_isWritten = true;
        return m_next->old.end > m_at ? std::size_t(m_next->old.end - m_at) : 0;
    }
    void pass(std::string_view part)
    {
        if (m_next->track != 0)
            keep(part);
        if (m_at + part.size() < m_next->old.end)
            return;
        ++m_next;
        m_isWritten = false;
    }
    void keep(std::string_view part)
    {
        if (m_kept > itunes::mostTakenBytes)
            return;
        m_kept += part.size();
        m_next->taken += part;
        if (m_kept > itunes::mostTakenBytes)
            for (Splice& splice : m_splices)
                splice.taken = std::string();
    }

    BlockWriter& m_writer;
    std::vector<Splice>& m_splices;
    std::vector<Splice>::iterator m_next;
    bool m_isWritten = false; ///< the text of the next one
    std::uint64_t m_at = 0;
    std::size_t m_kept = 0;
};

bool copySpliced(const base::FileBytes& from, base::FileBytes& to, std::vector<Splice>& splices,
                 std::string& error)
{
    ByteSource source(from);
    BlockWriter writer(to, source.encoding());
    SplicedCopy copy(writer, splices);
    std::vector<char> block(source.roomForAll(blockSize));
    for (std::size_t got = source.read(block.data(), block.size()); got > 0;
         got = source.read(block.data(), block.size()))
        copy.add({block.data(), got});
    const bool written = writer.finish();
    if (source.failed())
        error = itunes::notReadToItsEnd;
    else if (!written)
        error = "the new file cannot be written, the disk may be full";
    return written && !source.failed();
}
} // namespace

std::optional<itunes::ContentMark> itunes::ContentMark::of(const base::FileBytes& library)
{
    const std::int64_t size = library.size().value_or(0);
    ContentMark mark{size, base::hashOf({})};
    std::vector<char> block(blockSize);
    for (std::int64_t at = 0; at < size;) {
        const std::size_t got = library.readAt(at, block.data(), block.size());
        if (got == 0)
            return std::nullopt;
        mark.hash = base::hashOf({block.data(), got}, mark.hash);
        at += std::int64_t(got);
    }
    return mark;
}

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
    const auto deleted = entries.deleted();
    if (!deleted.empty()) {
        PlaylistSplices items(deleted);
        if (!walkFile(library, items, failure))
            return false;
        splices.insert(splices.end(), items.splices().begin(), items.splices().end());
    }
    if (ByteSource(library).isDeclaredOther())
        for (Splice& splice : splices)
            splice.text = inReferences(splice.text);
    // New fields behind the same place keep their order.
    std::stable_sort(splices.begin(), splices.end(),
                     [](const Splice& a, const Splice& b) { return a.old.begin < b.old.begin; });
    return true;
}

bool itunes::writeSpliced(const base::FileBytes& library, base::FileBytes& copy, LibrarySplices& splices,
                          std::string& error)
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
