#include "print/SaveReport.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr qreal kTouch = 0.5; ///< millimetres between what stands together

bool isNear(qreal one, qreal other) { return std::abs(one - other) < kTouch; }

} // namespace

SaveResult saveReport(Relatorio& report, const QString& path, const ReportProgress& progress,
                      const WriteFile& write) {
    const Relatorio::Run run(report);
    if (!run)
        return {SaveOutcome::refused};
    switch (report.takeAll(run, progress)) {
    case RowsState::coming:
        return {SaveOutcome::cancelled};
    case RowsState::failed:
        return {SaveOutcome::failed, kIncomplete};
    case RowsState::complete:
        break;
    }
    if (report.rows().size() == 0) {
        report.fail(ReportError::nothingToPrint);
        return {SaveOutcome::refused};
    }
    NewFile file(path);
    if (!file.open())
        return {SaveOutcome::failed, file.reason()};
    if (!write(file))
        return {SaveOutcome::cancelled};
    if (!file.commit())
        return {SaveOutcome::failed, file.reason()};
    return {SaveOutcome::saved};
}

std::vector<FileColumn> fileColumns(const Relatorio& report) {
    std::vector<const ReportField*> fields;
    const ReportBand& band = report.layout().detail;
    for (const ReportField& field : band.fields)
        if (field.kind == FieldKind::column)
            fields.push_back(&field);
    std::ranges::stable_sort(fields, {},
                             [](const ReportField* field) { return field->place.left(); });
    std::vector<FileColumn> columns;
    columns.reserve(fields.size());
    for (const ReportField* field : fields)
        columns.push_back({field->heading.isEmpty() ? field->name : field->heading,
                           static_cast<std::size_t>(columnNamed(report.columns(), field->name)),
                           formatNamed(field->format).value_or(ValueFormat::general), field->place,
                           field->look.align});
    return columns;
}

QStringList fileHead(const Relatorio& report) {
    QStringList lines;
    QRectF last;
    for (const ReportField& field : report.layout().pageHeader.fields) {
        if (field.kind == FieldKind::computed) // that of a page
            continue;
        const QString text = report.textOf(field);
        const bool goesOn = !lines.isEmpty() && isNear(field.place.top(), last.top()) &&
                            isNear(field.place.left(), last.right());
        if (goesOn)
            lines.back() += ' ' + text;
        else if (!text.isEmpty())
            lines.push_back(text);
        last = field.place;
    }
    return lines;
}

std::vector<FileTotal> fileTotals(const Relatorio& report, const std::vector<FileColumn>& columns) {
    std::vector<FileTotal> totals;
    for (const ReportField& field : report.layout().footer.fields) {
        const auto column = std::ranges::find_if(columns, [&](const FileColumn& one) {
            return field.look.align == Qt::AlignRight
                       ? isNear(one.place.right(), field.place.right())
                       : isNear(one.place.left(), field.place.left());
        });
        if (field.kind == FieldKind::computed && column != columns.end())
            totals.push_back({static_cast<std::size_t>(column - columns.begin()), field.label,
                              report.valueOf(field),
                              formatNamed(field.format).value_or(ValueFormat::general)});
    }
    return totals;
}
