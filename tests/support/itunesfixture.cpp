#include "itunesfixture.h"

#include <QFile>
#include <QUrl>

using Fixtures::ITunesPlaylist;
using Fixtures::ITunesTrack;

namespace {
QByteArray escaped(const QByteArray& text)
{
    return QByteArray(text).replace('&', "&#38;").replace('<', "&#60;").replace('>', "&#62;");
}

void addText(QByteArray& xml, const char* key, const QByteArray& text)
{
    if (!text.isEmpty())
        xml += QByteArray("\t\t\t<key>") + key + "</key><string>" + escaped(text) + "</string>\n";
}

void addNumber(QByteArray& xml, const char* key, quint64 number)
{
    if (number != 0)
        xml +=
            QByteArray("\t\t\t<key>") + key + "</key><integer>" + QByteArray::number(number) + "</integer>\n";
}

void addTrack(QByteArray& xml, const ITunesTrack& track)
{
    xml += "\t\t<key>" + QByteArray::number(track.trackId) + "</key>\n\t\t<dict>\n";
    addNumber(xml, "Track ID", quint64(track.trackId));
    addText(xml, "Name", track.name);
    addText(xml, "Artist", track.artist);
    addText(xml, "Album", track.album);
    addText(xml, "Genre", track.genre);
    addText(xml, "Kind", track.kind);
    addNumber(xml, "Size", track.size);
    addNumber(xml, "Total Time", track.duration);
    addNumber(xml, "Track Number", track.trackNumber);
    addNumber(xml, "Year", track.year);
    xml += "\t\t\t<key>Date Modified</key><date>2014-03-01T10:00:00Z</date>\n"
           "\t\t\t<key>Date Added</key><date>2013-11-21T18:20:31Z</date>\n";
    addNumber(xml, "Bit Rate", track.bitRate);
    addNumber(xml, "Sample Rate", track.sampleRate);
    xml += track.further;
    if (track.persistentId != 0)
        addText(xml, "Persistent ID", Fixtures::itunesIdentifier(track.persistentId));
    addText(xml, "Track Type", track.type);
    addText(xml, "Location", track.location);
    xml += "\t\t</dict>\n";
}

void addPlaylist(QByteArray& xml, const ITunesPlaylist& playlist, int number)
{
    xml += "\t\t<dict>\n\t\t\t<key>Name</key><string>" + escaped(playlist.name) + "</string>\n";
    addNumber(xml, "Playlist ID", quint64(number) + 900000);
    xml += "\t\t\t<key>All Items</key><true/>\n";
    if (!playlist.trackIds.isEmpty()) {
        xml += "\t\t\t<key>Playlist Items</key>\n\t\t\t<array>\n";
        for (const int id : playlist.trackIds)
            xml += "\t\t\t\t<dict>\n\t\t\t\t\t<key>Track ID</key><integer>" + QByteArray::number(id) +
                   "</integer>\n\t\t\t\t</dict>\n";
        xml += "\t\t\t</array>\n";
    }
    xml += "\t\t</dict>\n";
}
} // namespace

QByteArray Fixtures::itunesIdentifier(quint64 persistentId)
{
    return QByteArray::number(persistentId, 16).rightJustified(16, '0').toUpper();
}

QByteArray Fixtures::itunesLocation(const QString& path)
{
    return "file://localhost" + QUrl::toPercentEncoding(path, "/:!$'()*+,;=@", QByteArray());
}

ITunesTrack Fixtures::itunesTrack(int number)
{
    ITunesTrack track;
    const QByteArray text = QByteArray::number(number);
    const QByteArray album = QByteArray::number(number / 12);
    track.trackId = 1000 + number * 2;
    track.persistentId = (quint64(number) + 1) * Q_UINT64_C(0x9E3779B97F4A7C15);
    track.name = "Title " + text + " of the m\xC3\xB6rning";
    track.artist = "Artist " + album + " & the Others";
    track.album = "Album " + album;
    track.genre = number % 3 == 0 ? "Pop" : "Rock";
    track.duration = 180000 + quint64(number) * 7 % 120000;
    track.trackNumber = quint64(number % 12 + 1);
    track.year = quint64(1970 + number / 12 % 50);
    track.size = 4000000 + quint64(number);
    track.location = "file://localhost/Users/Shared/Music/Media/Artist%20" + album + "/Album%20" + album +
                     "/Title%20" + text + ".mp3";
    return track;
}

