#pragma once

#include <QColor>

#include <cmath>

/// How well words are told from what they lie on, from 1 to 21, as the web's guidelines for readers reckon
/// it; 4.5 and more is readable.
inline double luminance(const QColor& colour)
{
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

inline double contrast(const QColor& ink, const QColor& ground)
{
    const double a = luminance(ink) + 0.05;
    const double b = luminance(ground) + 0.05;
    return qMax(a, b) / qMin(a, b);
}
