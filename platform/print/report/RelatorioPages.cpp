// How a report's rows stand on pages; what of them is read, kept and told is in Relatorio.cpp.
#include "print/Relatorio.h"
#include "print/report/PagePainter.h"

#include <QPainter>
#include <QScopedValueRollback>

#include <algorithm>

namespace {

constexpr qint64 kRowsWithFooter = 2; ///< at least: a total alone on a page belongs to nothing

} // namespace

/// The first row of the last page, on which the footer stands too once all rows have come.
qint64 Relatorio::beginOfLastPage() const {
    const qint64 count = rows().size();
    const qint64 full = std::max<qint64>(0, count - 1) / shown_.rowsPerPage * shown_.rowsPerPage;
    const ReportLayout& layout = shown_.layout;
    if (!isComplete() || layout.footer.height == 0)
        return full;
    qint64 least = std::min(kRowsWithFooter, count);
    while (!layout.footerFitsBelow(static_cast<int>(least)))
        --least; // no further than 0, as the layout has been checked
    const qint64 rest = count - full;
    return rest >= least && layout.footerFitsBelow(static_cast<int>(rest)) ? full : count - least;
}

int Relatorio::pageCount() const {
    if (rows().size() == 0)
        return 0;
    const qint64 before = (beginOfLastPage() + shown_.rowsPerPage - 1) / shown_.rowsPerPage;
    return static_cast<int>(before) + 1;
}

int Relatorio::pageOf(qint64 row) const {
    return row >= beginOfLastPage() ? pageCount() : static_cast<int>(row / shown_.rowsPerPage) + 1;
}

Relatorio::Rows Relatorio::rowsOf(int page) const {
    const qint64 last = beginOfLastPage();
    if (page >= pageCount())
        return {last, rows().size()};
    const qint64 first = static_cast<qint64>(page - 1) * shown_.rowsPerPage;
    return {first, std::min(first + shown_.rowsPerPage, last)};
}

void Relatorio::setLine(const QString& name, QPointF from, QPointF to) {
    for (ReportBand* band : {&shown_.layout.pageHeader, &shown_.layout.columnHeadings,
                             &shown_.layout.detail, &shown_.layout.footer})
        for (ReportLine& line : band->lines)
            if (line.name == name) {
                line.from = from;
                line.to = to;
            }
}

ReportValue Relatorio::valueOf(const ReportField& field) const {
    switch (field.kind) {
    case FieldKind::text:
        return field.name;
    case FieldKind::title:
        return shown_.title;
    case FieldKind::computedFirst:
        return shown_.firstAnswers.value(field.name);
    case FieldKind::computed: {
        ReportValue value;
        if (computed_)
            computed_(field.name, value);
        return value;
    }
    case FieldKind::column:
        break; // of a row, see detailText()
    }
    return {};
}

QString Relatorio::textOf(const ReportField& field) const {
    const QString value =
        shown(valueOf(field), formatNamed(field.format).value_or(ValueFormat::general));
    return field.label.isEmpty() ? value : field.label + ' ' + value;
}

QString Relatorio::detailText(qsizetype field, const std::vector<ReportValue>& row) const {
    const ReportField& shownField = shown_.layout.detail.fields[static_cast<std::size_t>(field)];
    const qsizetype column = columnOf(field);
    if (column < 0)
        return textOf(shownField);
    return shown(row[static_cast<std::size_t>(column)],
                 formatNamed(shownField.format).value_or(ValueFormat::general));
}

void Relatorio::paintPage(QPainter& painter, int page, qreal dotsPerInch) {
    Q_ASSERT(page >= 1 && page <= pageCount());
    currentPage_ = page;
    painter.save();
    painter.scale(dotsPerInch / PagePainter::kDotsPerInch, dotsPerInch / PagePainter::kDotsPerInch);
    qreal y = shown_.layout.body().top();
    paintBand(painter, shown_.layout.pageHeader, y);
    paintBand(painter, shown_.layout.columnHeadings, y);
    paintDetails(painter, page, y);
    if (isComplete() && page == pageCount())
        paintBand(painter, shown_.layout.footer, y);
    shown_.painter->finish(painter);
    painter.restore();
}

