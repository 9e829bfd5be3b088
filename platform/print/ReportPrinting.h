#pragma once

#include "print/Relatorio.h"

#include <QtPrintSupport/QPrinter>

class QTextDocument;
class QWidget;

/// The report on the printer.

/// What is asked of the system and, through its dialog, of the operator.
struct PrinterFunctions {
    /// Whether a printer is installed.
    std::function<bool()> installed;
    /// Which printer, pages and copies: `printer` brings the report's paper and takes the answer.
    /// False if the operator gave up.
    std::function<bool(QPrinter& printer, int pageCount, QWidget* owner)> choose;
};

/// Replaces them, in tests; empty ones restore the system's.
/// @return those replaced.
PrinterFunctions setPrinterFunctions(PrinterFunctions functions);

enum class PrintOutcome : unsigned char {
    printed,
    givenUp,    ///< in the dialog, or `progress` stopped it
    failed,     ///< the printer took no page
    incomplete, ///< the report's rows have failed
    refused,    ///< the report's error event has told why: 1001, 1002, 1006 or 1007
};

/// Takes the rows still to come, asks for the printer (not if there is none) and prints the pages
/// asked for. `progress` is told of rows, of total 0, then of pages. Given up, nothing comes out.
/// @param page the one on show, from 1
/// @param asking is told before the operator is asked, so that nothing stands in the dialog's way
[[nodiscard]] PrintOutcome printReport(
    Relatorio& report, int page, QWidget* owner, const ReportProgress& progress,
    const std::function<void()>& asking = [] {});

/// A text on the printer that the operator chooses, its pages numbered; `refused` if there is none.
/// @param text its pictures no wider than the paper
[[nodiscard]] PrintOutcome printText(QTextDocument& text, QWidget* owner);
