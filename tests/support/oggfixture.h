#pragma once

#include <QByteArray>
#include <QList>
#include <QtEndian>

/// Ogg files page by page, as programs leave them that do more than write one song.
namespace Ogg {
enum Flag : char { First = 2, Last = 4 };

struct Page
{
    char flags = 0;
    qint64 position = 0;
    quint32 serial = 0;
    quint32 number = 0;
    QByteArray sizes;
    QByteArray body;
};

inline quint32 checksum(const QByteArray& bytes)
{
    quint32 sum = 0;
    for (const char byte : bytes) {
        sum ^= quint32(quint8(byte)) << 24;
        for (int bit = 0; bit < 8; ++bit)
            sum = sum << 1 ^ (sum & 0x80000000 ? 0x04C11DB7 : 0);
    }
    return sum;
}

template <typename Number>
QByteArray littleEndian(Number number)
{
    const Number stored = qToLittleEndian(number);
    return {reinterpret_cast<const char*>(&stored), int(sizeof stored)};
}

inline QByteArray bytesOf(const Page& page)
{
    const QByteArray head = QByteArray("OggS\0", 5) + page.flags + littleEndian(page.position) +
                            littleEndian(page.serial) + littleEndian(page.number);
    const QByteArray tail = char(page.sizes.size()) + page.sizes + page.body;
    return head + littleEndian(checksum(head + QByteArray(4, '\0') + tail)) + tail;
}

inline QByteArray bytesOf(const QList<Page>& pages)
{
    QByteArray bytes;
    for (const Page& page : pages)
        bytes += bytesOf(page);
    return bytes;
}

inline QList<Page> pagesOf(const QByteArray& ogg)
{
    QList<Page> pages;
    for (int place = 0; place + 27 <= ogg.size();) {
        const char* const head = ogg.constData() + place;
        Page page{head[5],
                  qFromLittleEndian<qint64>(head + 6),
                  qFromLittleEndian<quint32>(head + 14),
                  qFromLittleEndian<quint32>(head + 18),
                  ogg.mid(place + 27, quint8(head[26])),
                  QByteArray()};
        int size = 0;
        for (const char part : page.sizes)
            size += quint8(part);
        page.body = ogg.mid(place + 27 + page.sizes.size(), size);
        place += 27 + page.sizes.size() + size;
        pages.append(page);
    }
    return pages;
}

/// Of a stream of its own, with one small packet.
inline Page page(quint32 serial, quint32 number, char flags, const QByteArray& packet)
{
    return {flags, 0, serial, number, QByteArray(1, char(packet.size())), packet};
}

/// The music cut out of a longer stream: all its positions are so many samples later.
inline QByteArray late(const QByteArray& ogg, qint64 samples)
{
    QList<Page> pages = pagesOf(ogg);
    for (Page& page : pages)
        if (page.position > 0)
            page.position += samples;
    return bytesOf(pages);
}

/// The same stream under another number.
inline QByteArray renumbered(const QByteArray& ogg, quint32 serial)
{
    QList<Page> pages = pagesOf(ogg);
    for (Page& page : pages)
        page.serial = serial;
    return bytesOf(pages);
}

/// A further stream that begins before the music with the one packet, and ends behind its first page with the
/// other one.
inline QByteArray beside(const QByteArray& ogg, const QByteArray& first, const QByteArray& second)
{
    constexpr quint32 serial = 4711;
    QList<Page> pages = pagesOf(ogg);
    pages.prepend(page(serial, 0, First, first));
    pages.insert(2, page(serial, 1, Last, second));
    return bytesOf(pages);
}

/// Beside a stream that says what the others are.
inline QByteArray withSkeleton(const QByteArray& ogg)
{
    return beside(ogg, QByteArray("fishead\0\3\0\0\0", 12) + QByteArray(52, '\0'), QByteArray());
}
} // namespace Ogg
