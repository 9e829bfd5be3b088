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
    qreal width; ///< on paper, in millimetres
};

/// The columns of the detail band from left to right.
[[nodiscard]] std::vector<FileColumn> fileColumns(const Relatorio& report);

constexpr qint64 kRowsPerProgress = 256;
