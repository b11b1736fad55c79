#pragma once

#include <QStringList>
#include <QVector>

/// Texts in the order that people of the system's language expect.
namespace TextOrder {
/// The positions of the texts in that order: "2" before "10", capitals beside small letters. Equal texts keep
/// theirs, forwards and backwards, and empty ones come last either way.
QVector<int> sorted(const QStringList& texts, bool backwards);
} // namespace TextOrder
