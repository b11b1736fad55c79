#include "mediabytes.h"

QByteArray MediaBytes::big32(quint32 number)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(number, bytes.data());
    return bytes;
}

QByteArray MediaBytes::sevenBits(quint32 number)
{
    QByteArray bytes;
    for (const int shift : {21, 14, 7, 0})
        bytes.append(char(number >> shift & 0x7F));
    return bytes;
}

QByteArray MediaBytes::id3v2(const QByteArray& frames, char version)
{
    return QByteArray("ID3") + version + QByteArray(2, '\0') + sevenBits(quint32(frames.size())) + frames;
}

QByteArray MediaBytes::frame(const char* id, const QByteArray& body, char flags, char version)
{
    const auto size = quint32(body.size());
    return QByteArray(id) + (version == 4 ? sevenBits(size) : big32(size)) + '\0' + flags + body;
}

QByteArray MediaBytes::id3v1(const QByteArray& title, char track, char genre)
{
    return "TAG" + title.leftJustified(30, '\0', true) + QByteArray(60, ' ') + "1999" + QByteArray(29, '\0') +
           track + genre;
}

QByteArray MediaBytes::apeTag(const QByteArray& items, int count)
{
    return items + "APETAGEX" + little(quint32(2000)) + little(quint32(items.size() + 32)) +
           little(quint32(count)) + QByteArray(12, '\0');
}

QByteArray MediaBytes::apeItem(const QByteArray& key, const QByteArray& value)
{
    return little(quint32(value.size())) + little(quint32(0)) + key + '\0' + value;
}

QByteArray MediaBytes::chunk(const char* name, const QByteArray& bytes)
{
    return QByteArray(name) + little(quint32(bytes.size())) + bytes + QByteArray(bytes.size() & 1, '\0');
}

QByteArray MediaBytes::withChunks(const QByteArray& wav, const QByteArray& chunks)
{
    QByteArray longer = wav + chunks;
    return longer.replace(4, 4, little(quint32(longer.size() - 8)));
}

QByteArray MediaBytes::comment(const QByteArray& fields, quint32 count)
{
    return little(quint32(0)) + little(count) + fields;
}

QByteArray MediaBytes::field(const QByteArray& text)
{
    return little(quint32(text.size())) + text;
}

QByteArray MediaBytes::flacBlock(int type, const QByteArray& bytes)
{
    return char(type) + big32(quint32(bytes.size())).mid(1) + bytes;
}

QByteArray MediaBytes::withBlocks(const QByteArray& flac, const QByteArray& blocks)
{
    constexpr int behindStreamInfo = 4 + 4 + 34;
    return QByteArray(flac).insert(behindStreamInfo, blocks);
}

QByteArray MediaBytes::withSecondPacket(const QByteArray& ogg, const QByteArray& packet)
{
    const int second = ogg.indexOf("OggS", 4);
    const int third = ogg.indexOf("OggS", second + 4);
    const QByteArray head = ogg.mid(second, 26);
    const int mostOfPage = 255 * 255;
    QByteArray pages;
    for (int begin = 0; begin < packet.size(); begin += mostOfPage) {
        const QByteArray part = packet.mid(begin, mostOfPage);
        QByteArray sizes(part.size() / 255, char(255));
        if (part.size() < mostOfPage)
            sizes.append(char(part.size() % 255));
        pages += head + char(sizes.size()) + sizes + part;
    }
    return ogg.left(second) + pages + ogg.mid(third);
}

QByteArray MediaBytes::vorbisPacket(const QByteArray& content)
{
    return "\x03vorbis" + content + '\1';
}

QByteArrayList MediaBytes::adtsFrames(const QByteArray& aac)
{
    QByteArrayList frames;
    for (int begin = 0; begin + 7 <= aac.size(); begin += frames.last().size()) {
        const auto byte = [&aac, begin](int place) { return int(quint8(aac.at(begin + place))); };
        const int size = (byte(3) & 3) << 11 | byte(4) << 3 | byte(5) >> 5;
        if (size < 7)
            qFatal("this is no raw AAC");
        frames.append(aac.mid(begin, size));
    }
    return frames;
}

QByteArray MediaBytes::asfObject(const char* guid, const QByteArray& bytes)
{
    return QByteArray::fromHex(guid) + little(quint64(bytes.size()) + 24) + bytes;
}

QByteArray MediaBytes::withObject(const QByteArray& wma, const QByteArray& object, int times)
{
    QByteArray longer = wma;
    const quint64 size = qFromLittleEndian<quint64>(wma.constData() + 16) + quint64(object.size()) * times;
    const quint32 count = qFromLittleEndian<quint32>(wma.constData() + 24) + quint32(times);
    longer.replace(16, 8, little(size)).replace(24, 4, little(count));
    return longer.insert(30, object.repeated(times));
}
