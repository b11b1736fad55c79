#pragma once

#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <QString>

class QIODevice;

/// Cover pictures by path, from a bounded memory of those last used. A file that changed or vanished since
/// shows as it is now. GUI thread only.
namespace CoverLoader {
/// The generic cover's file under the resource path.
QString genericCoverPath();
/// The generic cover, decoded once.
QPixmap genericCover();

/// The picture in the file at its own size, null when there is none to load.
QPixmap load(const QString& path);
/// The picture as a square icon, a picture that is not square stretched to 300 x 300; the generic cover where
/// there is no picture. The same file gives the same icon, which keeps the sizes it was drawn at.
QIcon icon(const QString& path);

/// Decodes a picture whatever its name; null when it is none. One with an edge longer than `longestEdge`
/// comes scaled down to it, its aspect kept, without taking the memory of the full size where its format
/// allows.
QImage decode(QIODevice* device, int longestEdge);

/// Bytes of decoded pictures kept for later; what was used least goes first.
void setMemoryLimit(qint64 bytes);
/// Decodings so far, for tests and measurements.
qint64 decodeCount();
} // namespace CoverLoader
