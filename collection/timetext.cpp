#include "collection/timetext.h"

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
