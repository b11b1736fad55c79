#include "media/mp4tables.h"

#include "base/checkedmath.h"
#include "media/mp4atoms.h"

#include <taglib/tfile.h>

#include <algorithm>

namespace checked = base::checked;

using audiocore::Mp4Atom;
using audiocore::Mp4Atoms;
using TagLib::ByteVector;

namespace {
/// Entries in the file, `stride` bytes each.
struct Table
{
    std::int64_t begin = 0;
    std::int64_t count = 0;
    unsigned int stride = 4;
};

/// As many entries as it claims from `begin` on and as there is room for in the atom.
Table tableIn(const Mp4Atom& atom, std::int64_t begin, std::int64_t claimed, unsigned int stride)
{
    const std::int64_t room = std::max<std::int64_t>(0, atom.end() - begin) / stride;
    return {begin, std::min(claimed, room), stride};
}

/// The sum of what `valueOf` makes of the place of each entry in a block of them.
template <class ValueOf>
std::int64_t sumOf(TagLib::File& file, const Table& table, const ValueOf& valueOf)
{
    constexpr std::int64_t atOnce = 4 * 1024;
    std::int64_t sum = 0;
    for (std::int64_t done = 0; done < table.count; done += atOnce) {
        const auto count = static_cast<unsigned int>(std::min(atOnce, table.count - done));
        file.seek(table.begin + done * table.stride);
        const ByteVector block = file.readBlock(size_t(count) * table.stride);
        if (block.size() != count * table.stride)
            break;
        for (unsigned int i = 0; i < count; ++i)
            sum = checked::sum(sum, valueOf(block, i * table.stride));
    }
    return sum;
}

std::uint32_t flagsOf(const ByteVector& head)
{
    return head.toUInt(0u) & 0xFFFFFF;
}

/// How long each sample of a track is in fragments that do not say it.
std::int64_t usualDuration(TagLib::File& file, const Mp4Atoms& atoms, std::uint32_t track)
{
    for (const Mp4Atom* defaults : atoms.findAll({"moov", "mvex", "trex"}))
        if (const ByteVector head = headOf(file, defaults); head.toUInt(4u) == track)
            return head.toUInt(12u);
    return 0;
}

/// The same in one fragment, which may say otherwise.
std::int64_t usualDuration(const ByteVector& head, std::int64_t otherwise)
{
    constexpr std::uint32_t hasBase = 1;
    constexpr std::uint32_t hasDescription = 2;
    constexpr std::uint32_t hasDuration = 8;
    const std::uint32_t flags = flagsOf(head);
    const unsigned int place = 8 + (flags & hasBase ? 8 : 0) + (flags & hasDescription ? 4 : 0);
    return flags & hasDuration ? head.toUInt(place) : otherwise;
}

std::int64_t durationOfRun(TagLib::File& file, const Mp4Atom& run, std::int64_t usual)
{
    constexpr std::uint32_t hasPlace = 1;
    constexpr std::uint32_t hasFirstFlags = 4;
    constexpr std::uint32_t hasDuration = 0x100;
    const ByteVector head = headOf(file, &run);
    const std::uint32_t flags = flagsOf(head);
    const std::int64_t count = head.toUInt(4u);
    if (!(flags & hasDuration))
        return checked::product(count, usual);
    unsigned int stride = 0;
    for (std::uint32_t flag = hasDuration; flag <= 0x800; flag <<= 1)
        stride += flags & flag ? 4 : 0;
    const std::int64_t begin =
        run.content() + 8 + (flags & hasPlace ? 4 : 0) + (flags & hasFirstFlags ? 4 : 0);
    return sumOf(file, tableIn(run, begin, count, stride),
                 [](const ByteVector& block, unsigned int at) { return std::int64_t(block.toUInt(at)); });
}

/// Where the track's part of a fragment ends; zero when it does not say where it begins.
std::int64_t endOfPart(TagLib::File& file, const Mp4Atoms& atoms, const Mp4Atom& part, std::int64_t usual)
{
    const Mp4Atom* begin = atoms.findIn(part, {"tfdt"});
    if (!begin)
        return 0;
    const ByteVector head = headOf(file, begin);
    std::int64_t end = head[0] == 1 ? head.toLongLong(4u) : head.toUInt(4u);
    for (const Mp4Atom* run : atoms.childrenOf(part))
        if (run->name == "trun")
            end = checked::sum(end, durationOfRun(file, *run, usual));
    return end;
}
} // namespace

