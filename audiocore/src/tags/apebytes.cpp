#include "tags/apebytes.h"

#include "audiocore/tagitem.h"
#include "tags/fieldlist.h"
#include "tags/pictures.h"
#include "tags/taglimits.h"
#include "tags/tagtext.h"

using audiocore::ApeBytes;
using TagLib::ByteVector;

namespace {
const char* const magic = "APETAGEX";
constexpr unsigned int hasHeader = 0x80000000u;
constexpr unsigned int isHeader = 0x20000000u;
constexpr unsigned int binary = 2;
constexpr unsigned int valueKind = 6; ///< mask
constexpr unsigned int firstVersion = 1000;
constexpr unsigned int secondVersion = 2000;

const char* const keys[audiocore::textTypes] = {"Title", "Artist", "Album", "Genre", "Year", "Track"};
const char* const frontCover = "Cover Art (Front)";

bool isPicture(const std::string& key)
{
    const std::string prefix = "Cover Art";
    return audiocore::sameName(key.substr(0, prefix.size()), prefix);
}

ByteVector bytesOf(const std::string& text)
{
    return ByteVector(text.data(), unsigned(text.size()));
}

ByteVector edge(unsigned int itemBytes, size_t items, unsigned int flags)
{
    ByteVector bytes(magic);
    for (const unsigned int number :
         {secondVersion, itemBytes + ApeBytes::footerSize, static_cast<unsigned int>(items), flags})
        bytes.append(ByteVector::fromUInt(number, false));
    return bytes.append(ByteVector(8, '\0'));
}
} // namespace

unsigned int ApeBytes::sizeByFooter(const ByteVector& footer)
{
    constexpr unsigned int largest = 1u << 30;
    if (footer.size() < footerSize || !footer.startsWith(magic))
        return 0;
    const unsigned int size = footer.toUInt(12, false);
    if (size < footerSize || size > largest)
        return 0;
    return size + (footer.toUInt(20, false) & hasHeader ? footerSize : 0);
}

std::optional<ApeBytes> ApeBytes::parse(const ByteVector& tag)
{
    ApeBytes parsed;
    if (tag.isEmpty())
        return parsed;
    if (tag.size() < footerSize)
        return std::nullopt;
    const ByteVector footer = tag.mid(tag.size() - footerSize);
    const unsigned int items = footer.toUInt(12, false) - footerSize;
    if (sizeByFooter(footer) != tag.size() ||
        !parsed.readItems(tag.mid(tag.size() - footerSize - items, items)))
        return std::nullopt;
    // The first version knew no UTF-8, and what is written is the second one.
    if (footer.toUInt(8, false) == firstVersion)
        for (Item& item : parsed.m_items)
            item.value = bytesOf(readableText(item.value));
    return parsed;
}

bool ApeBytes::readItems(const ByteVector& bytes)
{
    constexpr unsigned int numbers = 8;
    for (unsigned int position = 0; position < bytes.size();) {
        if (bytes.size() - position <= numbers || m_items.size() >= mostFields)
            return false;
        const unsigned int size = bytes.toUInt(position, false);
        const int keyEnd = bytes.find('\0', position + numbers);
        if (keyEnd < 0 || size > bytes.size() - unsigned(keyEnd) - 1)
            return false;
        const unsigned int key = position + numbers;
        m_items.push_back({bytes.toUInt(position + 4, false),
                           std::string(bytes.data() + key, unsigned(keyEnd) - key),
                           bytes.mid(unsigned(keyEnd) + 1, size)});
        position = unsigned(keyEnd) + 1 + size;
    }
    return true;
}

std::string ApeBytes::text(int type) const
{
    std::string joined;
    for (const Item& item : m_items) {
        if (!sameName(item.key, keys[type]) || (item.flags & valueKind) != 0 ||
            item.value.size() > longestText)
            continue;
        joined += joined.empty() ? "" : "; ";
        for (const char c : readableText(item.value)) {
            if (c == 0 && type == TAG_TITLE && !joined.empty())
                return joined;
            joined += c == 0 ? std::string("; ") : std::string(1, c);
        }
        if (type == TAG_TITLE && !joined.empty())
            break;
    }
    return joined;
}

void ApeBytes::apply(const TagEdits& edits)
{
    for (int type = 0; type < textTypes; ++type) {
        const auto& edit = edits.texts[size_t(type)];
        if (!edit)
            continue;
        std::string value = *edit;
        if (type == TAG_TRACK && !value.empty())
            value += totalOf(text(type));
        const auto isOld = [type](const Item& item) { return sameName(item.key, keys[type]); };
        const auto old = std::find_if(m_items.begin(), m_items.end(), isOld);
        std::optional<Item> replacement;
        if (!value.empty())
            replacement = Item{0, old == m_items.end() ? keys[type] : old->key, bytesOf(value)};
        replaceFields(m_items, isOld, replacement);
    }
    if (!edits.picture)
        return;
    std::optional<Item> replacement;
    if (!edits.picture->isEmpty()) {
        ByteVector value(pictureType(*edits.picture) == "image/png" ? "Cover.png" : "Cover.jpg");
        value.append('\0');
        replacement = Item{binary, frontCover, value.append(*edits.picture)};
    }
    const auto isOld = [](const Item& item) { return isPicture(item.key); };
    replaceFields(m_items, isOld, replacement);
}

ByteVector ApeBytes::shown(const ByteVector& items)
{
    // The tag library knows these two as well.
    const auto isText = [](const Item& item) {
        return sameName(item.key, "Date") || sameName(item.key, "TrackNumber") ||
               std::any_of(std::begin(keys), std::end(keys),
                           [&item](const char* key) { return sameName(item.key, key); });
    };
    ApeBytes all;
    all.readItems(items); // as far as they can be made out
    unsigned int left = mostTextBytes;
    ByteVector bytes;
    for (const Item& item : all.m_items) {
        const unsigned int cost = isText(item) ? item.value.size() + costOfField : 0;
        const bool picture = isPicture(item.key) && (item.flags & valueKind) == binary;
        if (cost > std::min(left, longestText) || (cost == 0 && !picture))
            continue;
        left -= cost;
        append(bytes, item);
    }
    return bytes;
}

void ApeBytes::append(ByteVector& items, const Item& item)
{
    items.append(ByteVector::fromUInt(item.value.size(), false));
    items.append(ByteVector::fromUInt(item.flags, false));
    items.append(bytesOf(item.key));
    items.append('\0');
    items.append(item.value);
}

ByteVector ApeBytes::render() const
{
    if (m_items.empty())
        return ByteVector();
    ByteVector items;
    for (const Item& item : m_items)
        append(items, item);
    ByteVector tag = edge(items.size(), m_items.size(), hasHeader | isHeader);
    tag.append(items);
    return tag.append(edge(items.size(), m_items.size(), hasHeader));
}
