#pragma once

#include <QString>

/// A length as the screens show it, and as it is said.
namespace TimeText {
/// Oddity 2: milliseconds as "mm::ss", for example "04::07"; empty from 60 minutes on.
QString convert(qint64 milliseconds);
/// "4 minutes 3 seconds"; hours, too, and never empty.
QString inWords(qint64 milliseconds);
} // namespace TimeText
