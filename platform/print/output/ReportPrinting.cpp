#include "print/ReportPrinting.h"

#include "controls/window/MessageBox.h"
#include "print/system/PrintServer.h"

#include <QLineEdit>
#include <QPageRanges>
#include <QPainter>
#include <QTextDocument>
#include <QtPrintSupport/QPrintDialog>
#include <QtPrintSupport/QPrintEngine>
#include <QtPrintSupport/QPrinterInfo>

#include <algorithm>
#include <utility>

namespace {

/// What goes to the print server with a job, names and values in turn; of Qt's engine for CUPS.
constexpr auto kJobOptions = QPrintEngine::PrintEnginePropertyKey(0xfe00);
constexpr const char* kPageRanges = "page-ranges";

/// Qt's dialog, which stays open until the pages typed into it are pages of the report.
///
/// Not for files: "Salvar como PDF" makes these, and leaves no half of one.
class PrinterDialog final : public QPrintDialog {
public:
    PrinterDialog(QPrinter& printer, int pageCount, QWidget* owner)
        : QPrintDialog(&printer, owner) {
        setMinMax(1, pageCount);
        setOptions(PrintPageRange | PrintCurrentPage | PrintCollateCopies | PrintShowPageSize);
        // Without a range to begin with Qt refuses every one that is typed; with one it takes what
        // it can't read for all pages.
        setFromTo(1, pageCount);
    }

    void accept() override {
        auto* const typed = findChild<QLineEdit*>("pagesLineEdit"); // Qt's; enabled if it counts
        if (!typed || !typed->isEnabled() || namesPages(typed->text()))
            return QPrintDialog::accept();
        showMessage(QString("\"%1\" não são páginas deste relatório, que vai da página 1 à %2. "
                            "Digite, por exemplo, 2-3 ou 1,4.")
                        .arg(typed->text())
                        .arg(maxPage()),
                    "Impressão", MessageIcon::exclamation);
        typed->setFocus();
        typed->selectAll();
    }

private:
    [[nodiscard]] bool namesPages(const QString& text) const {
        const QPageRanges pages = QPageRanges::fromString(text);
        return !pages.isEmpty() && pages.firstPage() <= maxPage();
    }
};

bool askOperator(QPrinter& printer, int pageCount, QWidget* owner) {
    if (PrinterDialog(printer, pageCount, owner).exec() != QDialog::Accepted)
        return false;
    // The pages are chosen here: the server would choose once more among those that it gets.
    QStringList options = printer.printEngine()->property(kJobOptions).toStringList();
    if (const qsizetype range = options.indexOf(kPageRanges); range >= 0)
        options.remove(range, 2);
    printer.printEngine()->setProperty(kJobOptions, options);
    return true;
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

/// Keeps what has been painted so far from the printer. Qt hands it over when painting ends and
/// can't be kept from it; so it is handed over with a range of pages that no print server takes.
void keepBack(QPrinter& printer) {
    if (!printer.abort())
        printer.printEngine()->setProperty(kJobOptions, QStringList{kPageRanges, "2-1"});
}

/// Whether the print server has taken the job, which Qt doesn't tell.
bool isTaken(const QPrinter& printer) {
    return printer.outputFormat() != QPrinter::NativeFormat || printServerTookJob();
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
            keepBack(printer);
            return PrintOutcome::givenUp;
        }
    }
    return painter.end() && isTaken(printer) ? PrintOutcome::printed : PrintOutcome::failed;
}

} // namespace

PrinterFunctions setPrinterFunctions(PrinterFunctions functions) {
    return std::exchange(current(), std::move(functions));
}

PrintOutcome printReport(Relatorio& report, int page, QWidget* owner,
                         const ReportProgress& progress, const std::function<void()>& asking) {
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
    printer.setCopyCount(report.layout().copies);
    printer.setPageSize(QPageSize(report.layout().page, QPageSize::Millimeter));
    printer.setFullPage(true); // counted from the paper's corner, as the layout is
    asking();
    if (!choosePrinter(printer, report.pageCount(), owner))
        return PrintOutcome::givenUp;
    if (!fitsOn(printer, report.layout())) {
        report.fail(ReportError::pageTooSmall);
        return PrintOutcome::refused;
    }
    return print(printer, report, page, progress);
}

PrintOutcome printText(QTextDocument& text, QWidget* owner) {
    if (!isPrinterInstalled())
        return PrintOutcome::refused;
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageSize(QPageSize(QPageSize::A4));
    printer.setDocName(text.metaInformation(QTextDocument::DocumentTitle));
    const std::unique_ptr<QTextDocument> measured(text.clone(&text));
    measured->setPageSize(printer.pageRect(QPrinter::Point).size());
    if (!choosePrinter(printer, measured->pageCount(), owner))
        return PrintOutcome::givenUp;
    text.print(&printer);
    return printer.printerState() != QPrinter::Error && isTaken(printer) ? PrintOutcome::printed
                                                                         : PrintOutcome::failed;
}
