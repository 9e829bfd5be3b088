#include "reports/Relatorios.h"

#include "shell/Mirtal.h"
#include "shell/Valores.h"

namespace Relatorios {

namespace {

constexpr int kPorCliente = 2; ///< in both tables

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
    const char* legenda;
    const char* titulo;
    const char* tabela;
    std::span<const Ordem> ordens;
};

constexpr Tipo kRecebidos{"Relatório de Cheques Recebidos", "Relatório de Cheques", "cheques",
                          kOrdensRecebidos};
constexpr Tipo kSemFundos{"Relatório de Cheques sem fundos", "Relatório de Cheques Sem Fundos",
                          "semfundos", kOrdensSemFundos};

const Tipo& tipo(const QString& modo) { return modo == "relch" ? kRecebidos : kSemFundos; }

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

bool temVencimento(const QString& modo) { return &tipo(modo) == &kRecebidos; }

QString instrucao(const Escolha& escolha) {
    const Tipo& este = tipo(escolha.modo);
    const auto ordem = static_cast<std::size_t>(escolha.ordem < 0 ? kPorCliente : escolha.ordem);
    return Mirtal::comClienteEBanco(este.tabela) + " where " + condicao(escolha) +
           este.ordens[ordem].clausula;
}

} // namespace Relatorios
