#include "registers/frmCliFor.h"

#include "controls/box/ClearControls.h"
#include "controls/box/ShowOnly.h"
#include "controls/look/BusyCursor.h"
#include "controls/window/MessageBox.h"
#include "controls/window/WindowList.h"
#include "shell/Documento.h"
#include "shell/Estrutura.h"
#include "shell/Mirtal.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"
#include "shell/frmlocalizar.h"

namespace {

// The client that the other system keeps for itself.
constexpr const char* kReservado = "1";

constexpr const char* kEstados[] = {"AC", "AL", "AM", "AP", "BA", "CE", "DF", "ES", "GO",
                                    "MA", "MG", "MS", "MT", "PA", "PB", "PE", "PI", "PR",
                                    "RJ", "RN", "RO", "RR", "RS", "SC", "SE", "SP", "TO"};
constexpr const char* kVender[] = {"SIM", "NÃO"};

ado::Recordset& clientes() { return dbconectar::instance().rsCliente; }

bool temClientes() { return !clientes().isEmpty(); }

} // namespace

frmCliFor::frmCliFor() {
    setupUi(this);
    definirCampos();
    definirPrompts();
    definirTeclas();
    showOnly({txtCódigo});
    tellsRecord(txtCódigo, "Código", txtNome);
    closesWith(cmdFechar);
    gotFocus(txtCGCCPF, &frmCliFor::txtCGCCPF_GotFocus);
    lostFocus(txtCGCCPF, &frmCliFor::txtCGCCPF_LostFocus);
    on(tabCliFor, &QTabWidget::currentChanged, &frmCliFor::tabCliFor_Click);
    on(btnNavegacao, &NavigationBar::clicked, &frmCliFor::btnNavegacao_Click);
    on(cmdNovo, &QPushButton::clicked, &frmCliFor::cmdNovo_Click);
    on(cmdSalvar, &QPushButton::clicked, &frmCliFor::cmdSalvar_Click);
    on(cmdExcluir, &QPushButton::clicked, &frmCliFor::cmdExcluir_Click);
    on(cmdLocalizar, &QPushButton::clicked, &frmCliFor::cmdLocalizar_Click);
    on(cmdFechar, &QPushButton::clicked, &frmCliFor::cmdFechar_Click);

    for (const char* sigla : kEstados)
        cmbEstado->addItem(sigla);
    for (const char* resposta : kVender)
        cboVender->addItem(resposta);
    cboVender->setText("NÃO!"); // until a client is shown or begun
    tabCliFor_Click(tabCliFor->currentIndex());
}

frmCliFor& frmCliFor::instance() { return WindowList::instance().one<frmCliFor>(); }

void frmCliFor::definirCampos() {
    // In the order in which they are shown and saved. "renuneração_mensal" is the field's name.
    // clang-format off
    const std::vector<Campos::Campo> campos = {
        {"nome",                txtNome},
        {"endereco",            txtEndereço},
        {"bairro",              txtBairro},
        {"cidade",              txtCidade},
        {"cep",                 txtcep},
        {"estado",              cmbEstado},
        {"cgc_cpf",             Campos::CaixaDocumento{txtCGCCPF}},
        {"inscricao_rg",        txtInscriçãoRG},
        {"fone",                txttelefone},
        {"fax",                 txtfax},
        {"ultima_compra_venda", txtUltCompVend},
        {"observacao",          txtObservação},
        {"dt_nascimento",       txtdatanasc},
        {"renuneração_mensal",  txtRemuneração},
        {"vender",              cboVender},
        {"limite_credito",      txtLimiteDeCrédito},
        {"bancos_trabalha01",   txtBancos01},
        {"bancos_trabalha02",   txtBancos02},
        {"pessoa_autorizada01", txtNomePessoa01},
        {"pessoa_autorizada02", txtNomePessoa02},
        {"pai",                 txtPai},
        {"mae",                 txtMae},
        {"empresa",             txtEmpresa},
        {"ocupacao",            txtOcupacao},
        {"fone_empresa",        txtfonetrabalho},
        {"emailcli",            txtEMailCli},
    };
    // clang-format on
    campos_ = Campos(Campos::Nulo::mantem, campos);
}

