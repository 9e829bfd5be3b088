#include "print/output/SaveReport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <xlsxwriter.h>

namespace {

constexpr std::uint8_t kA4 = 9; ///< as sheets count papers
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

/// What a sheet has besides the report's rows.
struct Surroundings {
    explicit Surroundings(const Relatorio& report)
        : columns(fileColumns(report)), head(fileHead(report)),
          totals(fileTotals(report, columns)) {}

    /// The sheet's row of the headings: an empty one stands between them and what the head tells.
    [[nodiscard]] lxw_row_t headings() const {
        return head.isEmpty() ? 0 : static_cast<lxw_row_t>(head.size()) + 1;
    }
    /// How many of the report's rows there is room for.
    [[nodiscard]] qint64 room() const {
        return qint64{LXW_ROW_MAX} - headings() - 1 - (totals.empty() ? 0 : 1);
    }

    std::vector<FileColumn> columns;
    QStringList head;
    std::vector<FileTotal> totals;
};

/// How cells look, in each alignment that a column may have.
class Looks {
public:
    enum class Kind : unsigned char { title, plain, heading, total, date, money, exact };

    explicit Looks(lxw_workbook* book) : book_(book) {}

    lxw_format* operator()(Kind kind, Qt::AlignmentFlag align) {
        lxw_format*& look = known_[{kind, align}];
        if (!look)
            look = make(kind, align);
        return look;
    }

private:
    lxw_format* make(Kind kind, Qt::AlignmentFlag align) {
        lxw_format* look = workbook_add_format(book_);
        if (kind == Kind::title || kind == Kind::heading || kind == Kind::total)
            format_set_bold(look);
        if (kind == Kind::heading)
            format_set_bottom(look, LXW_BORDER_THIN);
        if (kind == Kind::total)
            format_set_top(look, LXW_BORDER_THIN);
        if (kind == Kind::date)
            format_set_num_format(look, "dd/mm/yyyy");
        if (kind == Kind::money || kind == Kind::total)
            format_set_num_format(look, "#,##0.00");
        if (kind == Kind::exact)
            format_set_num_format(look, "#,##0.00##");
        if (align != Qt::AlignLeft)
            format_set_align(look, align == Qt::AlignRight ? LXW_ALIGN_RIGHT : LXW_ALIGN_CENTER);
        return look;
    }

    lxw_workbook* book_;
    std::map<std::pair<Kind, Qt::AlignmentFlag>, lxw_format*> known_;
};

class Sheet {
public:
    using Kind = Looks::Kind;

    Sheet(lxw_workbook* book, const QString& title)
        : sheet_(workbook_add_worksheet(book, sheetName(title).toUtf8().constData())),
          looks_(book) {}

    /// False if there was no room for its temporary file.
    explicit operator bool() const noexcept { return sheet_ != nullptr; }

    /// How long its rows are so far; nothing if some couldn't be written.
    [[nodiscard]] std::optional<qint64> bytes() const {
        std::FILE* rows = sheet_->optimize_tmpfile;
        if (std::fflush(rows) != 0 || std::ferror(rows) != 0)
            return std::nullopt;
        return std::ftell(rows);
    }

    /// On A4 all columns beside each other, the headings on each page.
    void begin(const Surroundings& around) {
        worksheet_set_paper(sheet_, kA4);
        worksheet_fit_to_pages(sheet_, 1, 0);
        worksheet_set_footer(sheet_, "&R&P / &N");
        for (qsizetype line = 0; line < around.head.size(); ++line)
            writeText(static_cast<lxw_row_t>(line), 0, around.head[line],
                      looks_(line == 0 ? Kind::title : Kind::plain, Qt::AlignLeft));
        const lxw_row_t row = around.headings();
        lxw_col_t at = 0;
        for (const FileColumn& column : around.columns) {
            const qreal width = std::max(column.place.width() / kMmPerCharacter, kFewestCharacters);
            worksheet_set_column(sheet_, at, at, width, nullptr);
            writeText(row, at++, column.heading, looks_(Kind::heading, column.align));
        }
        worksheet_freeze_panes(sheet_, row + 1, 0);
        worksheet_repeat_rows(sheet_, row, row);
    }

    /// The totals below the last row; what sorts and filters knows that they are none of the rows.
    void end(const Surroundings& around, qint64 count) {
        const lxw_row_t first = around.headings();
        const auto last = static_cast<lxw_row_t>(first + count);
        worksheet_autofilter(sheet_, first, 0, last,
                             static_cast<lxw_col_t>(around.columns.size() - 1));
        for (const FileTotal& total : around.totals) {
            const auto at = static_cast<lxw_col_t>(total.column);
            if (at > 0)
                writeText(last + 1, static_cast<lxw_col_t>(at - 1), total.label,
                          looks_(Kind::total, Qt::AlignRight));
            if (const auto* amount = std::get_if<Amount>(&total.value))
                writeAmount(last + 1, at, *amount, Kind::total, Qt::AlignRight);
            else
                writeText(last + 1, at, shown(total.value, total.format),
                          looks_(Kind::total, Qt::AlignRight));
        }
    }