std::int64_t audiocore::totalDuration(TagLib::File& file, const Mp4Atom* durations)
{
    if (!durations)
        return 0;
    const std::int64_t claimed = headOf(file, durations).toUInt(4u);
    return sumOf(file, tableIn(*durations, durations->content() + 8, claimed, 8),
                 [](const ByteVector& block, unsigned int at) {
                     return checked::product(block.toUInt(at), block.toUInt(at + 4));
                 });
}

std::int64_t audiocore::totalSize(TagLib::File& file, const Mp4Atom* sizes)
{
    const ByteVector head = headOf(file, sizes);
    if (!sizes || head.toUInt(4u) != 0)
        return 0;
    return sumOf(file, tableIn(*sizes, sizes->content() + 12, head.toUInt(8u), 4),
                 [](const ByteVector& block, unsigned int at) { return std::int64_t(block.toUInt(at)); });
}

TagLib::ByteVectorList audiocore::firstFrames(TagLib::File& file, const Mp4Atoms& atoms,
                                              const Mp4Atom& tables)
{
    constexpr std::int64_t most = 8;
    constexpr std::int64_t largest = 2 * 1024;
    const Mp4Atom* wide = atoms.findIn(tables, {"co64"});
    const ByteVector places = headOf(file, wide ? wide : atoms.findIn(tables, {"stco"}));
    const ByteVector runs = headOf(file, atoms.findIn(tables, {"stsc"}));
    const Mp4Atom* sizes = atoms.findIn(tables, {"stsz"});
    const ByteVector sizesHead = headOf(file, sizes);
    TagLib::ByteVectorList frames;
    if (!sizes || places.toUInt(4u) == 0 || runs.toUInt(4u) == 0 || sizesHead.toUInt(4u) != 0)
        return frames;
    const std::int64_t together =
        std::min({most, std::int64_t(runs.toUInt(12u)), std::int64_t(sizesHead.toUInt(8u))});
    const Table table = tableIn(*sizes, sizes->content() + 12, together, 4);
    std::int64_t position = wide ? places.toLongLong(8u) : places.toUInt(8u);
    for (std::int64_t i = 0; i < table.count; ++i) {
        file.seek(table.begin + i * table.stride);
        const std::int64_t size = file.readBlock(4).toUInt(0u);
        if (position < 0 || position > file.length() || size > largest)
            break;
        file.seek(position);
        frames.append(file.readBlock(size_t(size)));
        position += size;
    }
    return frames;
}

std::int64_t audiocore::endOfFragments(TagLib::File& file, const Mp4Atoms& atoms, std::uint32_t track)
{
    constexpr size_t most = 16; // those at the end may be of other tracks
    const std::vector<const Mp4Atom*> fragments = atoms.findAll({"moof"});
    const std::int64_t usual = fragments.empty() ? 0 : usualDuration(file, atoms, track);
    for (size_t i = 0; i < std::min(most, fragments.size()); ++i) {
        const Mp4Atoms inside(file, *fragments[fragments.size() - 1 - i]);
        for (const Mp4Atom* part : inside.findAll({"traf"})) {
            const ByteVector head = headOf(file, inside.findIn(*part, {"tfhd"}));
            if (head.toUInt(4u) == track)
                return endOfPart(file, inside, *part, usualDuration(head, usual));
        }
    }
    return 0;
}
