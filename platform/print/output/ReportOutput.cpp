#include "print/output/ReportOutput.h"

#include "controls/folder/FileChooser.h"
#include "controls/window/MessageBox.h"
#include "print/ReportPrinting.h"
#include "print/output/ProgressWindow.h"

#include <QDir>
#include <QFileInfo>
#include <QWidget>

#include <functional>
#include <optional>

namespace {

/// What a file may be called on every system.
QString fileName(const QString& title) {
    QString name;
    for (const QChar c : title)
        name += c.isPrint() && !QStringView(u"\\/:*?\"<>|").contains(c) ? c : QChar('-');
    name = name.trimmed();
    return name.isEmpty() ? "Relatório" : name;
}

} // namespace

struct ReportOutput::FileKind {
    const char* title;
    const char* filter;
    const char* suffix;
    const char* work;
    const char* unit;
    SaveResult (*save)(Relatorio&, const QString&, const ReportProgress&);
};

ReportOutput::ReportOutput(Relatorio& report, QWidget& window)
    : QObject(&window), report_(report), window_(window) {}

/// Says so if the report isn't whole.
bool ReportOutput::refuseIncomplete(const QString& title) {
    if (report_.state() != RowsState::failed)
        return false;
    showMessage(QString::fromUtf8(kIncomplete), title, MessageIcon::exclamation);
    return true;
}

void ReportOutput::print(int page) {
    if (refuseIncomplete("Impressão"))
        return;
    std::optional<ProgressWindow> shown;
    const auto progress = [&](qint64 done, qint64 total) {
        if (!shown)
            shown.emplace(&window_, "Imprimindo", "página", patienceMs_);
        return (*shown)(done, total);
    };
    const PrintOutcome outcome =
        printReport(report_, page, &window_, progress, [&] { shown.reset(); });
    shown.reset();
    switch (outcome) {
    case PrintOutcome::printed:
        return emit said("O relatório foi enviado para a impressora.");
    case PrintOutcome::givenUp:
        return emit said("A impressão foi cancelada.");
    case PrintOutcome::failed:
        emit said("");
        showMessage("A impressora não aceitou o relatório. Verifique se está ligada e pronta.",
                    "Impressão", MessageIcon::exclamation);
        return;
    case PrintOutcome::incomplete: // refused above
    case PrintOutcome::refused:
        return; // said by the report's error event
    }
}

void ReportOutput::savePdfFile() {
    save({"Salvar como PDF", "Documento PDF (*.pdf)", "pdf", "Gravando o PDF", "página", savePdf});
}

void ReportOutput::saveXlsxFile() {
    save({"Salvar como planilha", "Planilha (*.xlsx)", "xlsx", "Gravando a planilha", "linha",
          saveXlsx});
}

void ReportOutput::saveCsvFile() {
    save({"Salvar como CSV", "Texto separado por ponto e vírgula (*.csv)", "csv", "Gravando o CSV",
          "linha", saveCsv});
}

void ReportOutput::save(const FileKind& kind) {
    if (refuseIncomplete(QString::fromUtf8(kind.title)))
        return;
    const QString path = askPath(kind);
    if (path.isEmpty())
        return;
    emit said("");
    const SaveResult result = [&] {
        ProgressWindow progress(&window_, QString::fromUtf8(kind.work),
                                QString::fromUtf8(kind.unit), patienceMs_);
        return kind.save(report_, path, std::ref(progress));
    }();
    switch (result.outcome) {
    case SaveOutcome::saved:
        return emit said(QString("Salvo em %1").arg(QDir::toNativeSeparators(path)));
    case SaveOutcome::cancelled:
        return emit said("A gravação foi cancelada; nenhum arquivo foi criado ou alterado.");
    case SaveOutcome::failed:
        showMessage(result.reason, QString::fromUtf8(kind.title), MessageIcon::exclamation);
        return;
    case SaveOutcome::refused:
        return; // said by the report's error event
    }
}

QString ReportOutput::askPath(const FileKind& kind) {
    const QString title = QString::fromUtf8(kind.title);
    const QString suffix = QString(".") + kind.suffix;
    const auto chosen =
        chooseFile({FileChoice::newFile, title, folder_ + fileName(report_.title()) + suffix,
                    QString::fromUtf8(kind.filter)});
    if (!chosen)
        return {};
    folder_ = QFileInfo(*chosen).absolutePath() + '/';
    if (chosen->endsWith(suffix, Qt::CaseInsensitive))
        return *chosen;
    // The dialog has asked about the name as it was typed.
    QString path = *chosen + suffix;
    if (QFileInfo::exists(path) &&
        showMessage(
            QString("\"%1\" já existe. Deseja substituí-lo?").arg(QDir::toNativeSeparators(path)),
            title, MessageIcon::question, MessageButtons::yesNo) != MessageAnswer::yes)
        return {};
    return path;
}

#include "print/output/moc_ReportOutput.cpp"
