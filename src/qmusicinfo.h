#pragma once

#include "localmusicinfo.h"

#include <QString>

#include <memory>

struct iTunesTrackRecord;

/// What the music library says of a track whose edit it did not take. Texts are owned as the record's are.
struct TrackTruth
{
    const char* name;
    const char* artist;
    const char* album;
    const char* genre;
    quint64 year;
    quint64 trackNumber;
    QString coverPath;
};

/// One song. Where its texts and numbers come from is told by the mode in force, never by which pointer is
/// null: ask SongFields.
struct QMusicInfo
{
    /// No track, no local data, the generic cover.
    QMusicInfo();

    iTunesTrackRecord* track = nullptr; ///< iTunes mode: owned by the iTunes library
    QString coverPath;                  ///< iTunes mode: file of the cover picture
    std::unique_ptr<TrackTruth> truth;  ///< iTunes mode: set while the song shows what was not saved
    qint32 reserved = 0;
    std::unique_ptr<LocalMusicInfo> localInfo; ///< local mode; null in iTunes mode
};
