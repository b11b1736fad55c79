#include "id3v2bytes.h"

#include "audiocore/tagitem.h"
#include "fieldlist.h"
#include "pictures.h"
#include "tagtext.h"

#include <taglib/tstring.h>

#include <cstring>

using audiocore::Id3v2Bytes;
using TagLib::ByteVector;
using TagLib::String;

namespace {
constexpr unsigned int headerSize = 10;
constexpr unsigned int footerSize = 10;
constexpr unsigned int largestBody = (1u << 28) - 1;
constexpr char unsynchronised = char(0x80);
constexpr char extended = 0x40; ///< in version 2: compressed
constexpr char withFooter = 0x10;
constexpr char frameUnsynchronised = 0x02;
constexpr char utf16 = 1;
constexpr char utf8 = 3;

const char* const writtenIds[][audiocore::textTypes] = {{"TT2", "TP1", "TAL", "TCO", "TYE", "TRK"},
                                                        {"TIT2", "TPE1", "TALB", "TCON", "TYER", "TRCK"},
                                                        {"TIT2", "TPE1", "TALB", "TCON", "TDRC", "TRCK"}};

/// Every id under which some version says the item. What belongs to a date goes with its year.
const std::vector<const char*> knownIds[audiocore::textTypes] = {
    {"TIT2", "TT2"},
    {"TPE1", "TP1"},
    {"TALB", "TAL"},
    {"TCON", "TCO"},
    {"TDRC", "TRDC", "TYER", "TDAT", "TIME", "TYE", "TDA", "TIM"},
    {"TRCK", "TRK"}};

/// Some programs write the short ids into newer tags, filled up with a zero.
bool isId(const ByteVector& id, const char* name)
{
    return std::strlen(name) <= id.size() && std::strncmp(id.data(), name, id.size()) == 0;
}

bool says(const ByteVector& id, int type)
{
    const auto& ids = knownIds[type];
    return std::any_of(ids.begin(), ids.end(), [&id](const char* name) { return isId(id, name); });
}

bool isPicture(const ByteVector& id)
{
    return isId(id, "APIC") || isId(id, "PIC");
}

bool looksLikeId(const ByteVector& id)
{
    for (unsigned int i = 0; i < id.size(); ++i) {
        const char c = id.data()[i];
        const bool filledUp = i == 3 && c == 0;
        if (!filledUp && !(c >= 'A' && c <= 'Z') && !(c >= '0' && c <= '9'))
            return false;
    }
    return !id.isEmpty();
}

unsigned int fromSevenBits(const ByteVector& bytes)
{
    unsigned int number = 0;
    for (unsigned int i = 0; i < bytes.size(); ++i)
        number = number << 7 | (static_cast<unsigned char>(bytes.data()[i]) & 0x7Fu);
    return number;
}

ByteVector toSevenBits(unsigned int number)
{
    ByteVector bytes;
    for (const int shift : {21, 14, 7, 0})
        bytes.append(char(number >> shift & 0x7F));
    return bytes;
}

/// Without the zeros that were put behind bytes of 0xFF.
ByteVector resynchronised(const ByteVector& bytes)
{
    ByteVector plain(bytes.size());
    unsigned int size = 0;
    char* out = plain.data();
    for (unsigned int i = 0; i < bytes.size(); ++i) {
        out[size++] = bytes.data()[i];
        if (bytes.data()[i] == char(0xFF) && i + 1 < bytes.size() && bytes.data()[i + 1] == 0)
            ++i;
    }
    return plain.resize(size);
}

ByteVector withoutFilling(const ByteVector& bytes)
{
    unsigned int size = bytes.size();
    while (size > 0 && bytes.data()[size - 1] == 0)
        --size;
    return size == 0 ? ByteVector() : bytes;
}

unsigned int extendedHeaderSize(int version, const ByteVector& body)
{
    if (body.size() < 4)
        return body.size() + 1;
    return version == 4 ? fromSevenBits(body.mid(0, 4)) : std::min(body.toUInt(0u), largestBody) + 4;
}
} // namespace

unsigned int Id3v2Bytes::sizeByHeader(const ByteVector& header)
{
    if (header.size() < headerSize || !header.startsWith("ID3"))
        return 0;
    const unsigned int footer = header.data()[5] & withFooter ? footerSize : 0;
    return headerSize + fromSevenBits(header.mid(6, 4)) + footer;
}

std::optional<Id3v2Bytes> Id3v2Bytes::parse(const ByteVector& tag)
{
    Id3v2Bytes parsed;
    if (tag.isEmpty())
        return parsed;
    if (tag.size() < headerSize || !tag.startsWith("ID3"))
        return std::nullopt;
    parsed.m_version = static_cast<unsigned char>(tag.data()[3]);
    const char flags = tag.data()[5];
    if (parsed.m_version < 2 || parsed.m_version > 4 || (parsed.m_version == 2 && flags & extended))
        return std::nullopt;
    ByteVector body = tag.mid(headerSize, fromSevenBits(tag.mid(6, 4)));
    if (flags & unsynchronised && parsed.m_version < 4)
        body = resynchronised(body);
    if (flags & extended) {
        const unsigned int size = extendedHeaderSize(parsed.m_version, body);
        if (size > body.size())
            return std::nullopt;
        body = body.mid(size);
    }
    parsed.readFrames(body);
    if (flags & unsynchronised && parsed.m_version == 4)
        for (Frame& frame : parsed.m_frames) // each one says so itself from now on
            frame.flags[1] = char(frame.flags[1] | frameUnsynchronised);
    return parsed;
}

