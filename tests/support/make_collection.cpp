// Makes a small real music collection to try the program with:
//     make_collection DIR          about thirty songs in all eight formats
//     make_collection DIR COUNT    that many MP3 files, ten to an album
#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>

namespace {
struct Song
{
    const char* kind;
    const char* title;
    const char* artist;
    const char* album;
    const char* genre;
    int year;
    int track;
};

// Some without a title, an artist, an album or a genre; some twice.
const Song songs[] = {
    {"mp3", "Harbour Lights", "Ida Marlowe", "Paper Lanterns", "Pop", 2012, 1},
    {"mp3", "Glass Rivers", "Ida Marlowe", "Paper Lanterns", "Pop", 2012, 2},
    {"flac", "Midnight Ferry", "Ida Marlowe", "Paper Lanterns", "Pop", 2012, 4},
    {"mp3", "Midnight Ferry", "Ida Marlowe", "Paper Lanterns", "Pop", 2012, 4},
    {"m4a", "Midnight Ferry", "Ida Marlowe", "Paper Lanterns (Deluxe)", "Pop", 2013, 4},
    {"m4a", "Slow Tide", "Ida Marlowe", "Paper Lanterns", "Pop", 2012, 5},
    {"mp3", "", "Ida Marlowe", "Paper Lanterns", "Pop", 2012, 6},
    {"flac", "Northern Line", "The Salt Choir", "Low Orbit", "Rock", 2009, 1},
    {"flac", "Salt and Honey", "The Salt Choir", "Low Orbit", "Rock", 2009, 2},
    {"ogg", "Wren", "The Salt Choir", "Low Orbit", "Rock", 2009, 3},
    {"ogg", "Kites", "The Salt Choir", "Low Orbit", "", 2009, 4},
    {"mp3", "Kites", "The Salt Choir", "Low Orbit", "Rock", 2009, 4},
    {"wav", "Amber", "The Salt Choir", "Low Orbit", "Rock", 2009, 5},
    {"m4a", "Ghost Notes", "Jörg Lindqvist", "Blå timmen", "Classical", 2018, 1},
    {"m4a", "Vinterljus", "Jörg Lindqvist", "Blå timmen", "Classical", 2018, 2},
    {"flac", "Driftwood", "Jörg Lindqvist", "", "Classical", 2018, 3},
    {"ape", "Long Way Up", "Jörg Lindqvist", "Blå timmen", "Classical", 2018, 4},
    {"aac", "Long Way Up", "Jörg Lindqvist", "Blå timmen", "Classical", 2018, 4},
    {"mp3", "Νυχτερινός δρόμος", "Ελένη Μαρίνου", "Φώτα της πόλης", "Pop", 2021, 1},
    {"mp3", "Βροχή", "Ελένη Μαρίνου", "Φώτα της πόλης", "Pop", 2021, 2},
    {"flac", "Βροχή", "Ελένη Μαρίνου", "Φώτα της πόλης", "Pop", 2021, 2},
    {"ogg", "Αυγή", "", "Φώτα της πόλης", "Pop", 2021, 3},
    {"wav", "Field Recording 7", "", "", "", 0, 0},
    {"wma", "Porch Song", "Old Mill Band", "County Fair", "Other", 1998, 1},
    {"mp3", "Porch Song", "Old Mill Band", "County Fair", "Other", 1998, 1},
    {"mp3", "Hay Wagon", "Old Mill Band", "County Fair", "Other", 1998, 2},
    {"ape", "Barn Dance", "Old Mill Band", "County Fair", "Other", 1998, 3},
    {"aac", "", "Old Mill Band", "County Fair", "Other", 1998, 4},
};

void tagSong(const QString& path, const Song& song, int coverSeed)
{
    QHash<int, QString> texts{
        {TAG_TITLE, QString::fromUtf8(song.title)}, {TAG_ARTIST, QString::fromUtf8(song.artist)},
        {TAG_ALBUM, QString::fromUtf8(song.album)}, {TAG_GENRE, QString::fromUtf8(song.genre)},
        {TAG_YEAR, QString::number(song.year)},     {TAG_TRACK, QString::number(song.track)}};
    const QByteArray cover = coverSeed >= 0 ? Fixtures::jpeg(500, 500, coverSeed) : QByteArray();
    if (AudioFile::write(path, texts, &cover) != 0)
        qFatal("cannot tag %s", qUtf8Printable(path));
}

QString folderFor(const QString& root, const QString& artist, const QString& album)
{
    const QString folder = root + QLatin1Char('/') +
                           (artist.isEmpty() ? QStringLiteral("Unsorted") : artist) + QLatin1Char('/') +
                           (album.isEmpty() ? QStringLiteral("Loose") : album);
    QDir().mkpath(folder);
    return folder;
}

void makeSmall(const QString& root)
{
    QStringList albums;
    int number = 0;
    for (const Song& song : songs) {
        const QString album = QString::fromUtf8(song.album);
        if (!album.isEmpty() && !albums.contains(album))
            albums.append(album);
        const QString title = song.title[0] ? QString::fromUtf8(song.title) : QStringLiteral("Track");
        const QString folder = folderFor(root, QString::fromUtf8(song.artist), album);
        const QString path =
            Fixtures::copyTone(QLatin1String(song.kind), folder,
                               QStringLiteral("%1 %2").arg(++number, 2, 10, QLatin1Char('0')).arg(title));
        tagSong(path, song, album.isEmpty() ? -1 : albums.indexOf(album) + 3);
    }
}

void makeLarge(const QString& root, int count)
{
    const QString model = root + QLatin1String("/model.mp3");
    QDir().mkpath(root);
    for (int i = 0; i < count; ++i) {
        if (i % 10 == 0) {
            QFile::remove(model);
            QFile::copy(Fixtures::tone(QStringLiteral("mp3")), model);
            const QByteArray album = QByteArray("Album ") + QByteArray::number(i / 10);
            const Song song{"mp3", "Song", "Artist", album.constData(), "Pop", 2000 + i / 10 % 20, 1};
            const QByteArray cover = Fixtures::jpeg(600, 600, i / 10);
            tagSong(model, song, -1);
            AudioFile::write(model, {}, &cover);
        }
        const QString folder =
            folderFor(root, QStringLiteral("Artist"), QStringLiteral("Album %1").arg(i / 10));
        const QString path = QStringLiteral("%1/%2.mp3").arg(folder).arg(i % 10);
        QFile::copy(model, path);
        AudioFile::write(path, {{TAG_TITLE, QStringLiteral("Song %1").arg(i % 10 == 9 ? i - 1 : i)}});
    }
    QFile::remove(model);
}
} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 2)
        makeSmall(arguments.at(1));
    else if (arguments.size() == 3 && arguments.at(2).toInt() > 0)
        makeLarge(arguments.at(1), arguments.at(2).toInt());
    else
        qFatal("usage: make_collection DIR [COUNT]");
    return 0;
}
