#include "print/SaveReport.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <memory>
#include <xlsxwriter.h>

namespace {

constexpr qint64 kMostRows = LXW_ROW_MAX - 1; ///< beside the headings
constexpr qsizetype kLongestText = 32767;
constexpr qsizetype kLongestSheetName = 31;
constexpr qreal kMmPerCharacter = 1.9; ///< of a sheet's ordinary font
constexpr qreal kFewestCharacters = 8;
/// Amounts from here on have more digits than a sheet's numbers keep.
constexpr std::int64_t kLargestNumber = 1'000'000'000'000'000;
constexpr double kUnit = 10'000;
const QDate kDayZero(1899, 12, 30);
/// A sheet counts a 29/02/1900 that never was: the days before have other numbers in it.
const QDate kFirstCertainDay(1900, 3, 1);

QString sheetName(const QString& title) {
    QString name;
    for (const QChar c : title)
        if (c.isPrint() && !c.isSurrogate() && !QStringView(u"[]:*?/\\'").contains(c))
            name += c;
    name = name.left(kLongestSheetName).trimmed();
    return name.isEmpty() ? "Relatório" : name;
}

/// The text without what XML can't hold, and no longer than a cell takes.
QString cellText(const QString& text) {
    if (text.size() <= kLongestText && std::ranges::none_of(text, [](QChar c) {
            return c.isNull() || c.isSurrogate() || c.unicode() >= 0xFFFE;
        }))
        return text;
    QString kept;
    for (const char32_t c : text.left(kLongestText).toUcs4()) {
        if (c != 0 && c != 0xFFFE && c != 0xFFFF)
            kept += QString::fromUcs4(&c, 1);
    }
    return kept;
}

struct FreeWorkbook {
    void operator()(lxw_workbook* workbook) const { lxw_workbook_free(workbook); }
};
using Workbook = std::unique_ptr<lxw_workbook, FreeWorkbook>;

class Sheet {
public:
    Sheet(lxw_workbook* book, const QString& title)
        : sheet_(workbook_add_worksheet(book, sheetName(title).toUtf8().constData())),
          heading_(workbook_add_format(book)), date_(workbook_add_format(book)),
          money_(workbook_add_format(book)), exact_(workbook_add_format(book)) {
        format_set_bold(heading_);
        format_set_bottom(heading_, LXW_BORDER_THIN);
        format_set_num_format(date_, "dd/mm/yyyy");
        format_set_num_format(money_, "#,##0.00");
        format_set_num_format(exact_, "#,##0.00##");
    }

    void writeHeadings(const std::vector<FileColumn>& columns) {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const auto at = static_cast<lxw_col_t>(i);
            const qreal width = std::max(columns[i].width / kMmPerCharacter, kFewestCharacters);
            worksheet_set_column(sheet_, at, at, width, nullptr);
            writeText(0, at, columns[i].heading, heading_);
        }
        worksheet_freeze_panes(sheet_, 1, 0);
        worksheet_repeat_rows(sheet_, 0, 0);
    }

    void write(lxw_row_t row, lxw_col_t at, ValueFormat format, const ReportValue& value) {
        if (const auto* text = std::get_if<QString>(&value))
            writeText(row, at, *text, nullptr);
        else if (const auto* date = std::get_if<QDate>(&value))
            writeDate(row, at, *date);
        else if (const auto* amount = std::get_if<Amount>(&value))
            writeAmount(row, at, *amount, format);
        else if (const auto* whole = std::get_if<qint64>(&value))
            writeWhole(row, at, *whole, format);
    }

private:
    void writeText(lxw_row_t row, lxw_col_t at, const QString& text, lxw_format* format) {
        worksheet_write_string(sheet_, row, at, cellText(text).toUtf8().constData(), format);
    }
    void writeDate(lxw_row_t row, lxw_col_t at, const QDate& date) {
        if (date < kFirstCertainDay)
            return writeText(row, at, formatDate(date), nullptr);
        worksheet_write_number(sheet_, row, at, static_cast<double>(kDayZero.daysTo(date)), date_);
    }
    void writeAmount(lxw_row_t row, lxw_col_t at, Amount amount, ValueFormat format) {
        if (amount.tenThousandths >= kLargestNumber || amount.tenThousandths <= -kLargestNumber)
            return writeText(row, at, formatMoneyExactly(amount), nullptr);
        worksheet_write_number(sheet_, row, at, static_cast<double>(amount.tenThousandths) / kUnit,
                               format == ValueFormat::standard ? money_ : exact_);
    }
    void writeWhole(lxw_row_t row, lxw_col_t at, qint64 whole, ValueFormat format) {
        if (whole >= kLargestNumber || whole <= -kLargestNumber)
            return writeText(row, at, QString::number(whole), nullptr);
        worksheet_write_number(sheet_, row, at, static_cast<double>(whole),
                               format == ValueFormat::standard ? money_ : nullptr);
    }

    lxw_worksheet* sheet_;
    lxw_format* heading_;
    lxw_format* date_;
    lxw_format* money_;
    lxw_format* exact_;
};

/// Packs the workbook into its file on another thread, as that takes long and tells nothing, and
/// lets `progress` live meanwhile. Can't be stopped, but tells whether it should have been.
bool close(Workbook book, NewFile& file, qint64 count, const ReportProgress& progress) {
    auto closing = std::async(std::launch::async, workbook_close, book.release());
    bool goOn = true;
    while (closing.wait_for(std::chrono::milliseconds(20)) != std::future_status::ready)
        goOn = progress(count, count) && goOn;
    if (closing.get() != LXW_NO_ERROR)
        file.setFailed("o disco está cheio ou não aceita mais dados");
    return goOn;
}

} // namespace

SaveResult saveXlsx(Relatorio& report, const QString& path, const ReportProgress& progress) {
    return saveReport(report, path, progress, [&](NewFile& file) {
        const qint64 count = report.rows().size();
        if (count > kMostRows) {
            file.setFailed(
                QString("uma planilha comporta %1 linhas e o relatório tem mais; salve-o "
                        "como CSV")
                    .arg(kMostRows));
            return true;
        }
        const QByteArray name = QFile::encodeName(file.path());
        lxw_workbook_options options = {};
        options.constant_memory = LXW_TRUE;
        Workbook book(workbook_new_opt(name.constData(), &options));
        QByteArray title = report.title().toUtf8();
        lxw_doc_properties properties = {};
        properties.title = title.data();
        workbook_set_properties(book.get(), &properties);

        const std::vector<FileColumn> columns = fileColumns(report);
        Sheet sheet(book.get(), report.title());
        sheet.writeHeadings(columns);
        bool goOn = true;
        report.rows().visit(0, count, [&](qint64 row, const std::vector<ReportValue>& values) {
            for (std::size_t i = 0; i < columns.size(); ++i)
                sheet.write(static_cast<lxw_row_t>(row + 1), static_cast<lxw_col_t>(i),
                            columns[i].format, values[columns[i].source]);
            if (row % kRowsPerProgress == 0)
                goOn = progress(row, count);
            return goOn;
        });
        return goOn && close(std::move(book), file, count, progress);
    });
}
