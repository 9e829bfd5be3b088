#include "print/SaveReport.h"

#include <algorithm>

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
                           formatNamed(field->format).value_or(ValueFormat::general),
                           field->place.width()});
    return columns;
}
