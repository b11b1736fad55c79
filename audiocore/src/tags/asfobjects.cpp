#include "tags/asfobjects.h"

#include "audiocore/tagitem.h"
#include "base/checkedmath.h"
#include "tags/fieldlist.h"
#include "tags/tagfields.h"
#include "tags/taglimits.h"
#include "tags/tagtext.h"

#include <taglib/tstring.h>

#include <algorithm>
#include <utility>

using audiocore::asf::Field;
using audiocore::asf::Header;
using audiocore::asf::Kind;
using audiocore::asf::Object;
using audiocore::asf::Value;
using TagLib::ByteVector;
using TagLib::String;

namespace {
constexpr unsigned int idSize = 16;
constexpr unsigned int objectHead = idSize + 8;
constexpr unsigned int mostInWord = 0xFFFF;
constexpr unsigned int reservedInExtension = 18;
constexpr unsigned int fileSizePlace = 16; ///< in the properties of the file, behind their head
constexpr std::size_t textsOfDescription = 5;

const ByteVector headerId("\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C", idSize);
const ByteVector newExtension("\x11\xD2\xD3\xAB\xBA\xA9\xCF\x11\x8E\xE6\x00\xC0\x0C\x20\x53\x65\x06\x00",
                              reservedInExtension);

struct Known
{
    Kind kind;
    ByteVector id;
};
const Known knownObjects[] = {
    {Kind::FileProperties, {"\xA1\xDC\xAB\x8C\x47\xA9\xCF\x11\x8E\xE4\x00\xC0\x0C\x20\x53\x65", idSize}},
    {Kind::Description, {"\x33\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C", idSize}},
    {Kind::Extended, {"\x40\xA4\xD0\xD2\x07\xE3\xD2\x11\x97\xF0\x00\xA0\xC9\x5E\xA8\x50", idSize}},
    {Kind::Extension, {"\xB5\x03\xBF\x5F\x2E\xA9\xCF\x11\x8E\xE3\x00\xC0\x0C\x20\x53\x65", idSize}},
    {Kind::Metadata, {"\xEA\xCB\xF8\xC5\xAF\x5B\x77\x48\x84\x67\xAA\x8C\x44\xFA\x4C\xCA", idSize}},
    {Kind::Library, {"\x94\x1C\x23\x44\x98\x94\xD1\x49\xA1\x41\x1D\x13\x4E\x45\x70\x54", idSize}}};

/// Where title and author stand in a description, too: by TagItemType.
constexpr const char* names[audiocore::textTypes] = {"Title",    "Author",  "WM/AlbumTitle",
                                                     "WM/Genre", "WM/Year", "WM/TrackNumber"};
constexpr const char* pictureName = "WM/Picture";

/// What stands at another place than its own nobody knows.
Kind kindAt(const ByteVector& id, bool inExtension)
{
    const Kind kind = audiocore::asf::kindOf(id);
    return (kind == Kind::Metadata || kind == Kind::Library) == inExtension ? kind : Kind::Other;
}

ByteVector wordOf(std::size_t number)
{
    return ByteVector::fromShort(static_cast<short>(number), false);
}

/// The field of ours that has the name.
int fieldNamed(const ByteVector& bytes)
{
    constexpr unsigned int longest = 64; // bytes
    if (bytes.size() > longest)
        return -1;
    const std::string name = audiocore::asf::textOf(bytes);
    for (int type = 0; type < audiocore::textTypes; ++type)
        if (audiocore::sameName(name, names[type]))
            return type;
    return audiocore::sameName(name, pictureName) ? int(TAG_PICTURE) : -1;
}

/// Takes one part after the other. What goes beyond the end is empty, and it has failed.
class Cursor
{
public:
    explicit Cursor(const ByteVector& bytes) : m_bytes(bytes) {}

    bool failed() const { return m_failed; }
    bool atEnd() const { return m_position == m_bytes.size(); }
    unsigned int position() const { return m_position; }

    ByteVector take(std::uint64_t size)
    {
        m_failed = m_failed || size > m_bytes.size() - m_position;
        if (m_failed)
            return ByteVector();
        const unsigned int begin = m_position;
        m_position += static_cast<unsigned int>(size);
        return since(begin);
    }
    ByteVector since(unsigned int begin) const { return m_bytes.mid(begin, m_position - begin); }
    ByteVector rest() { return take(m_bytes.size() - m_position); }

