#include "library/librarycontents.h"

#include "base/failure.h"
#include "base/filebytes.h"
#include "library/libraryreading.h"
#include "library/librarywalk.h"

#include <algorithm>

using itunes::LibraryContents;

namespace {
class Identifiers final : public itunes::LibraryVisitor
{
public:
    explicit Identifiers(LibraryContents& contents) : m_contents(contents) {}

    void trackBegins(std::uint64_t key, std::uint64_t inside) override
    {
        (void)key;
        (void)inside;
        ++m_contents.tracks;
        m_id = 0;
    }
    void trackHas(const itunes::Pair& pair) override
    {
        if (pair.field == itunes::Field::PersistentId)
            m_id = itunes::identifierOf(pair.text);
    }
    void trackEnds(const itunes::Span& whole) override
    {
        (void)whole;
        if (m_id)
            m_contents.ids.push_back(m_id);
    }

private:
    LibraryContents& m_contents;
    std::uint64_t m_id = 0;
};

class LocationFinder final : public itunes::LibraryVisitor
{
public:
    explicit LocationFinder(std::uint64_t id) : m_wanted(id) {}

    void trackBegins(std::uint64_t key, std::uint64_t inside) override
    {
        (void)key;
        (void)inside;
        m_id = 0;
        m_location.clear();
    }
    void trackHas(const itunes::Pair& pair) override
    {
        if (pair.field == itunes::Field::PersistentId)
            m_id = itunes::identifierOf(pair.text);
        else if (pair.field == itunes::Field::Location)
            m_location = pair.text;
    }
    void trackEnds(const itunes::Span& whole) override
    {
        (void)whole;
        if (m_id == m_wanted)
            m_found.push_back(m_location);
    }

    std::string found() const { return m_found.size() == 1 ? m_found.front() : std::string(); }

private:
    const std::uint64_t m_wanted;
    std::uint64_t m_id = 0;
    std::string m_location;
    std::vector<std::string> m_found;
};
} // namespace

std::size_t LibraryContents::count(std::uint64_t id) const
{
    const auto [first, last] = std::equal_range(ids.begin(), ids.end(), id);
    return std::size_t(last - first);
}

bool itunes::readContents(const base::FileBytes& library, LibraryContents& contents, base::Failure& failure)
{
    contents = LibraryContents();
    Identifiers identifiers(contents);
    if (!walkFile(library, identifiers, failure)) {
        contents = LibraryContents();
        return false;
    }
    std::sort(contents.ids.begin(), contents.ids.end());
    return true;
}

bool itunes::readContents(std::FILE* library, LibraryContents& contents, base::Failure& failure)
{
    base::FileState state;
    if (!base::stateOf(library, state) || !readContents(base::SystemFile(library), contents, failure))
        return false;
    contents.state = state;
    return true;
}

bool itunes::readLocation(const std::string& path, std::uint64_t id, std::string& location,
                          std::string& error)
{
    base::Failure failure;
    const File library = openLibrary(path, failure);
    LocationFinder finder(id);
    if (!library || !walkFile(base::SystemFile(library.get()), finder, failure)) {
        error = failure.text;
        return false;
    }
    location = finder.found();
    return true;
}
