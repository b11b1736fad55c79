#include "songs/songtip.h"

#include "common/textfit.h"
#include "qiorvoutil.h"
#include "songs/songfields.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QStringList>

namespace {
/// One line each: tags may hold any text.
QString shown(const QString& tag)
{
    constexpr int longest = 200;
    const QString line = TextFit::elided(
        tag.simplified(), [](const QString& candidate) { return candidate.size() <= longest; });
    return line.isEmpty() ? QStringLiteral("unknown") : line;
}

QString shown(quint64 number)
{
    return shown(number > 0 ? QString::number(number) : QString());
}

QString sizeAndDate(const QMusicInfo* song, const QFileInfo& file)
{
    if (!file.exists())
        return QStringLiteral("There is no such file");
    return QIOrvoUtil::size2String(SongFields::fileSize(song)) + QLatin1String(", changed ") +
           file.lastModified().toString(QStringLiteral("yyyy-MM-dd hh:mm"));
}
} // namespace

QString SongTip::of(const QMusicInfo* song)
{
    const QFileInfo file(SongFields::audioPath(song));
    QStringList lines = {QDir::toNativeSeparators(file.filePath()), sizeAndDate(song, file)};
    lines += {QLatin1String("Title: ") + shown(SongFields::title(song)),
              QLatin1String("Artist: ") + shown(SongFields::artist(song)),
              QLatin1String("Album: ") + shown(SongFields::album(song)),
              QLatin1String("Genre: ") + shown(SongFields::genre(song)),
              QLatin1String("Year: ") + shown(SongFields::year(song)),
              QLatin1String("Track No: ") + shown(SongFields::trackNumber(song))};
    return lines.join(QLatin1Char('\n'));
}