unsigned int Id3v2Bytes::frameSize(const ByteVector& body, unsigned int position) const
{
    if (m_version == 2)
        return body.toUInt(position + 3, 3, true);
    const unsigned int plain = body.toUInt(position + 4);
    if (m_version == 3)
        return plain;
    // Some programs write the size as the older version has it.
    const unsigned int size = fromSevenBits(body.mid(position + 4, 4));
    const auto goesOn = [&](unsigned int bytes) {
        const std::uint64_t next = std::uint64_t(position) + headerSize + bytes;
        if (next >= body.size())
            return next == body.size();
        const ByteVector id = body.mid(unsigned(next), 4);
        return (id.size() == 4 && looksLikeId(id)) || withoutFilling(id).isEmpty();
    };
    return size != plain && !goesOn(size) && goesOn(plain) ? plain : size;
}

void Id3v2Bytes::readFrames(const ByteVector& body)
{
    const unsigned int header = frameHeaderSize();
    unsigned int position = 0;
    while (m_frames.size() < mostFields && body.size() - position >= header &&
           looksLikeId(body.mid(position, idSize()))) {
        const unsigned int size = frameSize(body, position);
        if (size > body.size() - position - header)
            break;
        // A frame of no bytes says nothing and keeps other readers from those behind it.
        if (size > 0)
            m_frames.push_back({body.mid(position, idSize()), body.mid(position + 8, header == 10 ? 2 : 0),
                                body.mid(position + header, size)});
        position += header + size;
    }
    m_rest = withoutFilling(body.mid(position));
}

/// UTF-8; empty where the frame is packed in some way.
std::string Id3v2Bytes::textOf(const Frame& frame) const
{
    const bool packed = frame.flags.size() == 2 && frame.flags.data()[1] != 0;
    if (packed || frame.body.isEmpty())
        return std::string();
    const ByteVector text = frame.body.mid(1);
    switch (frame.body.data()[0]) {
    case 0:
        return String(text, String::Latin1).to8Bit(true);
    case utf16:
        return String(text, String::UTF16).to8Bit(true);
    case 2:
        return String(text, String::UTF16BE).to8Bit(true);
    default:
        return readableText(text);
    }
}

std::string Id3v2Bytes::unreadText(int type) const
{
    for (const Frame& frame : m_frames)
        if (says(frame.id, type) && (frame.body.data()[0] == utf8 || m_version == 2))
            return textOf(frame);
    return std::string();
}

Id3v2Bytes::Frame Id3v2Bytes::frame(const char* id, const ByteVector& body) const
{
    return {id, m_version == 2 ? ByteVector() : ByteVector(2, '\0'), body};
}

std::optional<Id3v2Bytes::Frame> Id3v2Bytes::textFrame(int type, const std::string& text) const
{
    if (text.empty())
        return std::nullopt;
    const String value(text, String::UTF8);
    const String::Type encoding = value.isLatin1() ? String::Latin1
                                  : m_version == 4 ? String::UTF8
                                                   : String::UTF16;
    ByteVector body(1, char(encoding));
    body.append(value.data(encoding));
    return frame(writtenIds[m_version - 2][type], body);
}

std::optional<Id3v2Bytes::Frame> Id3v2Bytes::pictureFrame(const ByteVector& bytes) const
{
    if (bytes.isEmpty())
        return std::nullopt;
    constexpr char frontCover = 3;
    ByteVector body(1, '\0');
    if (m_version == 2) {
        body.append(pictureType(bytes) == "image/png" ? "PNG" : "JPG");
    } else {
        body.append(ByteVector(pictureType(bytes).c_str()));
        body.append('\0');
    }
    body.append(frontCover);
    body.append('\0'); // no description
    body.append(bytes);
    return frame(m_version == 2 ? "PIC" : "APIC", body);
}

void Id3v2Bytes::apply(const TagEdits& edits)
{
    for (int type = 0; type < textTypes; ++type) {
        const auto& edit = edits.texts[size_t(type)];
        if (!edit)
            continue;
        std::string text = *edit;
        const auto isOld = [type](const Frame& frame) { return says(frame.id, type); };
        const auto old = std::find_if(m_frames.begin(), m_frames.end(), isOld);
        if (type == TAG_TRACK && !text.empty() && old != m_frames.end())
            text += totalOf(textOf(*old));
        replaceFields(m_frames, isOld, textFrame(type, text));
    }
    if (edits.picture)
        replaceFields(
            m_frames, [](const Frame& frame) { return isPicture(frame.id); }, pictureFrame(*edits.picture));
}

std::optional<ByteVector> Id3v2Bytes::render(unsigned int room) const
{
    constexpr unsigned int largestShortFrame = (1u << 24) - 1;
    std::uint64_t size = headerSize + std::uint64_t(m_rest.size());
    for (const Frame& frame : m_frames) {
        if (m_version == 2 && frame.body.size() > largestShortFrame)
            return std::nullopt;
        size += frameHeaderSize() + frame.body.size();
    }
    if (m_frames.empty() && m_rest.isEmpty())
        return ByteVector();
    if (size > largestBody - headerSize)
        return std::nullopt;
    const unsigned int whole = std::min(paddedSize(unsigned(size), room), largestBody);
    ByteVector tag("ID3");
    tag.append(char(m_version));
    tag.append(ByteVector(2, '\0'));
    tag.append(toSevenBits(whole - headerSize));
    for (const Frame& frame : m_frames) {
        const unsigned int bytes = frame.body.size();
        tag.append(frame.id);
        tag.append(m_version == 2   ? ByteVector::fromUInt(bytes).mid(1)
                   : m_version == 3 ? ByteVector::fromUInt(bytes)
                                    : toSevenBits(bytes));
        tag.append(frame.flags);
        tag.append(frame.body);
    }
    tag.append(m_rest);
    tag.resize(whole, '\0');
    return tag;
}
