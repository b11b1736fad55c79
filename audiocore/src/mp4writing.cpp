#include "mp4writing.h"

#include "audiocore/tagitem.h"
#include "pictures.h"
#include "tagtext.h"

#include <taglib/mp4atom.h>
#include <taglib/mp4tag.h>
#include <taglib/tfile.h>

#include <algorithm>

using audiocore::TagEdits;
using TagLib::ByteVector;
using TagLib::String;
using TagLib::MP4::Atom;
using TagLib::MP4::Item;

namespace {
/// The first one is written.
const std::vector<const char*> names[audiocore::textTypes] = {{"\251nam"},         {"\251ART"}, {"\251alb"},
                                                              {"\251gen", "gnre"}, {"\251day"}, {"trkn"}};
const char* const pictureName = "covr";

constexpr unsigned int atomHead = 8;
// An atom that the tag library writes with bytes of any kind.
const char* const placeholderName = "----:m:n";
constexpr unsigned int placeholderHead = 50;

const Atom* findList(TagLib::MP4::Atoms& atoms)
{
    return atoms.find("moov", "udta", "meta", "ilst");
}

ByteVector bytesOf(TagLib::File& file, const Atom& atom)
{
    file.seek(atom.offset);
    return file.readBlock(static_cast<unsigned long>(atom.length));
}

bool isEdited(const String& name, const TagEdits& edits)
{
    for (size_t type = 0; type < size_t(audiocore::textTypes); ++type)
        if (edits.texts[type] && std::any_of(names[type].begin(), names[type].end(),
                                             [&name](const char* known) { return name == known; }))
            return true;
    return edits.picture && name == pictureName;
}

/// The atoms that the edits leave alone, as they stand in the file.
ByteVector keptAtoms(TagLib::File& file, const TagEdits& edits)
{
    TagLib::MP4::Atoms atoms(&file);
    ByteVector kept;
    if (const Atom* list = findList(atoms))
        for (const Atom* atom : list->children)
            if (!isEdited(String(atom->name, String::Latin1), edits))
                kept.append(bytesOf(file, *atom));
    if (kept.isEmpty() || kept.size() >= placeholderHead)
        return kept;
    // So few bytes are filled up to the size of a placeholder.
    kept.append(ByteVector::fromUInt(placeholderHead));
    kept.append("free");
    return kept.append(ByteVector(placeholderHead - atomHead, '\0'));
}

void setTrack(TagLib::MP4::Tag& tag, const std::string& value)
{
    const int total = tag.contains("trkn") ? tag.item("trkn").toIntPair().second : 0;
    const int number = value.empty() ? 0 : std::stoi(value.substr(0, 6));
    if (number == 0 && total == 0)
        tag.removeItem("trkn");
    else
        tag.setItem("trkn", Item(number, total));
}

void setText(TagLib::MP4::Tag& tag, int type, const std::string& value)
{
    if (type == TAG_TRACK) {
        setTrack(tag, value);
        return;
    }
    for (const char* name : names[type])
        tag.removeItem(name);
    if (!value.empty())
        tag.setItem(names[type].front(), TagLib::StringList(String(value, String::UTF8)));
}

/// Puts the bytes over the placeholder, which is as long as they are.
bool replacePlaceholder(TagLib::File& file, const ByteVector& bytes)
{
    TagLib::MP4::Atoms atoms(&file);
    const Atom* list = findList(atoms);
    if (!list)
        return false;
    for (const Atom* atom : list->children) {
        if (atom->name != "----" || atom->length != long(bytes.size()))
            continue;
        file.seek(atom->offset);
        file.writeBlock(bytes);
        return true;
    }
    return false;
}
} // namespace

std::string audiocore::mp4Text(TagLib::File& file, int type)
{
    constexpr unsigned int dataHead = atomHead + 16;
    constexpr unsigned char utf16 = 2;
    TagLib::MP4::Atoms atoms(&file);
    const Atom* list = findList(atoms);
    if (!list || type == TAG_TRACK)
        return std::string();
    for (const Atom* atom : list->children) {
        if (atom->name != names[type].front())
            continue;
        const ByteVector bytes = bytesOf(file, *atom);
        if (bytes.size() < dataHead)
            return std::string();
        const ByteVector text = bytes.mid(dataHead, std::max(bytes.toUInt(atomHead), 16u) - 16);
        return bytes.data()[atomHead + 11] == utf16 ? String(text, String::UTF16BE).to8Bit(true)
                                                    : readableText(text);
    }
    return std::string();
}

bool audiocore::writeMp4(TagLib::File& file, TagLib::MP4::Tag& tag, const TagEdits& edits)
{
    const ByteVector kept = keptAtoms(file, edits);
    for (int type = 0; type < textTypes; ++type)
        if (edits.texts[size_t(type)])
            setText(tag, type, *edits.texts[size_t(type)]);
    if (edits.picture)
        setMp4Picture(tag, *edits.picture);
    TagLib::StringList others;
    for (const auto& [name, item] : tag.itemMap())
        if (!isEdited(name, edits))
            others.append(name);
    for (const String& name : others)
        tag.removeItem(name);
    if (kept.isEmpty())
        return file.save();
    TagLib::ByteVectorList filling;
    filling.append(ByteVector(kept.size() - placeholderHead, '\0'));
    Item placeholder(filling);
    placeholder.setAtomDataType(TagLib::MP4::TypeImplicit);
    tag.setItem(placeholderName, placeholder);
    return file.save() && replacePlaceholder(file, kept);
}
