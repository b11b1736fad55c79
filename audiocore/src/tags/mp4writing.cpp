#include "tags/mp4writing.h"

#include "audiocore/tagitem.h"
#include "tags/fieldlist.h"
#include "tags/mp4file.h"
#include "tags/mp4places.h"
#include "tags/pictures.h"

#include <limits>
#include <string>

using audiocore::Mp4Atom;
using audiocore::Mp4Atoms;
using audiocore::Mp4File;
using audiocore::Mp4Value;
using audiocore::TagEdits;
using TagLib::ByteVector;

namespace {
constexpr unsigned int atomHead = 8;
constexpr std::int64_t largestList = 64 << 20;
constexpr std::int64_t most32 = std::numeric_limits<std::uint32_t>::max();

enum class Marked : unsigned int { Number = 0, Utf8 = 1, Jpeg = 13, Png = 14 };

ByteVector atom(const std::string& name, const ByteVector& content)
{
    ByteVector bytes = ByteVector::fromUInt(content.size() + atomHead);
    bytes.append(ByteVector(name.data(), unsigned(name.size())));
    return bytes.append(content);
}

ByteVector item(const std::string& name, Marked as, const ByteVector& value)
{
    ByteVector data = ByteVector::fromUInt(static_cast<unsigned int>(as));
    data.append(ByteVector(4, '\0'));
    return atom(name, atom("data", data.append(value)));
}

struct Field
{
    std::string name;
    ByteVector bytes; ///< the whole atom
};

std::optional<Field> textField(int type, const std::string& text)
{
    if (text.empty())
        return std::nullopt;
    const std::string& name = audiocore::mp4Names(type).front();
    return Field{name, item(name, Marked::Utf8, ByteVector(text.data(), unsigned(text.size())))};
}

std::optional<Field> pictureField(const ByteVector& picture)
{
    if (picture.isEmpty())
        return std::nullopt;
    const bool png = audiocore::pictureType(picture) == "image/png";
    return Field{audiocore::mp4PictureName,
                 item(audiocore::mp4PictureName, png ? Marked::Png : Marked::Jpeg, picture)};
}

/// The number of a track in the old value, or in a new one; the total and whatever else is there stays.
std::optional<Field> trackField(const ByteVector& old, const std::string& text)
{
    ByteVector value = old.size() < 6 ? ByteVector(8, '\0') : old;
    const int number = text.empty() ? 0 : std::stoi(text.substr(0, 6));
    if (number == 0 && value.toUShort(4u) == 0)
        return std::nullopt;
    const ByteVector bytes = ByteVector::fromShort(static_cast<short>(number));
    std::copy(bytes.begin(), bytes.end(), value.begin() + 2);
    return Field{"trkn", item("trkn", Marked::Number, value)};
}

/// The first value of the first track item.
ByteVector oldTrack(Mp4File& file, const std::vector<const Mp4Atom*>& items)
{
    for (const Mp4Atom* item : items) {
        const std::vector<Mp4Value> values = file.valuesOf(*item);
        if (audiocore::isMp4Name(item->name, TAG_TRACK) && !values.empty() && values.front().size <= 64)
            return file.bytesOf(values.front());
    }
    return ByteVector();
}

void replaceText(std::vector<Field>& fields, int type, const std::optional<Field>& field)
{
    const auto isOld = [type](const Field& old) { return audiocore::isMp4Name(old.name, type); };
    audiocore::replaceFields(fields, isOld, field);
}

void replacePicture(std::vector<Field>& fields, const std::optional<Field>& field)
{
    const auto isOld = [](const Field& old) { return old.name == audiocore::mp4PictureName; };
    audiocore::replaceFields(fields, isOld, field);
}

/// The list with the edits, as an atom.
ByteVector newList(Mp4File& file, const std::vector<const Mp4Atom*>& items, const TagEdits& edits)
{
    std::vector<Field> fields;
    fields.reserve(items.size());
    for (const Mp4Atom* item : items)
        fields.push_back({item->name, bytesOf(file, *item)});
    for (int type = 0; type < audiocore::textTypes; ++type)
        if (const auto& text = edits.texts[size_t(type)])
            replaceText(fields, type,
                        type == TAG_TRACK ? trackField(oldTrack(file, items), *text)
                                          : textField(type, *text));
    if (edits.picture)
        replacePicture(fields, pictureField(*edits.picture));
    ByteVector list = atom("ilst", ByteVector());
    for (Field& field : fields) {
        list.append(field.bytes);
        field.bytes.clear(); // pictures are large
    }
    const ByteVector size = ByteVector::fromUInt(list.size());
    std::copy(size.begin(), size.end(), list.data());
    return list;
}

/// A part of the file that other bytes take the place of.
struct Splice
{
    std::int64_t begin = 0;
    std::int64_t size = 0;
    std::vector<const Mp4Atom*> around; ///< what grows or shrinks with it

