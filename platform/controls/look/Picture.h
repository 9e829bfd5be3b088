#pragma once

#include <QByteArray>
#include <QColor>
#include <QPixmap>
#include <QString>

/// One of the program's pictures, ":/icons/<name>.svg", with that text.
struct Picture {
    QString name;
    QByteArray svg;

    /// Draws it as large as fits, in the middle of what is else transparent. What has no colour of
    /// its own gets that of the ink.
    [[nodiscard]] QPixmap drawn(const QSize& pixels, const QColor& ink) const;
};
