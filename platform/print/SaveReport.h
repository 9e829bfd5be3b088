#pragma once

#include "print/NewFile.h"
#include "print/ReportFiles.h"

/// What the three kinds of files have in common. Only for these.

/// Writes the file; false if `progress` stopped it. A failure is left to the file to know.
using WriteFile = std::function<bool(NewFile& file)>;

/// Puts the report to work, takes all its rows, makes the file and has it written.
[[nodiscard]] SaveResult saveReport(Relatorio& report, const QString& path,
                                    const ReportProgress& progress, const WriteFile& write);

/// A column of CSV and XLSX files.
struct FileColumn {
    QString heading;
    std::size_t source; ///< index among a row's values
    ValueFormat format;
    QRectF place; ///< on paper, of its details in their band
    Qt::AlignmentFlag align;
};

/// The columns of the detail band from left to right.
[[nodiscard]] std::vector<FileColumn> fileColumns(const Relatorio& report);

/// What the page header tells that is the same on every page: the title, then a line for each group
/// of texts that touch each other.
[[nodiscard]] QStringList fileHead(const Relatorio& report);

/// A computed value of the footer, below the column that it is aligned with.
struct FileTotal {
    std::size_t column; ///< index among the file's columns
    QString label;
    ReportValue value;
    ValueFormat format;
};
[[nodiscard]] std::vector<FileTotal> fileTotals(const Relatorio& report,
                                                const std::vector<FileColumn>& columns);

constexpr qint64 kRowsPerProgress = 256;
