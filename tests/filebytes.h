#pragma once

#include <QFile>

namespace Fixtures {
inline QString saveBytes(const QByteArray& bytes, const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qUtf8Printable(path));
    return path;
}

inline QByteArray readBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
} // namespace Fixtures
