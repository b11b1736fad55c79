#pragma once

#include <taglib/tbytevector.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace audiocore::asf {
/// Those that hold something of ours. Title and author are texts of Description, all else is in fields: of
/// Extended, or of Metadata and Library, which lie inside Extension.
enum class Kind { Other, FileProperties, Description, Extended, Extension, Metadata, Library };

enum class Type : unsigned int { Unicode = 0, Bytes = 1 }; ///< and others

struct Value
{
    unsigned int type; ///< a Type
    TagLib::ByteVector bytes;
};
/// Bytes of a value in fields of Extended and Metadata; those of Library may be larger.
constexpr unsigned int largestShortValue = 0xFFFF;

struct Field
{
    int says;    ///< a TagItemType, or -1
    bool common; ///< of no stream and no language of its own
    TagLib::ByteVector bytes;
};

struct Object
{
    TagLib::ByteVector id;
    Kind kind = Kind::Other;
    std::vector<TagLib::ByteVector> texts; ///< of Description; by TagItemType those of ours
    std::vector<Field> fields;
    TagLib::ByteVector reserved; ///< what an Extension begins with
    std::vector<Object> objects; ///< of an Extension
    TagLib::ByteVector rest;     ///< behind all that; the whole of what we do not know
};

struct Header
{
    std::vector<Object> objects;
    TagLib::ByteVector reserved;
    TagLib::ByteVector rest; ///< behind the objects that the header counts
};

/// Nothing where the bytes cannot be taken apart, or into too many parts.
std::optional<Header> parse(const TagLib::ByteVector& bytes);
/// The header of a file in which so many bytes follow it. Nothing when a part of it would be larger than the
/// format can say, or the whole larger than we write.
std::optional<TagLib::ByteVector> render(const Header& header, std::int64_t behind);

/// By the 16 bytes that an object begins with.
Kind kindOf(const TagLib::ByteVector& id);
bool isOfFields(Kind kind);
/// An empty one.
Object newObject(Kind kind);
/// A field for an object of the kind.
Field newField(Kind kind, int says, const Value& value);
Value valueOf(Kind kind, const Field& field);
/// With the zero that ends it.
TagLib::ByteVector wide(const std::string& text);
/// Without the zeros that end it.
std::string textOf(const TagLib::ByteVector& wide);
} // namespace audiocore::asf
