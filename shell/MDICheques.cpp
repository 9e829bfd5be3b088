#include "shell/MDICheques.h"

#include "controls/Form.h"
#include "controls/Icons.h"
#include "controls/MessageBox.h"
#include "controls/Spoken.h"
#include "controls/WindowList.h"
#include "jet/Error.h"
#include "shell/AreaDeTrabalho.h"
#include "shell/Comandos.h"
#include "shell/CopiaDeSeguranca.h"
#include "shell/Mirtal.h"
#include "shell/dbconectar.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDateTime>
#include <QLabel>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QSettings>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>
#include <QWindow>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <utility>
#include <vector>

using namespace std::chrono_literals;

namespace {

constexpr int kEntreVistorias = 3; ///< seconds

// How prompt and news part the status bar when there are news.
constexpr int kParteDaMensagem = 4;
constexpr int kParteDaNoticia = 3;

constexpr char kPlaceKey[] = "MDICheques/lugar";

// What to do about a damaged file; the shop's technician has the tool.
const QString kComCopia =
    "Enquanto o arquivo estiver assim, nenhuma cópia de segurança é apagada. A cópia boa mais "
    "recente é\n%1\n\n"
    "Para voltar a ela, feche o programa em todas as estações e peça ao técnico que execute\n\n"
    "valtrino-mdb restore \"%1\" \"%2\"\n\n"
    "O arquivo de agora fica guardado ao lado. O que foi lançado depois da cópia terá de ser "
    "lançado de novo.";
const QString kProcurandoCopia =
    "Enquanto o arquivo estiver assim, nenhuma cópia de segurança é apagada. As cópias estão sendo "
    "conferidas: clique outra vez daqui a pouco para saber como voltar a uma delas.";
const QString kSemCopia =
    "Não há cópia de segurança boa na pasta \"backup\" ao lado do arquivo. Feche o programa em "
    "todas as estações e peça ao técnico que salve o que ainda se lê:\n\n"
    "valtrino-mdb salvage \"%1\" automacao-salvo.mdb";

QSettings userSettings() {
    return QSettings(QSettings::IniFormat, QSettings::UserScope, "Valtrino", "Valtrino");
}

} // namespace

MDICheques::MDICheques() {
    installSpoken();
    setObjectName("MDICheques");
    setWindowTitle("Valtrino");
    setContextMenuPolicy(Qt::NoContextMenu); // Qt's own menu would hide the toolbar
    setCentralWidget(new AreaDeTrabalho(this));
    montarMenus();
    montarFerramentas();
    montarBarra();
    lembrarLugar();
}

MDICheques::~MDICheques() = default;

MDICheques& MDICheques::instance() { return WindowList::instance().one<MDICheques>(); }

void MDICheques::mostrarMensagens() {
    Mirtal::aoMostrarMensagem([](const QString& texto) { instance().mensagem_->setText(texto); });
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

void MDICheques::montarBarra() {
    mensagem_ = new QLabel;
    mensagem_->setObjectName("pnlMensagem");
    mensagem_->setAccessibleName("Mensagem");
    mensagem_->setTextFormat(Qt::PlainText);
    // A long prompt is cut at the panel's edge and doesn't widen the window.
    mensagem_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    noticia_ = new QLabel;
    noticia_->setObjectName("pnlNoticia");
    noticia_->setAccessibleName("Notícia");
    noticia_->setTextFormat(Qt::PlainText);
    noticia_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    noticia_->hide();

    data_ = new QLabel;
    data_->setObjectName("pnlData");
    data_->setAccessibleName("Data");

    statusBar()->setObjectName("StatusBar1");
    statusBar()->setContentsMargins(6, 0, 6, 0);
    statusBar()->addWidget(mensagem_, kParteDaMensagem);
    statusBar()->addPermanentWidget(noticia_, kParteDaNoticia);
    dano_ = montarAviso("pnlDano", "Arquivo com erros", "critical");
    connectGuarded(dano_, &QToolButton::clicked, this, &MDICheques::dano_Click);
    consulta_ = montarAviso("pnlConsulta", "Somente consulta", "warning");
    connectGuarded(consulta_, &QToolButton::clicked, this, &MDICheques::consulta_Click);
    QSizePolicy lugar = consulta_->sizePolicy();
    lugar.setRetainSizeWhenHidden(true); // what is above mustn't move when it comes and goes
    consulta_->setSizePolicy(lugar);
    statusBar()->addPermanentWidget(data_);

    Relogio_Timer();
    connectGuarded(&Relogio, &QTimer::timeout, this, &MDICheques::Relogio_Timer);
    Relogio.start(1s);
}

/// What stands in the status bar as long as it is so, and tells more when it is clicked.
QToolButton* MDICheques::montarAviso(const char* nome, const char* texto, const char* imagem) {
    auto* aviso = new QToolButton;
    aviso->setObjectName(nome);
    aviso->setText(texto);
    aviso->setIcon(Icons::named(imagem));
    aviso->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    aviso->setAutoRaise(true);
    aviso->hide();
    statusBar()->addPermanentWidget(aviso);
    return aviso;
}

// Texts under the pictures where all of them fit beside each other.
void MDICheques::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    Toolbar1->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    if (Toolbar1->sizeHint().width() > width())
        Toolbar1->setToolButtonStyle(Qt::ToolButtonIconOnly);
}

