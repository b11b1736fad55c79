#pragma once

#include <QByteArray>
#include <QtEndian>

/// MP4 files for tests, put together from atoms.
namespace Mp4 {
inline QByteArray number(quint32 value)
{
    const quint32 bytes = qToBigEndian(value);
    return QByteArray(reinterpret_cast<const char*>(&bytes), 4);
}

inline QByteArray number64(quint64 value)
{
    return number(quint32(value >> 32)) + number(quint32(value));
}

inline QByteArray atom(const QByteArray& name, const QByteArray& content)
{
    return number(quint32(content.size()) + 8) + name + content;
}

inline QByteArray longAtom(const QByteArray& name, const QByteArray& content)
{
    return number(1) + name + number64(quint64(content.size()) + 16) + content;
}

/// An item of the list with one value.
inline QByteArray item(const QByteArray& name, quint32 markedAs, const QByteArray& value)
{
    return atom(name, atom("data", number(markedAs) + number(0) + value));
}

/// A list of items with all that is around it inside of "moov".
inline QByteArray tags(const QByteArray& items)
{
    const QByteArray handler = atom("hdlr", QByteArray(8, '\0') + "mdirappl" + QByteArray(9, '\0'));
    return atom("udta", atom("meta", number(0) + handler + atom("ilst", items)));
}

/// A track of sound, AAC by what it says, whose table of pieces is given as an atom.
inline QByteArray track(const QByteArray& pieces)
{
    const QByteArray kind = atom("hdlr", number(0) + number(0) + "soun" + QByteArray(13, '\0'));
    const QByteArray duration =
        atom("mdhd", number(0) + number(0) + number(0) + number(44100) + number(132300) + number(0));
    const QByteArray sound =
        number(0) + number(0) + QByteArray("\0\2\0\x10\0\0\0\0", 8) + QByteArray("\xAC\x44\0\0", 4);
    const QByteArray description =
        atom("stsd", number(0) + number(1) + atom("mp4a", QByteArray("\0\0\0\0\0\0\0\1", 8) + sound));
    return atom("trak", atom("mdia", duration + kind + atom("minf", atom("stbl", description + pieces))));
}

inline QByteArray table(const QByteArray& name, quint32 claimed, const QByteArray& entries)
{
    return atom(name, number(0) + number(claimed) + entries);
}

/// A file of a kind that says it is one, with these atoms in "moov".
inline QByteArray file(const QByteArray& inside)
{
    return atom("ftyp", "M4A " + number(0)) + atom("moov", inside) + atom("mdat", QByteArray(1000, 'm'));
}
} // namespace Mp4
