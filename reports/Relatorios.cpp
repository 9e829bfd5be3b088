#include "reports/Relatorios.h"

#include "shell/Mirtal.h"
#include "shell/Valores.h"

#include <algorithm>
#include <iterator>

namespace Relatorios {

namespace {

constexpr std::size_t kPorCliente = 2; ///< in both tables

// clang-format off
constexpr Ordem kOrdensRecebidos[] = {
    {"Banco",      " ORDER BY bancos.nome,bompara"},
    {"Número",     " ORDER BY numero,bompara"},
    {"Cliente",    " ORDER BY cliente_fornecedor.nome,bompara"},
    {"Emissão",    " ORDER BY data,bompara"},
    {"Vencimento", " ORDER BY bompara,cliente_fornecedor.nome"},
};
// clang-format on
// clang-format off
constexpr Ordem kOrdensSemFundos[] = {
    {"Banco",   " ORDER BY bancos.nome,data"},
    {"Número",  " ORDER BY numero,data"},
    {"Cliente", " ORDER BY cliente_fornecedor.nome,data"},
    {"Data",    " ORDER BY data,cliente_fornecedor.nome"},
};
// clang-format on

struct Tipo {
    const char* modo;
    const char* legenda;
    const char* titulo;
    const char* tabela;
    std::span<const Ordem> ordens;
    std::size_t semEscolha; ///< of ordens, where none is chosen
    bool temVencimento;
};

// The last one is that of every other mode word.
constexpr Tipo kTipos[] = {
    {"relch", "Relatório de Cheques Recebidos",  "Relatório de Cheques",            "cheques",   kOrdensRecebidos,
     kPorCliente,                                                                                                                 true },
    {"relsf", "Relatório de Cheques sem fundos", "Relatório de Cheques Sem Fundos", "semfundos",
     kOrdensSemFundos,                                                                                               kPorCliente, false},
};
static_assert(std::ranges::all_of(kTipos,
                                  [](const Tipo& t) { return t.semEscolha < t.ordens.size(); }));

const Tipo& tipo(const QString& modo) {
    const auto achado = std::ranges::find_if(kTipos, [&](const Tipo& t) { return modo == t.modo; });
    return achado != std::end(kTipos) ? *achado : *std::prev(std::end(kTipos));
}

// Deliberate: "And" before the bank, "and" before the period.
QString condicao(const Escolha& escolha) {
    QString onde;
    if (escolha.cliente)
        onde = " cliente=" + QString::number(*escolha.cliente);
    if (escolha.banco)
        onde += (onde.isEmpty() ? " banco=" : " And banco=") + QString::number(*escolha.banco);
    onde += onde.isEmpty() ? " data between " : " and data between ";
    return onde + Valores::literal(escolha.inicio) + " and " + Valores::literal(escolha.fim);
}

} // namespace

std::span<const Ordem> ordens(const QString& modo) { return tipo(modo).ordens; }

QString legenda(const QString& modo) { return tipo(modo).legenda; }

QString titulo(const QString& modo) { return tipo(modo).titulo; }

bool temVencimento(const QString& modo) { return tipo(modo).temVencimento; }

QString instrucao(const Escolha& escolha) {
    const Tipo& este = tipo(escolha.modo);
    const std::size_t ordem =
        escolha.ordem < 0 ? este.semEscolha : static_cast<std::size_t>(escolha.ordem);
    return Mirtal::comClienteEBanco(este.tabela) + " where " + condicao(escolha) +
           este.ordens[ordem].clausula;
}

} // namespace Relatorios
