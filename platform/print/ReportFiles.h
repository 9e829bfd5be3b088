#pragma once

#include "print/Relatorio.h"

#include <QString>

/// The report as a file. Each is written beside its target under another name and takes the
/// target's place when it is complete: whatever stops it leaves no half file and an old target as
/// it was.

enum class SaveOutcome : unsigned char {
    saved,
    cancelled, ///< `progress` stopped it
    failed,    ///< `reason` says why; kIncomplete if the report's rows have failed
    refused,   ///< the report's error event has told why: 1007, or 1002 if its rows have all gone
};

/// What the operator is told who would print or save a report whose rows have failed.
inline constexpr char kIncomplete[] =
    "O relatório está incompleto, porque a leitura das linhas parou no meio: ele não pode ser "
    "impresso nem salvo. Use \"Tentar de novo\", acima das páginas.";

struct SaveResult {
    SaveOutcome outcome;
    QString reason = {}; ///< a sentence for the operator
};

/// All pages as PDF: text that can be marked and searched, its fonts with it, the report's title in
/// the file's properties. `progress` is told of rows while they are taken in, of total 0, then of
/// pages.
[[nodiscard]] SaveResult savePdf(Relatorio& report, const QString& path,
                                 const ReportProgress& progress);

/// The rows, a column for each column of the detail band from left to right, with a row of
/// headings and nothing else, as every line of it is a row to other programs: UTF-8 with its mark,
/// semicolons, decimal comma, day/month/year, lines ended by CR LF. A text that a spreadsheet would
/// take for a formula (it begins with = + - @, a tab or CR) gets an apostrophe in front.
[[nodiscard]] SaveResult saveCsv(Relatorio& report, const QString& path,
                                 const ReportProgress& progress);

/// The same rows as a workbook of one sheet for A4: what the report's header tells, headings that
/// stay in sight, true dates and numbers, the totals; columns as wide and aligned as on paper.
/// Texts are texts, whatever they begin with. Fails if there are more rows than a sheet takes.
[[nodiscard]] SaveResult saveXlsx(Relatorio& report, const QString& path,
                                  const ReportProgress& progress);
