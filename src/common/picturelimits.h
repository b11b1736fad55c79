#pragma once

#include <QSize>

class QImageReader;

namespace PictureLimits {
/// The pixels of the picture that the reader is about to make; empty when there is none, it does not say, or
/// it has too many and so counts as none.
QSize readableSize(QImageReader& reader);
} // namespace PictureLimits
