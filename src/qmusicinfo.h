#pragma once

#include "localmusicinfo.h"

#include <QString>

#include <memory>

struct iTunesTrackRecord;

/// One song. Where its texts and numbers come from is told by the mode in force, never by which pointer is
/// null: ask SongFields.
struct QMusicInfo
{
    /// No track, no local data, the generic cover.
    QMusicInfo();

    iTunesTrackRecord* track = nullptr; ///< iTunes mode: owned by the iTunes library
    QString coverPath;                  ///< iTunes mode: file of the cover picture
    qint32 reserved = 0;
    std::unique_ptr<LocalMusicInfo> localInfo; ///< local mode; null in iTunes mode
};
