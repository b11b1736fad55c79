#pragma once

#include <QFontMetrics>
#include <QSize>
#include <QString>

#include <functional>

/// Shortening a text to a box.
namespace TextFit {
using Fits = std::function<bool(const QString& text)>;

/// The text itself when it fits; else its longest beginning that fits together with "...", cut between
/// graphemes. When not even "..." fits, "..." all the same. Asks about few texts, however long this one is; a
/// beginning of a text that fits must fit as well.
QString elided(const QString& text, const Fits& fits);
/// The same for a box in which lines may be broken anywhere.
QString elided(const QString& text, const QFontMetrics& metrics, const QSize& box);
/// The text as a tool tip shows it: nothing in it is markup, long lines are broken, and it has an end, since
/// laying out takes time.
QString tip(const QString& text);
} // namespace TextFit