void frmCliFor::definirPrompts() {
    // clang-format off
    prompts({
        {txtCódigo,          "Código do cliente, dado pelo sistema."},
        {txtNome,            "Nome do cliente."},
        {txtEndereço,        "Endereço do cliente: rua, número e complemento."},
        {txtBairro,          "Bairro do endereço."},
        {txtCidade,          "Cidade do endereço."},
        {txtcep,             "CEP do endereço, só os números."},
        {cmbEstado,          "Sigla do estado."},
        {txtCGCCPF,          "CPF (11 números) ou CGC/CNPJ (14 números) do cliente."},
        {txtInscriçãoRG,     "Inscrição estadual da empresa ou RG da pessoa."},
        {txttelefone,        "Telefone do cliente, com o código de área."},
        {txtfax,             "Fax do cliente, com o código de área."},
        {txtUltCompVend,     "Data da última compra do cliente."},
        {txtdatanasc,        "Data de nascimento do cliente."},
        {txtRemuneração,     "Renda mensal do cliente."},
        {cboVender,          "Informe se a empresa pode vender para o cliente."},
        {txtLimiteDeCrédito, "Valor máximo em cheques do cliente."},
        {txtEMailCli,        "Endereço eletrônico do cliente."},
        {txtObservação,      "Observações. Ctrl+Enter começa outra linha."},
        {txtBancos01,        "Banco com que o cliente trabalha."},
        {txtBancos02,        "Outro banco com que o cliente trabalha."},
        {txtNomePessoa01,    "Pessoa autorizada pelo cliente."},
        {txtNomePessoa02,    "Outra pessoa autorizada pelo cliente."},
        {txtPai,             "Nome do pai do cliente."},
        {txtMae,             "Nome da mãe do cliente."},
        {txtEmpresa,         "Empresa em que o cliente trabalha."},
        {txtOcupacao,        "Ocupação do cliente na empresa."},
        {txtfonetrabalho,    "Telefone da empresa, com o código de área."},
    });
    // clang-format on
}

void frmCliFor::definirTeclas() {
    enterAsTab({txtCódigo,      txtNome,     txtEndereço,     txtBairro,   txtCidade,
                txtcep,         cmbEstado,   txtInscriçãoRG,  txttelefone, txtfax,
                txtUltCompVend, txtdatanasc, txtRemuneração,  cboVender,   txtLimiteDeCrédito,
                txtBancos01,    txtBancos02, txtNomePessoa01, txtPai,      txtMae,
                txtEmpresa,     txtOcupacao, txtfonetrabalho});
    digitsOnly(txtCGCCPF);
    onEnter(txtNomePessoa02, &frmCliFor::txtNomePessoa02_Enter);
    onEnter(txtObservação, &frmCliFor::txtObservação_Enter);
    onEnter(txtEMailCli, &frmCliFor::txtEMailCli_Enter);
}

void frmCliFor::Form_Load() {
    centre();
    Estrutura::exigir(clientes(), {"codigo", "nome", "tipo", "vender", "limite_credito"});
    campos_.dispensar(clientes());
    campos_.limitar(clientes());
    if (temClientes()) {
        clientes().MoveFirst();
        mostrarRegistro();
    }
    nothingTyped();
    irPara(txtNome); // the code is not for typing
}

// ---- the client on the screen

void frmCliFor::limpar() {
    limparControles(*this);
    campos_.esquecer();
    visto_ = {};
    nothingTyped();
}

// Deliberate: nothing is cleared first, so what this client hasn't got stays as the one before had
// it.
void frmCliFor::mostrarRegistro() {
    const ado::Shown visto = clientes().shown();
    txtCódigo->setText(Valores::texto(clientes()["codigo"]));
    campos_.mostrar(clientes());
    visto_ = visto; // only now: what was shown in part isn't seen
    nothingTyped();
}

std::optional<std::int64_t> frmCliFor::clienteMostrado() const {
    bool gravado = false;
    const qint64 codigo = txtCódigo->text().toLongLong(&gravado);
    return gravado ? std::optional<std::int64_t>(codigo) : std::nullopt;
}

