#include "tags/infobytes.h"

#include "tags/fieldlist.h"
#include "tags/taglimits.h"

#include <algorithm>
#include <array>
#include <string_view>

using audiocore::InfoBytes;
using TagLib::ByteVector;

namespace {
constexpr unsigned int idSize = 4;
constexpr unsigned int headSize = 8;
constexpr std::string_view ids[audiocore::textTypes] = {"INAM", "IART", "IPRD", "IGNR", "ICRD", "IPRT"};

unsigned int padded(std::size_t size)
{
    return static_cast<unsigned int>(size + (size & 1));
}

/// Tells `take` where each entry lies and the size of its value; where those end that can be made out.
template <class Take>
unsigned int eachEntry(const ByteVector& list, Take take)
{
    unsigned int position = idSize;
    for (std::size_t entries = 0; entries < audiocore::mostFields && list.size() - position >= headSize;
         ++entries) {
        const unsigned int size = list.toUInt(position + idSize, false);
        if (size > list.size() - position - headSize)
            break;
        take(position, size);
        position = std::min(position + headSize + padded(size), list.size());
    }
    return position;
}
} // namespace

InfoBytes::InfoBytes(const ByteVector& list)
{
    const auto take = [&](unsigned int position, unsigned int size) {
        m_entries.push_back({list.mid(position, idSize), list.mid(position + headSize, size)});
    };
    m_rest = list.mid(eachEntry(list, take));
}

void InfoBytes::apply(const TagEdits& edits)
{
    const auto* edit = edits.texts.begin();
    for (const std::string_view name : ids) {
        const std::optional<std::string>& text = *edit++;
        if (!text)
            continue;
        const ByteVector id(name.data(), idSize);
        std::optional<Entry> replacement;
        if (!text->empty())
            replacement = Entry{id, ByteVector(text->c_str(), unsigned(text->size()) + 1)};
        const auto isOld = [&id](const Entry& entry) { return entry.id == id; };
        replaceFields(m_entries, isOld, replacement);
    }
}

ByteVector InfoBytes::render() const
{
    ByteVector list("INFO");
    for (const Entry& entry : m_entries)
        append(list, entry);
    return list.append(m_rest);
}

ByteVector InfoBytes::shown(const ByteVector& list)
{
    std::array<std::string_view, textTypes> entries; // of several the library would take the last one
    unsigned int size = idSize;
    eachEntry(list, [&](unsigned int position, unsigned int valueSize) {
        const std::string_view entry(list.data() + position, headSize + valueSize);
        const auto id = std::find(std::begin(ids), std::end(ids), entry.substr(0, idSize));
        if (id != std::end(ids))
            entries[size_t(id - std::begin(ids))] = entry;
    });
    for (std::string_view& entry : entries) {
        if (entry.size() > headSize + longestText)
            entry = std::string_view();
        size += padded(entry.size());
    }
    ByteVector bytes(size, '\0');
    char* place = std::copy_n(list.data(), idSize, bytes.data());
    for (const std::string_view entry : entries) {
        std::copy(entry.begin(), entry.end(), place);
        place += padded(entry.size());
    }
    return bytes;
}

void InfoBytes::append(ByteVector& list, const Entry& entry)
{
    list.append(entry.id);
    list.append(ByteVector::fromUInt(entry.value.size(), false));
    list.append(entry.value);
    if (entry.value.size() & 1)
        list.append('\0');
}
