#include "common/textfit.h"

#include <QTextBoundaryFinder>
#include <QTextDocument>
#include <QVector>

namespace {
/// Where a text may be cut, ascending, 0 included.
QVector<int> graphemeBoundaries(const QString& text)
{
    QVector<int> boundaries{0};
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    for (int position = finder.toNextBoundary(); position > 0; position = finder.toNextBoundary())
        boundaries.append(position);
    return boundaries;
}
} // namespace

QString TextFit::elided(const QString& text, const QFontMetrics& metrics, const QSize& box)
{
    const QRect room(QPoint(0, 0), box);
    return elided(text, [&](const QString& candidate) {
        return metrics.boundingRect(room, Qt::TextWrapAnywhere, candidate).height() <= box.height();
    });
}

QString TextFit::elided(const QString& text, const Fits& fits)
{
    // No box that a screen holds shows more than this; laying out a longer text would only take time.
    constexpr int longestLaidOut = 4096;
    if (text.size() <= longestLaidOut && fits(text))
        return text;
    const QVector<int> cuts = graphemeBoundaries(text.left(longestLaidOut));
    const auto candidate = [&](int cut) { return text.left(cuts.at(cut)) + QLatin1String("..."); };
    // Dropping characters never makes the text taller, so the longest fitting beginning is found by halving.
    int fitting = 0;
    int tooLong = cuts.last() == text.size() ? cuts.size() - 1 : cuts.size();
    while (tooLong - fitting > 1) {
        const int middle = (fitting + tooLong) / 2;
        (fits(candidate(middle)) ? fitting : tooLong) = middle;
    }
    return candidate(fitting);
}

QString TextFit::tip(const QString& text)
{
    constexpr int longest = 4000;
    const auto fits = [](const QString& candidate) { return candidate.size() <= longest; };
    return Qt::convertFromPlainText(elided(text, fits), Qt::WhiteSpaceNormal);
}
