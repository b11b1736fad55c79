#include "id3v2bytes.h"

#include "audiocore/tagitem.h"
#include "fieldlist.h"
#include "pictures.h"
#include "taglimits.h"
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
constexpr char utf16BigEndian = 2;
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

/// The type of what the frame says, or the first number above them.
int typeOf(const ByteVector& id)
{
    int type = 0;
    while (type < audiocore::textTypes && !says(id, type))
        ++type;
    return type;
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
    return headerSize + fromSevenBits(header.mid(6, 4)) + footerOf(header);
}

unsigned int Id3v2Bytes::footerOf(const ByteVector& header)
{
    return header.data()[5] & withFooter ? footerSize : 0;
}

std::optional<Id3v2Bytes> Id3v2Bytes::parse(const ByteVector& tag)
{
    if (tag.isEmpty())
        return Id3v2Bytes();
    if (tag.size() < headerSize || !tag.startsWith("ID3"))
        return std::nullopt;
    return parse(tag.mid(0, headerSize), tag.mid(headerSize, fromSevenBits(tag.mid(6, 4))));
}

std::optional<Id3v2Bytes> Id3v2Bytes::parse(const ByteVector& header, const ByteVector& rawBody)
{
    Id3v2Bytes parsed;
    parsed.m_version = static_cast<unsigned char>(header.data()[3]);
    const char flags = header.data()[5];
    if (parsed.m_version < 2 || parsed.m_version > 4 || (parsed.m_version == 2 && flags & extended))
        return std::nullopt;
    ByteVector body = rawBody;
    if (flags & unsynchronised && parsed.m_version < 4)
        body = resynchronised(body);
    if (flags & extended) {
        const unsigned int size = extendedHeaderSize(parsed.m_version, body);
        if (size > body.size())
            return std::nullopt;
        body = body.mid(size);
    }
    const auto part = [&body](unsigned int position, unsigned int size) { return body.mid(position, size); };
    const auto all = [](const ByteVector&, unsigned int) { return true; };
    const unsigned int end = parsed.readFrames(body.size(), part, all);
    parsed.m_rest = withoutFilling(body.mid(end));
    if (flags & unsynchronised && parsed.m_version == 4)
        for (Frame& frame : parsed.m_frames) // each one says so itself from now on
            frame.flags[1] = char(frame.flags[1] | frameUnsynchronised);
    return parsed;
}

std::optional<Id3v2Bytes> Id3v2Bytes::skim(const ByteVector& header, unsigned int bodySize, long most,
                                           const BodyReader& body)
{
    Id3v2Bytes parsed;
    parsed.m_version = static_cast<unsigned char>(header.data()[3]);
    const char flags = header.data()[5];
    if (parsed.m_version < 2 || parsed.m_version > 4 || flags & (unsynchronised | extended))
        return std::nullopt;
    parsed.readFrames(bodySize, body, [&most](const ByteVector& id, unsigned int size) {
        const bool wanted = (isPicture(id) || typeOf(id) < textTypes) && long(size) <= most;
        most -= wanted ? long(size) : 0;
        return wanted;
    });
    return parsed;
}

/// Of the frame with this head, which another one follows at `next` if it has no bytes.
unsigned int Id3v2Bytes::frameSize(const ByteVector& head, unsigned int next, unsigned int bodySize,
                                   const BodyReader& body) const
{
    if (m_version == 2)
        return head.toUInt(3, 3, true);
    const unsigned int plain = head.toUInt(4u);
    if (m_version == 3)
        return plain;
    // Some programs write the size as the older version has it.
    const unsigned int size = fromSevenBits(head.mid(4, 4));
    const auto goesOn = [&](unsigned int bytes) {
        const std::uint64_t following = std::uint64_t(next) + bytes;
        if (following >= bodySize)
            return following == bodySize;
        const ByteVector id = body(unsigned(following), 4);
        return (id.size() == 4 && looksLikeId(id)) || withoutFilling(id).isEmpty();
    };
    return size != plain && !goesOn(size) && goesOn(plain) ? plain : size;
}

