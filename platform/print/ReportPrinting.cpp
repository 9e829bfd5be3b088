#include "print/ReportPrinting.h"

#include <QPainter>
#include <QtPrintSupport/QPrintDialog>
#include <QtPrintSupport/QPrinterInfo>

#include <algorithm>
#include <utility>

namespace {

bool askOperator(QPrinter& printer, int pageCount, QWidget* owner) {
    QPrintDialog dialog(&printer, owner);
    dialog.setMinMax(1, pageCount);
    dialog.setOptions(QAbstractPrintDialog::PrintPageRange |
                      QAbstractPrintDialog::PrintCurrentPage | QAbstractPrintDialog::PrintToFile |
                      QAbstractPrintDialog::PrintCollateCopies |
                      QAbstractPrintDialog::PrintShowPageSize);
    return dialog.exec() == QDialog::Accepted;
}

PrinterFunctions& current() {
    static PrinterFunctions functions;
    return functions;
}

bool isPrinterInstalled() {
    return current().installed ? current().installed()
                               : !QPrinterInfo::availablePrinterNames().isEmpty();
}

bool choosePrinter(QPrinter& printer, int pageCount, QWidget* owner) {
    return current().choose ? current().choose(printer, pageCount, owner)
                            : askOperator(printer, pageCount, owner);
}

/// The pages asked for, in order; each as often as the printer can't repeat it itself.
std::vector<int> pagesAskedFor(const QPrinter& printer, int pageCount, int current) {
    std::vector<int> pages;
    for (int page = 1; page <= pageCount; ++page) {
        const QPageRanges ranges = printer.pageRanges();
        const bool asked = printer.printRange() == QPrinter::CurrentPage ? page == current
                           : printer.printRange() == QPrinter::PageRange
                               ? ranges.isEmpty() || ranges.contains(page)
                               : true;
        if (asked)
            pages.push_back(page);
    }
    const int copies = printer.supportsMultipleCopies() ? 1 : std::max(1, printer.copyCount());
    std::vector<int> all;
    if (printer.collateCopies())
        for (int copy = 0; copy < copies; ++copy)
            all.insert(all.end(), pages.begin(), pages.end());
    else
        for (const int page : pages)
            all.insert(all.end(), static_cast<std::size_t>(copies), page);
    if (printer.pageOrder() == QPrinter::LastPageFirst)
        std::ranges::reverse(all);
    return all;
}

/// Whether what stands between the margins of the report's page is within what the printer can
/// print on its paper.
bool fitsOn(const QPrinter& printer, const ReportLayout& layout) {
    constexpr qreal hair = 0.5; // millimetres
    QPageLayout inMm = printer.pageLayout();
    inMm.setUnits(QPageLayout::Millimeter);
    const QRectF printable = inMm.fullRect().marginsRemoved(inMm.minimumMargins());
    return printable.adjusted(-hair, -hair, hair, hair).contains(layout.body());
}

PrintOutcome print(QPrinter& printer, Relatorio& report, int current,
                   const ReportProgress& progress) {
    const std::vector<int> pages = pagesAskedFor(printer, report.pageCount(), current);
    QPainter painter;
    if (!painter.begin(&printer))
        return PrintOutcome::failed;
    for (std::size_t i = 0; i < pages.size(); ++i) {
        if (i > 0 && !printer.newPage())
            return PrintOutcome::failed;
        report.paintPage(painter, pages[i], printer.resolution());
        if (!progress(static_cast<qint64>(i) + 1, static_cast<qint64>(pages.size()))) {
            printer.abort();
            return PrintOutcome::givenUp;
        }
    }
    return painter.end() ? PrintOutcome::printed : PrintOutcome::failed;
}

} // namespace

PrinterFunctions setPrinterFunctions(PrinterFunctions functions) {
    return std::exchange(current(), std::move(functions));
}

PrintOutcome printReport(Relatorio& report, int page, QWidget* owner,
                         const ReportProgress& progress) {
    const Relatorio::Run run(report);
    if (!run)
        return PrintOutcome::refused;
    if (!isPrinterInstalled()) {
        report.fail(ReportError::noPrinter);
        return PrintOutcome::refused;
    }
    switch (report.takeAll(run, progress)) {
    case RowsState::coming:
        return PrintOutcome::givenUp;
    case RowsState::failed:
        return PrintOutcome::incomplete;
    case RowsState::complete:
        break;
    }
    if (report.rows().size() == 0) {
        report.fail(ReportError::nothingToPrint);
        return PrintOutcome::refused;
    }
    QPrinter printer(QPrinter::HighResolution);
    printer.setDocName(report.title());
    printer.setCreator("Valtrino");
    printer.setPageSize(QPageSize(report.layout().page, QPageSize::Millimeter));
    printer.setFullPage(true); // counted from the paper's corner, as the layout is
    if (!choosePrinter(printer, report.pageCount(), owner))
        return PrintOutcome::givenUp;
    if (!fitsOn(printer, report.layout())) {
        report.fail(ReportError::pageTooSmall);
        return PrintOutcome::refused;
    }
    return print(printer, report, page, progress);
}
