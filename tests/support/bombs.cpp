#include "bombs.h"

#include "fixtures.h"
#include "foreignfixture.h"
#include "mediabytes.h"
#include "mp4fixture.h"
#include "oggfixture.h"

#include <QFile>

using namespace MediaBytes;

namespace {
constexpr int megabyte = 1 << 20;

QByteArray tone(const char* kind)
{
    QFile file(Fixtures::tone(kind, 1000));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", kind);
    return file.readAll();
}

QByteArray wavWith(const QByteArray& chunks)
{
    return withChunks(tone("wav"), chunks);
}

QByteArray flacWith(const QByteArray& blocks)
{
    return withBlocks(tone("flac"), blocks);
}

QByteArray oggWith(const QByteArray& commentPacket)
{
    return withSecondPacket(tone("ogg"), commentPacket);
}

QByteArray apeWith(const QByteArray& items, int count)
{
    return tone("mp3") + apeTag(items, count);
}

QByteArray wmaWith(const QByteArray& object, int times = 1)
{
    return withObject(tone("wma"), object, times);
}

QByteArray repeated(const QByteArray& bytes, int times)
{
    return bytes.repeated(times);
}

// ID3v2

/// A text that inflates to a thousand times its size.
QByteArray inflating(const char* id, const QByteArray& text, char version = 4)
{
    const QByteArray packed = qCompress('\3' + text, 9).mid(4); // Qt's own length in front
    const auto size = quint32(text.size() + 1);
    return version == 4 ? frame(id, sevenBits(size) + packed, 0x09)
                        : frame(id, big32(size) + packed, char(0x80), 3);
}

QByteArray inflatingTag(char version = 4, int megabytes = 100)
{
    return id3v2(inflating("TIT2", QByteArray(megabytes * megabyte, 'A'), version), version);
}

QByteArray genres(int times)
{
    return repeated("(1)", times);
}

QByteArray nestedChapters()
{
    QByteArray chapter;
    const QByteArray times(16, '\0');
    QList<QByteArray> heads;
    int size = 0;
    for (int level = 0; level < 40000; ++level) {
        size += 2 + 16;
        heads.append("CHAP" + sevenBits(quint32(size)) + QByteArray(2, '\0') + QByteArray("c\0", 2) + times);
        size += 10;
    }
    for (int level = heads.size() - 1; level >= 0; --level)
        chapter += heads.at(level);
    return id3v2(chapter);
}

QByteArray pictureWithEndlessDescription()
{
    return id3v2(frame("APIC", QByteArray("\3image/jpeg\0\3", 13) + QByteArray(30 * megabyte, 'd')));
}

// Chunks

QByteArray infoEntries()
{
    QByteArray list("INFO");
    for (int i = 0; i < 1000000; ++i) {
        QByteArray id;
        for (const int place : {1, 36, 1296, 46656})
            id.append("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"[i / place % 36]);
        list += id + little(quint32(2)) + "A" + '\0';
    }
    return chunk("LIST", list);
}

QByteArray nestedLists()
{
    QByteArray lists;
    for (int size = 20000; size > 0; --size)
        lists += "LIST" + little(quint32(size * 12 - 8)) + "INFO";
    return lists;
}

QByteArray wavOfRate(quint32 rate)
{
    QByteArray wav = tone("wav");
    return wav.replace(24, 4, little(rate));
}

// Comments

QByteArray manyFields(int count)
{
    return repeated(little(quint32(3)) + "A=B", count);
}

// APE items

QByteArray manyItems(int count)
{
    QByteArray items;
    for (int i = 0; i < count; ++i)
        items += little(quint32(1)) + little(quint32(0)) + QByteArray::number(i, 36).rightJustified(5, '0') +
                 '\0' + 'x';
    return items;
}

// Header objects

QByteArray manyAttributes()
{
    const QByteArray one = little(quint16(4)) + QByteArray("A\0\0\0", 4) + little(quint16(0)) +
                           little(quint16(2)) + QByteArray(2, '\0');
    return asfObject("40A4D0D207E3D21197F000A0C95EA850", little(quint16(65535)) + repeated(one, 65535));
}

QByteArray vastAttribute()
{
    const QByteArray text = QByteArray("A\0", 2).repeated(15 * megabyte);
    const QByteArray name = QByteArray("T\0i\0t\0l\0e\0\0\0", 12);
    const QByteArray record = little(quint16(0)) + little(quint16(0)) + little(quint16(name.size())) +
                              little(quint16(0)) + little(quint32(text.size())) + name + text;
    const QByteArray library = asfObject("941C23449894D149A1411D134E457054", little(quint16(1)) + record);
    return asfObject("B503BF5F2EA9CF118EE300C00C205365",
                     QByteArray(18, '\0') + little(quint32(library.size())) + library);
}

void addId3v2(QList<Bombs::Bomb>& bombs)
{
    bombs << Bombs::Bomb{"compressed text in MP3", "mp3", [] { return inflatingTag() + tone("mp3"); }};
    bombs << Bombs::Bomb{"compressed text of an older version", "mp3",
                         [] { return inflatingTag(3) + tone("mp3"); }};
    bombs << Bombs::Bomb{"compressed text in AAC", "aac", [] { return inflatingTag() + tone("aac"); }};
    bombs << Bombs::Bomb{"compressed text in FLAC", "flac", [] { return inflatingTag() + tone("flac"); }};
    bombs << Bombs::Bomb{"compressed text in WAV", "wav",
                         [] { return wavWith(chunk("ID3 ", inflatingTag())); }};
    bombs << Bombs::Bomb{"compressed text behind rubbish", "mp3",
                         [] { return QByteArray(300, 'r') + inflatingTag(4, 50) + tone("mp3"); }};
    bombs << Bombs::Bomb{"genres of references", "mp3",
                         [] { return id3v2(frame("TCON", '\0' + genres(88000))) + tone("mp3"); }};
    bombs << Bombs::Bomb{"compressed genres", "mp3",
                         [] { return id3v2(inflating("TCON", genres(2000000))) + tone("mp3"); }};
    bombs << Bombs::Bomb{"chapters in chapters", "mp3", [] { return nestedChapters() + tone("mp3"); }};
    bombs << Bombs::Bomb{"a million frames", "mp3", [] {
                             return id3v2(repeated(frame("TIT2", QByteArray("\0A", 2)), 1000000)) +
                                    tone("mp3");
                         }};
    bombs << Bombs::Bomb{"a text of 40 MB", "mp3", [] {
                             return id3v2(frame("TIT2", '\0' + QByteArray(40 * megabyte, 'A'))) + tone("mp3");
                         }};
    bombs << Bombs::Bomb{"a picture's description of 30 MB", "mp3",
                         [] { return pictureWithEndlessDescription() + tone("mp3"); }};
    bombs << Bombs::Bomb{"a private frame of 200 MB", "mp3",
                         [] { return id3v2(frame("PRIV", QByteArray(200 * megabyte, 'p'))) + tone("mp3"); }};
}

void addOthers(QList<Bombs::Bomb>& bombs)
{
    bombs << Bombs::Bomb{"a million items", "mp3", [] { return apeWith(manyItems(1000000), 1000000); }};
    bombs << Bombs::Bomb{"an item of 40 MB", "mp3", [] {
                             return apeWith(little(quint32(40 * megabyte)) + little(quint32(0)) +
                                                QByteArray("Title\0", 6) + QByteArray(40 * megabyte, 'A'),
                                            1);
                         }};
    bombs << Bombs::Bomb{"two million FLAC fields", "flac",
                         [] { return flacWith(flacBlock(4, comment(manyFields(2000000), 2000000))); }};
    bombs << Bombs::Bomb{"FLAC blocks of 16 MB", "flac",
                         [] { return flacWith(repeated(flacBlock(2, QByteArray((1 << 24) - 1, 'a')), 12)); }};
    bombs << Bombs::Bomb{"a hundred thousand FLAC blocks", "flac",
                         [] { return flacWith(repeated(flacBlock(2, "abcd"), 100000)); }};
    bombs << Bombs::Bomb{"two million Ogg fields", "ogg",
                         [] { return oggWith(vorbisPacket(comment(manyFields(2000000), 2000000))); }};
    bombs << Bombs::Bomb{
        "an Ogg text of 40 MB", "ogg",
        [] { return oggWith(vorbisPacket(comment(field("TITLE=" + QByteArray(40 * megabyte, 'A')), 1))); }};
    bombs << Bombs::Bomb{"a million INFO entries", "wav", [] { return wavWith(infoEntries()); }};
    bombs << Bombs::Bomb{"lists in lists", "wav", [] { return wavWith(nestedLists()); }};
    bombs << Bombs::Bomb{"a million empty chunks", "wav",
                         [] { return wavWith(repeated(chunk("abcd", QByteArray()), 1000000)); }};
    bombs << Bombs::Bomb{"a rate of two gigahertz", "wav", [] { return wavOfRate(2147483647); }};
    bombs << Bombs::Bomb{"attributes", "wma", [] { return wmaWith(manyAttributes(), 10); }};
    bombs << Bombs::Bomb{"attributes that are not there", "wma", [] {
                             return wmaWith(asfObject("40A4D0D207E3D21197F000A0C95EA850",
                                                      little(quint16(65535)) + QByteArray(12, '\0')));
                         }};
    bombs << Bombs::Bomb{"an attribute of 30 MB", "wma", [] { return wmaWith(vastAttribute()); }};
    bombs << Bombs::Bomb{
        "unknown objects of 20 MB", "wma", [] {
            return wmaWith(asfObject("00112233445566778899AABBCCDDEEFF", QByteArray(20 * megabyte, 'u')), 10);
        }};
}

/// A movie without a first atom that says to have so many pieces of music in a few bytes.
QByteArray manyPieces(quint32 count)
{
    using Mp4::number;
    const QByteArray pieces = Mp4::table("stco", 1, number(8)) +
                              Mp4::table("stts", 1, number(count) + number(1024)) +
                              Mp4::table("stsc", 1, number(1) + number(count) + number(1)) +
                              Mp4::atom("stsz", number(0) + number(2) + number(count));
    return Mp4::atom("wide", QByteArray()) + Mp4::atom("moov", Mp4::track(pieces).repeated(20));
}

/// Streams that begin and never go on.
QByteArray manyStreams(int count)
{
    QByteArray streams;
    for (int i = 0; i < count; ++i)
        streams += Ogg::bytesOf(Ogg::page(quint32(i), 0, Ogg::First, "\x01vorbis" + QByteArray(23, '\1')));
    return streams;
}

QByteArray manyLinks(int count)
{
    QByteArray links;
    for (int i = 0; i < count; ++i)
        links += Ogg::bytesOf(Ogg::page(quint32(i), 0, Ogg::First, "OpusHead" + QByteArray(11, '\1'))) +
                 Ogg::bytesOf(Ogg::page(quint32(i), 1, 0, "OpusTags" + QByteArray(8, '\0')));
    return links;
}

/// Music beside a stream of pictures with that comment.
QByteArray besideComment(const QByteArray& fields)
{
    constexpr quint32 serial = 4711;
    constexpr int mostOfPage = 255 * 255;
    const QByteArray packet =
        "\x81theora" + fields + QByteArray(mostOfPage - (fields.size() + 7) % mostOfPage, '\0');
    QList<Ogg::Page> pages = Ogg::pagesOf(tone("ogg"));
    QList<Ogg::Page> others;
    for (int begin = 0; begin < packet.size(); begin += mostOfPage)
        others << Ogg::Page{0,
                            -1,
                            serial,
                            quint32(others.size() + 1),
                            QByteArray(255, char(255)),
                            packet.mid(begin, mostOfPage)};
    others << Ogg::page(serial, quint32(others.size() + 1), Ogg::Last, QByteArray());
    const QByteArray first =
        Ogg::bytesOf(Ogg::page(serial, 0, Ogg::First, "\x80theora" + QByteArray(35, '\0')));
    return first + Ogg::bytesOf(pages.takeFirst()) + Ogg::bytesOf(others) + Ogg::bytesOf(pages);
}

/// What libavformat reads, since nobody else does.
void addForeign(QList<Bombs::Bomb>& bombs)
{
    bombs << Bombs::Bomb{"a text that inflates beside turned numbers", "wav", [] {
                             const QByteArray text = inflating("TIT2", QByteArray(200 * megabyte, 'A'));
                             return Foreign::rifx(100, id3v2(text));
                         }};
    bombs << Bombs::Bomb{"two thousand million pieces", "m4a", [] { return manyPieces(0x7FFFFFFF); }};
    bombs << Bombs::Bomb{"three hundred thousand pieces", "m4a", [] { return manyPieces(300000); }};
    bombs << Bombs::Bomb{"a hundred thousand streams", "ogg", [] { return manyStreams(100000); }};
    bombs << Bombs::Bomb{"music behind music", "ogg", [] { return manyLinks(50000); }};
    bombs << Bombs::Bomb{"two million fields of another stream", "ogg",
                         [] { return besideComment(comment(manyFields(2000000), 2000000)); }};
}
} // namespace

QList<Bombs::Bomb> Bombs::all()
{
    QList<Bomb> bombs;
    addId3v2(bombs);
    addOthers(bombs);
    addForeign(bombs);
    return bombs;
}
