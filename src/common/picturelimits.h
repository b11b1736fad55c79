#pragma once

#include <QSize>

/// What a picture may be at most, whether of the skin or a cover.
namespace PictureLimits {
constexpr qint64 mostPixels = 64ll * 1024 * 1024;

/// A picture of more pixels counts as none; told before it is read.
inline bool hasTooMany(const QSize& pixels)
{
    return qint64(pixels.width()) * pixels.height() > mostPixels;
}
} // namespace PictureLimits
