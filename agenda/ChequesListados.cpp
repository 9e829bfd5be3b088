#include "agenda/ChequesListados.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

using Vencimentos::Cheque;

std::vector<std::int64_t> ChequesListados::marcados() const {
    std::vector<std::int64_t> marcados;
    for (const Cheque& cheque : cheques_)
        if (cheque.marcado)
            marcados.push_back(cheque.lancamento);
    return marcados;
}

int ChequesListados::linhaDe(std::int64_t lancamento) const {
    const auto cheque = std::ranges::find(cheques_, lancamento, &Cheque::lancamento);
    return cheque != cheques_.end() ? static_cast<int>(cheque - cheques_.begin()) : -1;
}

void ChequesListados::receber(std::vector<Cheque> cheques) {
    const std::vector<std::int64_t> antes = marcados();
    const std::unordered_set<std::int64_t> marcados(antes.begin(), antes.end());
    for (Cheque& cheque : cheques)
        cheque.marcado = marcados.contains(cheque.lancamento);
    somar(cheques);
    cheques_ = std::move(cheques);
}

void ChequesListados::ordenar(ListaDaAgenda::ColunaDaAgenda coluna, bool aoContrario) {
    ListaDaAgenda::ordenar(cheques_, coluna, aoContrario);
}

std::size_t ChequesListados::marcar(std::size_t linha, bool marcado) {
    Cheque& cheque = cheques_[linha];
    const auto dia = std::ranges::lower_bound(dias_, cheque.vencimento, {}, &Dia::vencimento);
    for (Vencimentos::Soma* soma : {&dia->soma.marcados, &total_.marcados})
        marcado ? soma->mais(cheque.valor) : soma->menos(cheque.valor);
    cheque.marcado = marcado;
    return static_cast<std::size_t>(dia - dias_.begin());
}

bool ChequesListados::marcarTodos() {
    const bool marcar = !std::ranges::all_of(cheques_, &Cheque::marcado);
    for (Cheque& cheque : cheques_)
        cheque.marcado = marcar;
    somar(cheques_);
    return marcar;
}

void ChequesListados::somar(const std::vector<Cheque>& cheques) {
    Vencimentos::SomaDoDia total;
    std::vector<Dia> dias;
    for (const auto& [vencimento, soma] : Vencimentos::porDia(cheques)) {
        total.todos.mais(soma.todos);
        total.marcados.mais(soma.marcados);
        dias.push_back({vencimento, soma});
    }
    total_ = total;
    dias_ = std::move(dias);
}
