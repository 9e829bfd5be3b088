#include "shell/Mirtal.h"

#include "ado/Recordset.h"
#include "controls/box/DropDownList.h"
#include "controls/window/MessageBox.h"
#include "controls/window/Repainting.h"
#include "jet/Error.h"
#include "shell/dbconectar.h"

#include <chrono>
#include <cstdint>
#include <iterator>
#include <utility>

using namespace std::chrono_literals;

namespace Mirtal {

QString modo;
bool registroEscolhido = false;
qint32 lancamentoEscolhido = 0;

namespace {

// After every row would take four times as long as the rows themselves.
constexpr auto kEntreRepinturas = 10ms;

constexpr qint32 kPrimeiroErroDeRelatorio = static_cast<qint32>(0x80040000U + 1001U);
constexpr char kErroInterno[] = "Erro na configuração interna do relatório.";
constexpr const char* kErrosDeRelatorio[] = {
    "É necessário existir uma impressora instalada no Windows.",
    "Não há registros a imprimir.",
    kErroInterno,
    kErroInterno,
    kErroInterno,
    "A página configurada para o relatório não possuí espaço suficiente para a impressão.",
    "Já existe um relatório em andamento.",
};

using Mostrador = std::function<void(const QString&)>;

Mostrador& mostrador() {
    static Mostrador mostrar;
    return mostrar;
}

Mostrador& mostradorDeNoticias() {
    static Mostrador mostrar;
    return mostrar;
}

} // namespace

void mensagem(const QString& texto) {
    if (mostrador())
        mostrador()(texto);
}

void aoMostrarMensagem(std::function<void(const QString&)> mostrar) {
    mostrador() = std::move(mostrar);
}

void noticia(const QString& texto) {
    if (mostradorDeNoticias())
        mostradorDeNoticias()(texto);
}

void aoMostrarNoticia(std::function<void(const QString&)> mostrar) {
    mostradorDeNoticias() = std::move(mostrar);
}

void apagarPorChave(const QString& tabela, const QString& campo, const QString& valor, bool texto,
                    const std::optional<ado::Shown>& visto) {
    const QString criterio = campo + (texto ? " ='" + valor + "'" : " = " + valor);
    ado::Transaction exclusao(dbconectar::instance().Automacao);
    ado::Recordset rs;
    rs.Open("select * from " + tabela + " where " + criterio, dbconectar::instance().Automacao);
    visto ? rs.Delete(*visto) : rs.Delete();
    rs.Close();
    exclusao.commit();
}

void excluirMuitos(const char* feito, const char* operacao, const std::function<void()>& trabalho) {
    const Historico::Operacao juntos(dbconectar::instance().historico, operacao);
    dbconectar& dados = dbconectar::instance();
    dados.Automacao.flush(); // what waits from before isn't part of it
    const std::uint64_t antes = dados.Automacao.store().tally().written;
    try {
        trabalho();
        dados.Automacao.flush();
    } catch (const jet::Error& erro) {
        // What was done until then is as good as done by hand: it stays if it can be written.
        if (!dados.gravarPendentes())
            dados.Automacao.discard();
        mensagem("");
        const std::uint64_t quantos = dados.Automacao.store().tally().written - antes;
        const QString foram = quantos == 0 ? QString("Nenhum cheque foi %1.").arg(feito)
                              : quantos == 1
                                  ? QString("1 cheque já foi %1.").arg(feito)
                                  : QString("%1 cheques já foram %2s.").arg(quantos).arg(feito);
        throw jet::Error(erro.code(), erro.what() + ("\n\n" + foram).toStdString() +
                                          " Os outros continuam cadastrados.");
    }
}

void preencherLista(DropDownList& lista, ado::Recordset& rs, const QString& campo,
                    const QString& campoChave) {
    const std::string mostrado = campo.toStdString();
    const std::string chave = campoChave.toStdString();
    lista.clear();
    rs.setSort(campo);
    if (rs.isEmpty())
        return;
    Repainting repintura(kEntreRepinturas);
    for (rs.MoveFirst(); !rs.EOF(); rs.MoveNext()) {
        lista.addItem(QString::fromStdString(rs[mostrado].text()), rs[chave].integer());
        repintura.repaintIfDue();
    }
}

namespace {

void mover(ado::Recordset& rs, int botao) {
    switch (botao) {
    case 0:
        rs.MoveFirst();
        break;
    case 1:
        rs.MovePrevious();
        if (rs.BOF())
            rs.MoveFirst();
        break;
    case 2:
        if (!rs.EOF()) // a search that found nothing left it there
            rs.MoveNext();
        if (rs.EOF())
            rs.MoveLast();
        break;
    case 3:
        rs.MoveLast();
        break;
    default:
        break;
    }
}

} // namespace

// Whether there are any rows at all is asked only where there is none to go to.
bool navegar(ado::Recordset& rs, int botao) {
    try {
        mover(rs, botao);
    } catch (const jet::Error& erro) {
        if (erro.code() != jet::Errc::noCurrentRow || !rs.isEmpty())
            throw;
        return false;
    }
    return true;
}

QString comClienteEBanco(const char* tabela) {
    return QString("Select * from (%1 inner join cliente_fornecedor on "
                   "%1.cliente=cliente_fornecedor.codigo) inner join bancos on "
                   "%1.banco=bancos.codigo ")
        .arg(tabela);
}

bool localizar(ado::Recordset& rs, const QString& criterio) {
    rs.FindFirst(criterio);
    return !rs.EOF();
}

namespace {

bool localizarEmTodos(ado::Recordset& rs, const QString& criterio) {
    if (localizar(rs, criterio))
        return true;
    if (rs.Filter().empty())
        return false;
    rs.clearFilter();
    return localizar(rs, criterio);
}

} // namespace

void editar(ado::Recordset& rs, const QString& criterio, const ado::Shown& visto) {
    if (!localizar(rs, criterio) && !rs.Filter().empty()) {
        const std::string filtro = rs.Filter();
        const bool existe = localizarEmTodos(rs, criterio);
        rs.setFilter(filtro);
        localizar(rs, criterio);
        if (existe)
            throw jet::Error(
                jet::Errc::conflict,
                "Não há registro atual: o da tela não é do cliente conferido ou consultado por "
                "último, e só os deste estão à mão. Nada foi gravado.");
    }
    rs.Edit(visto);
}

bool foiAlterado(ado::Recordset& rs, const QString& criterio, const ado::Shown& visto) {
    return visto != ado::Shown() && localizarEmTodos(rs, criterio) && rs.isOther(visto);
}

QString zerosAEsquerda(const QString& texto) {
    constexpr qsizetype kLargura = 8;
    return texto.rightJustified(kLargura, '0');
}

void erroDeRelatorio(qint32 codigo, const QString& detalhes) {
    const qint64 erro = qint64{codigo} - kPrimeiroErroDeRelatorio;
    QString texto;
    if (codigo >= 0)
        texto = "Erro não previsto:\n" + detalhes;
    else if (erro >= 0 && erro < std::ssize(kErrosDeRelatorio))
        texto = kErrosDeRelatorio[erro];
    showMessage(texto, "Impressão", MessageIcon::exclamation);
}

} // namespace Mirtal
