#include "tags/id3v2screen.h"

#include "audiocore/tagitem.h"
#include "tags/id3v2frames.h"
#include "tags/tagfields.h"
#include "tags/taglimits.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace id3v2 = audiocore::id3v2;

using TagLib::ByteVector;

namespace {
int versionOf(const ByteVector& header)
{
    return static_cast<unsigned char>(header.data()[3]);
}

/// Whether the type and the description before a picture's bytes are as long as texts may be.
bool hasPlainTexts(int version, std::string_view picture)
{
    constexpr std::size_t shortType = 3;
    const std::string_view texts = picture.substr(0, audiocore::longestText);
    const std::size_t typeEnd = version == 2 ? shortType : texts.find('\0', 1);
    if (texts.empty() || typeEnd == std::string_view::npos)
        return false;
    const std::size_t unit = texts[0] == 1 || texts[0] == 2 ? 2 : 1; // of UTF-16, or of the others
    for (std::size_t end = typeEnd + 2; end + unit <= texts.size(); end += unit)
        if (texts[end] == 0 && texts[end + unit - 1] == 0)
            return true;
    return false;
}

/// Of the body, from one byte to before another.
struct Piece
{
    unsigned int begin;
    unsigned int end;

    unsigned int size() const { return end - begin; }
};

/// Picks the frames that are shown and joins them, inside the body that they lie in.
class Screening
{
public:
    Screening(int version, char flags, char* bytes)
        : m_version(version), m_eachUnsynchronised(flags & id3v2::unsynchronised && version == 4),
          m_bytes(bytes)
    {
        m_left.fill(audiocore::longestText);
        m_left[TAG_GENRE] = audiocore::longestGenre;
    }

    void take(unsigned int position, unsigned int size)
    {
        const unsigned int header = id3v2::frameHeaderSize(m_version);
        const char* const head = m_bytes + position;
        const char flags = header == 10 ? head[9] : char(0);
        id3v2::Wrapping wrapping = id3v2::wrappingOf(m_version, flags);
        char* body = m_bytes + position + header;
        if (wrapping.packed)
            return;
        if (wrapping.unsynchronised || m_eachUnsynchronised)
            size = id3v2::resynchronise(body, size);
        if (size <= wrapping.before)
            return;
        body += wrapping.before;
        size -= wrapping.before;
        if (isInBounds({head, id3v2::idSize(m_version)}, {body, size}))
            put(head, body, size);
    }
    /// Where in the bytes the frames are then. The largest piece, with a picture as a rule, stays where it
    /// is.
    Piece join()
    {
        const auto bySize = [](const Piece& a, const Piece& b) { return a.size() < b.size(); };
        const auto anchor = std::max_element(m_pieces.begin(), m_pieces.end(), bySize);
        if (anchor == m_pieces.end())
            return {0, 0};
        Piece joined = *anchor;
        for (auto left = anchor; left != m_pieces.begin();) {
            --left;
            joined.begin -= left->size();
            std::memmove(m_bytes + joined.begin, m_bytes + left->begin, left->size());
        }
        for (auto right = anchor + 1; right != m_pieces.end(); ++right) {
            std::memmove(m_bytes + joined.end, m_bytes + right->begin, right->size());
            joined.end += right->size();
        }
        return joined;
    }

private:
    bool isInBounds(std::string_view id, std::string_view body)
    {
        const int type = id3v2::typeOf(id);
        if (type == audiocore::textTypes)
            return id3v2::isPicture(id) && hasPlainTexts(m_version, body);
        unsigned int& left = m_left[std::size_t(type)];
        const std::size_t cost = body.size() + audiocore::costOfField;
        if (cost > left)
            return false;
        left -= static_cast<unsigned int>(cost);
        return true;
    }
    /// Puts a plain header right before the body, where the old one was or something round the body.
    void put(const char* id, char* body, unsigned int size)
    {
        const unsigned int idSize = id3v2::idSize(m_version);
        char* const place = body - id3v2::frameHeaderSize(m_version);
        std::memmove(place, id, idSize);
        id3v2::putFrameSize(m_version, place + idSize, size);
        std::fill(place + 2 * std::size_t(idSize), body, '\0'); // the flags
        const auto begin = static_cast<unsigned int>(place - m_bytes);
        if (m_pieces.empty() || m_pieces.back().end != begin)
            m_pieces.push_back({begin, begin});
        m_pieces.back().end = static_cast<unsigned int>(body - m_bytes) + size;
    }

    const int m_version;
    const bool m_eachUnsynchronised;
    char* const m_bytes;
    std::vector<Piece> m_pieces;
    std::array<unsigned int, audiocore::textTypes> m_left{};
};
} // namespace

void audiocore::screenId3v2(const ByteVector& header, ByteVector& body)
{
    const std::optional<unsigned int> begin = id3v2::beginOfFrames(header, body);
    if (!begin) {
        body.clear();
        return;
    }
    const int version = versionOf(header);
    const unsigned int size = body.size() - *begin;
    char* const bytes = body.data();
    Screening screening(version, header.data()[5], bytes);
    const auto part = [&](unsigned int position, unsigned int count) {
        return std::string_view(bytes + *begin + position, std::min(count, size - position));
    };
    std::size_t frames = 0;
    id3v2::eachFrame(version, size, part, [&](std::string_view, unsigned int position, unsigned int bytesOf) {
        screening.take(*begin + position, bytesOf);
        return ++frames < mostFields;
    });
    const Piece shown = screening.join();
    if (shown.size() < body.size() / 2) // what is left out is not to stay in memory
        body = ByteVector(bytes + shown.begin, shown.size());
    else
        body = body.mid(shown.begin, shown.size()); // shares the bytes
}

ByteVector audiocore::skimId3v2(const ByteVector& header, unsigned int bodySize, long most,
                                const TagBodyReader& body)
{
    const int version = versionOf(header);
    const char flags = header.data()[5];
    ByteVector skimmed;
    if (version < 2 || version > 4 || flags & (id3v2::unsynchronised | id3v2::extended))
        return skimmed;
    std::size_t frames = 0;
    const auto take = [&](std::string_view head, unsigned int position, unsigned int size) {
        const std::string_view id = head.substr(0, id3v2::idSize(version));
        const bool wanted =
            (id3v2::isPicture(id) || id3v2::typeOf(id) < textTypes) && std::int64_t(size) <= most;
        if (!wanted)
            return true;
        most -= long(size);
        const ByteVector read = body(position + unsigned(head.size()), size);
        ByteVector plain(head.data(), unsigned(head.size()));
        id3v2::putFrameSize(version, plain.data() + id.size(), read.size());
        skimmed.append(plain);
        skimmed.append(read);
        return ++frames < mostFields;
    };
    id3v2::eachFrame(version, bodySize, body, take);
    return skimmed;
}
