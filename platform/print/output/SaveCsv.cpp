#include "print/output/SaveReport.h"

#include <algorithm>

namespace {

/// What a spreadsheet would take for a formula, and run, when it opens the file.
bool looksLikeFormula(const QString& text) {
    return !text.isEmpty() && QStringView(u"=+-@\t\r").contains(text.front());
}

bool needsQuotes(const QString& text) {
    return text.startsWith(' ') || text.endsWith(' ') ||
           std::ranges::any_of(text, [](QChar c) { return QStringView(u";\"\r\n\t").contains(c); });
}

QString quoted(QString text) {
    if (looksLikeFormula(text))
        text.prepend('\'');
    return needsQuotes(text) ? '"' + text.replace('"', "\"\"") + '"' : text;
}

struct CsvWriter {
    QString operator()(std::monostate) const { return {}; }
    QString operator()(const QString& text) const { return quoted(text); }
    QString operator()(const QDate& date) const { return formatDate(date); }
    QString operator()(Amount amount) const { return formatMoneyExactly(amount).remove('.'); }
    QString operator()(qint64 whole) const { return QString::number(whole); }
};

} // namespace

SaveResult saveCsv(Relatorio& report, const QString& path, const ReportProgress& progress) {
    return saveReport(report, path, progress, [&](QIODevice& file) -> SaveResult {
        const std::vector<FileColumn> columns = fileColumns(report);
        const auto writeLine = [&](const auto& textOf) {
            QString line;
            for (const FileColumn& column : columns)
                line += (line.isNull() ? "" : ";") + textOf(column);
            file.write((line + "\r\n").toUtf8());
        };
        file.write("\xEF\xBB\xBF");
        writeLine([](const FileColumn& column) { return quoted(column.heading); });

        bool goOn = true;
        const qint64 count = report.rows().size();
        report.rows().visit(0, count, [&](qint64 row, const std::vector<ReportValue>& values) {
            writeLine([&](const FileColumn& column) {
                return std::visit(CsvWriter(), values[column.source]);
            });
            if (row % kRowsPerProgress == 0)
                goOn = progress(row, count);
            return goOn;
        });
        return {goOn ? SaveOutcome::saved : SaveOutcome::cancelled};
    });
}
