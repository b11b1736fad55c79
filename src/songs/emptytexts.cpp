#include "songs/emptytexts.h"

#include "collection/counttext.h"
#include "qiorvoutil.h"
#include "songs/librarysight.h"

#include <QDir>

namespace {
EmptyText::Line path(const QString& path)
{
    return {QDir::toNativeSeparators(path), true};
}

/// Where no library file is.
EmptyText missing(const LibrarySight& library)
{
    EmptyText text{QStringLiteral("No music library was found"), {}, EmptyText::Picture::Nothing, true};
    if (!library.file.isEmpty()) {
        text.lines = {path(library.file), {QStringLiteral("There is no such file.")}};
    } else if (!library.folders.isEmpty()) {
        text.lines.append({QStringLiteral("Looked in these folders:")});
        for (const QString& folder : library.folders)
            text.lines.append(path(folder));
    }
    return text;
}

/// Under a heading of its own.
EmptyText present(const QString& heading, EmptyText::Picture picture, const LibrarySight& library)
{
    const QString sizeAndDate = QIOrvoUtil::size2String(library.bytes) + QLatin1String(", changed ") +
                                library.changed.toString(QStringLiteral("yyyy-MM-dd hh:mm"));
    return {heading, {path(library.file), {sizeAndDate}}, picture, true};
}
} // namespace

EmptyText EmptyTexts::notFound(const QString& typed, int all, bool groups)
{
    const QString heading = groups ? QStringLiteral("No group has “%1”") : QStringLiteral("No song has “%1”");
    const QString count = groups ? CountText::of(quint64(all), "group", "groups")
                                 : CountText::of(quint64(all), "song", "songs");
    return {heading.arg(typed),
            {{QStringLiteral("Empty the field above to see all %1 again.").arg(count)}},
            EmptyText::Picture::Nothing,
            false};
}

EmptyText EmptyTexts::notScanned(bool groups)
{
    const QString what =
        groups ? QStringLiteral("Press Start Scan to find songs that are there more than once.")
               : QStringLiteral("Press Start Scan to find songs without a title, artist, album or genre.");
    return {QStringLiteral("Not scanned yet"), {{what}}, EmptyText::Picture::Scan, false};
}

EmptyText EmptyTexts::tidy(bool groups)
{
    if (groups)
        return {QStringLiteral("No duplicates. Well tidied."),
                {{QStringLiteral("No two songs have the same title and length.")}},
                EmptyText::Picture::Tidy,
                false};
    return {QStringLiteral("No undefined songs. Well tagged."),
            {{QStringLiteral("Every song has a title, an artist, an album and a genre.")}},
            EmptyText::Picture::Tidy,
            false};
}

EmptyText EmptyTexts::looking()
{
    return {QStringLiteral("Looking for your music library…"), {}, EmptyText::Picture::Scan, true};
}

EmptyText EmptyTexts::toScan(const LibrarySight& library)
{
    return library.isThere
               ? present(QStringLiteral("Start Scan reads this library"), EmptyText::Picture::Scan, library)
               : missing(library);
}

EmptyText EmptyTexts::withoutSongs(const LibrarySight& library, iTunesReading reading)
{
    if (!library.isThere)
        return missing(library);
    const bool isRead = reading == ITUNES_READ || reading == ITUNES_EMPTY;
    return present(isRead ? QStringLiteral("There are no songs in this library")
                          : QStringLiteral("This library cannot be read"),
                   EmptyText::Picture::Nothing, library);
}
