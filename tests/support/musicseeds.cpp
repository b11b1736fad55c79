#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "foreignfixture.h"
#include "mediabytes.h"
#include "mp4fixture.h"
#include "mp4kinds.h"
#include "oddid3v2.h"
#include "oggfixture.h"
#include "seeds.h"
#include "wavfixture.h"

#include <QFile>
#include <QHash>
#include <QTemporaryDir>

#include <limits>

using namespace MediaBytes;
using Seeds::Seed;

namespace {
/// Long enough for two frames of every kind.
constexpr int milliseconds = 100;

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qUtf8Printable(path));
    return file.readAll();
}

QByteArray tone(const QString& kind)
{
    return contentOf(Fixtures::tone(kind, milliseconds));
}

/// The tone with all that the application writes.
QByteArray taggedTone(const QString& kind)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("song.") + Fixtures::suffixOf(kind));
    QFile::copy(Fixtures::tone(kind, milliseconds), path);
    const QByteArray cover = Fixtures::jpeg(8, 8, 1);
    const QHash<int, QString> texts = {
        {TAG_TITLE, QStringLiteral("Vinterljus")}, {TAG_ARTIST, QStringLiteral("Jörg")},
        {TAG_ALBUM, QStringLiteral("夜")},         {TAG_GENRE, QStringLiteral("Pop")},
        {TAG_YEAR, QStringLiteral("2018")},        {TAG_TRACK, QStringLiteral("3")}};
    if (AudioFile::write(path, texts, &cover) != 0)
        qFatal("cannot tag %s", qUtf8Printable(path));
    return contentOf(path);
}

QByteArray picture()
{
    return QByteArray("\xFF\xD8\xFF\xE0 picture");
}

QByteArray frames(char version)
{
    QByteArray all = frame("TIT2", QByteArray("\3Title\0Second", 13), 0, version) +
                     frame("TPE1",
                           QByteArray("\1\xFF\xFE"
                                      "A\0r\0",
                                      7),
                           0, version) +
                     frame("TALB", QByteArray("\0Album", 6), 0, version) +
                     frame("TCON", QByteArray("\0(17)(13)Own", 12), 0, version) +
                     frame(version == 3 ? "TYER" : "TDRC", QByteArray("\0002018-03", 8), 0, version) +
                     frame("TRCK", QByteArray("\0003/12", 5), 0, version) +
                     frame("TXXX", QByteArray("\0MOOD\0Calm", 10), 0, version) +
                     frame("COMM", QByteArray("\0engd\0text", 10), 0, version) +
                     frame("USLT", QByteArray("\0eng\0La la", 10), 0, version);
    all += frame("APIC", QByteArray("\0image/jpeg\0\3\0", 14) + picture(), 0, version);
    all += frame("CHAP", QByteArray("c1\0", 3) + QByteArray(16, '\0') + frame("TIT2", "\3One"), 0, version);
    return all + frame("PRIV", QByteArray("owner\0\1\2\3", 9), 0, version);
}

QByteArray framesOfTwo()
{
    const auto small = [](const char* id, const QByteArray& body) {
        return QByteArray(id) + big32(quint32(body.size())).mid(1) + body;
    };
    return small("TT2", QByteArray("\0Title", 6)) + small("TP1", QByteArray("\0Artist", 7)) +
           small("TYE", QByteArray("\0001999", 5)) + small("TRK", QByteArray("\0007", 2)) +
           small("PIC", QByteArray("\0JPG\3\0", 6) + picture());
}

/// With an extended header, unsynchronised, and with padding.
QByteArray oddTag()
{
    const QByteArray body = QByteArray("\0\0\0\6\1\0", 6) + frames(4) + QByteArray(20, '\0');
    return QByteArray("ID3\4\0\xC0", 6) + sevenBits(quint32(body.size())) + body;
}

QByteArray items()
{
    return apeTag(apeItem("Title", QByteArray("Title\0Second", 12)) + apeItem("Artist", "Artist") +
                      apeItem("Year", "2018") + apeItem("Track", "3/12") +
                      apeItem("Cover Art (Front)", QByteArray("front.jpg\0", 10) + picture()),
                  5);
}

