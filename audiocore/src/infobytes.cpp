#include "infobytes.h"

#include "fieldlist.h"
#include "taglimits.h"

using audiocore::InfoBytes;
using TagLib::ByteVector;

namespace {
constexpr unsigned int headSize = 8;
const char* const ids[audiocore::textTypes] = {"INAM", "IART", "IPRD", "IGNR", "ICRD", "IPRT"};
} // namespace

InfoBytes::InfoBytes(const ByteVector& list)
{
    unsigned int position = 4;
    while (m_entries.size() < mostFields && list.size() - position >= headSize) {
        const unsigned int size = list.toUInt(position + 4, false);
        if (size > list.size() - position - headSize)
            break;
        m_entries.push_back({list.mid(position, 4), list.mid(position + headSize, size)});
        position = std::min(position + headSize + size + (size & 1), list.size());
    }
    m_rest = list.mid(position);
}

void InfoBytes::apply(const TagEdits& edits)
{
    for (size_t type = 0; type < size_t(textTypes); ++type) {
        const auto& edit = edits.texts[type];
        if (!edit)
            continue;
        const std::string& text = *edit;
        std::optional<Entry> replacement;
        if (!text.empty())
            replacement = Entry{ids[type], ByteVector(text.c_str(), unsigned(text.size()) + 1)};
        const auto isOld = [type](const Entry& entry) { return entry.id == ids[type]; };
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

ByteVector InfoBytes::shown() const
{
    ByteVector list("INFO");
    for (const char* id : ids) { // of several the library would take the last one
        const auto last = std::find_if(m_entries.rbegin(), m_entries.rend(),
                                       [id](const Entry& entry) { return entry.id == id; });
        if (last != m_entries.rend() && last->value.size() <= longestText)
            append(list, *last);
    }
    return list;
}

void InfoBytes::append(ByteVector& list, const Entry& entry)
{
    list.append(entry.id);
    list.append(ByteVector::fromUInt(entry.value.size(), false));
    list.append(entry.value);
    if (entry.value.size() & 1)
        list.append('\0');
}
