#pragma once

#include "audiofile.h"
#include "fixtures.h"
#include "interposed.h"
#include "itunesfixture.h"
#include "librarycalls.h"

#include <QDir>
#include <QTemporaryDir>

#include <functional>
#include <mutex>
#include <sys/stat.h>

/// A library of songs in a folder of its own, read by the calls that are tested.
class SongLibrary
{
public:
    SongLibrary()
    {
        AudioFile::takeLog();
        Interposed::beforeSync = [this] { noteJournal(); };
    }
    ~SongLibrary()
    {
        closeITunesLibrary();
        Interposed::beforeSync = nullptr;
    }
    Q_DISABLE_COPY(SongLibrary)

    QString folder() const { return m_folder.path(); }
    QString path() const { return inFolder("Library.xml"); }
    QString journal() const { return path() + ".melodrift-journal"; }
    QString backup() const { return path() + ".melodrift-backup"; }
    /// The version that was there first, and journals that could not be applied whole.
    QStringList originals() const { return beside("Library.xml.melodrift-original-*"); }
    QStringList keptJournals() const { return beside("Library.xml.melodrift-journal-kept-*"); }
    QString media(int number) const { return inFolder(QString("song%1.mp3").arg(number)); }
    QString inFolder(const QString& name) const { return m_folder.filePath(name); }
    static quint64 id(int number) { return Fixtures::itunesTrack(number).persistentId; }

    /// Any document.
    void make(const QByteArray& bytes)
    {
        Fixtures::writeLibrary(path(), bytes);
        LibraryCalls::read(path());
    }
    /// So many songs, of which the first few have a real file, in two playlists.
    void makeSongs(int count, int real = 0)
    {
        tracks.clear();
        playlists = {{"All", {}}, {"Odd", {}}};
        for (int i = 0; i < count; ++i) {
            if (i < real)
                Fixtures::copyTone("mp3", folder(), QString("song%1").arg(i));
            tracks.append(Fixtures::itunesTrack(i, media(i)));
            playlists[0].trackIds.append(tracks.last().trackId);
            if (i % 2 == 1)
                playlists[1].trackIds.append(tracks.last().trackId);
        }
        make(document());
    }
    /// What the file should hold, from the tracks and playlists as they are now.
    QByteArray document() const { return Fixtures::itunesLibrary(tracks, playlists); }
    QByteArray content() const { return LibraryCalls::contentOf(path()); }
    /// The journal as a kill after the changes leaves it, without the line feeds that lie ready behind its
    /// end.
    QByteArray leftBy(const std::function<void()>& changes)
    {
        makeSongs(6, 1);
        before = content();
        changes();
        QByteArray left = journalContent();
        while (left.endsWith("\n\n"))
            left.chop(1);
        closeITunesLibrary();
        return left;
    }
    /// How many songs the library has with this journal beside it.
    int countWith(const QByteArray& left) const
    {
        Fixtures::writeLibrary(path(), before);
        Fixtures::writeLibrary(journal(), left);
        return LibraryCalls::read(path()).count;
    }
    /// What the journal holds, or held when its changes went into the library: on a busy machine that may be
    /// over before a test looks.
    QByteArray journalContent()
    {
        const QByteArray now = LibraryCalls::contentOf(journal());
        const std::lock_guard<std::mutex> lock(m_mutex);
        return now.isEmpty() ? m_lastJournal : now;
    }
    QStringList temporaries() const
    {
        return QDir(folder()).entryList({".melodrift*"}, QDir::Files | QDir::Hidden);
    }

    QVector<Fixtures::ITunesTrack> tracks;
    QVector<Fixtures::ITunesPlaylist> playlists;
    QByteArray before; ///< the library as no change has seen it

private:
    QStringList beside(const QString& pattern) const
    {
        QStringList paths;
        for (const QString& name : QDir(folder()).entryList({pattern}))
            paths.append(inFolder(name));
        return paths;
    }

    void noteJournal()
    {
        const QByteArray now = LibraryCalls::contentOf(journal());
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!now.isEmpty())
            m_lastJournal = now;
    }

    QTemporaryDir m_folder;
    std::mutex m_mutex;
    QByteArray m_lastJournal; ///< when anything was handed to the device last
};

inline ino_t fileNumber(const QString& path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_ino : 0;
}
