// Tags of ASF, which is WMA: objects of its header.
#include "base/checkedmath.h"
#include "media/checkedstream.h"
#include "tags/asfbytes.h"
#include "tags/asfobjects.h"
#include "tags/musicplaces.h"
#include "tags/soundview.h"
#include "tags/tagkind.h"
#include "tags/taglimits.h"
#include "tags/tagplaces.h"
#include "tags/tagreading.h"
#include "tags/tagscreen.h"
#include "tags/tagwriting.h"

#include <taglib/asffile.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace asf = audiocore::asf;

using audiocore::AsfBytes;
using audiocore::CheckedStream;
using audiocore::FileEdits;
using audiocore::SoundView;
using audiocore::TaggedFile;
using audiocore::TagKind;
using audiocore::TagReading;
using TagLib::ByteVector;

namespace {
const ByteVector& dataId()
{
    static const ByteVector id("\x36\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C", 16);
    return id;
}

/// The header, which says its own size.
audiocore::Place headerOf(CheckedStream& stream)
{
    constexpr long sizePlace = 16;
    return {0, long(stream.readAt(sizePlace, 8).toLongLong(false))};
}

class AsfTags final : public audiocore::LibraryRead<TagLib::ASF::File>
{
public:
    explicit AsfTags(CheckedStream& stream) : LibraryRead(&stream, true), m_stream(stream) {}

    void read(TagReading& reading) override { reading.add(m_file.tag()); }
    unsigned int largestPicture() override { return audiocore::largestPicture; }
    std::string write(const FileEdits& edits) override
    {
        const audiocore::Place place = headerOf(m_stream);
        const std::optional<ByteVector> old = bytesAt(m_file, place);
        if (!old)
            return audiocore::tooLarge;
        std::optional<AsfBytes> header = AsfBytes::parse(*old);
        if (!header)
            return audiocore::cannotBeKept;
        header->apply(edits.own);
        const std::optional<ByteVector> bytes = header->render(m_stream.length() - place.size);
        if (!bytes)
            return audiocore::tooLarge;
        putAt(m_file, place, *bytes);
        return std::string();
    }

private:
    CheckedStream& m_stream;
};

/// The library reads an attribute's kind, its size, its name and then its value. Only values that are bytes
/// may be large, as pictures are. Before that it reads the object's identifier, its size and the number of
/// its attributes, and goes by that number even behind the end of the file.
class AsfScreen final : public audiocore::TagScreen
{
public:
    ByteVector read(CheckedStream& stream, unsigned long length) override
    {
        const auto& [kind, size, name] = m_lastReads;
        const bool value = kind.size == 2 && size.size == 4;
        const bool bytes = value && kind.number == std::int64_t(asf::Type::Bytes);
        const bool text = length > largestNumber && !bytes;
        ByteVector block = text ? readText(stream, length) : readPlain(stream, length);
        if (block.size() == 2 && name.size == 8)
            boundCount(block, size.object, name.number, stream.length() - stream.tell());
        m_lastReads = {size, name, told(block)};
        return block;
    }

private:
    static constexpr unsigned int idSize = 16;
    static constexpr unsigned long largestNumber = 16;

    struct LastRead
    {
        unsigned int size = 0;
        std::int64_t number = 0;             ///< where it may be one
        asf::Kind object = asf::Kind::Other; ///< where it may be an identifier
    };

    static LastRead told(const ByteVector& block)
    {
        LastRead read;
        read.size = block.size();
        if (block.size() == idSize)
            read.object = asf::kindOf(block);
        else if (block.size() <= sizeof read.number)
            read.number = block.toLongLong(0u, false);
        return read;
    }

    /// No more attributes than there is room for, in the object and in what is left of the file.
    static void boundCount(ByteVector& count, asf::Kind kind, std::int64_t objectSize, std::int64_t left)
    {
        constexpr std::int64_t headSize = idSize + 8 + 2;
        if (!asf::isOfFields(kind))
            return;
        const std::int64_t smallest = kind == asf::Kind::Extended ? 6 : 12;
        const std::int64_t room =
            std::clamp<std::int64_t>(base::checked::sum(objectSize, -headSize), 0, left);
        if (count.toUShort(0u, false) > room / smallest)
            count = ByteVector::fromShort(short(room / smallest), false);
    }

    ByteVector readText(CheckedStream& stream, unsigned long length)
    {
        const long left = std::max(0L, stream.length() - stream.tell());
        const long end = stream.tell() + long(std::min(length, static_cast<unsigned long>(left)));
        ByteVector block = readPlain(
            stream, std::min({length, static_cast<unsigned long>(audiocore::longestText), m_textLeft}));
        m_textLeft -= block.size();
        if (stream.tell() != end)
            stream.seek(end);
        return block;
    }

    unsigned long m_textLeft = 4ul * audiocore::mostTextBytes;
    std::array<LastRead, 3> m_lastReads{};
};

std::unique_ptr<TaggedFile> openAsf(CheckedStream& stream, long)
{
    AsfScreen screen;
    const audiocore::ScreenedReading screened(stream, screen);
    return std::make_unique<AsfTags>(stream);
}

/// The objects of fields become unknown ones; those inside the header's extension are looked at, too.
bool hideInAsf(CheckedStream& stream, long audioBegin, SoundView& view)
{
    constexpr long headSize = 24;
    constexpr long headerHead = headSize + 6;
    constexpr long extensionHead = headSize + 22;
    for (long position = audioBegin + headerHead;;) {
        const ByteVector head = stream.readAt(position, headSize);
        const ByteVector id = head.mid(0, 16);
        const asf::Kind kind = asf::kindOf(id);
        const std::int64_t size = long(head.size()) < headSize ? 0 : head.toLongLong(16, false);
        if (id == dataId() || size < headSize)
            return true;
        if (asf::isOfFields(kind))
            view.show(position, "----");
        position = kind == asf::Kind::Extension ? position + extensionHead
                                                : long(base::checked::sum(position, size));
    }
}

/// The packets of the object behind the header.
bool findInAsf(CheckedStream& stream, long audioBegin, long end, audiocore::MusicPlaces& places)
{
    constexpr long sizePlace = 16;
    constexpr long dataHead = 50;
    const auto sizeAt = [&stream](std::int64_t object) {
        return stream.readAt(long(object) + sizePlace, 8).toLongLong(0u, false);
    };
    const std::int64_t data = base::checked::sum(audioBegin, sizeAt(audioBegin));
    if (data < audioBegin || data >= end || stream.readAt(long(data), 16) != dataId())
        return false;
    const std::int64_t size = sizeAt(data);
    const std::int64_t dataEnd =
        size > dataHead ? std::min<std::int64_t>(base::checked::sum(data, size), end) : end;
    places.add(data + dataHead, dataEnd);
    return data + dataHead < dataEnd;
}
} // namespace

namespace audiocore {
extern const TagKind asfTags{openAsf, hideInAsf, findInAsf};
} // namespace audiocore
