#pragma once

#include "common/footline.h"

#include <QString>

/// Shows folders in the desktop's file browser.
namespace FolderOpener {
/// The part of a path or file URL before its last separator.
QString folderOf(const QString& location);
/// Starts the file browser on the folder, an absolute path or a file URL, and does not wait for it. Whatever
/// is no folder of this machine is not opened. A failure is logged. False when no file browser was found.
bool open(const QString& folder);
/// The same for the folder of this path or file URL; what the foot of the window has to say of it.
FootText show(const QString& location);
} // namespace FolderOpener
