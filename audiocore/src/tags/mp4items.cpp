#include "tags/mp4items.h"

#include "audiocore/tagitem.h"
#include "tags/fieldlist.h"
#include "tags/mp4file.h"
#include "tags/mp4text.h"
#include "tags/pictures.h"

#include <algorithm>

using audiocore::Mp4Atom;
using audiocore::mp4AtomHead;
using audiocore::Mp4File;
using audiocore::Mp4Item;
using audiocore::Mp4List;
using audiocore::Mp4Value;
using audiocore::TagEdits;
using TagLib::ByteVector;

namespace {
constexpr std::int64_t largestList = 64 << 20;

ByteVector item(const std::string& name, Mp4Value::Mark as, const ByteVector& value)
{
    ByteVector data = ByteVector::fromUInt(as);
    data.append(ByteVector(4, '\0'));
    return audiocore::mp4AtomBytes(name, audiocore::mp4AtomBytes("data", data.append(value)));
}

struct Field
{
    int type;
    ByteVector bytes; ///< the whole atom
};

const Mp4Item* firstOf(const Mp4List& list, int type)
{
    const auto first = std::find_if(list.items.begin(), list.items.end(),
                                    [type](const Mp4Item& one) { return one.type == type; });
    return first == list.items.end() ? nullptr : &*first;
}

/// Keyed items have numbers that stand for nothing elsewhere: there is a new one only where there is an old.
std::string nameOf(const Mp4List& list, int type)
{
    if (list.kind == Mp4List::Kind::Named)
        return audiocore::mp4Name(type);
    const Mp4Item* old = firstOf(list, type);
    return old ? old->atom.name : std::string();
}

std::optional<Field> textField(const std::string& name, int type, const std::string& text)
{
    if (text.empty())
        return std::nullopt;
    return Field{type, item(name, Mp4Value::Utf8, ByteVector(text.data(), unsigned(text.size())))};
}

std::optional<Field> pictureField(const std::string& name, const ByteVector& picture)
{
    if (picture.isEmpty())
        return std::nullopt;
    const bool png = audiocore::pictureType(picture) == "image/png";
    return Field{TAG_PICTURE, item(name, png ? Mp4Value::Png : Mp4Value::Jpeg, picture)};
}

/// The number of a track in the old value, or in a new one; the total and whatever else is there stays.
std::optional<Field> trackField(const std::string& name, const ByteVector& old, const std::string& text)
{
    ByteVector value = old.size() < 6 ? ByteVector(8, '\0') : old;
    const int number = text.empty() ? 0 : std::stoi(text.substr(0, 6));
    if (number == 0 && value.toUShort(4u) == 0)
        return std::nullopt;
    const ByteVector bytes = ByteVector::fromShort(static_cast<short>(number));
    std::copy(bytes.begin(), bytes.end(), value.begin() + 2);
    return Field{TAG_TRACK, item(name, Mp4Value::Anything, value)};
}

/// The first value of the first track item.
ByteVector oldTrack(Mp4File& file, const Mp4List& list)
{
    for (const Mp4Item& item : list.items) {
        const std::vector<Mp4Value> values =
            item.type == TAG_TRACK ? file.valuesOf(item.atom) : std::vector<Mp4Value>();
        if (!values.empty() && values.front().size <= 64)
            return file.bytesOf(values.front());
    }
    return ByteVector();
}

void replace(std::vector<Field>& fields, int type, const std::optional<Field>& field)
{
    const auto isOld = [type](const Field& old) { return old.type == type; };
    audiocore::replaceFields(fields, isOld, field);
}

/// A free item that has no value, and no more than a part of a name.
bool saysNothing(TagLib::File& file, const Mp4Atom& item)
{
    constexpr std::int64_t most = 1024;
    if (item.name != "----" || item.size > most)
        return false;
    const ByteVector bytes = audiocore::bytesOf(file, item);
    auto at = static_cast<unsigned int>(item.headSize);
    while (at + mp4AtomHead <= bytes.size()) {
        const unsigned int size = bytes.toUInt(at);
        const bool isName = bytes.containsAt("mean", at + 4) || bytes.containsAt("name", at + 4);
        if (!isName || size < mp4AtomHead || size > bytes.size() - at)
            return false;
        at += size;
    }
    return at == bytes.size();
}

/// Some writers leave room behind the items. What is not empty there is not known.
bool endsEmpty(TagLib::File& file, const Mp4List& list)
{
    constexpr std::int64_t atOnce = 64 * 1024;
    std::int64_t position = list.items.empty() ? list.atom.inside : list.items.back().atom.end();
    for (; position < list.atom.end(); position += atOnce) {
        file.seek(position);
        const ByteVector rest = file.readBlock(size_t(std::min(atOnce, list.atom.end() - position)));
        if (std::any_of(rest.begin(), rest.end(), [](char byte) { return byte != 0; }))
            return false;
    }
    return true;
}
} // namespace

ByteVector audiocore::mp4AtomBytes(const std::string& name, const ByteVector& content)
{
    ByteVector bytes = ByteVector::fromUInt(content.size() + mp4AtomHead);
    bytes.append(ByteVector(name.data(), unsigned(name.size())));
    return bytes.append(content);
}

TagEdits audiocore::editsWithin(const Mp4List& list, const TagEdits& edits)
{
    TagEdits within;
    for (int type = 0; type < textTypes; ++type)
        if (firstOf(list, type))
            within.texts[size_t(type)] = edits.texts[size_t(type)];
    if (firstOf(list, TAG_PICTURE))
        within.picture = edits.picture;
    return within;
}

std::optional<ByteVector> audiocore::editedList(Mp4File& file, const Mp4List& list, const TagEdits& edits)
{
    if (list.atom.size > largestList || !endsEmpty(file, list))
        return std::nullopt;
    std::vector<Field> fields;
    fields.reserve(list.items.size());
    for (const Mp4Item& item : list.items)
        if (!saysNothing(file, item.atom))
            fields.push_back({item.type, bytesOf(file, item.atom)});
    for (int type = 0; type < textTypes; ++type)
        if (const auto& text = edits.texts[size_t(type)]) {
            const std::string name = nameOf(list, type);
            replace(fields, type,
                    type == TAG_TRACK && list.kind == Mp4List::Kind::Named
                        ? trackField(name, oldTrack(file, list), *text)
                        : textField(name, type, *text));
        }
    if (edits.picture)
        replace(fields, TAG_PICTURE, pictureField(nameOf(list, TAG_PICTURE), *edits.picture));
    ByteVector bytes = mp4AtomBytes("ilst", ByteVector());
    for (Field& field : fields) {
        bytes.append(field.bytes);
        field.bytes.clear(); // pictures are large
    }
    const ByteVector size = ByteVector::fromUInt(bytes.size());
    std::copy(size.begin(), size.end(), bytes.data());
    return bytes;
}

ByteVector audiocore::editedText(Mp4File& file, const Mp4Item& item, const std::string& text)
{
    constexpr std::int64_t languageEnd = 4;
    if (text.empty())
        return ByteVector();
    file.seek(item.atom.content());
    const std::int64_t size = std::min(languageEnd, item.atom.end() - item.atom.content());
    const ByteVector content = mp4PlainContent(text, file.readBlock(size_t(size)));
    return content.isEmpty() ? content : mp4AtomBytes(item.atom.name, content);
}
