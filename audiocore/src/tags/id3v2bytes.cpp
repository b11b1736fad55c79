#include "tags/id3v2bytes.h"

#include "audiocore/tagitem.h"
#include "tags/fieldlist.h"
#include "tags/id3v2frames.h"
#include "tags/pictures.h"
#include "tags/taglimits.h"
#include "tags/tagtext.h"

#include <taglib/tstring.h>

using audiocore::Id3v2Bytes;
using TagLib::ByteVector;
using TagLib::String;

namespace {
constexpr char utf16 = 1;
constexpr char utf8 = 3;

const char* const writtenIds[][audiocore::textTypes] = {{"TT2", "TP1", "TAL", "TCO", "TYE", "TRK"},
                                                        {"TIT2", "TPE1", "TALB", "TCON", "TYER", "TRCK"},
                                                        {"TIT2", "TPE1", "TALB", "TCON", "TDRC", "TRCK"}};

ByteVector toSevenBits(unsigned int number)
{
    ByteVector bytes;
    for (const int shift : {21, 14, 7, 0})
        bytes.append(char(number >> shift & 0x7F));
    return bytes;
}
} // namespace

std::optional<Id3v2Bytes> Id3v2Bytes::parse(const ByteVector& tag)
{
    if (tag.isEmpty())
        return Id3v2Bytes();
    const std::optional<id3v2::TagSize> size = id3v2::sizeOfTag(id3v2::viewOf(tag));
    if (!size)
        return std::nullopt;
    return parse(tag.mid(0, id3v2::headerSize), tag.mid(id3v2::headerSize, size->body));
}

std::optional<Id3v2Bytes> Id3v2Bytes::parse(const ByteVector& header, const ByteVector& rawBody)
{
    Id3v2Bytes parsed;
    ByteVector body = rawBody;
    const std::optional<unsigned int> begin = id3v2::beginOfFrames(header, body);
    if (!begin)
        return std::nullopt;
    body = body.mid(*begin);
    parsed.m_version = static_cast<unsigned char>(header.data()[3]);
    parsed.readFrames(body);
    if (header.data()[5] & id3v2::unsynchronised && parsed.m_version == 4)
        for (Frame& frame : parsed.m_frames) // each one says so itself from now on
            frame.flags[1] = char(frame.flags[1] | id3v2::frameUnsynchronised);
    return parsed;
}

void Id3v2Bytes::readFrames(const ByteVector& body)
{
    const std::string_view bytes = id3v2::viewOf(body);
    const auto part = [bytes](unsigned int position, unsigned int size) {
        return bytes.substr(position, size);
    };
    const unsigned int ids = id3v2::idSize(m_version);
    const auto take = [&](std::string_view head, unsigned int position, unsigned int size) {
        const auto header = static_cast<unsigned int>(head.size());
        Frame frame{body.mid(position, ids), body.mid(position + ids, ids),
                    body.mid(position + 2 * ids, header - 2 * ids), body.mid(position + header, size)};
        if (m_version == 4 && id3v2::fromSevenBits(frame.size.data()) != size)
            frame.size = sizeOf(frame.body);
        m_frames.push_back(frame);
        return m_frames.size() < mostFields;
    };
    const unsigned int end = id3v2::eachFrame(m_version, body.size(), part, take);
    if (id3v2::sizeWithoutFilling(bytes.substr(end)) > 0)
        m_rest = body.mid(end);
}

/// What the frame says without what its flags put round it; nothing where it is compressed or encrypted.
std::optional<ByteVector> Id3v2Bytes::plainBody(const Frame& frame) const
{
    const char flags = frame.flags.size() == 2 ? frame.flags.data()[1] : char(0);
    const id3v2::Wrapping wrapping = id3v2::wrappingOf(m_version, flags);
    if (wrapping.packed)
        return std::nullopt;
    ByteVector body = frame.body;
    if (wrapping.unsynchronised)
        body.resize(id3v2::resynchronise(body.data(), body.size()));
    return body.mid(std::min(wrapping.before, body.size()));
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
        if (id3v2::says(id3v2::viewOf(frame.id), type) && !frame.body.isEmpty() &&
            (frame.body.data()[0] == utf8 || m_version == 2) && frame.body.size() <= longestText)
            return textOf(frame);
    return std::string();
}

ByteVector Id3v2Bytes::sizeOf(const ByteVector& body) const
{
    ByteVector size(id3v2::idSize(m_version));
    id3v2::putFrameSize(m_version, size.data(), body.size());
    return size;
}

Id3v2Bytes::Frame Id3v2Bytes::frame(const char* id, const ByteVector& body) const
{
    return {id, sizeOf(body), m_version == 2 ? ByteVector() : ByteVector(2, '\0'), body};
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
        const auto isOld = [type](const Frame& frame) { return id3v2::says(id3v2::viewOf(frame.id), type); };
        const auto old = std::find_if(m_frames.begin(), m_frames.end(), isOld);
        if (type == TAG_TRACK && !text.empty() && old != m_frames.end())
            text += totalOf(textOf(*old));
        replaceFields(m_frames, isOld, textFrame(type, text));
    }
    if (edits.picture)
        replaceFields(
            m_frames, [](const Frame& frame) { return id3v2::isPicture(id3v2::viewOf(frame.id)); },
            pictureFrame(*edits.picture));
}

std::optional<ByteVector> Id3v2Bytes::render(unsigned int room) const
{
    constexpr unsigned int largestShortFrame = (1u << 24) - 1;
    std::uint64_t size = id3v2::headerSize + std::uint64_t(m_rest.size());
    for (const Frame& frame : m_frames) {
        if (m_version == 2 && frame.body.size() > largestShortFrame)
            return std::nullopt;
        size += id3v2::frameHeaderSize(m_version) + frame.body.size();
    }
    if (m_frames.empty() && m_rest.isEmpty())
        return ByteVector();
    if (size > id3v2::largestBody - id3v2::headerSize)
        return std::nullopt;
    // A frame that was too long for the tag would fit in and be read if more came behind it.
    const unsigned int whole = m_rest.isEmpty()
                                   ? std::min(paddedSize(unsigned(size), room), id3v2::largestBody)
                                   : static_cast<unsigned int>(size);
    ByteVector tag("ID3");
    tag.append(char(m_version));
    tag.append(ByteVector(2, '\0'));
    tag.append(toSevenBits(whole - id3v2::headerSize));
    for (const Frame& frame : m_frames)
        for (const ByteVector& part : {frame.id, frame.size, frame.flags, frame.body})
            tag.append(part);
    tag.append(m_rest);
    tag.resize(whole, '\0');
    return tag;
}
