#pragma once

#include <QPixmap>
#include <QString>

/// Cover pictures by path. GUI thread only.
namespace CoverLoader {
/// The generic cover's file under the resource path.
QString genericCoverPath();
/// The generic cover, decoded once.
QPixmap genericCover();

/// The picture in the file, null when there is none to load.
QPixmap load(const QString& path);
} // namespace CoverLoader
