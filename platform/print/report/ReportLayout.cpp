#include "print/ReportLayout.h"

#include <array>
#include <cmath>

namespace {

// Millimetres that the sums of widths and heights may be off.
constexpr qreal kHair = 1e-6;

bool isInside(const ReportBand& band, qreal width, const QRectF& place) {
    return place.left() >= -kHair && place.top() >= -kHair && place.right() <= width + kHair &&
           place.bottom() <= band.height + kHair && place.width() >= 0 && place.height() >= 0;
}

bool overlap(const QRectF& one, const QRectF& other) {
    return one.right() > other.left() + kHair && other.right() > one.left() + kHair &&
           one.bottom() > other.top() + kHair && other.bottom() > one.top() + kHair;
}

bool isMisplaced(const ReportBand& band, qreal width) {
    if (band.height < 0)
        return true;
    for (auto field = band.fields.begin(); field != band.fields.end(); ++field) {
        if (!isInside(band, width, field->place))
            return true;
        for (auto other = band.fields.begin(); other != field; ++other)
            if (overlap(field->place, other->place))
                return true;
    }
    for (const ReportLine& line : band.lines)
        if (!isInside(band, width, QRectF(line.from, line.to).normalized()))
            return true;
    for (const ReportFrame& frame : band.frames)
        if (!isInside(band, width, frame.place))
            return true;
    return false;
}

bool showsUnknownColumn(const ReportBand& band, const QStringList& columns) {
    for (const ReportField& field : band.fields)
        if (field.kind == FieldKind::column && columnNamed(columns, field.name) < 0)
            return true;
    return false;
}

bool hasUnknownFormat(const ReportBand& band) {
    for (const ReportField& field : band.fields)
        if (!formatNamed(field.format))
            return true;
    return false;
}

} // namespace

int ReportLayout::rowsPerPage() const {
    const qreal room = body().height() - pageHeader.height - columnHeadings.height;
    return detail.height > 0 ? static_cast<int>(std::floor((room + kHair) / detail.height)) : 0;
}

bool ReportLayout::footerFitsBelow(int rows) const {
    return pageHeader.height + columnHeadings.height + detail.height * rows + footer.height <=
           body().height() + kHair;
}

void addColumns(ReportLayout& layout, std::span<const ReportColumn> columns, qreal gap,
                qreal height, const TextLook& headings, const TextLook& details) {
    const auto looking = [](TextLook look, Qt::AlignmentFlag align) {
        look.align = align;
        return look;
    };
    // In the middle of its band, so that rules may stand above and below.
    const auto place = [height](const ReportBand& band, qreal left, qreal width) {
        return QRectF(left, (band.height - height) / 2, width, height);
    };
    qreal left = 0;
    for (const ReportColumn& column : columns) {
        layout.columnHeadings.fields.push_back({FieldKind::text, column.heading,
                                                place(layout.columnHeadings, left, column.width),
                                                looking(headings, column.align)});
        layout.detail.fields.push_back(
            {FieldKind::column, column.column, place(layout.detail, left, column.width),
             looking(details, column.align), column.format, column.heading});
        left += column.width + gap;
    }
}

std::optional<ReportError> faultOf(const ReportLayout& layout, const QStringList& columns) {
    const std::array bands = {&layout.pageHeader, &layout.columnHeadings, &layout.detail,
                              &layout.footer};
    for (const ReportBand* band : bands)
        if (showsUnknownColumn(*band, band == &layout.detail ? columns : QStringList()))
            return ReportError::unknownColumn;
    const QRectF body = layout.body();
    for (const ReportBand* band : bands)
        if (isMisplaced(*band, body.width()))
            return ReportError::misplaced;
    for (const ReportBand* band : bands)
        if (hasUnknownFormat(*band))
            return ReportError::unknownFormat;
    if (body.width() <= 0 || layout.rowsPerPage() < 1 || !layout.footerFitsBelow(0))
        return ReportError::pageTooSmall;
    return std::nullopt;
}
