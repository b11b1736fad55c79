#pragma once

#include "media/mp4atoms.h"
#include "tags/tagfields.h"

#include <string>
#include <vector>

namespace TagLib {
class File;
}

// Where the fields of a song stand in an MP4 file.
namespace audiocore {
struct Mp4Item
{
    Mp4Atom atom;
    int type; ///< a TagItemType; below zero for whatever is none of these
};

struct Mp4List
{
    enum class Kind {
        Named, ///< items that have the names of their atoms
        Keyed, ///< items that have the numbers of keys in a table beside
        Texts  ///< atoms of plain text, right beside other things
    };

    Kind kind = Kind::Named;
    bool own = false; ///< the one that everybody reads, and that is made where there is none
    Mp4Atom atom;     ///< what all of it is in
    std::vector<Mp4Item> items;
};

/// All lists that are of the whole file, the own one first, the others in the file's order.
std::vector<Mp4List> mp4Lists(TagLib::File& file, const Mp4Atoms& atoms);
/// Whether what a "meta" holds is meant to be a list of named items, or may become one.
bool isForNamedItems(TagLib::File& file, const Mp4Atoms& atoms, const Mp4Atom& meta);

/// The name that an item of the type is written with.
const char* mp4Name(int type);
} // namespace audiocore
