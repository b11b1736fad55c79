#include "songs/spokenwords.h"

#include "collection/counttext.h"
#include "collection/timetext.h"
#include "dupmusicinfo.h"
#include "songs/songfields.h"

#include <QStringList>

namespace {
const QLatin1String comma(", ");

/// Breaks and rows of blanks would be heard as pauses.
QString orElse(const QString& text, const char* otherwise)
{
    const QString line = text.simplified();
    return line.isEmpty() ? QString::fromLatin1(otherwise) : line;
}

QString titleOf(const QMusicInfo* song)
{
    const QString title = SongFields::title(song).simplified();
    return title.isEmpty() ? orElse(SongFields::shownName(song) + comma + QLatin1String("unknown title"), "")
                           : title;
}
} // namespace

QString SpokenWords::of(const QMusicInfo* song)
{
    return titleOf(song) + comma + orElse(SongFields::artist(song), "unknown artist") + comma +
           orElse(SongFields::album(song), "unknown album");
}

QString SpokenWords::about(const QMusicInfo* song)
{
    QStringList words = {orElse(SongFields::genre(song), "unknown genre")};
    if (SongFields::year(song) > 0)
        words.append(QString::number(SongFields::year(song)));
    if (SongFields::trackNumber(song) > 0)
        words.append(QStringLiteral("track %1").arg(SongFields::trackNumber(song)));
    words.append(TimeText::inWords(qint64(SongFields::duration(song))));
    return words.join(comma);
}

QString SpokenWords::of(const DupMusicInfo* group)
{
    return of(group->musicList.value(0)) + comma +
           CountText::of(quint64(group->musicList.size()), "song", "songs");
}

QString SpokenWords::ofCopy(const QMusicInfo* song, const QString& format, bool kept, bool best)
{
    return QLatin1String(kept ? "Kept: " : "To be deleted: ") + titleOf(song) + comma + format + comma +
           CountText::of(SongFields::bitRateKbps(song), "kilobit per second", "kilobits per second") +
           (best ? comma + QStringLiteral("best sound of this group") : QString());
}

QString SpokenWords::ofList(List list, int shown, int all)
{
    const QString count = list == List::Duplicates ? CountText::of(quint64(all), "group", "groups")
                                                   : CountText::of(quint64(all), "song", "songs");
    const char* const name = list == List::All         ? "All songs, "
                             : list == List::Undefined ? "Undefined songs, "
                                                       : "Duplicate songs, ";
    const QString found =
        shown == all ? QString() : CountText::number(quint64(shown)) + QLatin1String(" of ");
    return QLatin1String(name) + found + count;
}
