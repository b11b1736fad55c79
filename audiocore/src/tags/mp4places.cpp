#include "tags/mp4places.h"

#include "media/mp4atoms.h"

#include <taglib/tfile.h>

#include <algorithm>
#include <limits>

using audiocore::Mp4Atom;
using audiocore::Mp4Atoms;
using TagLib::ByteVector;

namespace {
/// Numbers of `width` bytes in the file, one every `stride` bytes.
struct Table
{
    std::int64_t begin = 0;
    std::int64_t count = 0;
    unsigned int width = 4;
    unsigned int stride = 4;
};

/// What lies behind a place in the file moves.
struct Shift
{
    std::int64_t from = 0;
    std::int64_t by = 0;

    /// False when the number has no room for it.
    bool apply(ByteVector& block, unsigned int at, unsigned int width) const
    {
        std::int64_t number = width == 4 ? block.toUInt(at) : block.toLongLong(at);
        if (number < from || number > std::numeric_limits<std::int64_t>::max() / 2)
            return true;
        number += by;
        if (width == 4 && number > audiocore::mostInFourBytes)
            return false;
        const ByteVector bytes = width == 4 ? ByteVector::fromUInt(static_cast<unsigned int>(number))
                                            : ByteVector::fromLongLong(number);
        std::copy(bytes.begin(), bytes.end(), block.data() + at);
        return true;
    }
};

bool shiftTable(TagLib::File& file, const Table& table, const Shift& shift)
{
    constexpr std::int64_t atOnce = 4 * 1024;
    for (std::int64_t done = 0; done < table.count; done += atOnce) {
        const std::int64_t position = table.begin + done * table.stride;
        const auto count = static_cast<unsigned int>(std::min(atOnce, table.count - done));
        file.seek(position);
        ByteVector block = file.readBlock(size_t(count - 1) * table.stride + table.width);
        if (block.size() != (count - 1) * table.stride + table.width)
            return false;
        for (unsigned int i = 0; i < count; ++i)
            if (!shift.apply(block, i * table.stride, table.width))
                return false;
        file.seek(position);
        file.writeBlock(block);
    }
    return true;
}

/// Shifts a table that claims so many entries from `begin` to the end of its atom.
bool shiftEntries(TagLib::File& file, const Mp4Atom& atom, const Table& table, const Shift& shift)
{
    return table.count <= (atom.end() - table.begin) / table.stride && shiftTable(file, table, shift);
}

/// The places of the music's pieces.
bool shiftChunks(TagLib::File& file, const Mp4Atoms& atoms, const Shift& shift)
{
    for (const auto& [name, width] : {std::pair<const char*, unsigned int>{"stco", 4}, {"co64", 8}})
        for (const Mp4Atom* atom : atoms.findAll({"moov", "trak", "mdia", "minf", "stbl", name})) {
            file.seek(atom->content() + 4);
            const ByteVector count = file.readBlock(4);
            if (count.size() < 4 ||
                !shiftEntries(file, *atom, {atom->content() + 8, count.toUInt(0u), width, width}, shift))
                return false;
        }
    return true;
}

/// The places that fragments count from.
bool shiftFragments(TagLib::File& file, const Mp4Atoms& atoms, const Shift& shift)
{
    constexpr char hasBase = 1;
    for (const Mp4Atom* atom : atoms.findAll({"moof", "traf", "tfhd"})) {
        file.seek(atom->content());
        const ByteVector flags = file.readBlock(4);
        if (flags.size() < 4 || ((flags.data()[3] & hasBase) &&
                                 !shiftEntries(file, *atom, {atom->content() + 8, 1, 8, 8}, shift)))
            return false;
    }
    return true;
}

/// The places of the fragments in the index at the file's end.
bool shiftIndex(TagLib::File& file, const Mp4Atoms& atoms, const Shift& shift)
{
    for (const Mp4Atom* atom : atoms.findAll({"mfra", "tfra"})) {
        file.seek(atom->content());
        const ByteVector head = file.readBlock(16);
        if (head.size() < 16)
            return false;
        const unsigned int width = head.data()[0] == 1 ? 8 : 4;
        const unsigned int sizes = head.toUInt(8u); // less one, two bits each
        const unsigned int rest = (sizes >> 4 & 3) + (sizes >> 2 & 3) + (sizes & 3) + 3;
        const std::int64_t first = atom->content() + 16 + width; // behind its time
        const std::int64_t count = head.toUInt(12u);
        if (first + count * (2 * width + rest) - width > atom->end() ||
            !shiftTable(file, {first, count, width, 2 * width + rest}, shift))
            return false;
    }
    return true;
}

/// Places that are of no use to music, and that nobody here moves.
bool hasOtherPlaces(const Mp4Atoms& atoms)
{
    return std::any_of(atoms.all().begin(), atoms.all().end(),
                       [](const Mp4Atom& atom) { return atom.name == "saio" || atom.name == "iloc"; });
}
} // namespace

bool audiocore::moveMp4Places(TagLib::File& file, const Mp4Atoms& atoms, std::int64_t from, std::int64_t by)
{
    const Shift shift{from, by};
    return !hasOtherPlaces(atoms) && shiftChunks(file, atoms, shift) && shiftFragments(file, atoms, shift) &&
           shiftIndex(file, atoms, shift);
}
