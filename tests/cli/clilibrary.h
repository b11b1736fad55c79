#pragma once

#include "clirun.h"
#include "itunesfixture.h"

#include <QDirIterator>

/// A music library over songs in a folder, for runs of melodrift-cli. A song's file is a few bytes: nobody
/// reads what is in it.
class CliLibrary : public CliRun
{
public:
    /// A track with a file, or without.
    Fixtures::ITunesTrack& add(const QString& file, const QByteArray& name, quint64 duration,
                               bool isThere = true)
    {
        const QByteArray content = "song " + file.toUtf8();
        if (isThere)
            addFile(file.toUtf8(), content);
        Fixtures::ITunesTrack track = Fixtures::itunesTrack(m_tracks.size(), path(file));
        track.name = name;
        track.duration = duration;
        track.size = quint64(content.size());
        m_tracks.append(track);
        return m_tracks.last();
    }
    /// Writes it, with all tracks in a playlist.
    void write()
    {
        Fixtures::ITunesPlaylist all{"All", {}};
        for (const Fixtures::ITunesTrack& track : qAsConst(m_tracks))
            all.trackIds.append(track.trackId);
        Fixtures::writeLibrary(path(QStringLiteral("Library.xml")), Fixtures::itunesLibrary(m_tracks, {all}));
    }
    QByteArray content() const { return contentOf(QStringLiteral("Library.xml")); }
    QByteArray contentOf(const QString& name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    Answer library(const QStringList& arguments) const
    {
        return ask(QStringList{QStringLiteral("library"), QStringLiteral("Library.xml")} + arguments);
    }
    /// All files but those in the home, with what they hold.
    QMap<QString, QByteArray> files() const
    {
        QMap<QString, QByteArray> files;
        QDirIterator walk(path(), QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            const QString name = QDir(path()).relativeFilePath(walk.next());
            if (!name.startsWith(QStringLiteral("home/")))
                files.insert(name, contentOf(name));
        }
        return files;
    }

    QVector<Fixtures::ITunesTrack>& tracks() { return m_tracks; }

private:
    QVector<Fixtures::ITunesTrack> m_tracks;
};
