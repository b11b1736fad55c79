#pragma once

#include "base/picturelimits.h"

#include <QSize>

namespace PictureLimits {
/// Whether the picture counts as none.
inline bool hasTooMany(const QSize& pixels)
{
    return qint64(pixels.width()) * pixels.height() > base::mostPixels;
}
} // namespace PictureLimits