ITunesTrack Fixtures::itunesTrack(int number, const QString& mediaFile)
{
    ITunesTrack track = itunesTrack(number);
    track.location = itunesLocation(mediaFile);
    return track;
}

QByteArray Fixtures::itunesLibrary(const QVector<ITunesTrack>& tracks,
                                   const QVector<ITunesPlaylist>& playlists)
{
    QByteArray xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                     "<!DOCTYPE plist PUBLIC \"-//Apple Computer//DTD PLIST 1.0//EN\" "
                     "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                     "<plist version=\"1.0\">\n<dict>\n"
                     "\t<key>Major Version</key><integer>1</integer>\n"
                     "\t<key>Minor Version</key><integer>1</integer>\n"
                     "\t<key>Date</key><date>2015-01-02T12:00:00Z</date>\n"
                     "\t<key>Application Version</key><string>12.0.1</string>\n"
                     "\t<key>Features</key><integer>5</integer>\n"
                     "\t<key>Music Folder</key><string>file://localhost/Users/Shared/Music/</string>\n"
                     "\t<key>Library Persistent ID</key><string>0123456789ABCDEF</string>\n"
                     "\t<key>Tracks</key>\n\t<dict>\n";
    for (const ITunesTrack& track : tracks)
        addTrack(xml, track);
    xml += "\t</dict>\n\t<key>Playlists</key>\n\t<array>\n";
    for (int i = 0; i < playlists.size(); ++i)
        addPlaylist(xml, playlists.at(i), i);
    xml += "\t</array>\n</dict>\n</plist>\n";
    return xml;
}

QByteArray Fixtures::largeItunesLibrary(int count)
{
    // What real entries also hold.
    static const QByteArray further =
        "\t\t\t<key>Album Artist</key><string>Various Artists of Many Places</string>\n"
        "\t\t\t<key>Composer</key><string>J\xC3\xB6rg Lindqvist, Ida Marlowe</string>\n"
        "\t\t\t<key>Grouping</key><string>Evening</string>\n"
        "\t\t\t<key>Disc Number</key><integer>1</integer>\n"
        "\t\t\t<key>Disc Count</key><integer>2</integer>\n"
        "\t\t\t<key>Track Count</key><integer>12</integer>\n"
        "\t\t\t<key>BPM</key><integer>120</integer>\n"
        "\t\t\t<key>Volume Adjustment</key><integer>12</integer>\n"
        "\t\t\t<key>Comments</key><string>Taken from the record in the year it came out</string>\n"
        "\t\t\t<key>Play Count</key><integer>17</integer>\n"
        "\t\t\t<key>Play Date</key><integer>3475918233</integer>\n"
        "\t\t\t<key>Play Date UTC</key><date>2014-02-21T19:10:33Z</date>\n"
        "\t\t\t<key>Skip Count</key><integer>1</integer>\n"
        "\t\t\t<key>Skip Date</key><date>2014-02-20T08:15:03Z</date>\n"
        "\t\t\t<key>Release Date</key><date>2012-05-01T07:00:00Z</date>\n"
        "\t\t\t<key>Rating</key><integer>80</integer>\n"
        "\t\t\t<key>Album Rating</key><integer>80</integer>\n"
        "\t\t\t<key>Album Rating Computed</key><true/>\n"
        "\t\t\t<key>Normalization</key><integer>1842</integer>\n"
        "\t\t\t<key>Artwork Count</key><integer>1</integer>\n"
        "\t\t\t<key>Sort Album</key><string>Album in Order</string>\n"
        "\t\t\t<key>Sort Artist</key><string>Artist in Order</string>\n"
        "\t\t\t<key>Sort Name</key><string>Title in Order</string>\n";
    QVector<ITunesTrack> tracks;
    ITunesPlaylist all{"Library", {}};
    for (int i = 0; i < count; ++i) {
        tracks.append(itunesTrack(i));
        tracks.last().further = further;
        all.trackIds.append(tracks.last().trackId);
    }
    ITunesPlaylist music = all;
    music.name = "Music";
    return itunesLibrary(tracks, {all, music, {"Loved & kept", all.trackIds.mid(0, count / 10)}});
}

QString Fixtures::writeLibrary(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qUtf8Printable(path));
    return path;
}
