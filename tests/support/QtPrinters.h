#pragma once

#include <QString>

#include <ostream>

/// A failed comparison of Qt texts shows them as text.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}
