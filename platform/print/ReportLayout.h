#pragma once

#include "print/ReportError.h"
#include "print/ReportValue.h"

#include <QColor>
#include <QMarginsF>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <optional>
#include <span>
#include <vector>

/// What a report looks like: bands with texts, lines and frames. Places and sizes are in
/// millimetres, counted from the band's upper left corner; a band is as wide as the page without
/// its margins.
///
/// On every page stand the page header, the column headings and as many details, one below the
/// other, as there is room for; on the last page the report footer follows. It never stands there
/// alone: two details at least go with it, if there are as many, on a further page with header and
/// headings if need be.

struct TextLook {
    qreal points = 8.5;
    bool bold = false;
    /// Left, right or centre. Amounts in the format "Standard" that are aligned right stand with
    /// their commas below each other, bold ones too.
    Qt::AlignmentFlag align = Qt::AlignLeft;
    QColor ink = Qt::black;
};

/// Where a field takes what it shows from.
enum class FieldKind : unsigned char {
    text,          ///< `name` itself
    title,         ///< the report's title
    column,        ///< the source's column `name`; in the detail band only
    computed,      ///< the computed field `name`, asked for on each page it is printed on
    computedFirst, ///< the same, asked for once, when the report begins: the same on every page
};

/// A text longer than its place is drawn smaller, or on two lines where it is larger so; amounts in
/// the format "Standard" that are aligned right stay on one. Only a text with letters that nobody
/// could read then is cut, with an ellipsis: a number never is.
struct ReportField {
    FieldKind kind = FieldKind::text;
    QString name;
    QRectF place;
    TextLook look = {};
    /// "", "Short Date" or "Standard".
    QString format = {};
    /// The column's name in files; without it, `name`. For columns of the detail band.
    QString heading = {};
    /// What the value is, as in "Total:": stands before it, a blank apart, wherever the value is
    /// aligned. For computed fields.
    QString label = {};
};

struct ReportLine {
    /// By which Relatorio::setLine() finds it; may be empty.
    QString name;
    QPointF from;
    QPointF to;
    qreal width = 0.25;
    QColor ink = Qt::black;
};

struct ReportFrame {
    QRectF place;
    qreal width = 0.25;
    QColor ink = Qt::black;
    QColor ground = Qt::transparent;
};

/// Frames are drawn first, then lines, then texts.
struct ReportBand {
    qreal height = 0; ///< none if 0
    std::vector<ReportField> fields = {};
    std::vector<ReportLine> lines = {};
    std::vector<ReportFrame> frames = {};
};

struct ReportLayout {
    QSizeF page = {210, 297}; ///< A4 upright
    /// Above and below what printers that keep half an inch can take; see printReport().
    QMarginsF margins = {15, 12.4, 15, 12.4};
    int copies = 1; ///< that are proposed when it is printed
    ReportBand pageHeader = {};
    ReportBand columnHeadings = {};
    ReportBand detail = {};
    ReportBand footer = {};

    /// The page without its margins.
    [[nodiscard]] QRectF body() const { return QRectF(QPointF(), page).marginsRemoved(margins); }
    /// How many details a page takes; less than 1 if it has no room.
    [[nodiscard]] int rowsPerPage() const;
    /// Whether the footer has room below `rows` details.
    [[nodiscard]] bool footerFitsBelow(int rows) const;
};

/// A column of the report: its heading and its detail.
struct ReportColumn {
    QString heading;
    QString column;
    qreal width;
    Qt::AlignmentFlag align = Qt::AlignLeft;
    QString format = {};
};

/// Adds the columns to the bands of headings and details, from left to right, `gap` apart, each
/// text `height` high; widths must leave room for the gaps.
void addColumns(ReportLayout& layout, std::span<const ReportColumn> columns, qreal gap,
                qreal height, const TextLook& headings, const TextLook& details);

/// What is wrong with a layout for a source of these columns; nothing if it is right.
[[nodiscard]] std::optional<ReportError> faultOf(const ReportLayout& layout,
                                                 const QStringList& columns);
