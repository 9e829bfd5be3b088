#pragma once

#include "controls/look/Style.h"
#include "print/PageView.h"
#include "print/ReportFixture.h"
#include "print/ReportPreview.h"
#include "print/ReportPrinting.h"

/// Tests of the report as it is seen.
class Preview : public ReportTest {
protected:
    Preview() {
        preview_.resize(1100, 700);
        preview_.show();
        activate(preview_);
        preview_.setFocus();
        // No printer is asked for by accident.
        setPrinterFunctions({[] { return false; }, [](QPrinter&, int, QWidget*) { return false; }});
    }
    ~Preview() override {
        setPrinterFunctions({});
        applyColours(ColourScheme::light);
    }

    void begin(qint64 rows) {
        ASSERT_TRUE(shop_.begin(inventedRows(rows)));
        takeAll();
    }
    [[nodiscard]] QString said(const char* name) const { return text(preview_, name); }
    [[nodiscard]] PageView& view() const { return control<PageView>(preview_, "pages"); }

    static FileRequest newFile(const QString& title, const QString& name, const QString& filter) {
        return {FileChoice::newFile, title, name, filter};
    }
    const FileRequest kPdf =
        newFile("Salvar como PDF", "Relatório de Cheques.pdf", "Documento PDF (*.pdf)");
    const FileRequest kXlsx =
        newFile("Salvar como planilha", "Relatório de Cheques.xlsx", "Planilha (*.xlsx)");
    const FileRequest kCsv = newFile("Salvar como CSV", "Relatório de Cheques.csv",
                                     "Texto separado por ponto e vírgula (*.csv)");

    /// The picture of what the viewport shows.
    QImage picture() { return view().viewport()->grab().toImage(); }
    int spots(const QColor& colour) {
        const QImage image = picture();
        int count = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                count += image.pixelColor(x, y) == colour ? 1 : 0;
        return count;
    }

    ReportPreview preview_{report_};
};
