#pragma once

#include <QRectF>
#include <QString>
#include <QStringList>

#include <vector>

/// Files as other programs read them.

/// What a program prints; fails the test if it can't be run or ends badly.
[[nodiscard]] QString outputOf(const QString& program, const QStringList& arguments);

/// A page of a PDF as lines of text.
[[nodiscard]] QStringList linesOfPage(const QString& pdf, int page);
/// What stands beside `name` in a PDF's properties.
[[nodiscard]] QString propertyOf(const QString& pdf, const QString& name);

/// A word of a PDF and where it stands on its page, in points.
struct Word {
    QString text;
    QRectF place;
};
[[nodiscard]] std::vector<Word> wordsOfPage(const QString& pdf, int page);

/// What a script prints, its argument being a file. Run by the system's own Python, which has the
/// system's packages.
[[nodiscard]] QString readByPython(const QString& script, const QString& file);
