#pragma once

#include <QString>

/// Counts as the screens say them.
namespace CountText {
/// "95,650".
QString number(quint64 count);
/// "1 song", "2,000 songs".
QString of(quint64 count, const char* one, const char* many);
} // namespace CountText
