#include "tags/mp4writing.h"

#include "tags/fieldlist.h"
#include "tags/mp4file.h"
#include "tags/mp4items.h"
#include "tags/mp4places.h"
#include "tags/tagwriting.h"

#include <algorithm>
#include <bitset>
#include <limits>
#include <string>

using audiocore::FileEdits;
using audiocore::mostInFourBytes;
using audiocore::Mp4Atom;
using audiocore::mp4AtomHead;
using audiocore::Mp4Atoms;
using audiocore::Mp4File;
using audiocore::Mp4Item;
using audiocore::Mp4List;
using audiocore::TagEdits;
using TagLib::ByteVector;

namespace {
constexpr const char* cannotBeMoved = "the places of its music could not follow its tags";
constexpr const char* unsound = "its parts do not fit into one another";

/// A part of the file that other bytes take the place of.
struct Splice
{
    std::int64_t begin = 0;
    std::int64_t size = 0;
    std::vector<const Mp4Atom*> around; ///< what grows or shrinks with it

    std::int64_t end() const { return begin + size; }
};

Splice placeOf(const Mp4Atoms& atoms, const Mp4Atom& atom)
{
    return {atom.begin, atom.size, atoms.around(*atoms.at(atom.begin))};
}

/// Where the list is, and the free room behind it.
Splice placeOfList(const Mp4Atoms& atoms, const Mp4Atom& list)
{
    Splice splice = placeOf(atoms, list);
    for (const Mp4Atom* beside : atoms.childrenOf(*splice.around.back()))
        if (beside->name == "free" && beside->begin == splice.end())
            splice.size += beside->size;
    return splice;
}

/// A place in the atom where something may go.
Splice within(const Mp4Atoms& atoms, const Mp4Atom& container, std::int64_t place)
{
    Splice splice{place, 0, atoms.around(container)};
    splice.around.push_back(&container);
    return splice;
}

/// Behind what is in the atom; a zero that ends it stays behind.
Splice endOf(const Mp4Atoms& atoms, const Mp4Atom& container)
{
    const std::vector<const Mp4Atom*> children = atoms.childrenOf(container);
    return within(atoms, container, children.empty() ? container.end() : children.back()->end());
}

bool grow(TagLib::File& file, const Mp4Atom& atom, std::int64_t by)
{
    if (atom.toTheEnd)
        return true;
    const std::int64_t size = atom.size + by;
    if (atom.headSize == mp4AtomHead && size > mostInFourBytes)
        return false;
    file.seek(atom.headSize == mp4AtomHead ? atom.begin : atom.begin + mp4AtomHead);
    file.writeBlock(atom.headSize == mp4AtomHead ? ByteVector::fromUInt(static_cast<unsigned int>(size))
                                                 : ByteVector::fromLongLong(size));
    return true;
}

/// Puts the bytes there, and has everything follow. The atoms are no longer right afterwards.
std::string put(TagLib::File& file, const Mp4Atoms& atoms, const Splice& splice, const ByteVector& bytes)
{
    const std::int64_t by = std::int64_t(bytes.size()) - splice.size;
    if (by != 0 && !audiocore::moveMp4Places(file, atoms, splice.end(), by))
        return cannotBeMoved;
    for (const Mp4Atom* around : splice.around)
        if (!grow(file, *around, by))
            return cannotBeMoved;
    file.insert(bytes, static_cast<unsigned long>(splice.begin), static_cast<unsigned long>(splice.size));
    return std::string();
}

/// A list and free room that together take the place of what is there now.
ByteVector padded(ByteVector list, std::int64_t room)
{
    const auto roomNow =
        static_cast<unsigned int>(std::min<std::int64_t>(room, std::numeric_limits<std::int32_t>::max()));
    unsigned int size = audiocore::paddedSize(list.size(), roomNow);
    if (size > list.size() && size < list.size() + mp4AtomHead)
        size = audiocore::paddedSize(list.size(), 0);
    if (size > list.size())
        list.append(audiocore::mp4AtomBytes("free", ByteVector(size - list.size() - mp4AtomHead, '\0')));
    return list;
}

ByteVector handler()
{
    ByteVector content(8, '\0');
    return audiocore::mp4AtomBytes("hdlr", content.append("mdirappl").append(ByteVector(9, '\0')));
}

/// What the list is put in where there is none, from the inside out.
ByteVector wrapped(const ByteVector& list, const Mp4Atom& container)
{
    if (container.name == "meta")
        return list;
    const ByteVector meta =
        audiocore::mp4AtomBytes("meta", ByteVector(4, '\0').append(handler()).append(list));
    return container.name == "udta" ? meta : audiocore::mp4AtomBytes("udta", meta);
}

/// Where the own list is, or is to be.
struct OwnPlace
{
    std::optional<Mp4List> list;
    const Mp4Atom* container = nullptr; ///< null where there is no place for it
};

OwnPlace ownPlace(TagLib::File& file, const Mp4Atoms& atoms)
{
    const std::vector<Mp4List> lists = audiocore::mp4Lists(file, atoms);
    if (!lists.empty() && lists.front().own)
        return {lists.front(), atoms.around(*atoms.at(lists.front().atom.begin)).back()};
    const Mp4Atom* around = atoms.find({"moov", "udta"});
    if (!around)
        return {std::nullopt, atoms.find({"moov"})};
    for (const Mp4Atom* meta : atoms.childrenOf(*around))
        if (meta->name == "meta" && audiocore::isForNamedItems(file, atoms, *meta))
            return {std::nullopt, meta};
    return {std::nullopt, around};
}

/// In front of the first "meta", which is one of another kind then: some readers look at the first one alone.
Splice newPlace(const Mp4Atoms& atoms, const Mp4Atom& container)
{
    const Mp4Atom* other = container.name == "udta" ? atoms.findIn(container, {"meta"}) : nullptr;
    return other ? within(atoms, container, other->begin) : endOf(atoms, container);
}

/// Some writers leave out the version of a "meta", or the handler before the list: others then find nothing.
struct Missing
{
    ByteVector bytes;
    std::int64_t place = 0;
};

Missing missingOf(const Mp4Atoms& atoms, const OwnPlace& own)
{
    const Mp4Atom& meta = *own.container;
    if (meta.name != "meta")
        return Missing();
    Missing missing{ByteVector(), meta.inside};
    if (meta.inside == meta.content())
        missing.bytes.append(ByteVector(4, '\0'));
    const Mp4Atom* first = atoms.findIn(meta, {"hdlr"});
    if (!first || (own.list && first->begin > own.list->atom.begin))
        missing.bytes.append(handler());
    return missing;
}

std::string completeOwn(TagLib::File& file)
{
    const Mp4Atoms atoms(file, Mp4Atoms::Fragments::Enter);
    if (!atoms.areSound())
        return unsound;
    const OwnPlace own = ownPlace(file, atoms);
    if (!own.container)
        return audiocore::cannotBeKept;
    const Missing missing = missingOf(atoms, own);
    if (missing.bytes.isEmpty())
        return std::string();
    return put(file, atoms, within(atoms, *own.container, missing.place), missing.bytes);
}

std::string writeOwn(Mp4File& file, const FileEdits& edits)
{
    const Mp4Atoms atoms(file, Mp4Atoms::Fragments::Enter);
    const OwnPlace own = ownPlace(file, atoms);
    const std::optional<ByteVector> list =
        audiocore::editedList(file, own.list.value_or(Mp4List()), own.list ? edits.own : edits.ownNew);
    if (!list)
        return audiocore::cannotBeKept;
    const Splice splice = own.list ? placeOfList(atoms, own.list->atom) : newPlace(atoms, *own.container);
    const ByteVector bytes = padded(*list, splice.size);
    return put(file, atoms, splice, own.list ? bytes : wrapped(bytes, *own.container));
}

/// One step of many to have the other lists say the same.
struct Step
{
    bool isNeeded = false;
    std::string failure;
};

Step stepInList(Mp4File& file, const Mp4Atoms& atoms, const Mp4List& list, const TagEdits& edits)
{
    const TagEdits within = audiocore::editsWithin(list, edits);
    if (within.isEmpty())
        return Step();
    const std::optional<ByteVector> bytes = audiocore::editedList(file, list, within);
    if (!bytes)
        return {true, audiocore::cannotBeKept};
    if (bytes->size() == list.atom.size && *bytes == bytesOf(file, list.atom))
        return Step();
    const Splice splice = placeOfList(atoms, list.atom);
    return {true, put(file, atoms, splice, padded(*bytes, splice.size))};
}

/// Of several texts of a type the first one stays.
Step stepInTexts(Mp4File& file, const Mp4Atoms& atoms, const Mp4List& list, const TagEdits& edits)
{
    std::bitset<audiocore::textTypes> seen;
    for (const Mp4Item& item : list.items) {
        const auto type = size_t(item.type);
        const std::optional<std::string>& text = edits.texts[type];
        if (!text)
            continue;
        const ByteVector bytes = seen[type] ? ByteVector() : audiocore::editedText(file, item, *text);
        seen.set(type);
        if (bytes.isEmpty() || bytes.size() != item.atom.size || bytes != bytesOf(file, item.atom))
            return {true, put(file, atoms, placeOf(atoms, item.atom), bytes)};
    }
    return Step();
}

Step nextStep(Mp4File& file, const TagEdits& edits)
{
    const Mp4Atoms atoms(file, Mp4Atoms::Fragments::Enter);
    for (const Mp4List& list : audiocore::mp4Lists(file, atoms)) {
        if (list.own)
            continue;
        Step step = list.kind == Mp4List::Kind::Texts ? stepInTexts(file, atoms, list, edits)
                                                      : stepInList(file, atoms, list, edits);
        if (step.isNeeded)
            return step;
    }
    return Step();
}

std::string writeFurther(Mp4File& file, const TagEdits& edits)
{
    constexpr int mostSteps = 32; // no song has so many
    for (int steps = 0; steps < mostSteps; ++steps) {
        const Step step = nextStep(file, edits);
        if (!step.isNeeded || !step.failure.empty())
            return step.failure;
    }
    return audiocore::cannotBeKept;
}
} // namespace

std::string audiocore::writeMp4(Mp4File& file, const FileEdits& edits)
{
    std::string failure = completeOwn(file);
    if (failure.empty())
        failure = writeOwn(file, edits);
    return failure.empty() ? writeFurther(file, edits.further) : failure;
}
