// Tags of ASF, which is WMA: objects of its header.
#include "base/checkedmath.h"
#include "media/checkedstream.h"
#include "tags/asfobjects.h"
#include "tags/asfwriting.h"
#include "tags/soundview.h"
#include "tags/tagkind.h"
#include "tags/taglimits.h"
#include "tags/tagreading.h"
#include "tags/tagscreen.h"
#include "tags/tagwriting.h"

#include <taglib/asffile.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace asf = audiocore::asf;

using audiocore::CheckedStream;
using audiocore::FileEdits;
using audiocore::Purpose;
using audiocore::SoundView;
using audiocore::TaggedFile;
using audiocore::TagKind;
using audiocore::TagReading;
using TagLib::ByteVector;

namespace {
class AsfTags final : public audiocore::LibraryRead<TagLib::ASF::File>
{
public:
    explicit AsfTags(CheckedStream& stream) : LibraryRead(&stream, true), m_stream(stream) {}

    /// Whether the library was shown all that it would write anew.
    void setWhole(bool whole) { m_isWhole = whole; }
    void read(TagReading& reading) override { reading.add(m_file.tag()); }
    unsigned int largestPicture() override { return audiocore::largestPicture; }
    std::string write(const FileEdits& edits) override
    {
        if (!m_isWhole)
            return audiocore::cannotBeKept;
        return writeAsf(m_file, m_stream, edits.own) ? std::string() : audiocore::cannotBeWritten;
    }

private:
    CheckedStream& m_stream;
    bool m_isWhole = true;
};

/// The library reads an attribute's kind, its size, its name and then its value. Only values that are bytes
/// may be large, as pictures are. Nor is what it will write anew shown otherwise, unless it is too much.
class AsfScreen final : public audiocore::TagScreen
{
public:
    explicit AsfScreen(Purpose purpose) : m_purpose(purpose) {}

    ByteVector read(CheckedStream& stream, unsigned long length) override
    {
        constexpr unsigned int ofBytes = 1;
        constexpr unsigned long largestNumber = 16;
        const auto& [kind, size, name] = m_lastReads;
        const bool value = kind.size == 2 && size.size == 4;
        const bool bytes = value && kind.word == ofBytes;
        const bool keptAsItIs =
            m_purpose == Purpose::Writing && !value; // an object that the library does not know
        const bool text = length > largestNumber && !bytes && !keptAsItIs;
        ByteVector block = text ? readText(stream, length) : readPlain(stream, length);
        m_lastReads = {size, name, {block.size(), block.size() == 2 ? block.toUShort(0u, false) : 0u}};
        return block;
    }

private:
    struct LastRead
    {
        unsigned int size;
        unsigned int word; ///< of two bytes
    };

    ByteVector readText(CheckedStream& stream, unsigned long length)
    {
        const long left = std::max(0L, stream.length() - stream.tell());
        const long end = stream.tell() + long(std::min(length, static_cast<unsigned long>(left)));
        ByteVector block = readPlain(
            stream, std::min({length, static_cast<unsigned long>(audiocore::longestText), m_textLeft}));
        m_textLeft -= block.size();
        noteWhole(stream, block, length);
        if (stream.tell() != end)
            stream.seek(end);
        return block;
    }

    const Purpose m_purpose;
    unsigned long m_textLeft = 4ul * audiocore::mostTextBytes;
    std::array<LastRead, 3> m_lastReads{};
};

std::unique_ptr<TaggedFile> open(CheckedStream& stream, long, Purpose purpose)
{
    AsfScreen screen(purpose);
    const audiocore::ScreenedReading screened(stream, screen);
    auto file = std::make_unique<AsfTags>(stream);
    file->setWhole(screen.isWhole());
    return file;
}

/// The objects of fields become unknown ones; those inside the header's extension are looked at, too.
bool hide(CheckedStream& stream, long audioBegin, SoundView& view)
{
    static const ByteVector data("\x36\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C", 16);
    constexpr long headSize = 24;
    constexpr long headerHead = headSize + 6;
    constexpr long extensionHead = headSize + 22;
    for (long position = audioBegin + headerHead;;) {
        const ByteVector head = stream.readAt(position, headSize);
        const ByteVector id = head.mid(0, 16);
        const asf::Kind kind = asf::kindOf(id);
        const std::int64_t size = long(head.size()) < headSize ? 0 : head.toLongLong(16, false);
        if (id == data || size < headSize)
            return true;
        if (asf::isOfFields(kind))
            view.show(position, "----");
        position = kind == asf::Kind::Extension ? position + extensionHead
                                                : long(base::checked::sum(position, size));
    }
}
} // namespace

namespace audiocore {
extern const TagKind asfTags{open, hide};
} // namespace audiocore