/// Takes those that are wanted by id and size; where the frames end.
unsigned int Id3v2Bytes::readFrames(unsigned int bodySize, const BodyReader& body,
                                    const std::function<bool(const ByteVector&, unsigned int)>& isWanted)
{
    const unsigned int header = frameHeaderSize();
    unsigned int position = 0;
    while (m_frames.size() < mostFields && bodySize - position >= header) {
        const ByteVector head = body(position, header);
        const ByteVector id = head.mid(0, idSize());
        if (head.size() < header || !looksLikeId(id))
            break;
        const unsigned int size = frameSize(head, position + header, bodySize, body);
        if (size > bodySize - position - header)
            break;
        // A frame of no bytes says nothing and keeps other readers from those behind it.
        if (size > 0 && isWanted(id, size))
            m_frames.push_back({id, head.mid(8, header == 10 ? 2 : 0), body(position + header, size)});
        position += header + size;
    }
    return position;
}

/// What the frame says without what its flags put round it; nothing where it is compressed or encrypted.
std::optional<ByteVector> Id3v2Bytes::plainBody(const Frame& frame) const
{
    const int flags = frame.flags.size() == 2 ? frame.flags.data()[1] : 0;
    const bool newest = m_version == 4;
    if (flags & (newest ? 0x08 | 0x04 : 0x80 | 0x40))
        return std::nullopt;
    const ByteVector body = newest && flags & frameUnsynchronised ? resynchronised(frame.body) : frame.body;
    const unsigned int group = flags & (newest ? 0x40 : 0x20) ? 1 : 0;
    const unsigned int length = newest && flags & 0x01 ? 4 : 0;
    return body.mid(std::min(group + length, body.size()));
}

/// Whether the type and the description before a picture's bytes are as long as texts may be.
bool Id3v2Bytes::hasPlainTexts(const ByteVector& picture) const
{
    constexpr unsigned int shortType = 3;
    const ByteVector texts = picture.mid(0, longestText);
    const int typeEnd = m_version == 2 ? int(shortType) : texts.find('\0', 1);
    if (texts.isEmpty() || typeEnd < 0)
        return false;
    const ByteVector end(texts.data()[0] == utf16 || texts.data()[0] == utf16BigEndian ? 2 : 1, '\0');
    return texts.find(end, unsigned(typeEnd) + 2, int(end.size())) >= 0;
}

ByteVector Id3v2Bytes::shown() const
{
    std::array<unsigned int, textTypes> left;
    left.fill(longestText);
    left[TAG_GENRE] = longestGenre;
    ByteVector frames;
    for (const Frame& frame : m_frames) {
        const std::optional<ByteVector> body = plainBody(frame);
        if (!body || body->isEmpty())
            continue;
        const int type = typeOf(frame.id);
        const unsigned int cost = body->size() + costOfField;
        if (type < textTypes ? cost > left[size_t(type)] : !isPicture(frame.id) || !hasPlainTexts(*body))
            continue;
        if (type < textTypes)
            left[size_t(type)] -= cost;
        append(frames, {frame.id, ByteVector(frame.flags.size(), '\0'), *body});
    }
    return frames;
}

/// UTF-8; empty where the frame is packed in some way.
std::string Id3v2Bytes::textOf(const Frame& frame) const
{
    const std::optional<ByteVector> body = plainBody(frame);
    if (!body || body->isEmpty())
        return std::string();
    const ByteVector text = body->mid(1);
    switch (body->data()[0]) {
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
        if (says(frame.id, type) && (frame.body.data()[0] == utf8 || m_version == 2) &&
            frame.body.size() <= longestText)
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

void Id3v2Bytes::append(ByteVector& tag, const Frame& frame) const
{
    const unsigned int bytes = frame.body.size();
    tag.append(frame.id);
    tag.append(m_version == 2   ? ByteVector::fromUInt(bytes).mid(1)
               : m_version == 3 ? ByteVector::fromUInt(bytes)
                                : toSevenBits(bytes));
    tag.append(frame.flags);
    tag.append(frame.body);
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
    for (const Frame& frame : m_frames)
        append(tag, frame);
    tag.append(m_rest);
    tag.resize(whole, '\0');
    return tag;
}
