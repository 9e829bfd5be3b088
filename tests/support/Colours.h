#pragma once

#include <QColor>

#include <algorithm>
#include <cmath>

/// How clearly one colour is told from another, from 1 to 21, as guidelines for screens measure it.

[[nodiscard]] inline double luminance(const QColor& colour) {
    const auto channel = [](double c) {
        return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(colour.redF()) + 0.7152 * channel(colour.greenF()) +
           0.0722 * channel(colour.blueF());
}

[[nodiscard]] inline double contrast(const QColor& one, const QColor& other) {
    const double a = luminance(one);
    const double b = luminance(other);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}
