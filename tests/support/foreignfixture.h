#pragma once

#include "fixtures.h"
#include "mediabytes.h"

#include <QByteArray>
#include <QtEndian>

#include <algorithm>
#include <initializer_list>
#include <utility>

/// Files of the eight formats as few programs write them, which the tag library makes nothing of.
namespace Foreign {
/// PCM of one channel and 16000 hertz.
inline QByteArray samples(int milliseconds)
{
    QByteArray sound;
    for (int i = 0; i < milliseconds * 16; ++i)
        sound += MediaBytes::little(qint16(i * 997 % 20000 - 10000));
    return sound;
}

inline QByteArray pcm()
{
    using MediaBytes::little;
    return little(quint16(1)) + little(quint16(1)) + little(quint32(16000)) + little(quint32(32000)) +
           little(quint16(2)) + little(quint16(16));
}

/// A WAV file whose sizes have 64 bits, with those chunks before the sound. The newer kind is "BW64".
inline QByteArray rf64(int milliseconds, const QByteArray& chunks, const char* magic = "RF64")
{
    using MediaBytes::chunk;
    using MediaBytes::little;
    const QByteArray sound = samples(milliseconds);
    const QByteArray format = chunk("fmt ", pcm());
    const quint64 size = 4 + 36 + quint64(format.size() + chunks.size() + 8 + sound.size());
    const QByteArray sizes = chunk("ds64", little(size) + little(quint64(sound.size())) +
                                               little(quint64(sound.size() / 2)) + little(quint32(0)));
    return QByteArray(magic) + little(quint32(-1)) + "WAVE" + sizes + format + chunks + "data" +
           little(quint32(-1)) + sound;
}

inline QByteArray info(const QByteArray& title)
{
    return MediaBytes::chunk("LIST",
                             "INFO" + MediaBytes::chunk("INAM", title) + MediaBytes::chunk("IPRT", "7"));
}

/// A WAV file whose numbers begin with their highest byte.
inline QByteArray rifx(int milliseconds)
{
    const auto turned = [](QByteArray bytes, std::initializer_list<int> sizes) {
        int place = 0;
        for (const int size : sizes) {
            std::reverse(bytes.begin() + place, bytes.begin() + place + size);
            place += size;
        }
        return bytes;
    };
    const auto chunk = [](const char* name, const QByteArray& bytes) {
        return QByteArray(name) + MediaBytes::big32(quint32(bytes.size())) + bytes +
               QByteArray(bytes.size() & 1, '\0');
    };
    QByteArray sound = samples(milliseconds);
    for (int i = 0; i + 1 < sound.size(); i += 2)
        std::swap(sound.data()[i], sound.data()[i + 1]);
    const QByteArray format = chunk("fmt ", turned(pcm(), {2, 2, 4, 4, 2, 2}));
    return chunk("RIFX", "WAVE" + format + chunk("data", sound));
}
} // namespace Foreign
