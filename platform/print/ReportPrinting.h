#pragma once

#include "print/Relatorio.h"

#include <QtPrintSupport/QPrinter>

class QWidget;

/// The report on the printer.

enum class PrinterAnswer : unsigned char { noPrinter, givenUp, chosen };

/// What is asked of the operator: which printer, pages and copies; `printer` brings the paper and
/// the page on show (QPrinter::fromPage()) and takes the answer.
using PrinterFunction =
    std::function<PrinterAnswer(QPrinter& printer, const Relatorio& report, QWidget* owner)>;

/// Replaces the system's print dialog, in tests; an empty function restores it.
/// @return the function replaced.
PrinterFunction setPrinterFunction(PrinterFunction function);

enum class PrintOutcome : unsigned char {
    printed,
    givenUp, ///< in the dialog, or `progress` stopped it
    failed,  ///< the printer took no page
    refused, ///< the report's error event has told why: 1001, 1006 or 1007
};

/// Takes the rows still to come, asks for the printer and prints the pages asked for. `progress` is
/// told of rows, of total 0, then of pages.
/// @param page the one on show, from 1
[[nodiscard]] PrintOutcome printReport(Relatorio& report, int page, QWidget* owner,
                                       const ReportProgress& progress);
