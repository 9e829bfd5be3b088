#include "shell/MDICheques.h"

#include "agenda/painel/PainelDoDia.h"
#include "controls/look/Icons.h"
#include "controls/typing/KeyHabits.h"
#include "controls/window/Form.h"
#include "controls/window/MessageBox.h"
#include "controls/window/WindowList.h"
#include "jet/Error.h"
#include "reports/frmRel_ChequesSF.h"
#include "shell/AreaDeTrabalho.h"
#include "shell/BarraDeStatus.h"
#include "shell/Comandos.h"
#include "shell/CopiaDeSeguranca.h"
#include "shell/MenuDaLista.h"
#include "shell/Mirtal.h"
#include "shell/dbconectar.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QKeyEvent>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QPointer>
#include <QSettings>
#include <QToolBar>
#include <QWindow>

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

namespace {

constexpr char kPlaceKey[] = "MDICheques/lugar";
constexpr char kPainelKey[] = "MDICheques/painel";

QSettings userSettings() {
    return QSettings(QSettings::IniFormat, QSettings::UserScope, "Valtrino", "Valtrino");
}

/// Whether what is in front comes before the window of the key: a question must be answered first,
/// a file chosen. In front of what is to be printed only the help is opened.
bool esperaResposta(const Comandos::Tecla& tecla) {
    const QWidget* const naFrente = QApplication::activeModalWidget();
    if (!naFrente || qobject_cast<const Form*>(naFrente))
        return false;
    return tecla.tecla != Qt::Key_F1 || qobject_cast<const QDialog*>(naFrente);
}

} // namespace

MDICheques::MDICheques() : area_(new AreaDeTrabalho), StatusBar1(new BarraDeStatus) {
    setObjectName("MDICheques");
    setWindowTitle("Valtrino");
    setContextMenuPolicy(Qt::NoContextMenu); // Qt's own menu would hide the toolbar
    setCentralWidget(area_);
    area_->ligarPainel(userSettings().value(kPainelKey, true).toBool());
    connect(area_, &AreaDeTrabalho::painelTrocado, this,
            [](bool ligado) { userSettings().setValue(kPainelKey, ligado); });
    setFocus(); // and not the first button of the panel: who presses Tab goes there
    montarMenus();
    montarFerramentas();
    setStatusBar(StatusBar1);
    lembrarLugar();
    qApp->installEventFilter(this);
    frmRel_ChequesSF::aoMostrar([this](QWidget& relatorio) { mostrarDentro(relatorio); });
}

MDICheques::~MDICheques() { frmRel_ChequesSF::aoMostrar({}); }

MDICheques& MDICheques::instance() { return WindowList::instance().one<MDICheques>(); }

void MDICheques::mostrarMensagens() {
    Mirtal::aoMostrarMensagem(
        [](const QString& texto) { instance().StatusBar1->mostrarMensagem(texto); });
    Mirtal::aoMostrarNoticia(
        [](const QString& texto) { instance().StatusBar1->mostrarNoticia(texto); });
    setPromptHook(&Mirtal::mensagem);
}

void MDICheques::montarMenus() {
    for (const Comandos::Menu& menu : Comandos::menus()) {
        QMenu* aberto = menuBar()->addMenu(menu.legenda);
        aberto->setObjectName(menu.nome);
        for (const Comandos::Entrada& entrada : menu.entradas) {
            QAction* acao =
                entrada.legenda ? aberto->addAction(entrada.legenda) : aberto->addSeparator();
            acao->setObjectName(entrada.nome);
            acao->setEnabled(entrada.ligada);
            if (entrada.imagem)
                acao->setIcon(Icons::named(entrada.imagem));
            connect(acao, &QAction::triggered, this,
                    [this, comando = entrada.comando] { executar(comando); });
        }
    }
}

void MDICheques::montarFerramentas() {
    Toolbar1 = addToolBar("Barra de ferramentas");
    Toolbar1->setObjectName("Toolbar1");
    Toolbar1->setMovable(false);
    Toolbar1->setIconSize({24, 24});
    for (const Comandos::Botao& botao : Comandos::botoes()) {
        if (botao.iniciaGrupo)
            Toolbar1->addSeparator();
        QAction* acao = Toolbar1->addAction(Icons::named(botao.imagem), botao.texto);
        acao->setObjectName(botao.chave);
        acao->setToolTip(botao.dica);
        connect(acao, &QAction::triggered, this,
                [this, chave = QString(botao.chave)] { Toolbar1_ButtonClick(chave); });
        Toolbar1->widgetForAction(acao)->setAccessibleName(botao.dica);
    }
}

// Texts under the pictures where all of them fit beside each other.
void MDICheques::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    Toolbar1->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    if (Toolbar1->sizeHint().width() > width())
        Toolbar1->setToolButtonStyle(Qt::ToolButtonIconOnly);
    statusBar()->setMinimumWidth(statusBar()->minimumSizeHint().width()); // which Qt leaves out
}

