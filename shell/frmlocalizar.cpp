#include "shell/frmlocalizar.h"

#include "controls/look/Icons.h"
#include "controls/typing/Accents.h"
#include "controls/window/MessageBox.h"
#include "controls/window/WindowList.h"
#include "shell/Mirtal.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <algorithm>
#include <vector>

namespace {

constexpr int kDigitos = 10; ///< of the longest code

struct Achado {
    qint64 codigo;
    QString nome;
};

std::vector<Achado> ler(const QString& instrucao) {
    ado::Recordset rs;
    rs.Open(instrucao, dbconectar::instance().Automacao, ado::CursorType::Keyset);
    std::vector<Achado> achados;
    for (; !rs.EOF(); rs.MoveNext())
        achados.push_back({rs["codigo"].integer(), Valores::texto(rs["nome"])});
    return achados;
}

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
    const qsizetype tamanho = tamanhoSemBrancos(texto);
    std::vector<Achado> achados =
        ler("select codigo,nome from cliente_fornecedor where tipo=true and mid$(nome,1," +
            QString::number(tamanho) + ")='" + texto + "'" + "order by NOME");
    if (achados.empty() && tamanho == texto.size()) {
        // Nobody's name begins exactly so: with other accents somebody's may.
        achados = ler("select codigo,nome from cliente_fornecedor where tipo=true order by nome");
        std::erase_if(achados,
                      [&](const Achado& achado) { return !beginsAlike(achado.nome, texto); });
    }
    if (achados.empty()) {
        showMessage("Não foi encontrado nenhum registro.", "Mensagem", MessageIcon::information);
        txtpesquisar->clear(); // lists everybody
        return txtpesquisar->setFocus();
    }
    LstEncontrado->clear();
    const QIcon icone = Icons::named("cliente");
    for (const auto& [codigo, nome] : achados)
        LstEncontrado->addItem({.key = QString("%1").arg(codigo, kDigitos, 10, QChar('0')),
                                .text = nome,
                                .subItems = {QString::number(codigo)},
                                .icon = icone});
    txtpesquisar->setFocus();
}

std::optional<std::int64_t> frmlocalizar::clienteMostrado() const {
    const int linha = LstEncontrado->currentRow();
    return linha < 0 ? std::nullopt : std::optional(LstEncontrado->item(linha).key.toLongLong());
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

#include "shell/moc_frmlocalizar.cpp"
