#include "media/mp4atoms.h"

#include <taglib/tfile.h>

#include <algorithm>
#include <optional>

using audiocore::Mp4Atom;
using audiocore::Mp4Atoms;
using TagLib::ByteVector;

namespace {
constexpr int deepest = 32;
constexpr size_t mostAtoms = 100000;
constexpr int longHead = 16;
constexpr std::int64_t versionAndFlags = 4;

bool contains(std::initializer_list<const char*> names, const std::string& name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool isContainer(const std::string& name, Mp4Atoms::Fragments fragments)
{
    return contains({"moov", "trak", "mdia", "minf", "stbl", "mvex", "udta", "meta", "ilst"}, name) ||
           (fragments == Mp4Atoms::Fragments::Enter && contains({"moof", "traf", "mfra"}, name));
}

/// What atoms have around them: the file, or another atom.
struct Room
{
    std::int64_t end;
    int depth;
};

/// The atom that begins here; nothing where none does. One that is too long ends with the room, and is
/// unsound.
std::optional<Mp4Atom> atomAt(TagLib::File& file, std::int64_t begin, const Room& room, bool& sound)
{
    if (room.end - begin < audiocore::mp4AtomHead)
        return std::nullopt;
    file.seek(begin);
    const ByteVector head = file.readBlock(longHead);
    if (head.size() < unsigned(audiocore::mp4AtomHead))
        return std::nullopt;
    Mp4Atom atom;
    atom.name.assign(head.data() + 4, 4);
    atom.begin = begin;
    atom.depth = room.depth;
    atom.size = head.toUInt(0u);
    if (atom.size == 0 && room.depth == 0) {
        atom.toTheEnd = true;
        atom.size = room.end - begin;
    } else if (atom.size == 1 && head.size() == unsigned(longHead)) {
        atom.headSize = longHead;
        atom.size = head.toLongLong(8u);
    }
    if (atom.size < atom.headSize)
        return std::nullopt;
    if (atom.size > room.end - begin) {
        atom.size = room.end - begin;
        sound = false;
    }
    return atom;
}

/// Where the atoms inside begin: some writers leave out the version that a "meta" should have in front of
/// them, which is zero.
std::int64_t firstInside(TagLib::File& file, const Mp4Atom& atom)
{
    if (atom.name != "meta")
        return atom.content();
    file.seek(atom.content());
    const ByteVector first = file.readBlock(4);
    const std::int64_t size = first.size() < unsigned(versionAndFlags) ? 0 : first.toUInt(0u);
    const bool bare = atom.end() - atom.content() < versionAndFlags ||
                      (size >= audiocore::mp4AtomHead && size <= atom.end() - atom.content());
    return atom.content() + (bare ? 0 : versionAndFlags);
}
} // namespace

Mp4Atoms::Mp4Atoms(TagLib::File& file, Fragments fragments)
{
    walk(file, 0, file.length(), fragments);
}

Mp4Atoms::Mp4Atoms(TagLib::File& file, const Mp4Atom& around)
{
    walk(file, around.content(), around.end(), Fragments::Enter);
}

void Mp4Atoms::walk(TagLib::File& file, std::int64_t begin, std::int64_t end, Fragments fragments)
{
    std::vector<Room> rooms{{end, 0}};
    for (std::int64_t position = begin; !rooms.empty();) {
        // What follows the last whole atom outside is taken for rubbish.
        bool sound = true;
        const std::optional<Mp4Atom> atom = atomAt(file, position, rooms.back(), sound);
        m_sound = m_sound && (sound || rooms.size() == 1);
        if (!atom) {
            // Some writers end a list with a zero.
            position = rooms.back().end;
            rooms.pop_back();
            continue;
        }
        if (m_atoms.size() == mostAtoms) {
            m_bounded = false;
            return;
        }
        m_atoms.push_back(*atom);
        m_atoms.back().inside = atom->content();
        if (!isContainer(atom->name, fragments)) {
            position = atom->end();
            continue;
        }
        if (atom->depth + 1 == deepest) {
            m_bounded = false;
            return;
        }
        rooms.push_back({atom->end(), atom->depth + 1});
        position = m_atoms.back().inside = firstInside(file, *atom);
    }
}

std::vector<const Mp4Atom*> Mp4Atoms::findAll(const std::vector<std::string>& path) const
{
    std::vector<const Mp4Atom*> found;
    size_t matched = 0; // so many of the names lie around the atom
    for (const Mp4Atom& atom : m_atoms) {
        matched = std::min(matched, size_t(atom.depth));
        if (matched != size_t(atom.depth) || matched == path.size() || atom.name != path[matched])
            continue;
        if (++matched == path.size())
            found.push_back(&atom);
    }
    return found;
}

const Mp4Atom* Mp4Atoms::find(const std::vector<std::string>& path) const
{
    const std::vector<const Mp4Atom*> found = findAll(path);
    return found.empty() ? nullptr : found.front();
}

const Mp4Atom* Mp4Atoms::at(std::int64_t begin) const
{
    const auto atom =
        std::lower_bound(m_atoms.begin(), m_atoms.end(), begin,
                         [](const Mp4Atom& one, std::int64_t place) { return one.begin < place; });
    return atom == m_atoms.end() || atom->begin != begin ? nullptr : &*atom;
}

std::vector<const Mp4Atom*> Mp4Atoms::childrenOf(const Mp4Atom& atom) const
{
    std::vector<const Mp4Atom*> children;
    const auto last = m_atoms.data() + m_atoms.size();
    for (const Mp4Atom* inside = &atom + 1; inside != last && inside->depth > atom.depth; ++inside)
        if (inside->depth == atom.depth + 1)
            children.push_back(inside);
    return children;
}

const Mp4Atom* Mp4Atoms::findIn(const Mp4Atom& atom, const std::vector<std::string>& path) const
{
    const Mp4Atom* found = &atom;
    for (const std::string& name : path) {
        const std::vector<const Mp4Atom*> children = childrenOf(*found);
        const auto child = std::find_if(children.begin(), children.end(),
                                        [&name](const Mp4Atom* one) { return one->name == name; });
        if (child == children.end())
            return nullptr;
        found = *child;
    }
    return found;
}

std::vector<const Mp4Atom*> Mp4Atoms::around(const Mp4Atom& atom) const
{
    std::vector<const Mp4Atom*> outer;
    int depth = atom.depth;
    for (const Mp4Atom* before = &atom; depth > 0; --before) {
        if (before->depth != depth - 1)
            continue;
        outer.insert(outer.begin(), before);
        --depth;
    }
    return outer;
}

ByteVector audiocore::bytesOf(TagLib::File& file, const Mp4Atom& atom)
{
    file.seek(atom.begin);
    return file.readBlock(static_cast<size_t>(atom.size));
}

ByteVector audiocore::headOf(TagLib::File& file, const Mp4Atom* atom)
{
    constexpr std::int64_t enough = 64;
    ByteVector head;
    if (atom) {
        file.seek(atom->content());
        head = file.readBlock(size_t(std::min(enough, atom->end() - atom->content())));
    }
    head.resize(enough, '\0');
    return head;
}
