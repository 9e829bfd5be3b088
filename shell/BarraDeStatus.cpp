#include "shell/BarraDeStatus.h"

#include "controls/look/Icons.h"
#include "controls/look/Spoken.h"
#include "controls/window/Failure.h"
#include "controls/window/MessageBox.h"
#include "shell/CopiaDeSeguranca.h"
#include "shell/dbconectar.h"

#include <QDateTime>
#include <QLabel>
#include <QToolButton>

#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr int kEntreVistorias = 3; ///< seconds

// How prompt and news part the status bar when there are news.
constexpr int kParteDaMensagem = 4;
constexpr int kParteDaNoticia = 3;

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

QLabel* novoPainel(const char* nome, const char* chamado) {
    installSpoken(); // before the first panel is told of
    auto* painel = new QLabel;
    painel->setObjectName(nome);
    painel->setAccessibleName(chamado);
    painel->setTextFormat(Qt::PlainText);
    return painel;
}

} // namespace

BarraDeStatus::BarraDeStatus()
    : mensagem_(novoPainel("pnlMensagem", "Mensagem")),
      noticia_(novoPainel("pnlNoticia", "Notícia")), aviso_(novoPainel("pnlAviso", "Aviso")),
      data_(novoPainel("pnlData", "Data")) {
    setObjectName("StatusBar1");
    setContentsMargins(6, 0, 6, 0);
    // A long text is cut at the panel's edge and doesn't widen the window.
    for (QLabel* painel : {mensagem_, noticia_})
        painel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    aviso_->setParent(this);
    aviso_->resize(0, 0);
    for (QLabel* painel : {noticia_, aviso_}) {
        tellAtOnce(*painel);
        painel->hide();
    }

    addWidget(mensagem_, kParteDaMensagem);
    addPermanentWidget(noticia_, kParteDaNoticia);
    dano_ = montarAviso("pnlDano", "Arquivo com erros", "critical");
    connectGuarded(dano_, &QToolButton::clicked, this, &BarraDeStatus::dano_Click);
    consulta_ = montarAviso("pnlConsulta", "Somente consulta", "warning");
    connectGuarded(consulta_, &QToolButton::clicked, this, &BarraDeStatus::consulta_Click);
    QSizePolicy lugar = consulta_->sizePolicy();
    lugar.setRetainSizeWhenHidden(true); // what is above mustn't move when it comes and goes
    consulta_->setSizePolicy(lugar);
    addPermanentWidget(data_);

    Relogio_Timer();
    connectGuarded(&Relogio, &QTimer::timeout, this, &BarraDeStatus::Relogio_Timer);
    Relogio.start(1s);
}

/// What stands in the status bar as long as it is so, and tells more when it is clicked.
QToolButton* BarraDeStatus::montarAviso(const char* nome, const char* texto, const char* imagem) {
    auto* aviso = new QToolButton;
    aviso->setObjectName(nome);
    aviso->setText(texto);
    aviso->setIcon(Icons::named(imagem));
    aviso->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    aviso->setAutoRaise(true);
    aviso->hide();
    addPermanentWidget(aviso);
    return aviso;
}

void BarraDeStatus::mostrarMensagem(const QString& texto) { showStatus(*mensagem_, texto); }

// Beside the prompt, not in its place: that is of the field in which somebody is typing.
void BarraDeStatus::mostrarNoticia(const QString& texto) {
    showStatus(*noticia_, texto);
    noticia_->setToolTip(texto); // whole, where the panel is too narrow for it
}

// Why nothing can be saved now, as long as that lasts: a program with other rules may come into the
// file and go again.
void BarraDeStatus::mostrarConsulta() {
    if (!dbconectar::instance().aberto())
        return;
    const auto motivo = dbconectar::instance().Automacao.store().readOnlyReason();
    consulta_->setVisible(motivo.has_value());
    consulta_->setToolTip(QString::fromStdString(motivo.value_or("")));
    describe(*consulta_, consulta_->toolTip());
    lerAvisos();
}

void BarraDeStatus::lerAvisos() {
    QStringList avisos;
    for (const QToolButton* aviso : {dano_, consulta_})
        if (!aviso->isHidden())
            avisos += aviso->text() + ". " + aviso->toolTip();
    showStatus(*aviso_, avisos.join('\n'), "");
}

void BarraDeStatus::consulta_Click() {
    ::showMessage(consulta_->toolTip(), "Mensagem", MessageIcon::exclamation);
}

void BarraDeStatus::mostrarDano(const std::optional<Dano>& dano) {
    dano_->setVisible(dano.has_value());
    if (!dano || !dbconectar::instance().aberto())
        return lerAvisos();
    const QString arquivo =
        QString::fromStdString(dbconectar::instance().Automacao.store().place());
    dano_->setToolTip(dano->achado);
    describe(*dano_, dano->achado);
    lerAvisos();
    const QString socorro = !dano->copia             ? kProcurandoCopia
                            : dano->copia->isEmpty() ? kSemCopia.arg(arquivo)
                                                     : kComCopia.arg(*dano->copia, arquivo);
    socorro_ = dano->achado + "\n\n" + socorro;
}

void BarraDeStatus::dano_Click() { ::showMessage(socorro_, "Mensagem", MessageIcon::exclamation); }

void BarraDeStatus::Relogio_Timer() {
    data_->setText(QDateTime::currentDateTime().toString("dd/MM/yyyy   HH:mm"));
    if (++segundos_ % kEntreVistorias == 0)
        mostrarConsulta();
}

#include "shell/moc_BarraDeStatus.cpp"
