#pragma once

class QImage;
class QRect;
class QRegion;
class QWidget;

/// Windows with parts that can be seen through.
namespace Compositing {
/// Whether the desktop composes windows. Where it does not, what is to be seen through comes out black.
bool isActive();
/// Cuts the window to the shape where the desktop does not compose windows.
void cutWhereNeeded(QWidget& window, const QRegion& shape);
/// The pixels of a picture that let less than half through: a face and its outline without its shadow.
QRegion solidPart(const QImage& picture);
/// A rectangle with round corners.
QRegion rounded(const QRect& rect, int radius);
} // namespace Compositing
