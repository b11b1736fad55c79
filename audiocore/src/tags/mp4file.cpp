#include "tags/mp4file.h"

#include "audiocore/tagitem.h"
#include "media/mp4sound.h"
#include "tags/mp4text.h"
#include "tags/tagtext.h"

#include <taglib/id3v1genres.h>

#include <algorithm>

using audiocore::mp4AtomHead;
using audiocore::Mp4File;
using audiocore::Mp4Value;
using TagLib::ByteVector;
using TagLib::String;
using TagLib::StringList;

namespace {
// Far more than any song has: whatever is longer is no title.
constexpr std::int64_t longestText = 256 * 1024;
constexpr size_t mostValues = 1000;
constexpr std::int64_t valueHead = 16;

std::string text(const ByteVector& bytes, unsigned int type)
{
    return type == Mp4Value::Utf16 ? String(bytes, String::UTF16BE).to8Bit(true)
                                   : audiocore::readableText(bytes);
}

StringList genreOf(const ByteVector& bytes)
{
    const int number = bytes.size() < 2 ? 0 : bytes.toUShort(0u);
    return number > 0 && number < 256 ? StringList(TagLib::ID3v1::genre(number - 1)) : StringList();
}

StringList trackOf(const ByteVector& bytes)
{
    if (bytes.size() < 4)
        return StringList();
    const int total = bytes.size() < 6 ? 0 : bytes.toUShort(4u);
    const String number = String::number(bytes.toUShort(2u));
    return total > 0 ? number + "/" + String::number(total) : number;
}
} // namespace

Mp4File::Mp4File(TagLib::IOStream& stream) : TagLib::File(&stream)
{
    const Mp4Atoms atoms(*this, Mp4Atoms::Fragments::PassOver);
    m_bounded = atoms.areBounded();
    if (m_bounded)
        m_sound = measureMp4(*this, atoms);
    m_lists = mp4Lists(*this, atoms);
    setValid(m_sound.sampleRate > 0);
}

std::vector<Mp4Value> Mp4File::valuesOf(const Mp4Atom& item)
{
    std::vector<Mp4Value> values;
    std::int64_t position = item.content();
    for (size_t atoms = 0; atoms < mostValues; ++atoms) {
        seek(position);
        const ByteVector head = readBlock(size_t(valueHead));
        const std::int64_t size = head.size() < unsigned(mp4AtomHead) ? 0 : head.toUInt(0u);
        if (size < mp4AtomHead || size > item.end() - position)
            break;
        if (size >= valueHead && head.containsAt("data", 4))
            values.push_back({head.toUInt(8u), position + valueHead, size - valueHead});
        position += size;
    }
    return values;
}

ByteVector Mp4File::bytesOf(const Mp4Value& value)
{
    seek(value.begin);
    return readBlock(size_t(value.size));
}

StringList Mp4File::textsOf(const Mp4Item& item, bool named)
{
    StringList texts;
    std::int64_t bytes = 0;
    for (const Mp4Value& value : valuesOf(item.atom)) {
        bytes += value.size;
        if (bytes > longestText)
            break;
        if (named && item.atom.name == "gnre")
            return genreOf(bytesOf(value));
        if (named && item.atom.name == "trkn")
            return trackOf(bytesOf(value));
        if (value.type <= Mp4Value::Utf16)
            texts.append(String(text(bytesOf(value), value.type), String::UTF8));
    }
    return texts;
}

StringList Mp4File::plainTextOf(const Mp4Atom& atom)
{
    if (atom.end() - atom.content() > longestText)
        return StringList();
    seek(atom.content());
    const std::string text = mp4PlainText(readBlock(size_t(atom.end() - atom.content())));
    return StringList(String(text, String::UTF8));
}

StringList Mp4File::textsOf(const Mp4Item& item, Mp4List::Kind kind)
{
    return kind == Mp4List::Kind::Texts ? plainTextOf(item.atom)
                                        : textsOf(item, kind == Mp4List::Kind::Named);
}

StringList Mp4File::texts(int type)
{
    for (const Mp4List& list : m_lists)
        for (const Mp4Item& item : list.items) {
            if (item.type != type)
                continue;
            const StringList texts = textsOf(item, list.kind);
            if (!texts.toString("").isEmpty())
                return texts;
        }
    return StringList();
}

std::vector<Mp4Value> Mp4File::pictures()
{
    std::vector<Mp4Value> pictures;
    for (const Mp4List& list : m_lists)
        for (const Mp4Item& item : list.items)
            if (item.type == TAG_PICTURE && pictures.size() < mostValues)
                for (const Mp4Value& value : valuesOf(item.atom))
                    if (value.type == Mp4Value::Anything || value.type == Mp4Value::Bmp ||
                        (value.type >= Mp4Value::Gif && value.type <= Mp4Value::Png))
                        pictures.push_back(value);
    return pictures;
}
