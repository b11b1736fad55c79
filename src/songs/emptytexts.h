#pragma once

#include "itunes/itunesmusiclibrary.h"

#include <QString>
#include <QVector>

struct LibrarySight;

/// What the middle of a view says that has nothing to show.
struct EmptyText
{
    enum class Picture { Nothing, Scan, Tidy };
    struct Line
    {
        QString text;
        bool isPath = false; ///< kept on one line, and shortened in its middle
    };

    QString heading; ///< without one nothing is said
    QVector<Line> lines;
    Picture picture = Picture::Nothing;
    bool offersLibrary = false; ///< another library file can be chosen
};

/// The words for it; `groups` is for the view of duplicates.
namespace EmptyTexts {
/// Nothing has the words that are looked for, of so many songs or groups.
EmptyText notFound(const QString& typed, int all, bool groups);
/// Of songs that were added and not scanned yet.
EmptyText notScanned(bool groups);
/// After a scan: there is nothing to tidy.
EmptyText tidy(bool groups);

/// Of a library that is still being looked for.
EmptyText looking();
/// Before a scan of the library.
EmptyText toScan(const LibrarySight& library);
/// After one that gave no songs.
EmptyText withoutSongs(const LibrarySight& library, iTunesReading reading);
} // namespace EmptyTexts
