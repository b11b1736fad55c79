// Writes a music library file over the music under a folder:  make_library DIR LIBRARY_FILE
#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "itunesfixture.h"

#include <QCoreApplication>
#include <QDirIterator>
#include <QFileInfo>
#include <QHash>

namespace {
/// As music programs call it.
QByteArray kindOf(const QString& path)
{
    static const QHash<QString, QByteArray> kinds = {
        {"mp3", "MPEG audio file"},  {"m4a", "AAC audio file"},          {"aac", "AAC audio file"},
        {"flac", "FLAC audio file"}, {"wav", "WAV audio file"},          {"ogg", "Ogg Vorbis file"},
        {"ape", "APE audio file"},   {"wma", "Windows Media audio file"}};
    return kinds.value(QFileInfo(path).suffix().toLower(), "audio file");
}

Fixtures::ITunesTrack trackOf(const QString& path, int number)
{
    const AudioFile::Content content = AudioFile::read(path);
    const AudioFile::Properties properties = AudioFile::properties(path);
    Fixtures::ITunesTrack track = Fixtures::itunesTrack(number, path);
    const auto text = [&](int type) { return content.texts.value(type).toHtmlEscaped().toUtf8(); };
    track.name = text(TAG_TITLE);
    track.artist = text(TAG_ARTIST);
    track.album = text(TAG_ALBUM);
    track.genre = text(TAG_GENRE);
    track.year = content.texts.value(TAG_YEAR).toULongLong();
    track.trackNumber = content.texts.value(TAG_TRACK).toULongLong();
    track.size = quint64(QFileInfo(path).size());
    track.kind = kindOf(path);
    track.duration = quint64(qMax(properties.duration, 0));
    track.bitRate = quint64(qMax(properties.bitRate, 0)) / 1000;
    return track;
}
} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3)
        qFatal("usage: make_library DIR LIBRARY_FILE");
    QStringList paths;
    QDirIterator files(arguments.at(1), QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext())
        paths.append(files.next());
    paths.sort();
    QVector<Fixtures::ITunesTrack> tracks;
    for (const QString& path : qAsConst(paths))
        tracks.append(trackOf(path, tracks.size()));
    Fixtures::writeLibrary(arguments.at(2), Fixtures::itunesLibrary(tracks));
    return 0;
}
