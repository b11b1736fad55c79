#pragma once

#include <taglib/tbytevector.h>

#include <cstdint>
#include <string>
#include <vector>

namespace TagLib {
class File;
}

namespace audiocore {
/// Bytes of the size and the name that most atoms begin with; a size of 64 bits makes it longer.
constexpr int mp4AtomHead = 8;

/// One atom of an MP4 file; everything in bytes, `begin` counted from the file's beginning.
struct Mp4Atom
{
    std::string name; ///< four bytes
    std::int64_t begin = 0;
    std::int64_t size = 0; ///< its head included; ends where the atom around it ends at the latest
    int headSize = mp4AtomHead;
    std::int64_t inside = 0; ///< where the atoms in it begin, if it has any
    int depth = 0;
    bool toTheEnd = false; ///< its size is written as zero: all the rest of the file

    std::int64_t end() const { return begin + size; }
    std::int64_t content() const { return begin + headSize; }
};

/// The atoms of an MP4 file, those inside of others included where they matter for music: walked without
/// recursion, and bounded in depth and number whatever the file says.
class Mp4Atoms
{
public:
    enum class Fragments {
        PassOver, ///< a long song can have thousands of them, and no tag
        Enter
    };

    Mp4Atoms(TagLib::File& file, Fragments fragments);
    /// Those inside of one atom, as if that were the file.
    Mp4Atoms(TagLib::File& file, const Mp4Atom& around);

    /// Whether the walk came to its end: there are not too many atoms, nor too deep ones.
    bool areBounded() const { return m_bounded; }
    /// Whether every atom lies inside of the one around it, so that sizes can be changed.
    bool areSound() const { return m_sound && m_bounded; }

    /// The atoms in the order of the file, each before those inside of it.
    const std::vector<Mp4Atom>& all() const { return m_atoms; }
    /// The first atom that is reached by these names from the outside in; null without one.
    const Mp4Atom* find(const std::vector<std::string>& path) const;
    /// All of them.
    std::vector<const Mp4Atom*> findAll(const std::vector<std::string>& path) const;
    /// The one that begins there; null without one.
    const Mp4Atom* at(std::int64_t begin) const;
    std::vector<const Mp4Atom*> childrenOf(const Mp4Atom& atom) const;
    /// The first atom that is reached by these names from this one on; null without one.
    const Mp4Atom* findIn(const Mp4Atom& atom, const std::vector<std::string>& path) const;
    /// The atoms around this one, the outermost first.
    std::vector<const Mp4Atom*> around(const Mp4Atom& atom) const;

private:
    void walk(TagLib::File& file, std::int64_t begin, std::int64_t end, Fragments fragments);

    std::vector<Mp4Atom> m_atoms;
    bool m_bounded = true;
    bool m_sound = true;
};

/// The atom with its head, as it stands in the file.
TagLib::ByteVector bytesOf(TagLib::File& file, const Mp4Atom& atom);
/// The first 64 bytes of what is in the atom, where its numbers are, filled up with zeros; of null zeros
/// alone.
TagLib::ByteVector headOf(TagLib::File& file, const Mp4Atom* atom);
} // namespace audiocore
