#include "commentbytes.h"

#include "audiocore/tagitem.h"
#include "fieldlist.h"
#include "pictures.h"
#include "tagtext.h"

using audiocore::CommentBytes;
using TagLib::ByteVector;

namespace {
/// The first one is written.
const std::vector<const char*> names[audiocore::textTypes] = {
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

std::string CommentBytes::text(int type) const
{
    std::string joined;
    for (const ByteVector& field : m_fields)
        if (hasName(field, names[type]) && !valueOf(field).empty())
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
            replacement = field(names[type].front(), ByteVector(value.data(), unsigned(value.size())));
        const auto isOld = [type](const ByteVector& old) { return hasName(old, names[type]); };
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
