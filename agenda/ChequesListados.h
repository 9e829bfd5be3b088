#pragma once

#include "agenda/ListaDaAgenda.h"
#include "agenda/Vencimentos.h"

#include <QDate>

#include <cstdint>
#include <vector>

/// The cheques on the agenda's list with their ticks, and what they come to.
///
/// Invariant: dias() are the sums of cheques() by due date, in its order; total() are those of all.
class ChequesListados {
public:
    struct Dia {
        QDate vencimento;
        Vencimentos::SomaDoDia soma;
    };

    [[nodiscard]] const std::vector<Vencimentos::Cheque>& cheques() const { return cheques_; }
    [[nodiscard]] const Vencimentos::Cheque& cheque(int linha) const {
        return cheques_[static_cast<std::size_t>(linha)];
    }
    [[nodiscard]] const std::vector<Dia>& dias() const { return dias_; }
    [[nodiscard]] const Vencimentos::SomaDoDia& total() const { return total_; }
    /// Where the one of that `lancamento` stands; -1 if it doesn't.
    [[nodiscard]] int linhaDe(std::int64_t lancamento) const;
    /// `lancamento` of each one that is ticked, in the order of the list.
    [[nodiscard]] std::vector<std::int64_t> marcados() const;

    /// Takes these in place of its own; what was ticked among those stays so. @throws as
    /// Soma::mais(), and keeps its own.
    void receber(std::vector<Vencimentos::Cheque> cheques);
    /// As ListaDaAgenda::ordenar().
    void ordenar(ListaDaAgenda::ColunaDaAgenda coluna, bool aoContrario);

    /// Ticks the cheque of a row, or takes its tick away. @return the day that it falls due on, as
    /// an index of dias().
    std::size_t marcar(std::size_t linha, bool marcado);
    /// Ticks all of them; none, if all were. @return whether they are now.
    bool marcarTodos();

private:
    void somar(const std::vector<Vencimentos::Cheque>& cheques);

    std::vector<Vencimentos::Cheque> cheques_;
    std::vector<Dia> dias_;
    Vencimentos::SomaDoDia total_;
};
