#pragma once

#include <QString>

/// A length as the screens show it.
namespace TimeText {
/// Oddity 2: milliseconds as "mm::ss", for example "04::07"; empty from 60 minutes on.
QString convert(qint64 milliseconds);
} // namespace TimeText
