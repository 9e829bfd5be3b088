#pragma once

#include "print/ReportFiles.h"

#include <QIODevice>

/// What the three kinds of files have in common. Only for these.

/// Why a file couldn't be written, where nothing more is known, and what to do.
inline constexpr char kDiskFull[] = "o disco está cheio ou não aceita mais dados. "
                                    "Libere espaço ou escolha outra pasta";

/// Writes the file. Of a failure that the device doesn't know of itself the reason ends the
/// operator's sentence, after "Não foi possível gravar ...:".
using WriteFile = std::function<SaveResult(QIODevice& file)>;

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