bool frmCliFor::mostrarGravado() {
    if (!Mirtal::foiAlterado(clientes(), "codigo=" + txtCódigo->text(), visto_))
        return false;
    limpar(); // what this client hasn't got isn't to look like what was typed
    mostrarRegistro();
    return true;
}

void frmCliFor::irPara(QWidget* controle) {
    for (int aba = 0; aba < tabCliFor->count(); ++aba)
        if (tabCliFor->widget(aba)->isAncestorOf(controle))
            tabCliFor->setCurrentIndex(aba);
    controle->setFocus();
}

// The first tab has a heading of its own, the other two share one.
void frmCliFor::tabCliFor_Click(int aba) {
    Label24->setVisible(aba == 0);
    Label26->setVisible(aba != 0);
}

// ---- saving

bool frmCliFor::recusar(QWidget* controle, const QString& texto) {
    showMessage(texto, "Advertência", MessageIcon::exclamation);
    irPara(controle);
    return false;
}

bool frmCliFor::validar() {
    const bool semLimite = txtLimiteDeCrédito->valor() == Amount{};
    const struct {
        bool falta;
        QWidget* controle;
        const char* mensagem;
    } exigidos[] = {
        {txtNome->text().isEmpty(),   txtNome,             "O nome deve ser preenchido."              },
        {cboVender->text().isEmpty(), cboVender,           "O campo vender deve ser preenchido."      },
        {semLimite,                   txtLimiteDeCrédito, "O limite de crédito deve ser preenchido."},
    };
    for (const auto& exigido : exigidos) {
        if (exigido.falta)
            return recusar(exigido.controle, exigido.mensagem);
    }
    // What can't be typed can be pasted: a sign that the file has no place for would end the
    // program, and with it everything that was typed.
    const auto recusa = campos_.recusa(clientes());
    return !recusa || recusar(recusa->controle, recusa->motivo);
}

void frmCliFor::cmdSalvar_Click() {
    if (txtCódigo->text() == kReservado)
        return irPara(txtNome);
    if (!validar())
        return;
    const BusyCursor espera;
    ado::Recordset& rs = clientes();
    ado::Transaction gravacao(dbconectar::instance().Automacao);
    if (txtCódigo->text().isEmpty())
        Estrutura::acrescentar(rs, "codigo");
    else
        Mirtal::editar(rs, "codigo=" + txtCódigo->text(), visto_);
    rs["tipo"] = true;
    campos_.gravar(rs);
    rs.Update();
    gravacao.commit();

    rs.Requery();
    rs.MoveFirst();
    limpar();
}

// ---- the other commands

void frmCliFor::cmdNovo_Click() {
    limpar();
    cboVender->selectByText("SIM");
    nothingTyped();
    irPara(txtNome);
}

void frmCliFor::cmdExcluir_Click() {
    if (txtCódigo->text().isEmpty() || txtCódigo->text() == kReservado)
        return irPara(txtNome);
    showMessage("Não é possível excluir clientes neste sistema. Tente excluir pelo sistema de "
                "Automação.",
                "Informação", MessageIcon::exclamation);
}

void frmCliFor::cmdLocalizar_Click() {
    if (temClientes()) {
        frmlocalizar& busca = frmlocalizar::instance();
        on(&busca, &frmlocalizar::clienteEscolhido, &frmCliFor::mostrarRegistro);
        busca.showModal();
    }
    irPara(txtNome);
}

void frmCliFor::btnNavegacao_Click(int indice) {
    if (Mirtal::navegar(clientes(), indice))
        mostrarRegistro();
}

// ---- the document number: bare while it is typed, punctuated otherwise

void frmCliFor::txtCGCCPF_GotFocus() {
    txtCGCCPF->setText(Documento::semSinais(txtCGCCPF->text()));
}

void frmCliFor::txtCGCCPF_LostFocus() {
    txtCGCCPF->setText(Documento::formatar(txtCGCCPF->text()));
}

// ---- Enter where it does more than move on

void frmCliFor::txtNomePessoa02_Enter() { irPara(txtPai); }
void frmCliFor::txtObservação_Enter() { irPara(txtBancos01); }
// The quick way for most clients: the rest of the register is seldom filled in.
void frmCliFor::txtEMailCli_Enter() { cmdSalvar->setFocus(); }

#include "registers/moc_frmCliFor.cpp"