// Beside the prompt, not in its place: that is of the field in which somebody is typing.
void MDICheques::mostrarNoticia(const QString& texto) {
    noticia_->setText(texto);
    noticia_->setToolTip(texto); // whole, where the panel is too narrow for it
    noticia_->show();
}

// Why nothing can be saved now, as long as that lasts: a program with other rules may come into the
// file and go again.
void MDICheques::mostrarConsulta() {
    if (!dbconectar::instance().aberto())
        return;
    const auto motivo = dbconectar::instance().Automacao.database().readOnlyReason();
    consulta_->setVisible(motivo.has_value());
    consulta_->setToolTip(QString::fromStdString(motivo.value_or("")));
    consulta_->setAccessibleDescription(consulta_->toolTip());
}

void MDICheques::consulta_Click() {
    showMessage(consulta_->toolTip(), "Mensagem", MessageIcon::exclamation);
}

void MDICheques::mostrarDano(const std::optional<Dano>& dano) {
    dano_->setVisible(dano.has_value());
    if (!dano || !dbconectar::instance().aberto())
        return;
    const QString arquivo =
        QString::fromStdString(dbconectar::instance().Automacao.database().path().string());
    dano_->setToolTip(dano->achado);
    dano_->setAccessibleDescription(dano->achado);
    const QString socorro = !dano->copia             ? kProcurandoCopia
                            : dano->copia->isEmpty() ? kSemCopia.arg(arquivo)
                                                     : kComCopia.arg(*dano->copia, arquivo);
    socorro_ = dano->achado + "\n\n" + socorro;
}

void MDICheques::dano_Click() { showMessage(socorro_, "Mensagem", MessageIcon::exclamation); }

void MDICheques::avisar() {
    mostrarConsulta();
    jet::Database& base = dbconectar::instance().Automacao.database();
    for (const auto& aviso : {base.notice(), base.readOnlyReason()})
        if (aviso)
            showMessage(QString::fromStdString(*aviso), "Mensagem", MessageIcon::exclamation);
    if (const QStringList& faltas = dbconectar::instance().faltas(); !faltas.isEmpty())
        showMessage(faltas.join('\n') +
                        "\n\nAs janelas que precisam disso não abrem; as outras funcionam. Peça a "
                        "quem cuida da base de dados que o acrescente.",
                    "Mensagem", MessageIcon::exclamation);
}

void MDICheques::Relogio_Timer() {
    data_->setText(QDateTime::currentDateTime().toString("dd/MM/yyyy   HH:mm"));
    if (++segundos_ % kEntreVistorias == 0)
        mostrarConsulta();
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
        comando->abrir();
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

void MDICheques::mostrarDentro(QWidget& janela) {
    auto* quadro = qobject_cast<QMdiSubWindow*>(janela.parentWidget());
    if (!quadro)
        quadro = static_cast<AreaDeTrabalho*>(centralWidget())->addSubWindow(&janela);
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

void MDICheques::cuidarDaCopia() {
    copia_ = std::make_unique<CopiaDeSeguranca>(
        dbconectar::instance().Automacao.database().path(),
        [this](const QString& texto) { mostrarNoticia(texto); },
        [this](const std::optional<Dano>& dano) { mostrarDano(dano); });
}

void MDICheques::conferirArquivo(const QString& achado) {
    mostrarDano(Dano{achado, std::nullopt});
    if (copia_)
        copia_->verificar();
}

void MDICheques::largarCopia() { copia_.reset(); }

bool MDICheques::podeEncerrar() {
    ado::Connection& base = dbconectar::instance().Automacao;
    if (!dbconectar::instance().aberto())
        return true;
    const std::uint64_t gravadas = base.database().tally().written;
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
