#pragma once

#include "print/ReportLayout.h"
#include "print/report/PrintFace.h"

#include <QColor>
#include <QList>
#include <QVarLengthArray>

#include <map>
#include <utility>

class QPainter;

/// Draws bands, on the screen, on a printer and into a PDF with the same measures: all is reckoned
/// in dots, so small that the letters' widths, measured once, are the same everywhere.
///
/// Latin texts are set letter by letter, each as wide as the font has it: without the ligatures
/// that whoever copies "fi" from a file would get as one sign, and without shaping every text anew.
class PagePainter {
public:
    static constexpr qreal kDotsPerInch = 1200;
    static constexpr qreal kDotsPerMm = kDotsPerInch / 25.4;

    /// For the fields of this layout.
    explicit PagePainter(const ReportLayout& layout);

    /// What each field of a band shows, in the band's order.
    using Texts = std::vector<QString>;

    /// Draws a band with its upper left corner at `corner`; painter and corner in dots. Its texts
    /// wait for those of the page's other bands: finish() draws all, in the order of reading.
    void draw(QPainter& painter, const ReportBand& band, QPointF corner, const Texts& texts);
    void finish(QPainter& painter);

    /// Where in its place, in millimetres, a field showing `text` shows those characters; all of
    /// the place if they are cut off.
    [[nodiscard]] QRectF placeOf(const ReportField& field, const QString& text, qsizetype start,
                                 qsizetype length);
    /// The first of a field's characters that `point`, in millimetres from the same corner as the
    /// field's place, is before the middle of; the text's length if it is behind all.
    [[nodiscard]] qsizetype characterAt(const ReportField& field, const QString& text,
                                        QPointF point);

private:
    /// What waits to be drawn: letters where they stand, or a text that is shaped.
    struct Run {
        const PrintFace* face;
        QColor ink;
        QPointF corner = {}; ///< of what follows
        qreal scale = 1;
        QList<quint32> glyphs = {};
        QList<QPointF> places = {};
        QString shaped = {};

        void append(QPointF baseLine, const QString& text);
        void draw(QPainter& painter) const;
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

    [[nodiscard]] const PrintFace& face(const TextLook& look);
    [[nodiscard]] Laid laid(const ReportField& field, const PrintFace& face,
                            const QString& text) const;
    [[nodiscard]] Laid placed(const ReportField& field, const PrintFace& face, Laid laid) const;
    void addText(const ReportField& field, QPointF corner, const QString& text);
    void addLine(const PrintFace& face, const QColor& ink, QPointF baseLine, const QString& text,
                 qreal scale);

    std::map<std::pair<int, bool>, PrintFace> faces_; ///< by size in dots and weight
    qreal afterComma_ = 0;                            ///< the widest of the layout's
    std::vector<Run> waiting_;
};
