#pragma once

#include "print/ReportLayout.h"

#include <QFont>
#include <QFontMetricsF>
#include <QHash>
#include <QVarLengthArray>

#include <functional>
#include <map>
#include <utility>

class QPainter;

/// Draws bands, on the screen, on a printer and into a PDF with the same measures: all is reckoned
/// in dots, so small that the letters' widths, measured once, are the same everywhere.
class PagePainter {
public:
    static constexpr qreal kDotsPerInch = 1200;
    static constexpr qreal kDotsPerMm = kDotsPerInch / 25.4;

    /// For the fields of this layout.
    explicit PagePainter(const ReportLayout& layout);

    /// What each field of a band shows, in the band's order.
    using Texts = std::vector<QString>;

    /// Draws a band with its upper left corner at `corner`; painter and corner in dots.
    void draw(QPainter& painter, const ReportBand& band, QPointF corner, const Texts& texts);

    /// Where in its place, in millimetres, a field showing `text` shows those characters; all of
    /// the place if they are cut off.
    [[nodiscard]] QRectF placeOf(const ReportField& field, const QString& text, qsizetype start,
                                 qsizetype length);

private:
    class Face {
    public:
        Face(int dots, bool bold);
        [[nodiscard]] qreal widthOf(const QString& text) const;

        QFont font;
        QFontMetricsF metrics;
        qreal afterComma; ///< what "Standard" has there is that wide

    private:
        // Measuring a text takes as long as drawing it. Figures stand beside each other without
        // kerning, so their widths add up; names and banks come again and again.
        QHash<QChar, qreal> figures_;
        mutable QHash<QString, qreal> known_;
    };
    /// A text in its place, as it is drawn.
    struct Laid {
        struct Line {
            QString text;
            qsizetype start = 0; ///< of it in the whole text
            qreal left = 0;      ///< from the place's left edge
            qreal below = 0;     ///< its base line, from the place's middle
        };
        QVarLengthArray<Line, 2> lines;
        qreal scale = 1; ///< how much smaller than its look
    };

    [[nodiscard]] const Face& face(const TextLook& look);
    [[nodiscard]] Laid laid(const ReportField& field, const Face& face, const QString& text) const;
    [[nodiscard]] Laid placed(const ReportField& field, const Face& face, Laid laid) const;
    void drawText(QPainter& painter, const ReportField& field, QPointF corner, const QString& text);

    std::map<std::pair<int, bool>, Face> faces_; ///< by size in dots and weight
    qreal afterComma_ = 0;                       ///< the widest of the layout's
};
