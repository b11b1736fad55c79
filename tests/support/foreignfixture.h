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

/// A WAV file whose numbers begin with their highest byte, with this ID3v2 tag before the sound.
inline QByteArray rifx(int milliseconds, const QByteArray& id3v2 = QByteArray())
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
    const QByteArray tag = id3v2.isEmpty() ? id3v2 : chunk("id3 ", id3v2);
    return chunk("RIFX", "WAVE" + format + tag + chunk("data", sound));
}
} // namespace Foreign
