#include "registers/frmBancos.h"

#include "controls/box/ClearControls.h"
#include "controls/look/Icons.h"
#include "controls/window/MessageBox.h"
#include "controls/window/WindowList.h"
#include "shell/Estrutura.h"
#include "shell/Mirtal.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

namespace {

ado::Recordset& bancos() { return dbconectar::instance().rsBancos; }

bool temBancos() { return !bancos().isEmpty(); }

// The blank is where a number's sign would stand; the zeros say that the key isn't a mere number.
QString chaveDoItem(std::int64_t codigo) {
    return QString("00000%1%2").arg(codigo < 0 ? "" : " ").arg(codigo);
}

QString codigoDaChave(QString chave) { return QString::number(chave.remove(' ').toLongLong()); }

} // namespace

frmBancos::frmBancos() {
    setupUi(this);
    lblCodigo->hide();
    mostrarChave("");
    lstListagem->setColumns({
        {"Código", 1},
        {"Nome",    5}
    });
    prompts({
        {txtCodigo,   "Código de identificação do banco."},
        {txtNome,     "Nome do banco."                      },
        {lstListagem, "Listagem de bancos."                 }
    });
    campos_ = Campos(Campos::Nulo::esvazia, {
                                                {"cod_banco", txtCodigo},
                                                {"nome",      txtNome  }
    });
    digitsOnly(txtCodigo);
    onEnter(txtNome, &frmBancos::txtNome_Enter);
    closesWith(cmdFechar);
    lostFocus(txtCodigo, &frmBancos::txtCodigo_LostFocus);
    lostFocus(lstListagem, &frmBancos::destacarNaLista);
    on(lstListagem, &ListView::itemClicked, &frmBancos::lstListagem_ItemClick);
    on(lstListagem, &ListView::columnClicked, &frmBancos::lstListagem_ColumnClick);
    on(btnNavegacao, &NavigationBar::clicked, &frmBancos::btnNavegacao_Click);
    on(cmdNovo, &QPushButton::clicked, &frmBancos::cmdNovo_Click);
    on(cmdSalvar, &QPushButton::clicked, &frmBancos::cmdSalvar_Click);
    on(cmdExcluir, &QPushButton::clicked, &frmBancos::cmdExcluir_Click);
    on(cmdFechar, &QPushButton::clicked, &frmBancos::cmdFechar_Click);
}

frmBancos& frmBancos::instance() { return WindowList::instance().one<frmBancos>(); }

void frmBancos::Form_Load() {
    centre();
    Estrutura::exigir(bancos(), {"codigo", "cod_banco", "nome"});
    campos_.limitar(bancos());
    if (!temBancos())
        return nothingTyped();
    bancos().MoveFirst();
    mostrarRegistro();
    preencherLista();
}

void frmBancos::btnNavegacao_Click(int indice) {
    if (Mirtal::navegar(bancos(), indice))
        mostrarRegistro();
}

void frmBancos::cmdNovo_Click() {
    limpar();
    txtCodigo->setFocus();
}

void frmBancos::cmdSalvar_Click() {
    if (txtCodigo->text().isEmpty())
        return advertir(txtCodigo, "O código do banco deve ser informado.");
    if (txtNome->text().isEmpty())
        return advertir(txtNome, "O nome do banco deve ser preenchido.");
    if (const auto recusa = campos_.recusa(bancos()))
        return advertir(recusa->controle, recusa->motivo);
    if (jaCadastrado()) // deliberate: the bank on show counts as its own duplicate
        return advertir(txtCodigo, "Este banco já está cadastrado.");

    ado::Recordset& rs = bancos();
    const bool novo = lblCodigo->text().isEmpty();
    ado::Transaction gravacao(dbconectar::instance().Automacao);
    if (novo)
        Estrutura::acrescentar(rs, "codigo");
    else
        Mirtal::editar(rs, "codigo=" + lblCodigo->text(), visto_);
    campos_.gravar(rs);
    rs.Update();
    gravacao.commit();

    rs.Requery();
    rs.MoveFirst();
    if (novo)
        limpar();
    else
        mostrarRegistro(); // deliberate: the first bank, not the one just saved
    preencherLista();
    txtCodigo->setFocus();
}

