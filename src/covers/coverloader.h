#pragma once

#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <QString>

class QIODevice;

/// Cover pictures by path, from a bounded memory of those last used. A file that changed or vanished since
/// shows as it is now. GUI thread only, with an application object; decode() runs in any thread.
///
/// Pictures are told by their content, never by the file's name. Anything that is no picture, or has too
/// many pixels, counts as none.
namespace CoverLoader {
/// The edge, in pixels, that the small picture of a song has at most.
constexpr int songEdge = 300;
/// Pictures with a longer edge, in pixels, are shown scaled down to it.
constexpr int longestEdge = 2048;

/// The generic cover's file under the resource path.
QString genericCoverPath();
/// The generic cover, decoded once; null when its file is missing.
QPixmap genericCover();

/// The picture in the file, its longer edge no longer than longestEdge; null when there is none to load.
QPixmap load(const QString& path);
/// The pixel size of the picture as the file has it; empty when there is none to load.
QSize pictureSize(const QString& path);
/// The picture as a square icon: a square one at its own size, any other stretched to 300 x 300; the generic
/// cover where there is no picture to load. Drawing it again at the same size costs no scaling.
QIcon icon(const QString& path);

/// Decodes a picture, scaled down to the given longest edge when it is larger, its aspect kept; where the
/// format allows (JPEG, PNG) without taking the time and the memory of the full size. Null when there is
/// none.
QImage decode(QIODevice* device, int edge);

/// Bytes of pixels kept for later, 192 MiB unless told otherwise; what was used least goes first.
void setMemoryLimit(qint64 bytes);
/// Decodings by load(), pictureSize() and icon() so far, for tests and measurements.
qint64 decodeCount();
} // namespace CoverLoader
