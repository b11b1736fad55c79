#pragma once

#include <QFontMetrics>
#include <QSize>
#include <QString>

/// Shortening a text to a box.
namespace TextFit {
/// The text itself when it fits the box with wrapping anywhere; else its longest beginning that fits together
/// with "...", cut between graphemes. When not even "..." fits, "..." all the same.
QString elided(const QString& text, const QFontMetrics& metrics, const QSize& box);
} // namespace TextFit
