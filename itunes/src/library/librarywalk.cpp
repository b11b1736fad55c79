#include "library/librarywalk.h"

#include <cstring>
#include <limits>
#include <string>

using itunes::Field;
using itunes::LibraryVisitor;
using itunes::Pair;
using itunes::XmlScanner;
using Event = itunes::XmlScanner::Event;

namespace {
// A track takes more memory than an empty entry takes in the file. Real ones say where the song is, what it
// is called and a dozen things more.
constexpr std::uint64_t mostTracks = 1000000;
constexpr std::uint64_t fewTracks = 10000; // may be as small as they like
constexpr std::uint64_t smallestTrack = 128;

enum class Section { Other, Tracks, Playlists };

/// By length: most keys are none of these, and it is asked for all of them.
constexpr std::pair<std::string_view, Field> fields[] = {
    {"Name", Field::Name},
    {"Kind", Field::Kind},
    {"Size", Field::Size},
    {"Year", Field::Year},
    {"Album", Field::Album},
    {"Genre", Field::Genre},
    {"Movie", Field::Movie},
    {"Artist", Field::Artist},
    {"TV Show", Field::TvShow},
    {"Podcast", Field::Podcast},
    {"Track ID", Field::TrackId},
    {"Bit Rate", Field::BitRate},
    {"Location", Field::Location},
    {"Has Video", Field::HasVideo},
    {"Audiobook", Field::Audiobook},
    {"Audiobooks", Field::Audiobook},
    {"Total Time", Field::TotalTime},
    {"Track Type", Field::TrackType},
    {"Music Video", Field::MusicVideo},
    {"Sample Rate", Field::SampleRate},
    {"Track Number", Field::TrackNumber},
    {"Persistent ID", Field::PersistentId},
};

Field fieldOf(std::string_view key)
{
    for (const auto& [name, field] : fields) {
        if (name.size() < key.size())
            continue;
        if (name.size() > key.size())
            break;
        if (name.front() == key.front() && name == key)
            return field;
    }
    return Field::Other;
}

Section sectionOf(std::string_view key)
{
    if (key == "Tracks")
        return Section::Tracks;
    return key == "Playlists" ? Section::Playlists : Section::Other;
}

/// The descent through the document. Every step stands at an element's opening tag when it begins and has
/// passed its closing tag when it ends; false once the scanner has met something broken.
class Walk
{
public:
    Walk(XmlScanner& scanner, LibraryVisitor& visitor) : m_scanner(scanner), m_visitor(visitor) {}

    bool run()
    {
        if (m_scanner.next() != Event::Open)
            return false;
        if (!is("plist")) {
            m_scanner.fail("no property list");
            return false;
        }
        const bool whole = eachChild([this] { return is("dict") ? root() : skip(); });
        return whole && m_scanner.next() == Event::End;
    }

private:
    /// Whether the element at hand has this name. It is asked for every tag: comparing a few bytes in place
    /// is worth it.
    template <std::size_t Size>
    bool is(const char (&word)[Size]) const
    {
        return m_scanner.name().size() == Size - 1 &&
               std::memcmp(m_scanner.name().data(), word, Size - 1) == 0;
    }

    /// Calls the step for each element inside the one at hand.
    template <typename Step>
    bool eachChild(Step step)
    {
        for (;;) {
            const Event event = m_scanner.next();
            if (event == Event::Close)
                return true;
            if (event != Event::Open || !step())
                return false;
        }
    }

    bool skip()
    {
        for (int depth = 1; depth > 0;) {
            const Event event = m_scanner.next();
            if (event == Event::Broken)
                return false;
            depth += event == Event::Open ? 1 : -1;
        }
        return true;
    }

    /// Passes an element that holds only text, which is then the scanner's; none for an element with others
    /// inside.
    bool leaf(std::string_view& text)
    {
        text = std::string_view();
        const Event event = m_scanner.next();
        if (event == Event::Close) {
            text = m_scanner.text();
            return true;
        }
        return event == Event::Open && skip() && eachChild([this] { return skip(); });
    }

