#pragma once

#include <QByteArray>

/// How dense the desktop says that its screens are, where the toolkit does not ask: points are pixels to us,
/// so that the resolution of fonts, by which it tells dense screens under X11, is a fixed one.
namespace DesktopScale {
/// The pixels to a point that X resources want by the resolution of their fonts, 96 dots per inch being one.
/// In quarters, 1 to 4; 1 where they do not say.
qreal ofResources(const QByteArray& resources);
/// Whether the toolkit is told by its variables how to scale.
bool isToldToTheToolkit();
/// Of the desktop that the program starts on; 1 where the toolkit knows by itself. Before the application
/// object.
qreal ofDesktop();
} // namespace DesktopScale
