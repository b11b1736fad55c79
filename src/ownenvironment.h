#pragma once

#include <QByteArray>

/// Environment variables that hold for this process alone.
namespace OwnEnvironment {
/// Programs that this one starts find the variable as it was before, or unset. Before there are further
/// threads; not twice for one name.
void set(const char* name, const QByteArray& value);
} // namespace OwnEnvironment
