#pragma once

#include "fixtures.h"

#include <QByteArrayList>
#include <QFile>
#include <QtEndian>

/// ASF files for tests, put together from the objects of their header.
namespace Asf {
template <typename Number>
QByteArray number(Number value)
{
    const Number bytes = qToLittleEndian(value);
    return QByteArray(reinterpret_cast<const char*>(&bytes), sizeof bytes);
}

/// UTF-16 with the zero that ends it.
inline QByteArray wide(const QString& text)
{
    QByteArray bytes;
    for (const QChar character : text)
        bytes += number(quint16(character.unicode()));
    return bytes + QByteArray(2, '\0');
}

inline QByteArray wide(const char* text)
{
    return wide(QString::fromUtf8(text));
}

inline QByteArray object(const char* id, const QByteArray& content)
{
    return QByteArray::fromHex(id) + number(quint64(content.size()) + 24) + content;
}

/// The parts as an object that begins with their number.
inline QByteArray counted(const char* id, const QByteArrayList& parts)
{
    return object(id, number(quint16(parts.size())) + parts.join());
}

inline QByteArray description(const QByteArrayList& texts)
{
    QByteArray sizes;
    for (const QByteArray& text : texts)
        sizes += number(quint16(text.size()));
    return object("3326B2758E66CF11A6D900AA0062CE6C", sizes + texts.join());
}

inline QByteArray extended(const QByteArrayList& fields)
{
    return counted("40A4D0D207E3D21197F000A0C95EA850", fields);
}

inline QByteArray metadata(const QByteArrayList& fields)
{
    return counted("EACBF8C5AF5B77488467AA8C44FA4CCA", fields);
}

inline QByteArray library(const QByteArrayList& fields)
{
    return counted("941C23449894D149A1411D134E457054", fields);
}

inline QByteArray extension(const QByteArrayList& objects)
{
    const QByteArray inside = objects.join();
    return object("B503BF5F2EA9CF118EE300C00C205365",
                  QByteArray::fromHex("11D2D3ABBAA9CF118EE600C00C2053650600") +
                      number(quint32(inside.size())) + inside);
}

inline QByteArray padding(int size)
{
    return object("74D40618DFCA0945A4BA9AABCB96AAE8", QByteArray(size, '\0'));
}

enum Type : quint16 { Unicode = 0, Bytes = 1, Bool = 2, DoubleWord = 3, Guid = 6 };

/// A field of `extended`.
inline QByteArray field(const char* name, const QByteArray& value, quint16 type = Unicode)
{
    return number(quint16(wide(name).size())) + wide(name) + number(type) + number(quint16(value.size())) +
           value;
}

/// A field of `metadata` or `library`.
inline QByteArray longField(const char* name, const QByteArray& value, quint16 type = Unicode,
                            quint16 language = 0, quint16 stream = 0)
{
    return number(language) + number(stream) + number(quint16(wide(name).size())) + number(type) +
           number(quint32(value.size())) + wide(name) + value;
}

inline QByteArray picture(const QByteArray& bytes, char kind = 3, const char* description = "")
{
    return kind + number(quint32(bytes.size())) + wide("image/jpeg") + wide(description) + bytes;
}

/// A tone's own objects, without its extension, which is empty; and all that is behind its header.
struct Tone
{
    QByteArrayList objects;
    QByteArray behind;
};

inline Tone tone()
{
    QFile file(Fixtures::tone(QStringLiteral("wma")));
    const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    const int size = int(qFromLittleEndian<quint64>(bytes.constData() + 16));
    Tone tone{{}, bytes.mid(size)};
    for (int at = 30, length = 0; at < size; at += length) {
        length = int(qFromLittleEndian<quint64>(bytes.constData() + at + 16));
        if (bytes.mid(at, 4) != QByteArray::fromHex("B503BF5F"))
            tone.objects.append(bytes.mid(at, length));
    }
    return tone;
}

/// The header with these objects behind the tone's own, and what the header does not count.
inline QByteArray header(const QByteArrayList& objects, const QByteArray& uncounted = QByteArray())
{
    const Tone own = tone();
    QByteArrayList all = own.objects + objects;
    const int size = 30 + all.join().size() + uncounted.size();
    for (QByteArray& one : all)
        if (one.startsWith(QByteArray::fromHex("A1DCAB8C")))
            one.replace(40, 8, number(quint64(size) + quint64(own.behind.size())));
    return QByteArray::fromHex("3026B2758E66CF11A6D900AA0062CE6C") + number(quint64(size)) +
           number(quint32(all.size())) + "\1\2" + all.join() + uncounted;
}

inline QByteArray file(const QByteArrayList& objects, const QByteArray& uncounted = QByteArray())
{
    return header(objects, uncounted) + tone().behind;
}
} // namespace Asf