QByteArray fields()
{
    return comment(field("TITLE=Title") + field("title=Second") + field("ARTIST=Artist") +
                       field("DATE=2018-03-04") + field("TRACKNUMBER=3/12") + field("GENRE=Pop") +
                       field("COMMENT=text") + field("COVERART=/9j/4CBw") + field("no field"),
                   9);
}

QByteArray blocks()
{
    const QByteArray wrapped = big32(3) + big32(10) + "image/jpeg" + big32(0) + QByteArray(16, '\0') +
                               big32(quint32(picture().size())) + picture();
    return flacBlock(4, fields()) + flacBlock(6, wrapped) + flacBlock(2, "ownrbytes") +
           flacBlock(1, QByteArray(30, '\0'));
}

QByteArray chunks()
{
    const QByteArray info = "INFO" + chunk("INAM", QByteArray("Title\0", 6)) + chunk("IART", "Artist") +
                            chunk("ICRD", "2018") + chunk("IPRT", "3") + chunk("IGNR", "Pop");
    return chunk("LIST", info) + chunk("id3 ", id3v2(frames(3), 3)) + chunk("cue ", QByteArray(4, '\0'));
}

QByteArray atoms(const QByteArray& further = QByteArray())
{
    using namespace Mp4;
    const QByteArray list =
        item("\xA9nam", 1, "Title") +
        item("\xA9"
             "ART",
             1, "Artist") +
        item("\xA9"
             "day",
             1, "2018-03-04") +
        item("gnre", 0, QByteArray("\0\x12", 2)) + item("trkn", 0, QByteArray("\0\0\0\3\0\x0C\0\0", 8)) +
        item("covr", 13, picture()) +
        atom("----", atom("mean", number(0) + "com.own") + atom("name", number(0) + "MOOD") +
                         atom("data", number(1) + number(0) + "Calm"));
    const QByteArray pieces = table("stco", 1, number(8)) + table("stsz", 1, QByteArray());
    return file(track(pieces) + tags(list) + further);
}

QByteArray attributes()
{
    const auto wide = [](const QByteArray& text) {
        QByteArray bytes;
        for (const char c : text)
            bytes += QByteArray(1, c) + '\0';
        return bytes + QByteArray(2, '\0');
    };
    const auto attribute = [&wide](const QByteArray& name, const QByteArray& value) {
        return little(quint16(wide(name).size())) + wide(name) + little(quint16(0)) +
               little(quint16(wide(value).size())) + wide(value);
    };
    return asfObject("40A4D0D207E3D21197F000A0C95EA850",
                     little(quint16(4)) + attribute("WM/AlbumTitle", "Album") + attribute("WM/Genre", "Pop") +
                         attribute("WM/Genre", "Rock") + attribute("WM/TrackNumber", "3/12"));
}

/// A tag at the end that says to begin with the file, in front of another one: less than nothing is left of
/// the music, and of its bit rate.
QByteArray tagOverAll(const QByteArray& music)
{
    const QByteArray tagged = id3v2(framesOfTwo(), 2) + music;
    return tagged + apeTag(QByteArray(), 0).replace(12, 4, little(quint32(tagged.size() + 32)));
}

