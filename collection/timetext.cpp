#include "collection/timetext.h"

#include "collection/counttext.h"

#include <QStringList>
#include <QTime>

QString TimeText::convert(qint64 milliseconds)
{
    const qint64 seconds = milliseconds / 1000;
    const qint64 minutes = seconds / 60;
    if (milliseconds < 0 || minutes >= 60)
        return QString();
    const QTime clock(0, int(minutes), int(seconds % 60), int(milliseconds % 1000));
    // Oddity 2: the doubled colon.
    return clock.toString(QStringLiteral("mm::ss"));
}

QString TimeText::inWords(qint64 milliseconds)
{
    const auto seconds = quint64(qMax(milliseconds, qint64(0))) / 1000;
    QStringList words;
    if (seconds >= 3600)
        words.append(CountText::of(seconds / 3600, "hour", "hours"));
    if (seconds % 3600 >= 60)
        words.append(CountText::of(seconds % 3600 / 60, "minute", "minutes"));
    if (seconds % 60 > 0 || words.isEmpty())
        words.append(CountText::of(seconds % 60, "second", "seconds"));
    return words.join(QLatin1Char(' '));
}