    unsigned int word() { return take(2).toUShort(false); }
    unsigned int doubleWord() { return take(4).toUInt(false); }
    std::uint64_t quadWord() { return static_cast<std::uint64_t>(take(8).toLongLong(false)); }

private:
    ByteVector m_bytes;
    unsigned int m_position = 0;
    bool m_failed = false;
};

struct Record
{
    ByteVector name;
    bool common = true;
    Value value{};
};

Record takeRecord(Kind kind, Cursor& cursor)
{
    Record record;
    if (kind == Kind::Extended) {
        record.name = cursor.take(cursor.word());
        record.value.type = cursor.word();
        record.value.bytes = cursor.take(cursor.word());
        return record;
    }
    const unsigned int language = cursor.word();
    const unsigned int stream = cursor.word();
    record.common = language == 0 && stream == 0;
    const unsigned int nameSize = cursor.word();
    record.value.type = cursor.word();
    const unsigned int valueSize = cursor.doubleWord();
    record.name = cursor.take(nameSize);
    record.value.bytes = cursor.take(valueSize);
    return record;
}

/// Takes objects apart, and tells of each whether that was possible.
class Parser
{
public:
    bool takeObject(Cursor& cursor, std::vector<Object>& objects, bool inExtension)
    {
        Object object;
        object.id = cursor.take(idSize);
        const std::uint64_t size = cursor.quadWord();
        if (size < objectHead || ++m_parts > audiocore::mostFields)
            return false;
        Cursor body(cursor.take(size - objectHead));
        object.kind = kindAt(object.id, inExtension);
        if (cursor.failed() || !takeBody(body, object) || body.failed())
            return false;
        object.rest = body.rest();
        objects.push_back(std::move(object));
        return objects.back().kind != Kind::FileProperties || objects.back().rest.size() >= fileSizePlace + 8;
    }

private:
    bool takeBody(Cursor& body, Object& object)
    {
        if (audiocore::asf::isOfFields(object.kind))
            return takeFields(body, object);
        if (object.kind == Kind::Extension)
            return takeObjects(body, object);
        if (object.kind == Kind::Description)
            takeTexts(body, object);
        return true;
    }

    static void takeTexts(Cursor& body, Object& object)
    {
        std::vector<unsigned int> sizes(textsOfDescription);
        for (unsigned int& size : sizes)
            size = body.word();
        for (const unsigned int size : sizes)
            object.texts.push_back(body.take(size));
    }

    bool takeFields(Cursor& body, Object& object)
    {
        const unsigned int count = body.word();
        for (unsigned int i = 0; i < count; ++i) {
            const unsigned int begin = body.position();
            const Record record = takeRecord(object.kind, body);
            if (body.failed() || ++m_parts > audiocore::mostFields)
                return false;
            object.fields.push_back({fieldNamed(record.name), record.common, body.since(begin)});
        }
        return true;
    }

    bool takeObjects(Cursor& body, Object& object)
    {
        object.reserved = body.take(reservedInExtension);
        Cursor inside(body.take(body.doubleWord()));
        while (!inside.atEnd())
            if (!takeObject(inside, object.objects, true))
                return false;
        return true;
    }

    std::size_t m_parts = 0;
};

bool append(ByteVector& bytes, const Object& object);

bool appendTexts(ByteVector& bytes, const Object& object)
{
    for (const ByteVector& text : object.texts) {
        if (text.size() > mostInWord)
            return false;
        bytes.append(wordOf(text.size()));
    }
    for (const ByteVector& text : object.texts)
        bytes.append(text);
    return true;
}

bool appendFields(ByteVector& bytes, const Object& object)
{
    if (object.fields.size() > mostInWord)
        return false;
    bytes.append(wordOf(object.fields.size()));
    for (const Field& field : object.fields)
        bytes.append(field.bytes);
    return true;
}

bool appendObjects(ByteVector& bytes, const Object& object)
{
    ByteVector inside;
    for (const Object& one : object.objects)
        if (!append(inside, one))
            return false;
    bytes.append(object.reserved).append(ByteVector::fromUInt(inside.size(), false)).append(inside);
    return true;
}

bool appendBody(ByteVector& bytes, const Object& object)
{
    if (audiocore::asf::isOfFields(object.kind))
        return appendFields(bytes, object);
    if (object.kind == Kind::Extension)
        return appendObjects(bytes, object);
    return object.kind != Kind::Description || appendTexts(bytes, object);
}

bool append(ByteVector& bytes, const Object& object)
{
    ByteVector body;
    const bool fits = appendBody(body, object);
    body.append(object.rest);
    bytes.append(object.id);
    bytes.append(ByteVector::fromLongLong(std::int64_t(body.size()) + objectHead, false));
    bytes.append(body);
    return fits;
}
} // namespace

