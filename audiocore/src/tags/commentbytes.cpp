#include "tags/commentbytes.h"

#include "audiocore/tagitem.h"
#include "tags/fieldlist.h"
#include "tags/pictures.h"
#include "tags/taglimits.h"
#include "tags/tagtext.h"

#include <cstdint>

using audiocore::CommentBytes;
using TagLib::ByteVector;

namespace {
/// The first one is written.
const std::vector<const char*> fieldNames[audiocore::textTypes] = {
    {"TITLE"}, {"ARTIST"}, {"ALBUM"}, {"GENRE"}, {"DATE", "YEAR"}, {"TRACKNUMBER", "TRACKNUM"}};
const std::vector<const char*> pictureNames = {"METADATA_BLOCK_PICTURE", "COVERART", "COVERARTMIME"};

bool hasName(const ByteVector& field, const std::vector<const char*>& wanted)
{
    const int end = field.find('=');
    if (end <= 0)
        return false;
    const std::string name(field.data(), size_t(end));
    return std::any_of(wanted.begin(), wanted.end(),
                       [&name](const char* known) { return audiocore::sameName(name, known); });
}

/// Whether the tag library will make a picture of the field, and a short text of its description.
bool isPlainPicture(const ByteVector& field)
{
    constexpr unsigned int beginning = 88; // characters
    constexpr unsigned int mimePlace = 4;
    if (!hasName(field, pictureNames))
        return false;
    const ByteVector value = field.mid(unsigned(field.find('=')) + 1);
    const auto isDigit = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' ||
               c == '/' || c == '=';
    };
    if (!std::all_of(value.begin(), value.end(), isDigit))
        return false;
    if (!hasName(field, {pictureNames.front()}))
        return true;
    const ByteVector head = ByteVector::fromBase64(value.mid(0, beginning));
    const unsigned int mime = head.size() < 32 ? audiocore::longestText : head.toUInt(mimePlace);
    return mime <= head.size() && mime + mimePlace + 8 <= head.size() &&
           head.toUInt(mimePlace + 4 + mime) <= audiocore::longestText;
}

std::string valueOf(const ByteVector& field)
{
    return audiocore::readableText(field.mid(unsigned(field.find('=')) + 1));
}

ByteVector field(const char* name, const ByteVector& value)
{
    ByteVector bytes(name);
    bytes.append('=');
    return bytes.append(value);
}

/// Takes a block with its length in front of it; nothing when the bytes do not go so far.
std::optional<ByteVector> takeBlock(const ByteVector& bytes, unsigned int& position)
{
    if (bytes.size() - position < 4)
        return std::nullopt;
    const unsigned int size = bytes.toUInt(position, false);
    if (size > bytes.size() - position - 4)
        return std::nullopt;
    ByteVector block = bytes.mid(position + 4, size);
    position += 4 + size;
    return block;
}

void appendBlock(ByteVector& bytes, const ByteVector& block)
{
    bytes.append(ByteVector::fromUInt(block.size(), false));
    bytes.append(block);
}
} // namespace

std::optional<CommentBytes> CommentBytes::parse(const ByteVector& comment)
{
    CommentBytes parsed;
    if (comment.isEmpty())
        return parsed;
    unsigned int position = 0;
    const std::optional<ByteVector> vendor = takeBlock(comment, position);
    if (!vendor || comment.size() - position < 4)
        return std::nullopt;
    parsed.m_vendor = *vendor;
    const unsigned int count = comment.toUInt(position, false);
    position += 4;
    for (unsigned int i = 0; i < count && position < comment.size(); ++i) {
        const std::optional<ByteVector> field = takeBlock(comment, position);
        if (!field || i >= mostFields)
            return std::nullopt;
        parsed.m_fields.push_back(*field);
    }
    parsed.m_rest = comment.mid(position);
    return parsed;
}

std::optional<CommentBytes::Bound> CommentBytes::boundOf(const ByteVector& comment)
{
    unsigned int position = 0;
    if (comment.size() >= 8 && comment.toUInt(0u, false) > longestText)
        return Bound{0, ByteVector(8, '\0'), 8};
    if (!takeBlock(comment, position) || comment.size() - position < 4)
        return std::nullopt;
    const unsigned int place = position;
    const unsigned int count = comment.toUInt(place, false);
    position += 4;
    // What is in bounds even if none of it is a picture need not be gone through, unless it tells of more
    // than there is.
    if (comment.size() + std::uint64_t(count) * costOfField <= mostTextBytes &&
        count <= (comment.size() - position) / 4)
        return std::nullopt;
    unsigned int left = mostTextBytes;
    for (unsigned int i = 0; i < count; ++i) {
        const unsigned int end = position;
        if (end == comment.size()) // there the tag library would read none of them
            return Bound{place, ByteVector::fromUInt(i, false), end};
        const std::optional<ByteVector> field = takeBlock(comment, position);
        if (!field)
            return std::nullopt;
        const unsigned int cost = costOfField + (isPlainPicture(*field) ? 0 : field->size());
        if (cost > left)
            return Bound{place, ByteVector::fromUInt(i, false), end};
        left -= cost;
    }
    return std::nullopt;
}

void CommentBytes::Bound::applyTo(ByteVector& comment) const
{
    std::copy(bytes.begin(), bytes.end(), comment.begin() + place);
}

void CommentBytes::boundFields(ByteVector& comment)
{
    if (const std::optional<Bound> bound = boundOf(comment))
        bound->applyTo(comment);
}

std::string CommentBytes::text(int type) const
{
    std::string joined;
    for (const ByteVector& field : m_fields)
        if (field.size() <= longestText && hasName(field, fieldNames[type]) && !valueOf(field).empty() &&
            (joined.empty() || type != TAG_TITLE))
            joined += (joined.empty() ? "" : "; ") + valueOf(field);
    return joined;
}

void CommentBytes::apply(const TagEdits& edits)
{
    for (int type = 0; type < textTypes; ++type) {
        const auto& edit = edits.texts[size_t(type)];
        if (!edit)
            continue;
        std::string value = *edit;
        if (type == TAG_TRACK && !value.empty())
            value += totalOf(text(type));
        std::optional<ByteVector> replacement;
        if (!value.empty())
            replacement = field(fieldNames[type].front(), ByteVector(value.data(), unsigned(value.size())));
        const auto isOld = [type](const ByteVector& old) { return hasName(old, fieldNames[type]); };
        replaceFields(m_fields, isOld, replacement);
    }
    if (!edits.picture)
        return;
    std::optional<ByteVector> replacement;
    if (!edits.picture->isEmpty())
        replacement = field(pictureNames.front(), flacPicture(*edits.picture).toBase64());
    const auto isOld = [](const ByteVector& old) { return hasName(old, pictureNames); };
    replaceFields(m_fields, isOld, replacement);
}

ByteVector CommentBytes::render() const
{
    ByteVector comment;
    appendBlock(comment, m_vendor);
    comment.append(ByteVector::fromUInt(unsigned(m_fields.size()), false));
    for (const ByteVector& field : m_fields)
        appendBlock(comment, field);
    return comment.append(m_rest);
}
