#include "agenda/Vencimentos.h"

#include "agenda/DiasUteis.h"
#include "agenda/Nomes.h"
#include "jet/Database.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <QStringList>

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

namespace Vencimentos {

namespace {

constexpr int kSemana = 7;
constexpr int kMes = 30;
constexpr char kSoma[] = "A soma dos cheques";

/// A moment of the last day counts too, so the end is the midnight after it; of the calendar's last
/// day there is none.
QString condicao(const Procura& procura) {
    constexpr int kUltimoAno = 9999;
    const auto& [primeiro, ultimo] = procura.dias;
    const QDate depois = ultimo.addDays(1);
    QString onde = !ultimo.isValid()            ? "bompara is null"
                   : depois.year() > kUltimoAno ? "bompara is not null"
                                                : "bompara<" + Valores::literal(depois);
    if (primeiro.isValid())
        onde += " and bompara>=" + Valores::literal(primeiro);
    if (procura.cliente)
        onde += " and cliente=" + QString::number(*procura.cliente);
    if (procura.banco)
        onde += " and banco=" + QString::number(*procura.banco);
    if (procura.descontar)
        onde += *procura.descontar ? " and descontar=true" : " and descontar=false";
    return onde;
}

std::vector<Cheque> ler(const QString& onde) {
    ado::Connection& base = dbconectar::instance().Automacao;
    // No others, so that a server finds all of it in an index.
    QString campos = "lancamento,numero,cliente,banco,bompara,valor";
    for (const char* campo : {"agencia", "data"})
        if (base.store().shape("cheques").findColumn(campo))
            campos += QString(",") + campo;
    ado::Recordset lista;
    lista.Open(QString("select %1 from cheques where %2").arg(campos, onde), base,
               ado::CursorType::ForwardOnly, ado::LockType::ReadOnly);
    for (const char* campo : {"agencia", "data"})
        lista.addOptional(campo);
    const ado::Recordset& rs = lista;
    const auto lancamento = rs["lancamento"], numero = rs["numero"], cliente = rs["cliente"],
               banco = rs["banco"], agencia = rs["agencia"], emissao = rs["data"],
               vencimento = rs["bompara"], valor = rs["valor"];
    std::vector<Cheque> cheques;
    std::vector<Nomes::Codigo> clientes;
    std::vector<Nomes::Codigo> bancos;
    for (; !lista.EOF(); lista.MoveNext()) {
        cheques.push_back({.lancamento = lancamento.integer(),
                           .numero = Valores::texto(numero),
                           .codigoDoCliente = Nomes::codigo(cliente),
                           .cliente = {},
                           .banco = {},
                           .agencia = Valores::texto(agencia),
                           .emissao = Valores::dia(emissao),
                           .vencimento = Valores::dia(vencimento),
                           .valor = Valores::valor(valor)});
        clientes.push_back(cheques.back().codigoDoCliente);
        bancos.push_back(Nomes::codigo(banco));
    }
    const Nomes dosClientes("cliente_fornecedor", std::move(clientes));
    const Nomes dosBancos("bancos", bancos);
    for (std::size_t i = 0; i < cheques.size(); ++i) {
        cheques[i].cliente = dosClientes.de(cheques[i].codigoDoCliente);
        cheques[i].banco = dosBancos.de(bancos[i]);
    }
    return cheques;
}

void porVencimento(std::vector<Cheque>& cheques) {
    std::ranges::sort(cheques, {}, [](const Cheque& cheque) {
        return std::pair(cheque.vencimento, cheque.lancamento);
    });
}

QString contados(qint64 quantos, const char* um, const char* varios) {
    return QString("%1 %2").arg(quantos).arg(quantos == 1 ? um : varios);
}

} // namespace

Dias dias(Periodo periodo, const QDate& hoje) {
    switch (periodo) {
    case Periodo::amanha:
        return {hoje.addDays(1), hoje.addDays(1)};
    case Periodo::semana:
        return {hoje, hoje.addDays(kSemana - 1)};
    case Periodo::mes:
        return {hoje, hoje.addDays(kMes - 1)};
    case Periodo::atrasados:
        return {{}, hoje.addDays(-1)};
    case Periodo::semVencimento:
        return {};
    case Periodo::hoje:
    case Periodo::deAte:
        break;
    }
    return {hoje, hoje};
}

std::vector<Cheque> procurar(const Procura& procura) {
    std::vector<Cheque> cheques = dbconectar::instance().Automacao.store().read(
        [onde = condicao(procura)] { return ler(onde); });
    porVencimento(cheques);
    return cheques;
}

std::vector<Cheque> reler(std::span<const std::int64_t> lancamentos) {
    constexpr std::size_t kPorInstrucao = 500;
    std::vector<Cheque> cheques = dbconectar::instance().Automacao.store().read([&] {
        std::vector<Cheque> lidos;
        for (auto resto = lancamentos; !resto.empty();) {
            const auto estes = resto.first(std::min(kPorInstrucao, resto.size()));
            resto = resto.subspan(estes.size());
            QStringList numeros;
            for (const std::int64_t lancamento : estes)
                numeros += QString::number(lancamento);
            std::ranges::move(ler("lancamento in (" + numeros.join(',') + ")"),
                              std::back_inserter(lidos));
        }
        return lidos;
    });
    porVencimento(cheques);
    return cheques;
}

void Soma::mais(const Amount& cheque) { mais(Soma{1, cheque}); }

void Soma::mais(const Soma& outra) {
    valor = Valores::soma(valor, outra.valor, kSoma);
    cheques += outra.cheques;
}

void Soma::menos(const Amount& cheque) {
    if (cheque.tenThousandths == std::numeric_limits<std::int64_t>::min())
        Valores::grandeDemais(kSoma);
    mais(Soma{-1, {-cheque.tenThousandths}});
}

std::map<QDate, SomaDoDia> porDia(std::span<const Cheque> cheques) {
    std::map<QDate, SomaDoDia> dias;
    for (const Cheque& cheque : cheques) {
        SomaDoDia& dia = dias[cheque.vencimento];
        dia.todos.mais(cheque.valor);
        if (cheque.marcado)
            dia.marcados.mais(cheque.valor);
    }
    return dias;
}

QString quantos(const Soma& soma) { return contados(soma.cheques, "cheque", "cheques"); }

QString texto(const Soma& soma) { return quantos(soma) + ", R$ " + formatMoney(soma.valor); }

void Atraso::mais(const QDate& vencimento, const QDate& baixa) {
    if (!vencimento.isValid())
        return;
    ++cheques_;
    dias_ += vencimento.daysTo(baixa);
}

QString Atraso::medio() const {
    if (cheques_ == 0)
        return "";
    const double media = static_cast<double>(dias_) / static_cast<double>(cheques_);
    return QString::number(media, 'f', 1).replace('.', ',') + " dias";
}

QString distancia(const QDate& vencimento, const QDate& hoje) {
    if (!vencimento.isValid())
        return "";
    const qint64 dias = hoje.daysTo(vencimento);
    if (dias == 0)
        return "hoje";
    if (dias == 1)
        return "amanhã";
    return dias > 0 ? "em " + contados(dias, "dia", "dias")
                    : "há " + contados(-dias, "dia", "dias");
}

QString outroDiaUtil(const QDate& vencimento) {
    static constexpr const char* kDias[] = {"seg", "ter", "qua", "qui", "sex", "sáb", "dom"};
    const QDate util = DiasUteis::aPartirDe(vencimento);
    if (!util.isValid() || util == vencimento)
        return "";
    return QString("%1 %2").arg(kDias[util.dayOfWeek() - 1], util.toString("dd/MM"));
}

} // namespace Vencimentos
