#include "print/PagePainter.h"
#include "print/SaveReport.h"

#include <QPainter>
#include <QPdfWriter>

SaveResult savePdf(Relatorio& report, const QString& path, const ReportProgress& progress) {
    return saveReport(report, path, progress, [&](NewFile& file) {
        QPdfWriter writer(&file.device());
        writer.setTitle(report.title());
        writer.setCreator("Valtrino");
        writer.setResolution(static_cast<int>(PagePainter::kDotsPerInch));
        writer.setPageSize(QPageSize(report.layout().page, QPageSize::Millimeter));
        writer.setPageMargins(QMarginsF());
        QPainter painter(&writer);
        const int pages = report.pageCount();
        for (int page = 1; page <= pages; ++page) {
            if (page > 1)
                writer.newPage();
            report.paintPage(painter, page, PagePainter::kDotsPerInch);
            if (!progress(page, pages))
                return false;
        }
        painter.end();
        return true;
    });
}