void frmBancos::cmdExcluir_Click() {
    if (txtCodigo->text().isEmpty())
        return txtCodigo->setFocus();
    showMessage("Não é possível excluir registros neste sistema. Tente excluir pelo sistema de "
                "Automação.",
                "Advertência", MessageIcon::exclamation);
}

void frmBancos::cmdFechar_Click() { unload(); }

// Deliberate: the order stays with the recordset after the window closes.
void frmBancos::lstListagem_ColumnClick(int /*coluna*/, const QString& titulo) {
    bancos().setSort(titulo == "Código" ? "cod_banco" : "nome");
    preencherLista();
}

void frmBancos::lstListagem_ItemClick(const QString& chave) {
    Mirtal::localizar(bancos(), "codigo=" + codigoDaChave(chave));
    mostrarRegistro();
}

// The last field leads straight to the save; in the list one more Enter would bring another bank up
// over what was typed.
void frmBancos::txtNome_Enter() { cmdSalvar->setFocus(); }

// Typing the code of a known bank brings it up. Deliberate: an unknown code leaves lblCodigo alone,
// so that Save gives the bank on show its new code.
void frmBancos::txtCodigo_LostFocus() {
    if (!txtCodigo->text().isEmpty() &&
        Mirtal::localizar(bancos(), "cod_banco=" + txtCodigo->text()))
        mostrarRegistro();
}

void frmBancos::mostrarChave(const QString& codigo) {
    lblCodigo->setText(codigo);
    Label24->setRecord(codigo.isEmpty() ? "Novo" : "Cadastrado");
}

void frmBancos::limpar() {
    mostrarChave("");
    visto_ = {};
    limparControles(*this);
    campos_.esquecer();
    destacarNaLista();
    nothingTyped();
}

void frmBancos::mostrarRegistro() {
    limpar();
    if (bancos().EOF())
        return; // the bank looked for has been deleted by the other system
    const ado::Shown visto = bancos().shown();
    mostrarChave(Valores::texto(bancos()["codigo"]));
    campos_.mostrar(bancos());
    visto_ = visto; // only now: what was shown in part isn't seen
    destacarNaLista();
    nothingTyped();
}

bool frmBancos::mostrarGravado() {
    if (!Mirtal::foiAlterado(bancos(), "codigo=" + lblCodigo->text(), visto_))
        return false;
    mostrarRegistro();
    return true;
}

// Deliberate: a list is never emptied because the table is.
void frmBancos::preencherLista() {
    if (!temBancos())
        return;
    ado::Recordset& rs = bancos();
    lstListagem->clear();
    const QIcon icone = Icons::named("banco");
    for (rs.MoveFirst(); !rs.EOF(); rs.MoveNext())
        lstListagem->addItem({.key = chaveDoItem(rs["codigo"].integer()),
                              .text = Valores::texto(rs["cod_banco"]),
                              .subItems = {Valores::texto(rs["nome"])},
                              .icon = icone});
    rs.MoveFirst();
    destacarNaLista();
}

// The bank on show is the one marked in the list, also when the keys have moved on in it and left.
void frmBancos::destacarNaLista() {
    const QString codigo = lblCodigo->text();
    const QString chave = codigo.isEmpty() ? codigo : chaveDoItem(codigo.toLongLong());
    lstListagem->setCurrentRow(lstListagem->rowOf(chave));
}

// Deliberate: the name goes in as it stands, so an apostrophe in it breaks the filter.
bool frmBancos::jaCadastrado() {
    if (!temBancos())
        return false;
    bancos().setFilter("cod_banco=" + txtCodigo->text() + " And nome='" + txtNome->text() + "'");
    const bool achado = temBancos();
    bancos().clearFilter();
    return achado;
}

#include "registers/moc_frmBancos.cpp"
