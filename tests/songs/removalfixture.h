#pragma once

#include "dupmusicinfo.h"
#include "owntrash.h"
#include "qmusicinfo.h"
#include "songfixtures.h"
#include "songs/songremoval.h"
#include "startup.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>
#include <vector>

/// Lists of songs on small files.
class RemovalFixture : public QObject
{
public:
    static void initMain() { Startup::beforeApplication(); }

protected:
    void start();
    void prepare();

    QMusicInfo* song(const QString& name);
    /// As an intake finds the song's file.
    static void list(QMusicInfo* song) { song->localInfo->file = FileState::ofEntry(fileOf(song)); }
    static QString fileOf(const QMusicInfo* song) { return song->localInfo->filePath; }
    DupMusicInfo* group(const QList<QMusicInfo*>& songs);
    SongLists lists() { return {&m_all, &m_groups, &m_undefined, &m_tags}; }

    const OwnTrash m_bin;
    std::unique_ptr<FileRemoval> m_removal;
    std::unique_ptr<QTemporaryDir> m_folder;
    Fixtures::ModeGuard m_mode{true};
    std::vector<std::unique_ptr<QMusicInfo>> m_songs;
    std::vector<std::unique_ptr<DupMusicInfo>> m_ownGroups;
    QList<QMusicInfo*> m_all;
    QList<QMusicInfo*> m_undefined;
    QList<DupMusicInfo*> m_groups;
    QList<IAudioTag*> m_tags;
};

inline void RemovalFixture::start()
{
    Startup::afterApplication();
    Fixtures::genericCover();
}

inline void RemovalFixture::prepare()
{
    m_all.clear();
    m_undefined.clear();
    m_groups.clear();
    m_tags.clear();
    m_ownGroups.clear();
    m_songs.clear();
    m_folder = std::make_unique<QTemporaryDir>();
    m_bin.empty();
    m_removal = std::make_unique<FileRemoval>();
}

/// A song on a small file, in the list of all songs.
inline QMusicInfo* RemovalFixture::song(const QString& name)
{
    m_songs.push_back(std::make_unique<QMusicInfo>());
    m_songs.back()->localInfo = std::make_unique<LocalMusicInfo>();
    m_songs.back()->localInfo->filePath =
        Fixtures::saveBytes(name.toUtf8(), m_folder->filePath(name + QLatin1String(".mp3")));
    list(m_songs.back().get());
    m_all.append(m_songs.back().get());
    m_tags.append(nullptr);
    return m_songs.back().get();
}

inline DupMusicInfo* RemovalFixture::group(const QList<QMusicInfo*>& songs)
{
    m_ownGroups.push_back(std::make_unique<DupMusicInfo>());
    m_ownGroups.back()->musicList = songs;
    m_groups.append(m_ownGroups.back().get());
    return m_groups.last();
}
