#pragma once

#include <QByteArray>

/// Environment variables that hold for this process alone.
namespace OwnEnvironment {
/// Sets the variable that names the folder for temporary files. Programs that this one starts find it as it
/// was before, or unset. Before there are further threads; not twice.
void setTemporaryFolder(const QByteArray& path);
} // namespace OwnEnvironment
