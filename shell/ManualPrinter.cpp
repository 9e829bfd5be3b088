// The whole manual as one PDF: manual_printer <file>.
#include "shell/Manual.h"

#include <QApplication>
#include <QFile>
#include <QPdfWriter>
#include <QTextDocument>

#include <cstdlib>

int main(int argc, char** argv) {
    constexpr int kDotsPerInch = 300;
    const QApplication application(argc, argv);
    if (argc != 2)
        return EXIT_FAILURE;
    const QString name = QFile::decodeName(argv[1]);
    {
        QPdfWriter paper(name);
        paper.setResolution(kDotsPerInch);
        paper.setPageSize(QPageSize(QPageSize::A4));
        paper.setTitle("Manual do Valtrino");
        const auto manual = Manual::paraPapel(Manual::paginas());
        Manual::manterTitulos(*manual, paper);
        manual->print(&paper);
    }
    return QFile(name).size() > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