/// Tags of others' making, on the kinds that bear them.
void addForeign(QList<Seed>& seeds)
{
    const QString foreign = QStringLiteral("foreign");
    for (const char* kind : {"mp3", "aac", "ape", "flac"}) {
        const QByteArray music = tone(kind);
        const QByteArray last = id3v1("Title", 3, 17);
        seeds << Seed{kind, "id3v2.2", id3v2(framesOfTwo(), 2) + music};
        seeds << Seed{kind, "id3v2.3", id3v2(frames(3), 3) + music + last};
        seeds << Seed{kind, "id3v2.4", id3v2(frames(4)) + music};
        seeds << Seed{kind, "odd", oddTag() + music + items() + last};
        seeds << Seed{kind, "items", music + items()};
    }
    seeds << Seed{"flac", foreign, withBlocks(tone("flac"), blocks())};
    seeds << Seed{"wav", foreign, withChunks(tone("wav"), chunks())};
    seeds << Seed{"ogg", foreign, withSecondPacket(tone("ogg"), vorbisPacket(fields()))};
    seeds << Seed{"opus", foreign, withSecondPacket(tone("opus"), "OpusTags" + fields())};
    seeds << Seed{"wma", foreign, withObject(tone("wma"), attributes())};
    seeds << Seed{"m4a", foreign, atoms()};
    seeds << Seed{"m4a", "odd", atoms(Mp4::longAtom("free", QByteArray(40, '\0')) + Mp4::atom("moof", ""))};
}
/// MP4 of every kind of sound, and with tags in every place.
void addMp4(QList<Seed>& seeds)
{
    const QString group = QStringLiteral("m4a");
    for (const QString& kind : Fixtures::mp4Kinds() + QStringList{"mp4half", "mp4fragments"})
        seeds << Seed{group, kind, tone(kind)};
    for (const Mp4Kinds::Kind& kind : Mp4Kinds::oddTags(Mp4Kinds::untagged(tone(group))))
        seeds << Seed{group, kind.name, kind.bytes};
}

/// As programs leave it that stream, cut, or count as few others do.
void addOdd(QList<Seed>& seeds)
{
    for (const WavFixture::Wav& wav : WavFixture::odd(tone("wav")) + WavFixture::ofLongSizes(tone("rf64")))
        seeds << Seed{"wav", wav.name, wav.bytes};
    for (const QString& kind : Fixtures::wavKinds())
        seeds << Seed{"wav", kind, tone(kind)};
    for (const char* kind : {"mp3", "aac"}) {
        seeds << Seed{kind, "late", QByteArray(1000, '\0') + tone(kind)};
        const QByteArray broken = frame("TCOM", QByteArray()) + frame("T\xE9XX", "\3odd") + frames(4) +
                                  frame("TPE2", QByteArray("\0cut", 4)).replace(7, 1, "\x7F");
        seeds << Seed{kind, "broken frames", id3v2(broken) + tone(kind)};
    }
    seeds << Seed{"aac", "channels in a frame", tone("aacquad")};
    QByteArrayList layered = adtsFrames(tone("aac"));
    for (QByteArray& frame : layered)
        frame[1] = char(frame.at(1) | 2);
    seeds << Seed{"aac", "layered", layered.join()};
}

/// Ogg with more in it than one song from its beginning.
void addOgg(QList<Seed>& seeds)
{
    for (const char* kind : {"ogg", "opus", "oggflac"}) {
        const QByteArray music = tone(kind);
        seeds << Seed{kind, "late", Ogg::late(music, 6615)};
        seeds << Seed{kind, "beside", Ogg::withSkeleton(music)};
        seeds << Seed{kind, "behind", music + Ogg::renumbered(music, 77)};
    }
    const QByteArray head = "Speex   " + QByteArray("1.2").leftJustified(20, '\0') + little(quint32(1)) +
                            little(quint32(80)) + little(quint32(16000)) + little(quint32(1)) +
                            little(quint32(4)) + little(quint32(1)) + little(quint32(-1)) +
                            little(quint32(320)) + little(quint32(0)) + little(quint32(1)) +
                            little(quint32(0)) + QByteArray(8, '\0');
    QList<Ogg::Page> speex = {Ogg::page(1, 0, Ogg::First, head), Ogg::page(1, 1, 0, fields()),
                              Ogg::page(1, 2, Ogg::Last, QByteArray(42, 's'))};
    speex.last().position = 320;
    seeds << Seed{"ogg", "speex", Ogg::bytesOf(speex)};
}

/// What libavformat alone reads.
void addLastWay(QList<Seed>& seeds)
{
    seeds << Seed{"wav", "rifx", Foreign::rifx(20, id3v2(frames(3), 3))};
    seeds << Seed{"wav", "w64", tone("w64")};
    seeds << Seed{"aac", "loas", tone("loas")};
    seeds << Seed{"m4a", "bare", tone("m4a").replace(4, 4, "free")};
    seeds << Seed{"m4a", "movie", atoms().replace(4, 4, "wide")};
}

