#include "shell/frmlocalizar.h"

#include "controls/Icons.h"
#include "controls/MessageBox.h"
#include "controls/WindowList.h"
#include "shell/Mirtal.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <algorithm>

namespace {

constexpr int kDigitos = 10; ///< of the longest code

/// How long the text is without the blanks before and after it.
qsizetype tamanhoSemBrancos(const QString& texto) {
    const auto branco = [](QChar c) { return c == u' '; };
    const auto inicio = std::ranges::find_if_not(texto, branco);
    const auto fim = std::find_if_not(texto.rbegin(), texto.rend(), branco).base();
    return std::max<qsizetype>(0, fim - inicio);
}

} // namespace

frmlocalizar::frmlocalizar() {
    setupUi(this);
    LstEncontrado->setColumns({
        {"Nome", 6             },
        { "Código",     1, Qt::AlignRight}
    });
    prompts({
        {txtpesquisar, "Quem você deseja pesquisar"}
    });
    enterAsTab({txtpesquisar});
    closesWith(cmdsair);
    on(txtpesquisar, &QLineEdit::textChanged, &frmlocalizar::txtpesquisar_Change);
    on(LstEncontrado, &ListView::itemClicked, &frmlocalizar::LstEncontrado_ItemClick);
    on(cmdsair, &QPushButton::clicked, &frmlocalizar::cmdsair_Click);
}

frmlocalizar& frmlocalizar::instance() { return WindowList::instance().one<frmlocalizar>(); }

// Deliberate: the text is compared as typed but measured without its outer blanks, so with one of
// those it finds nobody; and an apostrophe breaks the statement.
void frmlocalizar::txtpesquisar_Change() {
    const QString texto = txtpesquisar->text();
    ado::Recordset achados;
    achados.Open("select codigo,nome from cliente_fornecedor where tipo=true and mid$(nome,1," +
                     QString::number(tamanhoSemBrancos(texto)) + ")='" + texto + "'" +
                     "order by NOME",
                 dbconectar::instance().Automacao, ado::CursorType::Keyset);
    if (achados.RecordCount() == 0) {
        showMessage("Não foi encontrado nenhum registro.", "Mensagem", MessageIcon::information);
        txtpesquisar->clear(); // lists everybody
        return txtpesquisar->setFocus();
    }
    LstEncontrado->clear();
    const QIcon icone = Icons::named("cliente");
    for (achados.MoveFirst(); !achados.EOF(); achados.MoveNext()) {
        const qint64 codigo = achados["codigo"].integer();
        LstEncontrado->addItem({.key = QString("%1").arg(codigo, kDigitos, 10, QChar('0')),
                                .text = Valores::texto(achados["nome"]),
                                .subItems = {QString::number(codigo)},
                                .icon = icone});
    }
    txtpesquisar->setFocus();
}

// The first click chooses the row, the second one the client. Deliberate: a new search doesn't
// forget which row was clicked.
void frmlocalizar::LstEncontrado_ItemClick(const QString& chave) {
    if (chave != clicada_) {
        clicada_ = chave;
        return;
    }
    ado::Recordset& clientes = dbconectar::instance().rsCliente;
    if (!Mirtal::localizar(clientes, "codigo =" + QString::number(chave.toLongLong()))) {
        showMessage("Este cliente não está mais cadastrado: foi excluído depois de listado.",
                    "Mensagem", MessageIcon::exclamation);
        return;
    }
    emit clienteEscolhido();
    unload();
}

void frmlocalizar::cmdsair_Click() { unload(); }
