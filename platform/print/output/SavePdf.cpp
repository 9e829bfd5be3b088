#include "print/output/SaveReport.h"
#include "print/report/PagePainter.h"

#include <QPainter>
#include <QPdfWriter>

namespace {

/// Title and language for programs that read the file aloud or file it away.
QByteArray metadata(const QString& title) {
    return QString(R"(<?xpacket begin="" id="W5M0MpCehiHzreSzNTczkc9d"?>
<x:xmpmeta xmlns:x="adobe:ns:meta/"><rdf:RDF xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#">
<rdf:Description rdf:about="" xmlns:dc="http://purl.org/dc/elements/1.1/">
<dc:title><rdf:Alt><rdf:li xml:lang="x-default">%1</rdf:li></rdf:Alt></dc:title>
<dc:language><rdf:Bag><rdf:li>pt-BR</rdf:li></rdf:Bag></dc:language>
</rdf:Description></rdf:RDF></x:xmpmeta>
<?xpacket end="w"?>
)")
        .arg(title.toHtmlEscaped())
        .toUtf8();
}

} // namespace

SaveResult savePdf(Relatorio& report, const QString& path, const ReportProgress& progress) {
    return saveReport(report, path, progress, [&](QIODevice& file) -> SaveResult {
        QPdfWriter writer(&file);
        writer.setTitle(report.title());
        writer.setCreator("Valtrino");
        writer.setDocumentXmpMetadata(metadata(report.title()));
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
                return {SaveOutcome::cancelled};
        }
        painter.end();
        return {SaveOutcome::saved};
    });
}