void Relatorio::paintBand(QPainter& painter, const ReportBand& band, qreal& y) const {
    // All answers first: giving one may move a line of the band.
    PagePainter::Texts texts;
    for (const ReportField& field : band.fields)
        texts.push_back(textOf(field));
    const QPointF corner(shown_.layout.body().left(), y);
    shown_.painter->draw(painter, band, corner * PagePainter::kDotsPerMm, texts);
    y += band.height;
}

void Relatorio::paintDetails(QPainter& painter, int page, qreal& y) const {
    const ReportBand& band = shown_.layout.detail;
    const Rows rows = rowsOf(page);
    PagePainter::Texts texts(band.fields.size());
    shown_.rows.visit(rows.first, rows.end, [&](qint64, const std::vector<ReportValue>& values) {
        for (std::size_t i = 0; i < texts.size(); ++i)
            texts[i] = detailText(static_cast<qsizetype>(i), values);
        const QPointF corner(shown_.layout.body().left(), y);
        shown_.painter->draw(painter, band, corner * PagePainter::kDotsPerMm, texts);
        y += band.height;
        return true;
    });
}

/// Of its detail band, or of the footer, in millimetres from the paper's corner.
QPointF Relatorio::cornerOfRow(qint64 row) const {
    const ReportLayout& layout = shown_.layout;
    const QRectF body = layout.body();
    const qint64 above = row - rowsOf(pageOf(row)).first;
    return {body.left(), body.top() + layout.pageHeader.height + layout.columnHeadings.height +
                             layout.detail.height * static_cast<qreal>(above)};
}

QRectF Relatorio::placeOf(qint64 row, qsizetype field, qsizetype start, qsizetype length) const {
    const auto index = static_cast<std::size_t>(field);
    const QPointF corner = cornerOfRow(row);
    if (row == rows().size()) {
        const ReportField& inFooter = shown_.layout.footer.fields[index];
        return placeOf({textOf(inFooter), &inFooter, corner, false}, start, length);
    }
    Text text{{}, &shown_.layout.detail.fields[index], corner, false};
    rows().visit(row, row + 1, [&](qint64, const std::vector<ReportValue>& values) {
        text.text = detailText(field, values);
        return false;
    });
    return placeOf(text, start, length);
}

QRectF Relatorio::placeOf(const Text& text, qsizetype start, qsizetype length) const {
    return shown_.painter->placeOf(*text.field, text.text, start, length).translated(text.corner);
}

qsizetype Relatorio::characterAt(const Text& text, QPointF point) const {
    return shown_.painter->characterAt(*text.field, text.text, point - text.corner);
}

std::vector<Relatorio::Text> Relatorio::textsOf(int page) {
    const QScopedValueRollback painted(currentPage_, page);
    const ReportLayout& layout = shown_.layout;
    std::vector<Text> texts;
    QPointF corner = layout.body().topLeft();
    const auto add = [&](const QString& text, const ReportField& field, bool repeated) {
        texts.push_back({text, &field, corner, repeated});
    };
    for (const ReportBand* band : {&layout.pageHeader, &layout.columnHeadings}) {
        for (const ReportField& field : band->fields)
            add(textOf(field), field, true);
        corner.ry() += band->height;
    }
    const Rows onPage = rowsOf(page);
    rows().visit(onPage.first, onPage.end, [&](qint64, const std::vector<ReportValue>& values) {
        for (std::size_t i = 0; i < layout.detail.fields.size(); ++i)
            add(detailText(static_cast<qsizetype>(i), values), layout.detail.fields[i], false);
        corner.ry() += layout.detail.height;
        return true;
    });
    if (isComplete() && page == pageCount())
        for (const ReportField& field : layout.footer.fields)
            add(textOf(field), field, false);
    return texts;
}
