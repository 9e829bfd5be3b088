#include "shell/FrmAjuda.h"

#include "controls/window/MessageBox.h"
#include "controls/window/WindowList.h"
#include "print/ReportError.h"
#include "print/ReportPrinting.h"
#include "shell/Manual.h"
#include "shell/Mirtal.h"

#include <QApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QShortcut>
#include <QTextDocument>

namespace {

/// The name of the window that the operator is in: what a main window shows inside counts.
QString janelaNaFrente() {
    QWidget* janela = QApplication::activeModalWidget();
    if (!janela)
        janela = QApplication::activeWindow();
    if (!janela)
        return {};
    const auto* area = janela->findChild<QMdiArea*>();
    const QMdiSubWindow* dentro = area ? area->activeSubWindow() : nullptr;
    return dentro && dentro->widget() ? dentro->widget()->objectName() : janela->objectName();
}

} // namespace

FrmAjuda::FrmAjuda() {
    setupUi(this);
    prompts({
        {txtprocurar, "Digite as palavras procuradas e tecle Enter"               },
        {txtpagina,   "Tab leva ao próximo destaque azul, e Enter abre a página"},
    });
    closesWith(cmdsair);
    onEnter(txtprocurar, &FrmAjuda::cmdlocalizar_Click);
    on(cmdlocalizar, &QPushButton::clicked, &FrmAjuda::cmdlocalizar_Click);
    on(cmdvoltar, &QPushButton::clicked, &FrmAjuda::cmdvoltar_Click);
    on(cmdindice, &QPushButton::clicked, &FrmAjuda::cmdindice_Click);
    on(cmdimprimir, &QPushButton::clicked, &FrmAjuda::cmdimprimir_Click);
    on(cmdsair, &QPushButton::clicked, &FrmAjuda::cmdsair_Click);
    on(txtpagina, &PaginaDeAjuda::sourceChanged, &FrmAjuda::txtpagina_Mudou);
    connect(txtpagina, &PaginaDeAjuda::backwardAvailable, cmdvoltar, &QWidget::setEnabled);
    connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, txtprocurar, [this] {
        txtprocurar->setFocus();
        txtprocurar->selectAll();
    });
    connect(new QShortcut(QKeySequence::Back, this), &QShortcut::activated, cmdvoltar,
            &QPushButton::click);
}

FrmAjuda& FrmAjuda::instance() { return WindowList::instance().one<FrmAjuda>(); }

void FrmAjuda::mostrar() {
    const QString pagina = Manual::paginaDe(janelaNaFrente());
    FrmAjuda& ajuda = instance();
    if (!ajuda.load())
        return;
    ajuda.txtpagina->abrir(pagina.isEmpty() ? Manual::paginas().first() : pagina);
    ajuda.showModal();
}

void FrmAjuda::Form_Load() {
    centre();
    txtpagina->abrir(Manual::paginas().first());
    txtpagina->clearHistory();
}

void FrmAjuda::cmdlocalizar_Click() {
    const QString palavras = txtprocurar->text().simplified();
    if (palavras.isEmpty())
        return advertir(txtprocurar, "Digite o que deve ser procurado na ajuda.");
    txtpagina->procurar(palavras);
    txtpagina->setFocus();
}

void FrmAjuda::cmdvoltar_Click() {
    txtpagina->backward();
    txtpagina->setFocus();
}

void FrmAjuda::cmdindice_Click() {
    txtpagina->abrir(Manual::paginas().first());
    txtpagina->setFocus();
}

void FrmAjuda::cmdimprimir_Click() {
    const QString pagina = txtpagina->pagina();
    if (pagina.isEmpty())
        return advertir(txtpagina, "Abra a página que deve ser impressa.");
    const PrintOutcome saiu = printText(*Manual::paraPapel({pagina}), this);
    if (saiu == PrintOutcome::refused)
        Mirtal::erroDeRelatorio(errorCode(ReportError::noPrinter), "");
    else if (saiu == PrintOutcome::failed)
        showMessage("A impressora não aceitou a página. Verifique se está ligada e pronta.",
                    "Impressão", MessageIcon::exclamation);
}

void FrmAjuda::txtpagina_Mudou() {
    titulo->setRecord(txtpagina->documentTitle());
    txtpagina->setAccessibleName("Página da ajuda: " + txtpagina->documentTitle());
}

#include "shell/moc_FrmAjuda.cpp"