    /// Walks a dictionary: `meaning` turns a key's text into what it stands for, `step` takes that, the place
    /// of the key and its blanks, and stands at the value. Keys without a value, and values without a key,
    /// are passed over.
    template <typename Meaning, typename Step>
    bool eachPair(Meaning meaning, Step step)
    {
        bool hasKey = false;
        decltype(meaning(std::string_view())) key = {};
        std::uint64_t begin = 0;
        return eachChild([&] {
            if (!is("key")) {
                const bool asked = hasKey;
                hasKey = false;
                return asked ? step(key, begin) : skip();
            }
            const std::string_view lead = m_scanner.lead();
            begin = m_scanner.tagBegin() - lead.size();
            if (lead != m_lead)
                m_lead = lead;
            std::string_view text;
            if (!leaf(text))
                return false;
            key = meaning(text);
            hasKey = true;
            return true;
        });
    }

    bool root()
    {
        return eachPair(sectionOf, [this](Section section, std::uint64_t) {
            if (section == Section::Tracks && is("dict"))
                return tracks();
            if (section == Section::Playlists && is("array") && m_visitor.wantsPlaylists())
                return eachChild([this] { return is("dict") ? playlist() : skip(); });
            return skip();
        });
    }

    bool tracks()
    {
        return eachPair(itunes::numberOf, [this](std::uint64_t key, std::uint64_t begin) {
            if (!is("dict"))
                return skip();
            m_visitor.trackBegins(key, m_scanner.tagEnd());
            if (!eachPair(fieldOf, [this](Field field, std::uint64_t at) { return trackField(field, at); }))
                return false;
            m_visitor.trackEnds({begin, m_scanner.tagEnd()});
            ++m_tracks;
            if (m_tracks <= mostTracks && m_tracks <= fewTracks + m_scanner.tagEnd() / smallestTrack)
                return true;
            m_scanner.fail("more tracks than a library of this size can hold");
            return false;
        });
    }

    bool trackField(Field field, std::uint64_t begin)
    {
        Pair pair;
        pair.field = field;
        pair.value.begin = m_scanner.tagBegin();
        const bool isTrue = is("true");
        const bool isFalse = is("false");
        if (field == Field::Other ? !skip() : !leaf(pair.text))
            return false;
        if (isTrue || isFalse)
            pair.text = isTrue ? "true" : "false";
        pair.value.end = m_scanner.tagEnd();
        pair.whole = {begin, pair.value.end};
        pair.lead = m_lead;
        m_visitor.trackHas(pair);
        return true;
    }

    bool playlist()
    {
        const auto isItems = [](std::string_view key) { return key == "Playlist Items"; };
        return eachPair(isItems, [this](bool items, std::uint64_t) {
            if (!items || !is("array"))
                return skip();
            return eachChild([this] { return is("dict") ? item() : skip(); });
        });
    }

    bool item()
    {
        const std::uint64_t begin = m_scanner.leadBegin();
        std::uint64_t id = 0;
        const bool whole = eachPair(fieldOf, [this, &id](Field field, std::uint64_t) {
            std::string_view text;
            if (field != Field::TrackId)
                return skip();
            const bool read = leaf(text);
            id = itunes::numberOf(text);
            return read;
        });
        if (whole)
            m_visitor.playlistItem(id, {begin, m_scanner.tagEnd()});
        return whole;
    }

    XmlScanner& m_scanner;
    LibraryVisitor& m_visitor;
    std::string m_lead; ///< of the last key
    std::uint64_t m_tracks = 0;
};
} // namespace

bool itunes::walkLibrary(XmlScanner& scanner, LibraryVisitor& visitor)
{
    return Walk(scanner, visitor).run();
}

std::uint64_t itunes::numberOf(std::string_view text)
{
    constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
    std::size_t at = text.find_first_not_of(" \t\r\n");
    std::uint64_t number = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
        const auto digit = std::uint64_t(text[at] - '0');
        if (number > (largest - digit) / 10)
            return largest;
        number = number * 10 + digit;
    }
    return number;
}

std::uint64_t itunes::identifierOf(std::string_view text)
{
    constexpr std::size_t longest = 16;
    std::uint64_t number = 0;
    for (const char c : text) {
        const char lower = char(c | 0x20);
        if (c >= '0' && c <= '9')
            number = number << 4 | std::uint64_t(c - '0');
        else if (lower >= 'a' && lower <= 'f')
            number = number << 4 | std::uint64_t(lower - 'a' + 10);
        else
            return 0;
    }
    return text.size() > longest ? 0 : number;
}
