#pragma once

#include <QDir>
#include <QFile>

#include <filesystem>

namespace ManyNames {
/// Gives the file so many further names in a new folder, as MP3s: files of their own, or links, take the
/// system ten times as long.
inline void give(const QString& path, const QString& folder, int many)
{
    QDir().mkpath(folder);
    for (int i = 0; i < many; ++i)
        std::filesystem::create_hard_link(
            QFile::encodeName(path).toStdString(),
            QFile::encodeName(QStringLiteral("%1/%2.mp3").arg(folder).arg(i)).toStdString());
}
} // namespace ManyNames