    void write(lxw_row_t row, lxw_col_t at, const FileColumn& column, const ReportValue& value) {
        const bool standard = column.format == ValueFormat::standard;
        if (const auto* text = std::get_if<QString>(&value))
            writeText(row, at, *text, looks_(Kind::plain, column.align));
        else if (const auto* date = std::get_if<QDate>(&value))
            writeDate(row, at, *date, column.align);
        else if (const auto* amount = std::get_if<Amount>(&value))
            writeAmount(row, at, *amount, standard ? Kind::money : Kind::exact, column.align);
        else if (const auto* whole = std::get_if<qint64>(&value))
            writeWhole(row, at, *whole, standard ? Kind::money : Kind::plain, column.align);
    }

private:
    void writeText(lxw_row_t row, lxw_col_t at, const QString& text, lxw_format* look) {
        worksheet_write_string(sheet_, row, at, cellText(text).toUtf8().constData(), look);
    }
    void writeDate(lxw_row_t row, lxw_col_t at, const QDate& date, Qt::AlignmentFlag align) {
        if (date < kFirstCertainDay)
            return writeText(row, at, formatDate(date), looks_(Kind::plain, align));
        worksheet_write_number(sheet_, row, at, static_cast<double>(kDayZero.daysTo(date)),
                               looks_(Kind::date, align));
    }
    void writeAmount(lxw_row_t row, lxw_col_t at, Amount amount, Kind kind,
                     Qt::AlignmentFlag align) {
        if (amount.tenThousandths >= kLargestNumber || amount.tenThousandths <= -kLargestNumber)
            return writeText(row, at, formatMoneyExactly(amount), looks_(kind, align));
        worksheet_write_number(sheet_, row, at,
                               static_cast<double>(amount.tenThousandths) / kWholeUnit,
                               looks_(kind, align));
    }
    void writeWhole(lxw_row_t row, lxw_col_t at, qint64 whole, Kind kind, Qt::AlignmentFlag align) {
        if (whole >= kLargestNumber || whole <= -kLargestNumber)
            return writeText(row, at, QString::number(whole), looks_(kind, align));
        worksheet_write_number(sheet_, row, at, static_cast<double>(whole), looks_(kind, align));
    }

    lxw_worksheet* sheet_;
    Looks looks_;
};

/// Packs the workbook into its file on another thread, as that takes long and tells nothing, and
/// lets `progress` live meanwhile. Can't be stopped, but tells whether it should have been.
SaveResult close(Workbook book, qint64 sheetBytes, QFile& packed, qint64 count,
                 const ReportProgress& progress) {
    auto closing = std::async(std::launch::async, workbook_close, book.release());
    bool goOn = true;
    while (closing.wait_for(std::chrono::milliseconds(20)) != std::future_status::ready)
        goOn = progress(count, count) && goOn;
    // The library doesn't notice when its temporary files find no room: what is packed is measured.
    if (closing.get() != LXW_NO_ERROR || !packed.open(QIODevice::ReadOnly) ||
        lengthInZip(packed, "xl/worksheets/sheet1.xml") < sheetBytes)
        return {SaveOutcome::failed, kDiskFull};
    return {goOn ? SaveOutcome::saved : SaveOutcome::cancelled};
}

/// Copies what was packed; false if it can't be read again. What the device refuses it knows
/// itself.
bool copy(QFile& packed, QIODevice& file) {
    constexpr qint64 atOnce = 1 << 20;
    packed.seek(0);
    for (qint64 left = packed.size(); left > 0;) {
        const QByteArray part = packed.read(atOnce);
        if (part.isEmpty())
            return false;
        file.write(part);
        left -= part.size();
    }
    return true;
}

/// Writes the rows and all around them; false if `progress` stopped it.
bool writeRows(Sheet& sheet, const Relatorio& report, const Surroundings& around,
               const ReportProgress& progress) {
    sheet.begin(around);
    bool goOn = true;
    const qint64 count = report.rows().size();
    report.rows().visit(0, count, [&](qint64 row, const std::vector<ReportValue>& values) {
        lxw_col_t at = 0;
        for (const FileColumn& column : around.columns)
            sheet.write(static_cast<lxw_row_t>(around.headings() + 1 + row), at++, column,
                        values[column.source]);
        if (row % kRowsPerProgress == 0)
            goOn = progress(row, count);
        return goOn;
    });
    if (goOn)
        sheet.end(around, count);
    return goOn;
}

} // namespace

SaveResult saveXlsx(Relatorio& report, const QString& path, const ReportProgress& progress) {
    return saveReport(report, path, progress, [&](QIODevice& file) -> SaveResult {
        const qint64 count = report.rows().size();
        const Surroundings around(report);
        if (count > around.room())
            return {SaveOutcome::failed,
                    QString("uma planilha comporta %1 linhas e o relatório tem mais; salve-o "
                            "como CSV")
                        .arg(around.room())};
        // The library writes by path, and the device has none. Nobody has the file open meanwhile:
        // Windows would keep the library out.
        const QTemporaryDir folder;
        if (!folder.isValid())
            return {SaveOutcome::failed,
                    QString("a pasta temporária \"%1\" não aceita arquivos. Libere espaço nela "
                            "ou salve como CSV")
                        .arg(QDir::toNativeSeparators(QDir::tempPath()))};
        QFile packed(folder.filePath("pasta.xlsx"));
        const QByteArray name = packed.fileName().toUtf8();
        lxw_workbook_options options = {};
        options.constant_memory = LXW_TRUE;
        Workbook book(workbook_new_opt(name.constData(), &options));
        QByteArray title = report.title().toUtf8();
        lxw_doc_properties properties = {};
        properties.title = title.data();
        workbook_set_properties(book.get(), &properties);

        Sheet sheet(book.get(), report.title());
        if (!sheet)
            return {SaveOutcome::failed, kDiskFull};
        if (!writeRows(sheet, report, around, progress))
            return {SaveOutcome::cancelled};
        const auto bytes = sheet.bytes();
        if (!bytes)
            return {SaveOutcome::failed, kDiskFull};
        SaveResult result = close(std::move(book), *bytes, packed, count, progress);
        if (result.outcome == SaveOutcome::saved && !copy(packed, file))
            return {SaveOutcome::failed, kDiskFull};
        return result;
    });
}
