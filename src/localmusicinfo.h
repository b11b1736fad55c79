#pragma once

#include "collection/filestate.h"

#include <QPixmap>
#include <QString>

#include <memory>

/// Tags and stream properties of a song that the user added from disk.
struct LocalMusicInfo
{
    /// Empty texts, zero numbers and the generic cover. Needs the GUI thread.
    LocalMusicInfo();

    QString title;
    QString artist;
    QString album;
    QString genre;
    qint64 year = 0;
    qint64 trackNumber = 0;
    QString spareText;
    QString filePath;  ///< as the user chose or dropped it
    QString coverPath; ///< temporary copy of the embedded picture, empty without one
    QString format;    ///< "MP3", "FLAC" …
    qint64 spareNumber = 0;
    qint64 bitrate = 0;             ///< bits per second
    qint64 sampleRate = 0;          ///< hertz
    qint64 duration = 0;            ///< milliseconds
    std::unique_ptr<QPixmap> cover; ///< ready to paint; never null
    FileState file;                 ///< what lay at the path when it was read, or when we saved it last
};
