#include "oddid3v2.h"

#include "mediabytes.h"

#include <QHash>

using OddId3v2::Frames;

namespace {
constexpr int versions[] = {2, 3, 4};

/// A frame of a composer that says to be so long.
QByteArray frameOfSize(int version, int size)
{
    const QByteArray bytes = OddId3v2::frame(version, "TCOM", QByteArray(size, 'x'));
    return bytes.left(bytes.size() - size) + OddId3v2::text("Composer");
}

QByteArray named(int version, const char* name)
{
    return "2." + QByteArray::number(version) + ", " + name;
}
} // namespace

QByteArray OddId3v2::frame(int version, const char* id, const QByteArray& body)
{
    if (version > 2)
        return MediaBytes::frame(id, body, 0, char(version));
    static const QHash<QByteArray, QByteArray> oldest = {
        {"TIT2", "TT2"}, {"TPE1", "TP1"}, {"TALB", "TAL"}, {"TCOM", "TCM"}};
    return oldest.value(id, QByteArray(id).left(3)) + MediaBytes::big32(quint32(body.size())).mid(1) + body;
}

QByteArray OddId3v2::text(const char* value)
{
    return QByteArray(1, '\0') + value;
}

QList<Frames> OddId3v2::passedOver()
{
    QList<Frames> all;
    for (const int version : versions) {
        const auto add = [version, &all](const char* name, const QByteArray& bytes) {
            all << Frames{named(version, name), version, bytes};
        };
        add("empty", frame(version, "TCOM", QByteArray()));
        add("empty, of no known id", frame(version, "ZZZZ", QByteArray()));
        add("an id beyond ASCII", frame(version, "T\xE9XX", text("Composer")));
        add("an id in small letters", frame(version, "tcom", text("Composer")));
        add("a space in the id", frame(version, "T OM", text("Composer")));
        add("several", frame(version, "TCOM", QByteArray()) + frame(version, "\xFF\xFF\xFF\xFF", "x") +
                           frame(version, "APIC", QByteArray()));
    }
    // The highest bits of its bytes say nothing in the newest version.
    all << Frames{named(4, "a size with high bits"), 4,
                  QByteArray("T\xE9XX\x80\x80\x80\x85\0\0", 10) + QByteArray("\0abcd", 5)};
    return all;
}

QList<Frames> OddId3v2::ends()
{
    QList<Frames> all;
    for (const int version : versions) {
        const auto add = [version, &all](const char* name, const QByteArray& bytes) {
            all << Frames{named(version, name), version, bytes};
        };
        add("a size beyond the tag's end", frameOfSize(version, 5000));
        add("a size a little beyond the tag's end", frameOfSize(version, 100));
        add("an id of zeros", QByteArray(version == 2 ? 6 : 10, '\0'));
        add("words", "words that make no frame");
    }
    return all;
}

QByteArray OddId3v2::ofNoSize(const QByteArray& tag)
{
    constexpr int lastOfSize = 9;
    QByteArray odd = tag;
    odd[lastOfSize] = char(odd.at(lastOfSize) | 0x80);
    return odd;
}

QByteArray OddId3v2::chunkBefore(const QByteArray& inside, const QByteArray& behind)
{
    const QByteArray tag = MediaBytes::id3v2(inside + behind);
    return MediaBytes::chunk("id3 ", tag.left(tag.size() - behind.size())) + behind;
}
