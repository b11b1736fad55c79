#pragma once

#include <QFile>
#include <QStringList>

/// What of these libraries a process has in its memory; "self" is this one.
inline QStringList loadedBy(const QString& process, const QStringList& libraries)
{
    QFile maps("/proc/" + process + "/maps");
    const QByteArray all = maps.open(QIODevice::ReadOnly) ? maps.readAll() : QByteArray();
    QStringList loaded;
    for (const QString& library : libraries)
        if (all.contains(library.toUtf8()))
            loaded.append(library);
    return loaded;
}
