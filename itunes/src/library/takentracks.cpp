#include "library/takentracks.h"

#include "base/filebytes.h"
#include "library/libraryreading.h"
#include "xml/bytesource.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <unordered_map>
#include <utility>

using itunes::ContentMark;
using itunes::Splice;
using itunes::TakenTracks;

namespace {
constexpr std::string_view firstLine = "melodrift tracks 1\n";
constexpr std::size_t sourceBlock = 1024 * 1024;

/// Whether each of the tracks loses one entry.
bool areThereOnce(const std::vector<Splice>& splices, const itunes::TrackSet& tracks, base::Failure& failure)
{
    itunes::TrackSet found;
    for (const Splice& splice : splices)
        if (splice.isEntry && !found.insert(splice.track).second) {
            failure = {"several tracks have the identifier of one that was to go"};
            return false;
        }
    if (found.size() != tracks.size())
        failure = {"a track that was to go is no longer in it", base::Failure::Kind::ChangedMeanwhile};
    return found.size() == tracks.size();
}

/// Numbers in a line, one behind the other.
class NumberReader
{
public:
    explicit NumberReader(std::string_view line) : m_rest(line) {}

    template <typename Number>
    bool take(Number& number)
    {
        const auto [end, error] = std::from_chars(m_rest.data(), m_rest.data() + m_rest.size(), number);
        const auto size = std::size_t(end - m_rest.data());
        if (error != std::errc() || (size < m_rest.size() && m_rest[size] != ' '))
            return false;
        m_rest.remove_prefix(std::min(size + 1, m_rest.size()));
        return true;
    }

private:
    std::string_view m_rest;
};

/// The next line without its line feed, which is taken from the bytes; nothing where there is none.
std::optional<std::string_view> takeLine(std::string_view& bytes)
{
    const std::size_t end = bytes.find('\n');
    if (end == std::string_view::npos)
        return std::nullopt;
    const std::string_view line = bytes.substr(0, end);
    bytes.remove_prefix(end + 1);
    return line;
}
} // namespace

std::optional<TakenTracks> TakenTracks::find(const base::FileBytes& library, const TrackSet& tracks,
                                             base::Failure& failure)
{
    TrackChanges changes;
    for (const std::uint64_t track : tracks)
        changes[track].deleted = true;
    LibrarySplices splices;
    if (!findSplices(library, changes, splices, failure) || !areThereOnce(splices.all, tracks, failure))
        return std::nullopt;
    TakenTracks taken;
    const std::optional<ContentMark> whole = ContentMark::of(library);
    if (!whole || !taken.takeTexts(library, splices.all)) {
        failure = {notReadToItsEnd};
        return std::nullopt;
    }
    taken.m_whole = *whole;
    return taken;
}

bool TakenTracks::takeTexts(const base::FileBytes& library, const std::vector<Splice>& splices)
{
    for (const Splice& splice : splices)
        m_pieces.push_back({splice.old.begin, splice.track, splice.isEntry, {}});
    ByteSource source(library);
    std::vector<char> block(source.roomForAll(sourceBlock));
    std::uint64_t at = 0;
    std::size_t next = 0;
    for (std::size_t got = 1; got > 0 && next < splices.size(); at += got) {
        got = source.read(block.data(), block.size());
        while (next < splices.size() && splices[next].old.begin < at + got) {
            const Span& old = splices[next].old;
            const std::uint64_t begin = std::max(old.begin, at);
            const std::uint64_t end = std::min(old.end, at + got);
            m_pieces[next].text.append(block.data() + (begin - at), std::size_t(end - begin));
            if (old.end > at + got)
                break; // the rest of it is in the next block
            ++next;
        }
    }
    return next == splices.size() && !source.failed();
}

std::string TakenTracks::bytes() const
{
    std::string bytes(firstLine);
    bytes += std::to_string(m_whole.size) + ' ' + std::to_string(m_whole.hash) + '\n';
    for (const Piece& piece : m_pieces) {
        bytes += std::to_string(piece.place) + ' ' + std::to_string(piece.track) + ' ' +
                 std::to_string(int(piece.isEntry)) + ' ' + std::to_string(piece.text.size()) + '\n';
        bytes += piece.text;
    }
    return bytes;
}

std::optional<TakenTracks> TakenTracks::fromBytes(const std::string& bytes)
{
    std::string_view rest = bytes;
    if (rest.substr(0, firstLine.size()) != firstLine)
        return std::nullopt;
    rest.remove_prefix(firstLine.size());
    TakenTracks taken;
    NumberReader whole(takeLine(rest).value_or(std::string_view()));
    if (!whole.take(taken.m_whole.size) || !whole.take(taken.m_whole.hash))
        return std::nullopt;
    while (!rest.empty()) {
        NumberReader line(takeLine(rest).value_or(std::string_view()));
        Piece piece{};
        int isEntry = 0;
        std::size_t size = 0;
        if (!line.take(piece.place) || !line.take(piece.track) || !line.take(isEntry) || !line.take(size) ||
            size > rest.size() || (!taken.m_pieces.empty() && piece.place < taken.m_pieces.back().place))
            return std::nullopt;
        piece.isEntry = isEntry != 0;
        piece.text = rest.substr(0, size);
        rest.remove_prefix(size);
        taken.m_pieces.push_back(std::move(piece));
    }
    if (taken.m_pieces.empty())
        return std::nullopt; // cut off: each track that was taken out has one
    return taken;
}

std::vector<Splice> TakenTracks::splicesFor(const LibraryContents& now) const
{
    std::vector<Splice> splices;
    std::uint64_t missing = 0; // bytes, in front of the piece at hand
    for (const Piece& piece : m_pieces) {
        if (now.count(piece.track) > 0)
            continue;
        const std::uint64_t place = piece.place - std::min(missing, piece.place);
        splices.push_back({{place, place}, piece.text, piece.track, piece.isEntry});
        missing += piece.text.size();
    }
    return splices;
}