void MDICheques::avisar() {
    StatusBar1->mostrarConsulta();
    dbconectar::instance().historico.aoAvisar([barra = QPointer(StatusBar1)](const QString& texto) {
        if (barra)
            barra->mostrarNoticia(texto);
    });
    ado::Store& base = dbconectar::instance().Automacao.store();
    const jet::Database* const arquivo = base.file();
    for (const auto& aviso : {arquivo ? arquivo->notice() : std::nullopt, base.readOnlyReason()})
        if (aviso)
            showMessage(QString::fromStdString(*aviso), "Mensagem", MessageIcon::exclamation);
    const QStringList& faltas = dbconectar::instance().faltas();
    if (faltas.isEmpty())
        return;
    const char* const janelas =
        "\n\nAs janelas que precisam disso não abrem ou o deixam de fora; as "
        "outras funcionam. ";
    showMessage(
        arquivo
            ? "Na base de dados falta o que esta versão pede: " + faltas.join("; ") + '.' +
                  janelas +
                  "Para acrescentá-lo, feche o programa em todas as estações e dê o comando\n"
                  "valtrino-mdb upgrade \"" +
                  QString::fromStdString(arquivo->path().string()) + '"'
            : faltas.join('\n') + janelas + "Peça a quem cuida da base de dados que o acrescente.",
        "Mensagem", MessageIcon::exclamation);
}

// A first run, or a place on a screen that is no longer there, fills the screen.
void MDICheques::lembrarLugar() {
    resize(1024, 700);
    if (!restoreGeometry(userSettings().value(kPlaceKey).toByteArray()))
        setWindowState(Qt::WindowMaximized);
}

void MDICheques::executar(const Comandos::Comando* comando) {
    if (!comando)
        return;
    guarded([&] {
        if (comando->modo)
            Mirtal::modo = comando->modo;
        const auto antes = tentadoCom_;
        comando->abrir ? comando->abrir() : encerrar();
        if (tentadoCom_ == antes)
            tentadoCom_.reset(); // it wasn't the end
    });
}

void MDICheques::Toolbar1_ButtonClick(const QString& chave) {
    const auto botoes = Comandos::botoes();
    const auto botao =
        std::ranges::find_if(botoes, [&](const Comandos::Botao& b) { return chave == b.chave; });
    if (botao != botoes.end())
        executar(botao->comando);
}

bool MDICheques::eventFilter(QObject* watched, QEvent* event) {
    if (MenuDaLista::mostrar(*watched, *event, [this](const auto* comando) { executar(comando); }))
        return true;
    if (event->type() != QEvent::KeyPress || !watched->isWidgetType())
        return QMainWindow::eventFilter(watched, event);
    const auto& pressed = *static_cast<QKeyEvent*>(event);
    const auto teclas = Comandos::teclas();
    const auto tecla = std::ranges::find(teclas, pressed.key(), &Comandos::Tecla::tecla);
    if (tecla == teclas.end() || pressed.modifiers() != Qt::NoModifier ||
        QApplication::activePopupWidget() || esperaResposta(*tecla))
        return QMainWindow::eventFilter(watched, event);
    if (!KeyHabits::isHeld())
        executar(tecla->comando);
    return true;
}

void MDICheques::mostrarDentro(QWidget& janela) {
    auto* quadro = qobject_cast<QMdiSubWindow*>(janela.parentWidget());
    if (!quadro)
        quadro = area_->addSubWindow(&janela);
    quadro->setWindowIcon(janela.windowIcon());
    quadro->showMaximized();
    virParaFrente();
    janela.setFocus();
}

// Windows that stand in front of this one count as parts of it: from them Qt would take the focus
// without asking the window manager, who gives it back. While asking they are on their own.
void MDICheques::virParaFrente() {
    std::vector<QWindow*> diante;
    for (QWindow* outra : QGuiApplication::topLevelWindows())
        if (outra->transientParent() == windowHandle())
            diante.push_back(outra);
    for (QWindow* outra : diante)
        outra->setTransientParent(nullptr);
    raise();
    activateWindow();
    for (QWindow* outra : diante)
        outra->setTransientParent(windowHandle());
}

std::optional<std::int64_t> MDICheques::clienteMostrado() const {
    return area_->painel().isVisible() ? area_->painel().clienteMostrado() : std::nullopt;
}

void MDICheques::cuidarDaCopia() {
    const jet::Database* const arquivo = dbconectar::instance().Automacao.store().file();
    if (!arquivo)
        return; // who looks after the server makes its copies
    copia_ = std::make_unique<CopiaDeSeguranca>(
        arquivo->path(), [this](const QString& texto) { StatusBar1->mostrarNoticia(texto); },
        [this](const std::optional<Dano>& dano) { StatusBar1->mostrarDano(dano); });
}

void MDICheques::conferirArquivo(const QString& achado) {
    StatusBar1->mostrarDano(Dano{achado, std::nullopt});
    if (copia_)
        copia_->verificar();
}

void MDICheques::largarCopia() { copia_.reset(); }

bool MDICheques::podeEncerrar() {
    ado::Connection& base = dbconectar::instance().Automacao;
    if (!dbconectar::instance().aberto())
        return true;
    const std::uint64_t gravadas = base.store().tally().written;
    if (std::exchange(tentadoCom_, gravadas) == gravadas)
        return true;
    try {
        base.flush();
        return true;
    } catch (const jet::Error& erro) {
        showMessage(erro.what() +
                        QString("\n\nAs últimas alterações ainda não foram gravadas, e por "
                                "isso o programa continua aberto. Saindo de novo agora, "
                                "elas se perdem."),
                    "Mensagem", MessageIcon::exclamation);
        return false;
    }
}

void MDICheques::encerrar() {
    if (encerrado_)
        return;
    if (!podeEncerrar())
        return;
    encerrado_ = true;
    largarCopia();
    userSettings().setValue(kPlaceKey, saveGeometry());
    dbconectar::instance().fechar();
    QCoreApplication::exit(EXIT_SUCCESS); // quit() would ask the other windows first
}

void MDICheques::closeEvent(QCloseEvent* event) {
    guarded([this] { encerrar(); });
    event->setAccepted(encerrado_);
}

#include "shell/moc_MDICheques.cpp"
