#pragma once

#include <QByteArray>
#include <QList>

#include <functional>

/// Music files that say far more than they hold.
namespace Bombs {
struct Bomb
{
    const char* name;
    const char* suffix;
    std::function<QByteArray()> make;
};

QList<Bomb> all();
} // namespace Bombs
