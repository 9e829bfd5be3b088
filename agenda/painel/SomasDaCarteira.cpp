#include "agenda/painel/SomasDaCarteira.h"

#include "ado/Connection.h"
#include "shell/Valores.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <tuple>
#include <utility>

namespace {

using Vencimentos::DeUmCliente;
using Vencimentos::Soma;

constexpr auto kSemVencimento = std::numeric_limits<std::int32_t>::min();
constexpr auto kSemCliente = std::numeric_limits<std::uint32_t>::max();

// Places of the columns that are asked for.
constexpr std::size_t kCampoValor = 0;
constexpr std::size_t kCampoVencimento = 1;
constexpr std::size_t kCampoCliente = 2;

Amount semSinal(std::int64_t valor) {
    if (valor == std::numeric_limits<std::int64_t>::min())
        Valores::grandeDemais("O valor do cheque");
    return {valor < 0 ? -valor : valor};
}

std::int32_t numeroDo(const QDate& dia) {
    return dia.isValid() ? static_cast<std::int32_t>(dia.toJulianDay()) : kSemVencimento;
}

/// So many times the one, 1 or -1.
Soma vezes(int quantas, const Soma& soma) {
    return {quantas * soma.cheques, {quantas * soma.valor.tenThousandths}};
}

} // namespace

SomasDaCarteira::SomasDaCarteira(ado::Connection& base)
    : cheques_(base, "cheques", {"valor", "bompara", "cliente"},
               [this](std::uint32_t bloco, Linhas& linhas) { tomarCheques(bloco, linhas); }) {
    if (base.store().hasTable("semfundos"))
        devolvidos_.emplace(
            base, "semfundos", std::vector<ado::Text>{"valor"},
            [this](std::uint32_t bloco, Linhas& linhas) { tomarDevolvidos(bloco, linhas); });
}

bool SomasDaCarteira::continuar(std::chrono::microseconds tempo) {
    return cheques_.follow(tempo) || (devolvidos_ && devolvidos_->follow(tempo));
}

bool SomasDaCarteira::completas() const {
    const auto lida = [](const ado::Follower& tabela) {
        return tabela.isComplete() && !tabela.damage();
    };
    return lida(cheques_) && (!devolvidos_ || lida(*devolvidos_));
}

SomasDaCarteira::Cheque SomasDaCarteira::cheque(const Linhas& linha) {
    return {linha.currency(kCampoValor).tenThousandths,
            linha.isNull(kCampoVencimento) ? kSemVencimento
                                           : numeroDo(Valores::dia(linha.date(kCampoVencimento))),
            linha.isNull(kCampoCliente) ? kSemCliente : lugarDe(linha.integer(kCampoCliente))};
}

void SomasDaCarteira::tomarCheques(std::uint32_t bloco, Linhas& linhas) {
    std::vector<Cheque>& antes = blocos_[bloco];
    std::vector<Cheque> agora;
    Soma todos = semSinal_;
    for (const Cheque& cheque : antes)
        todos.menos(semSinal(cheque.valor));
    while (linhas.next()) {
        agora.push_back(cheque(linhas));
        todos.mais(semSinal(agora.back().valor));
    }
    semSinal_ = todos; // what follows can't fail
    for (const Cheque& cheque : antes)
        contar(cheque, -1);
    for (const Cheque& cheque : agora)
        contar(cheque, 1);
    agora.shrink_to_fit();
    antes = std::move(agora);
    if (antes.empty())
        blocos_.erase(bloco);
    mudaram_ = true;
}

std::uint32_t SomasDaCarteira::lugarDe(std::int64_t cliente) {
    const auto [lugar, novo] =
        lugares_.try_emplace(cliente, static_cast<std::uint32_t>(clientes_.size()));
    if (novo)
        clientes_.push_back({cliente, {}});
    return lugar->second;
}

void SomasDaCarteira::contar(const Cheque& cheque, int quantas) {
    const Soma soma = vezes(quantas, {1, {cheque.valor}});
    emMaos_.mais(soma);
    if (cheque.cliente != kSemCliente)
        clientes_[cheque.cliente].emMaos.mais(soma);
    if (cheque.vencimento == kSemVencimento)
        return;
    const auto dia = porDia_.try_emplace(cheque.vencimento).first;
    dia->second.mais(soma);
    if (dia->second.cheques == 0)
        porDia_.erase(dia);
}

void SomasDaCarteira::tomarDevolvidos(std::uint32_t bloco, Linhas& linhas) {
    Soma& antes = blocosSemFundos_[bloco];
    Soma agora;
    while (linhas.next())
        agora.mais(Amount{linhas.currency(kCampoValor).tenThousandths});
    (void)semSinal(agora.valor.tenThousandths); // it will have to be taken away again
    Soma todos = semFundos_;
    todos.mais(vezes(-1, antes));
    todos.mais(agora);
    semFundos_ = todos;
    antes = agora;
    mudaram_ = true;
}

Soma SomasDaCarteira::devidos(const Vencimentos::Dias& dias) const {
    Soma soma;
    auto dia = porDia_.lower_bound(numeroDo(dias.primeiro));
    for (; dia != porDia_.end() && dia->first <= numeroDo(dias.ultimo); ++dia)
        soma.mais(dia->second);
    return soma;
}

std::vector<DeUmCliente> SomasDaCarteira::maiores(std::size_t quantos) const {
    std::vector<DeUmCliente> clientes;
    std::ranges::copy_if(clientes_, std::back_inserter(clientes),
                         [](const DeUmCliente& um) { return um.emMaos.cheques > 0; });
    const auto fim =
        clientes.begin() + static_cast<std::ptrdiff_t>(std::min(quantos, clientes.size()));
    std::ranges::partial_sort(clientes, fim, [](const DeUmCliente& a, const DeUmCliente& b) {
        return std::tuple(b.emMaos.valor, a.codigo) < std::tuple(a.emMaos.valor, b.codigo);
    });
    clientes.erase(fim, clientes.end());
    return clientes;
}
