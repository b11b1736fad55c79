#pragma once

#include <QString>

/// Shows folders in the desktop's file browser.
namespace FolderOpener {
/// The part of a path or file URL before its last separator.
QString folderOf(const QString& location);
/// Starts the file browser on the folder, an absolute path or a file URL, and does not wait for it. Whatever
/// is no folder of this machine is not opened. A failure is logged. False when no file browser was found.
bool open(const QString& folder);
} // namespace FolderOpener
