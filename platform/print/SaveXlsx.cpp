#include "print/SaveReport.h"

#include <QtEndian>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <future>
#include <memory>
#include <optional>
#include <xlsxwriter.h>

namespace {

constexpr qint64 kMostRows = LXW_ROW_MAX - 1; ///< beside the headings
constexpr qsizetype kLongestText = 32767;
constexpr qsizetype kLongestSheetName = 31;
constexpr qreal kMmPerCharacter = 1.9; ///< of a sheet's ordinary font
constexpr qreal kFewestCharacters = 8;
/// Amounts from here on have more digits than a sheet's numbers keep.
constexpr std::int64_t kLargestNumber = 1'000'000'000'000'000;
constexpr double kWholeUnit = 10'000;
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

/// How long a member of a ZIP file is, unpacked; 0 if it isn't there. The files' list stands at the
/// end of it, for each file:
///   offset 0   "PK" 1 2          24  unpacked length, four bytes, the lowest first
///   46         name
quint32 lengthInZip(QFile& zip, const QByteArray& name) {
    constexpr qint64 mostOfList = 65'536;
    constexpr qsizetype nameAt = 46;
    constexpr qsizetype lengthAt = 24;
    zip.seek(std::max<qint64>(0, zip.size() - mostOfList));
    const QByteArray end = zip.readAll();
    const qsizetype entry = end.lastIndexOf(name) - nameAt;
    if (entry < 0 || !end.sliced(entry).startsWith("PK\1\2"))
        return 0;
    return qFromLittleEndian<quint32>(end.constData() + entry + lengthAt);
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

    /// False if there was no room for its temporary file.
    explicit operator bool() const noexcept { return sheet_ != nullptr; }

    /// How long its rows are so far; nothing if some couldn't be written.
    [[nodiscard]] std::optional<qint64> bytes() const {
        std::FILE* rows = sheet_->optimize_tmpfile;
        if (std::fflush(rows) != 0 || std::ferror(rows) != 0)
            return std::nullopt;
        return std::ftell(rows);
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
        worksheet_write_number(sheet_, row, at,
                               static_cast<double>(amount.tenThousandths) / kWholeUnit,
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
bool close(Workbook book, qint64 sheetBytes, NewFile& file, qint64 count,
           const ReportProgress& progress) {
    auto closing = std::async(std::launch::async, workbook_close, book.release());
    bool goOn = true;
    while (closing.wait_for(std::chrono::milliseconds(20)) != std::future_status::ready)
        goOn = progress(count, count) && goOn;
    // The library doesn't notice when its temporary files find no room: what is packed is measured.
    if (closing.get() != LXW_NO_ERROR ||
        lengthInZip(file.device(), "xl/worksheets/sheet1.xml") < sheetBytes)
        file.setFailed(kDiskFull);
    return goOn;
}

/// Writes the headings and rows; false if `progress` stopped it.
bool writeRows(Sheet& sheet, const Relatorio& report, const ReportProgress& progress) {
    const std::vector<FileColumn> columns = fileColumns(report);
    sheet.writeHeadings(columns);
    bool goOn = true;
    const qint64 count = report.rows().size();
    report.rows().visit(0, count, [&](qint64 row, const std::vector<ReportValue>& values) {
        for (std::size_t i = 0; i < columns.size(); ++i)
            sheet.write(static_cast<lxw_row_t>(row + 1), static_cast<lxw_col_t>(i),
                        columns[i].format, values[columns[i].source]);
        if (row % kRowsPerProgress == 0)
            goOn = progress(row, count);
        return goOn;
    });
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

        Sheet sheet(book.get(), report.title());
        if (!sheet) {
            file.setFailed(kDiskFull);
            return true;
        }
        if (!writeRows(sheet, report, progress))
            return false;
        const auto bytes = sheet.bytes();
        if (!bytes) {
            file.setFailed(kDiskFull);
            return true;
        }
        return close(std::move(book), *bytes, file, count, progress);
    });
}
