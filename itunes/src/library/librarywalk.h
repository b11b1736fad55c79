#pragma once

#include "xml/xmlscanner.h"

#include <cstdint>
#include <string_view>

namespace itunes {
/// What a track's entry may say; everything else is Other.
enum class Field {
    Other,
    TrackId,
    Name,
    Artist,
    Album,
    Genre,
    Kind,
    Size,
    TotalTime,
    TrackNumber,
    Year,
    BitRate,
    SampleRate,
    PersistentId,
    Location,
    TrackType,
    HasVideo,
    Movie,
    TvShow,
    MusicVideo,
    Podcast,
    Audiobook
};

/// Bytes of the library as ByteSource gives it.
struct Span
{
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

/// One key of a track's entry with its value.
struct Pair
{
    Field field = Field::Other;
    /// The value's text; "true" or "false" for a truth value. Empty for fields that are Other, and for values
    /// that are no single value.
    std::string_view text;
    std::string_view lead; ///< the blanks before the key
    Span whole;            ///< from these blanks to the value's end
    Span value;
};

/// Is shown what a library holds, in the file's order. Texts are valid during the call only.
class LibraryVisitor
{
public:
    virtual ~LibraryVisitor() = default;
    /// `key` is the number that the entry stands under, `inside` the place behind its opening tag.
    virtual void trackBegins(std::uint64_t key, std::uint64_t inside)
    {
        (void)key;
        (void)inside;
    }
    virtual void trackHas(const Pair& pair) { (void)pair; }
    /// The entry with its key and the blanks before it.
    virtual void trackEnds(const Span& whole) { (void)whole; }
    /// Whether the playlists are of interest; else they are only checked.
    virtual bool wantsPlaylists() const { return false; }
    virtual void playlistItem(std::uint64_t trackId, const Span& whole)
    {
        (void)trackId;
        (void)whole;
    }
};

/// Shows the whole library to the visitor. False when the structure is broken: the scanner says where.
bool walkLibrary(XmlScanner& scanner, LibraryVisitor& visitor);

/// A decimal number; 0 for what is none, the largest number for what is larger.
std::uint64_t numberOf(std::string_view text);
/// A persistent identifier of up to 16 hexadecimal digits; 0 for what is none.
std::uint64_t identifierOf(std::string_view text);
} // namespace itunes
