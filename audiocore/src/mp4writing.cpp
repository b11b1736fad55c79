#include "mp4writing.h"

#include "audiocore/tagitem.h"
#include "mp4atoms.h"
#include "pictures.h"
#include "tagtext.h"

#include <taglib/mp4tag.h>
#include <taglib/tfile.h>

#include <algorithm>

using audiocore::Mp4Atom;
using audiocore::Mp4Atoms;
using audiocore::TagEdits;
using TagLib::ByteVector;
using TagLib::String;
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

/// The atoms of the list of items.
std::vector<const Mp4Atom*> itemsOf(const Mp4Atoms& atoms)
{
    const Mp4Atom* list = atoms.find({"moov", "udta", "meta", "ilst"});
    return list ? atoms.childrenOf(*list) : std::vector<const Mp4Atom*>();
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
    const Mp4Atoms atoms(file, Mp4Atoms::Fragments::PassOver);
    ByteVector kept;
    for (const Mp4Atom* atom : itemsOf(atoms))
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
    const Mp4Atoms atoms(file, Mp4Atoms::Fragments::PassOver);
    for (const Mp4Atom* atom : itemsOf(atoms)) {
        if (atom->name != "----" || atom->size != std::int64_t(bytes.size()))
            continue;
        file.seek(atom->begin);
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
    if (type == TAG_TRACK)
        return std::string();
    const Mp4Atoms atoms(file, Mp4Atoms::Fragments::PassOver);
    for (const Mp4Atom* atom : itemsOf(atoms)) {
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
