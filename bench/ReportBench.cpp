// What the operator waits for with a report, and what it takes in memory: each size in a process of
// its own, so that one doesn't pay for the other.
#include "print/ReportFiles.h"
#include "print/ReportSearch.h"
#include "samples/ShopReport.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <QProcess>
#include <QTemporaryDir>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <string>

namespace {

constexpr std::array kSizes = {1'000, 100'000, 1'000'000};
constexpr qreal kScreenDpi = 96;

const ReportProgress kGoOn = [](qint64, qint64) { return true; };

double megabytes(const char* field) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(field))
            return std::stod(line.substr(line.find(':') + 1)) / 1024;
    return 0;
}

void paint(Relatorio& report, int page) {
    QImage paper(800, 1130, QImage::Format_RGB32);
    paper.fill(Qt::white);
    QPainter painter(&paper);
    report.paintPage(painter, page, kScreenDpi);
}

/// The report's texts where it has them, as Qt sets and draws them: what a PDF of them would take
/// without our own setting.
void drawPlainly(Relatorio& report, const QString& path) {
    constexpr int dotsPerInch = 1200;
    constexpr qreal dotsPerMm = dotsPerInch / 25.4;
    QPdfWriter writer(path);
    writer.setResolution(dotsPerInch);
    writer.setPageSize(QPageSize(report.layout().page, QPageSize::Millimeter));
    writer.setPageMargins(QMarginsF());
    QPainter painter(&writer);
    for (int page = 1; page <= report.pageCount(); ++page) {
        if (page > 1)
            writer.newPage();
        for (const Relatorio::Text& text : report.textsOf(page)) {
            QFont font("DejaVu Sans");
            font.setPointSizeF(text.field->look.points);
            font.setBold(text.field->look.bold);
            painter.setFont(font);
            const QRectF place = text.place();
            painter.drawText(QRectF(place.topLeft() * dotsPerMm, place.size() * dotsPerMm),
                             static_cast<int>(text.field->look.align | Qt::AlignVCenter),
                             text.text);
        }
    }
}

/// Of the processor, which other work on the machine doesn't change.
template <class Work>
double seconds(const Work& work) {
    const std::clock_t before = std::clock();
    work();
    return static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC;
}

int measure(qint64 count) {
    const QTemporaryDir folder;
    const double before = megabytes("VmRSS");
    ShopReport shop;
    const double first = seconds([&] {
        shop.begin(inventedRows(count));
        paint(shop.report, 1);
    });
    const double rest = seconds([&] {
        const Relatorio::Run run(shop.report);
        (void)shop.report.takeAll(run, kGoOn);
    });
    const double last = seconds([&] { paint(shop.report, shop.report.pageCount()); });
    const double rows = static_cast<double>(shop.report.rows().bytes()) / 1024 / 1024;
    const double shown = megabytes("VmRSS") - before - rows;
    const double search = seconds([&] {
        (void)findText(shop.report, "não está em lugar nenhum", SearchDirection::forward, {}, 0,
                       kGoOn);
    });
    const auto save = [&](auto* function, const char* name) {
        return seconds([&] {
            if (function(shop.report, folder.filePath(name), kGoOn).outcome != SaveOutcome::saved)
                std::fprintf(stderr, "%s was not saved\n", name);
        });
    };
    const double csv = save(saveCsv, "r.csv");
    const double xlsx = count < 1'048'576 ? save(saveXlsx, "r.xlsx") : 0;
    const double pdf = save(savePdf, "r.pdf");
    const double most = megabytes("VmHWM") - before - rows;
    const double plain = seconds([&] { drawPlainly(shop.report, folder.filePath("plain.pdf")); });
    std::printf("%9lld %8.3f %8.3f %8.3f %8.1f %8.1f %8.3f %8.2f %8.2f %8.2f %8.1f %8.2f\n",
                static_cast<long long>(count), first, rest, last, rows, shown, search, csv, xlsx,
                pdf, most, pdf / plain);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    if (argc == 2)
        return measure(std::atoll(argv[1]));
    std::printf("%9s %8s %8s %8s %8s %8s %8s %8s %8s %8s %8s %8s\n", "rows", "first s", "rest s",
                "last s", "rows MB", "+MB", "find s", "CSV s", "XLSX s", "PDF s", "+MB most",
                "PDF/Qt");
    std::fflush(stdout);
    for (const int size : kSizes)
        QProcess::execute(QApplication::applicationFilePath(), {QString::number(size)});
    std::printf(
        "wanted for 100000: first page under 1 s, PDF in half of what Qt takes to draw its texts\n"
        "(PDF/Qt); for 1000000: PDF and XLSX in ten times the time, less than 150 MB over the "
        "rows'\n"
        "own\n");
    return 0;
}
