#include "cli/songtext.h"

#include "cli/figures.h"
#include "collection/formats.h"

std::string SongText::heading(const SongFile& first, SongList::By by, int songs, const Console& console)
{
    std::string text = first.title.toStdString();
    if (by == SongList::By::ArtistAndTitle)
        text = first.artist.toStdString() + " - " + text;
    return console.strong(console.shown(text) + " (" + Figures::count(std::uint64_t(songs)) + ")");
}

std::string SongText::row(const SongFile& song, const Console& console)
{
    const auto right = [](const std::string& text, int width) {
        return QString::fromStdString(text).rightJustified(width).toStdString();
    };
    return Formats::listedName(song.format).leftJustified(4).toStdString() +
           right(Figures::bitRate(song.bitRate), 13) + right(Figures::sampleRate(song.sampleRate), 10) +
           right(Figures::length(song.milliseconds), 9) + right(Figures::size(song.bytes), 10) + "  " +
           console.shown(song.path);
}
