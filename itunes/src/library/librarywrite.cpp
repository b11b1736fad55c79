#include "library/librarywrite.h"

#include "base/newfile.h"
#include "library/libraryreading.h"
#include "library/librarysplices.h"

#include <algorithm>

using base::NewFile;
using itunes::ByteSource;
using itunes::Splice;

namespace {
constexpr std::size_t blockSize = 1024 * 1024;

enum class Outcome { Done, Failed, ChangedMeanwhile };

/// Writes a file from its beginning, in large blocks.
class BlockWriter
{
public:
    BlockWriter(std::FILE* file, itunes::Encoding encoding) : m_file(file), m_encoding(encoding) {}

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
        return m_whole && base::syncToDevice(m_file);
    }

private:
    void write()
    {
        m_whole =
            m_whole && base::writeAt(m_file, m_offset, m_block.data(), m_block.size()) == m_block.size();
        m_offset += std::int64_t(m_block.size());
        m_block.clear();
    }

    std::FILE* m_file;
    itunes::Encoding m_encoding;
    std::string m_block;
    std::int64_t m_offset = 0;
    bool m_whole = true;
};

/// What has to change, in the file's order.
struct Splices
{
    std::vector<Splice> all;
    std::uint64_t tracksLeft = 0;
    std::size_t editsWithoutTrack = 0;
};

bool findSplices(std::FILE* file, const itunes::TrackChanges& changes, Splices& found, std::string& error)
{
    std::vector<Splice>& splices = found.all;
    itunes::EntrySplices entries(changes);
    if (!itunes::walkFile(file, entries, error))
        return false;
    splices = entries.splices();
    found.tracksLeft = entries.tracksLeft();
    found.editsWithoutTrack = entries.editsWithoutTrack();
    const std::unordered_set<std::uint64_t> deleted = entries.deleted();
    if (!deleted.empty()) {
        itunes::PlaylistSplices items(deleted);
        if (!itunes::walkFile(file, items, error))
            return false;
        splices.insert(splices.end(), items.splices().begin(), items.splices().end());
    }
    // New fields behind the same place keep their order.
    std::stable_sort(splices.begin(), splices.end(),
                     [](const Splice& a, const Splice& b) { return a.old.begin < b.old.begin; });
    return true;
}

bool copySpliced(std::FILE* from, std::FILE* to, const std::vector<Splice>& splices)
{
    ByteSource source(from);
    BlockWriter writer(to, source.encoding());
    std::vector<char> block(blockSize);
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
    return writer.finish();
}

/// Whether the new file is a sound library of so many tracks: the old one is not given up for less.
bool isSound(std::FILE* file, std::uint64_t tracks, itunes::LibraryContents& contents, std::string& error)
{
    if (!itunes::readContents(file, contents, error))
        return false;
    if (contents.tracks == tracks)
        return true;
    error = "the new file does not hold the tracks that it should";
    return false;
}

bool writeSpliced(std::FILE* library, std::FILE* file, const Splices& splices,
                  itunes::LibraryContents& contents, std::string& error)
{
    if (!copySpliced(library, file, splices.all)) {
        error = "the new file cannot be written, the disk may be full";
        return false;
    }
    return isSound(file, splices.tracksLeft, contents, error);
}

Outcome tryOnce(const std::string& path, const itunes::TrackChanges& changes, itunes::Written& result,
                std::string& error)
{
    result = itunes::Written();
    itunes::File library = itunes::openLibrary(path, error);
    base::FileState before;
    if (!library || !base::stateOf(library.get(), before))
        return Outcome::Failed;
    Splices splices;
    if (!findSplices(library.get(), changes, splices, error))
        return Outcome::Failed;
    result.editsWithoutTrack = splices.editsWithoutTrack;
    if (splices.all.empty())
        return Outcome::Done;

    const auto made = NewFile::beside(path, NewFile::Content::Empty, error);
    if (!made)
        return Outcome::Failed;
    if (made->original() != before)
        return Outcome::ChangedMeanwhile;
    if (!writeSpliced(library.get(), made->file(), splices, result.contents, error))
        return Outcome::Failed;
    library.reset(); // what is open cannot be replaced everywhere
    const NewFile::Taking taking = made->replaceOriginal(error);
    return taking == NewFile::Taking::Done               ? Outcome::Done
           : taking == NewFile::Taking::ChangedMeanwhile ? Outcome::ChangedMeanwhile
                                                         : Outcome::Failed;
}

/// The state of a new file that has taken the library's name since, which may count as a change.
void noteNewName(const std::string& path, base::FileState& state)
{
    base::FileState now;
    if (base::stateOf(path, now) && now.device == state.device && now.inode == state.inode &&
        now.size == state.size && now.modified == state.modified)
        state = now;
}
} // namespace

bool itunes::walkFile(std::FILE* file, LibraryVisitor& visitor, std::string& error)
{
    ByteSource source(file);
    XmlScanner scanner(source);
    if (walkLibrary(scanner, visitor))
        return true;
    error = describeError(file, scanner);
    return false;
}

bool itunes::writeChanges(const std::string& path, const TrackChanges& changes, Written& written,
                          std::string& error)
{
    constexpr int attempts = 5;
    base::removeLeftovers(path);
    for (int i = 0; i < attempts; ++i) {
        const Outcome outcome = tryOnce(path, changes, written, error);
        if (outcome == Outcome::Done)
            noteNewName(path, written.contents.state);
        if (outcome != Outcome::ChangedMeanwhile)
            return outcome == Outcome::Done;
    }
    error = "another program keeps changing the file";
    return false;
}