/// ID3v2 with empty and broken frames.
void addOddId3v2(QList<Seed>& seeds)
{
    const auto asked = [](int version, const char* id, const char* value) {
        return OddId3v2::frame(version, id, OddId3v2::text(value));
    };
    const auto add = [&seeds](const QString& name, const QByteArray& tag) {
        seeds << Seed{"mp3", "id3v2." + name, tag + tone("mp3")};
    };
    QHash<int, QByteArray> passedOver;
    for (const OddId3v2::Frames& odd : OddId3v2::passedOver())
        passedOver[odd.version] += odd.bytes;
    for (const int version : {2, 3, 4}) {
        const QByteArray frames = asked(version, "TIT2", "Title") + passedOver.value(version) +
                                  asked(version, "TPE1", "Artist") + OddId3v2::frame(version, "TALB", {});
        add(QStringLiteral("%1, passed over").arg(version), id3v2(frames, char(version)));
    }
    for (const OddId3v2::Frames& end : OddId3v2::ends()) {
        const QByteArray frames = asked(end.version, "TIT2", "Title") + end.bytes +
                                  asked(end.version, "TPE1", "Artist") + QByteArray(30, '\0');
        add(QString::fromLatin1(end.name.mid(2)), id3v2(frames, char(end.version)));
    }
    const QByteArray title = asked(4, "TIT2", "Title");
    add(QStringLiteral("4, of empty frames"), id3v2(OddId3v2::frame(4, "TIT2", {})));
    add(QStringLiteral("4, of no size"), OddId3v2::ofNoSize(id3v2(title)));
    seeds << Seed{"wav", "id3v2 beyond its chunk",
                  withChunks(tone("wav"), OddId3v2::chunkBefore(title, asked(4, "TPE1", "Artist")))};
}
/// All pages of the music at one position.
QByteArray positioned(const QByteArray& ogg, qint64 position)
{
    QList<Ogg::Page> pages = Ogg::pagesOf(ogg);
    for (Ogg::Page& page : pages)
        page.position = position;
    return Ogg::bytesOf(pages);
}
} // namespace

QList<Seed> Seeds::music()
{
    QList<Seed> seeds;
    for (const QString& kind : Fixtures::formats() + Fixtures::furtherKinds()) {
        seeds << Seed{kind, "bare", tone(kind)};
        seeds << Seed{kind, "tagged", taggedTone(kind)};
    }
    addForeign(seeds);
    addMp4(seeds);
    addOdd(seeds);
    addOgg(seeds);
    addLastWay(seeds);
    return seeds;
}

QList<Seed> Seeds::musicFindings()
{
    const QString tagged = QStringLiteral("a tag over all of the music");
    const QByteArray noAttributes =
        asfObject("40A4D0D207E3D21197F000A0C95EA850", little(quint16(65535)) + QByteArray(12, '\0'));
    const QByteArrayList aac = adtsFrames(tone("aac"));
    QList<Seed> seeds = {
        {"ape", tagged, tagOverAll(tone("ape"))},
        {"flac", tagged, tagOverAll(tone("flac"))},
        {"wma", "attributes that are not there", withObject(tone("wma"), noAttributes)},
        {"aac", "id3v2 between its frames", aac.mid(0, 2).join() + id3v2(frames(3), 3) + aac.mid(2).join()}};
    using Position = std::numeric_limits<qint64>;
    for (const char* kind : {"ogg", "opus", "oggflac"})
        seeds << Seed{kind, "lowest positions", positioned(tone(kind), Position::min())};
    QByteArray skipping = tone("opus");
    skipping.replace(skipping.indexOf("OpusHead") + 10, 2, QByteArray(2, '\xFF'));
    seeds << Seed{"opus", "skips more than it has", positioned(skipping, Position::max())};
    addOddId3v2(seeds);
    return seeds;
}