    std::int64_t end() const { return begin + size; }
};

/// Where the list is, and the free room behind it.
Splice placeOf(const Mp4Atoms& atoms, const Mp4Atom& list)
{
    Splice splice{list.begin, list.size, atoms.around(list)};
    for (const Mp4Atom* beside : atoms.childrenOf(*splice.around.back()))
        if (beside->name == "free" && beside->begin == splice.end())
            splice.size += beside->size;
    return splice;
}

/// Behind what is in the atom; a zero that ends it stays behind.
Splice endOf(const Mp4Atoms& atoms, const Mp4Atom& container)
{
    const std::vector<const Mp4Atom*> children = atoms.childrenOf(container);
    Splice splice{children.empty() ? container.end() : children.back()->end(), 0, atoms.around(container)};
    splice.around.push_back(&container);
    return splice;
}

/// A list and free room that together take the place of what is there now.
ByteVector padded(ByteVector list, std::int64_t room)
{
    const auto roomNow = static_cast<unsigned int>(std::min<std::int64_t>(room, largestList));
    unsigned int size = audiocore::paddedSize(list.size(), roomNow);
    if (size > list.size() && size < list.size() + atomHead)
        size = audiocore::paddedSize(list.size(), 0);
    if (size > list.size())
        list.append(atom("free", ByteVector(size - list.size() - atomHead, '\0')));
    return list;
}

/// What the list is put in where there is none, from the inside out.
ByteVector wrapped(const ByteVector& list, const Mp4Atom& container)
{
    ByteVector bytes = list;
    if (container.name == "meta")
        return bytes;
    ByteVector handler(8, '\0');
    handler.append("mdirappl").append(ByteVector(9, '\0'));
    bytes = atom("meta", ByteVector(4, '\0').append(atom("hdlr", handler)).append(bytes));
    return container.name == "udta" ? bytes : atom("udta", bytes);
}

/// The innermost atom of those that the list is to be in.
const Mp4Atom* containerOf(const Mp4Atoms& atoms)
{
    std::vector<std::string> path = audiocore::mp4ListPath();
    const Mp4Atom* container = nullptr;
    while (!container && path.size() > 1) {
        path.pop_back();
        container = atoms.find(path);
    }
    return container;
}

bool grow(TagLib::File& file, const Mp4Atom& atom, std::int64_t by)
{
    if (atom.toTheEnd)
        return true;
    const std::int64_t size = atom.size + by;
    if (atom.headSize == int(atomHead) && size > most32)
        return false;
    file.seek(atom.headSize == int(atomHead) ? atom.begin : atom.begin + std::int64_t(atomHead));
    file.writeBlock(atom.headSize == int(atomHead) ? ByteVector::fromUInt(static_cast<unsigned int>(size))
                                                   : ByteVector::fromLongLong(size));
    return true;
}
} // namespace

bool audiocore::writeMp4(Mp4File& file, const TagEdits& edits)
{
    const Mp4Atoms atoms(file, Mp4Atoms::Fragments::Enter);
    const Mp4Atom* container = containerOf(atoms);
    if (!atoms.areSound() || !container)
        return false;
    const Mp4Atom* list = atoms.find(mp4ListPath());
    if (list && list->size > largestList)
        return false;
    const Splice splice = list ? placeOf(atoms, *list) : endOf(atoms, *container);
    const std::vector<const Mp4Atom*> items = list ? atoms.childrenOf(*list) : std::vector<const Mp4Atom*>();
    ByteVector bytes = padded(newList(file, items, edits), splice.size);
    if (!list)
        bytes = wrapped(bytes, *container);

    const std::int64_t by = std::int64_t(bytes.size()) - splice.size;
    if (by != 0 && !moveMp4Places(file, atoms, splice.end(), by))
        return false;
    for (const Mp4Atom* around : splice.around)
        if (!grow(file, *around, by))
            return false;
    file.insert(bytes, static_cast<unsigned long>(splice.begin), static_cast<unsigned long>(splice.size));
    return true;
}
