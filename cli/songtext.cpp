#include "cli/songtext.h"

#include "cli/figures.h"
#include "collection/formats.h"

namespace {
/// Of a track what its file's name ends with: the library's words are long.
QString shortFormat(const SongFile& song)
{
    if (!song.isTrack())
        return Formats::listedName(song.format);
    const QString name = QString::fromStdString(song.path).section(QLatin1Char('/'), -1);
    const QString ending = name.section(QLatin1Char('.'), -1).toUpper();
    return name.contains(QLatin1Char('.')) && ending.size() <= 4 ? ending : QStringLiteral("-");
}
} // namespace

std::string SongText::heading(const SongFile& first, SongList::By by, int songs, const Console& console)
{
    std::string text = first.title.toStdString();
    if (text.empty())
        text = first.path.substr(first.path.rfind('/') + 1);
    else if (by != SongList::By::TitleAndDuration && !first.artist.isEmpty())
        text = first.artist.toStdString() + " - " + text;
    return console.strong(console.shown(text) + " (" + Figures::count(std::uint64_t(songs)) + ")");
}

std::string SongText::format(const SongFile& song)
{
    return (!song.isTrack() ? Formats::listedName(song.format) : song.kind).toStdString();
}

std::string SongText::row(const SongFile& song, const Console& console)
{
    const auto right = [](const std::string& text, int width) {
        return QString::fromStdString(text).rightJustified(width).toStdString();
    };
    return shortFormat(song).leftJustified(4).toStdString() + right(Figures::bitRate(song.bitRate), 13) +
           right(Figures::sampleRate(song.sampleRate), 10) + right(Figures::length(song.milliseconds), 9) +
           right(Figures::size(song.bytes), 10) + "  " + console.shown(song.path);
}
