#include "collection/counttext.h"

#include <QLocale>

QString CountText::number(quint64 count)
{
    return QLocale(QLocale::English, QLocale::UnitedStates).toString(count);
}

QString CountText::of(quint64 count, const char* one, const char* many)
{
    return number(count) + QLatin1Char(' ') + QLatin1String(count == 1 ? one : many);
}
