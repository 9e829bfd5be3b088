#include "print/output/SaveReport.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <cmath>

namespace {

constexpr qreal kTouch = 0.5; ///< millimetres between what stands together

bool isNear(qreal one, qreal other) { return std::abs(one - other) < kTouch; }

constexpr char kOldFileInTheWay[] =
    "o arquivo antigo está em uso ou protegido. Feche-o onde está aberto ou escolha outro nome";

QString said(QFileDevice::FileError error) {
    switch (error) {
    case QFileDevice::OpenError:
        return "a pasta não existe ou não aceita arquivos novos. Escolha outra pasta";
    case QFileDevice::PermissionsError:
        return "falta permissão para gravar nessa pasta. Escolha outra pasta";
    case QFileDevice::RenameError:
        return kOldFileInTheWay;
    default:
        return kDiskFull;
    }
}

/// Writes beside the target and puts that in its place; the reason ends the operator's sentence.
SaveResult replace(const QString& path, const WriteFile& write) {
    const QFileInfo old(path);
    if (old.isDir())
        return {SaveOutcome::failed, "existe uma pasta com esse nome. Escolha outro nome"};
    if (old.exists() && !old.isWritable())
        return {SaveOutcome::failed, kOldFileInTheWay};
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return {SaveOutcome::failed, said(file.error())};
    SaveResult result = write(file);
    if (result.outcome == SaveOutcome::saved && !file.commit())
        result = {SaveOutcome::failed, said(file.error())};
    return result;
}

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
    SaveResult result = replace(path, write);
    if (result.outcome == SaveOutcome::failed)
        result.reason = QString("Não foi possível gravar \"%1\": %2.")
                            .arg(QDir::toNativeSeparators(path), result.reason);
    return result;
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
