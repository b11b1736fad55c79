#include "tags/asfbytes.h"

#include "audiocore/tagitem.h"
#include "tags/fieldlist.h"
#include "tags/pictures.h"
#include "tags/tagtext.h"

#include <algorithm>
#include <utility>

namespace asf = audiocore::asf;

using asf::Field;
using asf::Kind;
using asf::Object;
using asf::Value;
using audiocore::AsfBytes;
using TagLib::ByteVector;

namespace {
bool isDescribed(int type)
{
    return type == TAG_TITLE || type == TAG_ARTIST;
}

std::optional<Value> textValue(const std::string& text)
{
    if (text.empty())
        return std::nullopt;
    return Value{static_cast<unsigned int>(asf::Type::Unicode), asf::wide(text)};
}

std::optional<Value> pictureValue(const ByteVector& picture)
{
    if (picture.isEmpty())
        return std::nullopt;
    constexpr char frontCover = 3;
    ByteVector bytes(1, frontCover);
    bytes.append(ByteVector::fromUInt(picture.size(), false));
    bytes.append(asf::wide(audiocore::pictureType(picture)));
    bytes.append(asf::wide(std::string())); // no description
    return Value{static_cast<unsigned int>(asf::Type::Bytes), bytes.append(picture)};
}

/// The first one of the kind, which is made where there is none.
Object& firstOf(Kind kind, std::vector<Object>& objects)
{
    const auto found = std::find_if(objects.begin(), objects.end(),
                                    [kind](const Object& object) { return object.kind == kind; });
    return found != objects.end() ? *found : objects.emplace_back(asf::newObject(kind));
}
} // namespace

std::optional<AsfBytes> AsfBytes::parse(const ByteVector& header)
{
    std::optional<asf::Header> parsed = asf::parse(header);
    if (!parsed)
        return std::nullopt;
    AsfBytes bytes;
    bytes.m_header = std::move(*parsed);
    return bytes;
}

/// In the order in which they are read.
std::vector<Object*> AsfBytes::objectsOfFields()
{
    std::vector<Object*> found;
    const auto add = [&found](Object& object) {
        if (asf::isOfFields(object.kind))
            found.push_back(&object);
    };
    for (Object& object : m_header.objects) {
        add(object);
        std::for_each(object.objects.begin(), object.objects.end(), add);
    }
    return found;
}

/// Where a new value of the field goes: to an old one where that object can hold it.
Object& AsfBytes::homeOf(int type, bool large)
{
    if (large)
        return firstOf(Kind::Library, firstOf(Kind::Extension, m_header.objects).objects);
    const auto isOld = [type](const Field& field) { return field.says == type && field.common; };
    for (Object* object : objectsOfFields())
        if (std::any_of(object->fields.begin(), object->fields.end(), isOld))
            return *object;
    return firstOf(Kind::Extended, m_header.objects);
}

/// Of several descriptions the last one is shown.
void AsfBytes::setDescription(int type, const ByteVector& text)
{
    if (!text.isEmpty())
        firstOf(Kind::Description, m_header.objects);
    ByteVector left = text;
    for (auto object = m_header.objects.rbegin(); object != m_header.objects.rend(); ++object)
        if (object->kind == Kind::Description)
            object->texts[size_t(type)] = std::exchange(left, ByteVector());
}

/// A large value comes last: some readers give up there, and lose what is behind it.
void AsfBytes::setField(int type, const std::optional<Value>& value)
{
    const bool large = value && value->bytes.size() > asf::largestShortValue;
    Object* const home = value ? &homeOf(type, large) : nullptr;
    const auto isOld = [type](const Field& field) {
        return field.says == type && (field.common || !isDescribed(type));
    };
    for (Object* object : objectsOfFields()) {
        std::optional<Field> replacement;
        if (value && object == home && !large)
            replacement = asf::newField(object->kind, type, *value);
        replaceFields(object->fields, isOld, replacement);
    }
    if (value && large)
        home->fields.push_back(asf::newField(home->kind, type, *value));
}

/// The first one, where it is a text.
std::string AsfBytes::trackNow()
{
    for (const Object* object : objectsOfFields())
        for (const Field& field : object->fields)
            if (field.says == TAG_TRACK) {
                const Value value = asf::valueOf(object->kind, field);
                const bool text = value.type == static_cast<unsigned int>(asf::Type::Unicode);
                return text ? asf::textOf(value.bytes) : std::string();
            }
    return std::string();
}

void AsfBytes::apply(const TagEdits& edits)
{
    for (int type = 0; type < textTypes; ++type) {
        const auto& edit = edits.texts[size_t(type)];
        if (!edit)
            continue;
        const bool total = type == TAG_TRACK && !edit->empty();
        const std::optional<Value> value = textValue(total ? *edit + totalOf(trackNow()) : *edit);
        if (isDescribed(type)) {
            setDescription(type, value ? value->bytes : ByteVector());
            setField(type, std::nullopt);
        } else {
            setField(type, value);
        }
    }
    if (edits.picture)
        setField(TAG_PICTURE, pictureValue(*edits.picture));
}
