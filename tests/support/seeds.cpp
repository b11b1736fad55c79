#include "seeds.h"

#include "fixtures.h"
#include "itunesfixture.h"

#include <QBuffer>
#include <QHash>
#include <QImage>

#include <functional>

using Seeds::Seed;

namespace {
/// Which edits, and which values they take.
const QByteArray choices[] = {QByteArray("\x01\x01", 2), QByteArray("\x7F\x02", 2), QByteArray("\x7F\0", 2),
                              QByteArray("\x40\x01", 2), QByteArray("\x38\x04", 2)};

QList<Seed> reading()
{
    return Seeds::music() + Seeds::musicFindings();
}

QList<Seed> editing()
{
    QList<Seed> seeds;
    for (const Seed& seed : reading())
        for (const QByteArray& choice : choices)
            seeds << Seed{seed.group, seed.name + QLatin1Char('-') + QString::fromLatin1(choice.toHex()),
                          seed.bytes + choice};
    return seeds;
}

/// With the demuxer chosen that knows the kind.
QList<Seed> lastWay()
{
    static const QStringList kinds = {"wav", "w64", "m4a", "ogg", "wma", "ape", "flac", "aac"};
    static const QHash<QString, QString> others = {{"alac", "m4a"}, {"opus", "ogg"}, {"oggflac", "ogg"}};
    QList<Seed> seeds;
    for (const Seed& seed : reading()) {
        const QString kind = kinds.contains(seed.name) ? seed.name : others.value(seed.group, seed.group);
        if (kinds.contains(kind))
            seeds << Seed{seed.group, seed.name, seed.bytes + char(kinds.indexOf(kind))};
    }
    return seeds;
}

QByteArray asUtf16(const QByteArray& utf8)
{
    const QString text = QString::fromUtf8(utf8);
    return "\xFF\xFE" + QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
}

QList<Seed> libraries()
{
    const QVector<Fixtures::ITunesTrack> tracks = {Fixtures::itunesTrack(0), Fixtures::itunesTrack(1),
                                                   Fixtures::itunesTrack(2)};
    const QByteArray library =
        Fixtures::itunesLibrary(tracks, {{"All", {tracks[0].trackId, tracks[1].trackId}}, {"None", {}}});
    const QByteArray bare = "<plist><dict><key>Tracks</key><dict><key>1</key><dict><key>Track ID</key>"
                            "<integer>1</integer><key>Persistent ID</key><string>A1</string></dict></dict>"
                            "</dict></plist>";
    return {{QString(), "library", library},
            {QString(), "bare", bare},
            {QString(), "utf-16", asUtf16(bare)},
            {QString(), "entities",
             "<?xml version=\"1.0\" encoding=\"US-ASCII\"?><!DOCTYPE plist [<!ENTITY a \"b\">]>" +
                 QByteArray(bare).replace("A1", "&#65;1<!-- -->").replace("</integer>", "&a;</integer>")}};
}

QList<Seed> journals()
{
    const QByteArray change = "change\t00000000000000A1\t=Name\t=\\tA\\n\\\\\t\t=Pop\t=1999\t\t0";
    const QByteArray edit = "edit\t00000000000000B2\tName\tArtist\tAlbum\tGenre\t2001";
    const QByteArray deletion = "delete\t00000000000000A1";
    return {{QString(), "lines", '?' + change + "\n+" + edit + "\n\n+" + deletion + '\n'},
            {QString(), "open", '+' + deletion + "\n-" + edit + "\n?" + change},
            {QString(), "return", '+' + deletion + "\n+return\t00000000000000A1 00000000000000B2\n"},
            {QString(), "former", "melodrift journal 1\n+" + edit + "\tbroken\n"},
            {QString(), "blank", "melodrift jou" + QByteArray(20, '\0')}};
}

QList<Seed> leftovers()
{
    return {
        {QString(), "names", "song.mp3\n0123456789abcdef\n.melodrift-0123456789abcdef-0123456789abcdef\n"},
        {QString(), "odd", "\xE5\xA4\x9C \n0123456789abcdef-notes\n.melodrift-\n../0123456789abcd\n.\n"}};
}

QByteArray encoded(const QImage& image, const char* format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

QList<Seed> covers()
{
    const QImage image = QImage::fromData(Fixtures::jpeg(24, 16, 3));
    QList<Seed> seeds = {{QString(), "jpeg", Fixtures::jpeg(24, 16, 3)}};
    for (const char* format : {"png", "bmp", "ppm", "xpm", "webp", "tiff", "ico"})
        if (const QByteArray bytes = encoded(image, format); !bytes.isEmpty())
            seeds << Seed{QString(), format, bytes};
    seeds << Seed{QString(), "grey.png", encoded(image.convertToFormat(QImage::Format_Grayscale8), "png")};
    seeds << Seed{QString(), "indexed.png", encoded(image.convertToFormat(QImage::Format_Indexed8), "png")};
    seeds << Seed{QString(), "gif", Fixtures::gif({1, 1})};
    // The size of this one is told otherwise by its reader.
    seeds << Seed{QString(), "a wide screen.gif", Fixtures::gif({3000, 34})};
    return seeds;
}

QList<Seed> answers()
{
    return {{QString(), "lookup",
             R"({"status": "ok", "results": [{"id": "9ff43b6a-4f16-427c-93c2-92307ca505e0", "score": 0.98,)"
             R"( "recordings": [{"id": "22d6b8a1-2b5b-4fd5-a0c8-2b4a0b9f4a4e", "duration": 200}]}]})"},
            {QString(), "error", R"({"status": "error", "error": {"code": 4, "message": "invalid key"}})"},
            {QString(), "recording",
             R"({"id": "22d6b8a1-2b5b-4fd5-a0c8-2b4a0b9f4a4e", "title": "Song", "first-release-date":)"
             R"( "1997-05", "artist-credit": [{"name": "A", "joinphrase": " & "}, {"name": "B"}], "genres":)"
             R"( [{"name": "pop", "count": 3}], "releases": [{"id":)"
             R"( "22d6b8a1-2b5b-4fd5-a0c8-2b4a0b9f4a4f", "title": "Album", "status": "Official", "date":)"
             R"( "1998", "release-group": {"primary-type": "Album", "secondary-types": []}}]})"},
            {QString(), "search",
             R"({"recordings": [{"id": "22d6b8a1-2b5b-4fd5-a0c8-2b4a0b9f4a4e", "title": "Song", "score": 90,)"
             R"( "length": 200000, "disambiguation": "live", "artist-credit": [{"name": "A", "artist":)"
             R"( {"sort-name": "A, The", "aliases": [{"name": "B"}]}}], "releases": [{"title": "Album",)"
             R"( "release-group": {"secondary-types": ["Live"]}}]}]})"},
            {QString(), "tracks",
             R"({"media": [{"position": 1, "tracks": [{"position": 3, "recording": {"id":)"
             R"( "22d6b8a1-2b5b-4fd5-a0c8-2b4a0b9f4a4e"}}]}]})"}};
}

struct Target
{
    const char* name;
    std::function<QList<Seed>()> seeds;
};

const QList<Target>& table()
{
    static const QList<Target> all = {
        {"reading", reading},   {"editing", editing},  {"lastway", lastWay},
        {"library", libraries}, {"journal", journals}, {"leftovers", leftovers},
        {"cover", covers},      {"identify", answers}, {"fingerprint", reading}};
    return all;
}
} // namespace

QStringList Seeds::targets()
{
    QStringList names;
    for (const Target& target : table())
        names << target.name;
    return names;
}

QList<Seed> Seeds::of(const QString& target)
{
    for (const Target& one : table())
        if (target == one.name)
            return one.seeds();
    return {};
}