ByteVector audiocore::asf::wide(const std::string& text)
{
    return String(text, String::UTF8).data(String::UTF16LE).append(ByteVector(2, '\0'));
}

std::string audiocore::asf::textOf(const ByteVector& wide)
{
    std::string text = String(wide, String::UTF16LE).to8Bit(true);
    text.resize(text.find_last_not_of('\0') + 1);
    return text;
}

Kind audiocore::asf::kindOf(const ByteVector& id)
{
    const auto* known = std::find_if(std::begin(knownObjects), std::end(knownObjects),
                                     [&id](const Known& object) { return object.id == id; });
    return known == std::end(knownObjects) ? Kind::Other : known->kind;
}

bool audiocore::asf::isOfFields(Kind kind)
{
    return kind == Kind::Extended || kind == Kind::Metadata || kind == Kind::Library;
}

Object audiocore::asf::newObject(Kind kind)
{
    Object object;
    for (const Known& known : knownObjects)
        if (known.kind == kind)
            object.id = known.id;
    object.kind = kind;
    if (kind == Kind::Description)
        object.texts.resize(textsOfDescription);
    if (kind == Kind::Extension)
        object.reserved = newExtension;
    return object;
}

Field audiocore::asf::newField(Kind kind, int says, const Value& value)
{
    const ByteVector name = wide(says == TAG_PICTURE ? pictureName : names[says]);
    ByteVector bytes;
    if (kind == Kind::Extended) {
        bytes.append(wordOf(name.size())).append(name).append(wordOf(value.type));
        bytes.append(wordOf(value.bytes.size()));
    } else {
        bytes.append(ByteVector(4, '\0')).append(wordOf(name.size())).append(wordOf(value.type));
        bytes.append(ByteVector::fromUInt(value.bytes.size(), false)).append(name);
    }
    return {says, true, bytes.append(value.bytes)};
}

Value audiocore::asf::valueOf(Kind kind, const Field& field)
{
    Cursor cursor(field.bytes);
    return takeRecord(kind, cursor).value;
}

std::optional<Header> audiocore::asf::parse(const ByteVector& bytes)
{
    Header header;
    Cursor cursor(bytes);
    const ByteVector id = cursor.take(idSize);
    const std::uint64_t size = cursor.quadWord();
    const unsigned int count = cursor.doubleWord();
    header.reserved = cursor.take(2);
    if (cursor.failed() || id != headerId || size != bytes.size())
        return std::nullopt;
    Parser parser;
    for (unsigned int i = 0; i < count; ++i)
        if (!parser.takeObject(cursor, header.objects, false))
            return std::nullopt;
    header.rest = cursor.rest();
    return header;
}

std::optional<ByteVector> audiocore::asf::render(const Header& header, std::int64_t behind)
{
    std::vector<unsigned int> fileSizes;
    ByteVector bytes = headerId;
    bytes.append(ByteVector(8, '\0'));
    bytes.append(ByteVector::fromUInt(static_cast<unsigned int>(header.objects.size()), false));
    bytes.append(header.reserved);
    for (const Object& object : header.objects) {
        if (object.kind == Kind::FileProperties)
            fileSizes.push_back(bytes.size() + objectHead + fileSizePlace);
        if (!append(bytes, object))
            return std::nullopt;
    }
    bytes.append(header.rest);
    if (bytes.size() > mostTagBytesWritten)
        return std::nullopt;
    const auto put = [&bytes](unsigned int place, std::int64_t number) {
        const ByteVector size = ByteVector::fromLongLong(number, false);
        std::copy(size.begin(), size.end(), bytes.begin() + place);
    };
    put(idSize, bytes.size());
    // Players guess the length of the song from it.
    for (const unsigned int place : fileSizes)
        put(place, base::checked::sum(bytes.size(), behind));
    return bytes;
}
