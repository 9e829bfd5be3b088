#pragma once

#include <QDate>
#include <QString>

#include <cstdint>
#include <optional>
#include <span>

/// What the two reports are called, ordered by, and ask the database for: received cheques
/// ("relch") and bounced ones, which every other mode word stands for.
namespace Relatorios {

/// What the operator has chosen in the filter.
struct Escolha {
    QString modo;
    std::optional<std::int64_t> cliente = {}; ///< its `codigo`; none: all clients
    std::optional<std::int64_t> banco = {};
    QDate inicio; ///< both days are included
    QDate fim;
    int ordem = -1; ///< of ordens(), from 0; -1: none was chosen
};

/// An order that the filter offers.
struct Ordem {
    const char* nome;
    const char* clausula;
};

[[nodiscard]] std::span<const Ordem> ordens(const QString& modo);

/// The filter's caption; not spelt as the report's title.
[[nodiscard]] QString legenda(const QString& modo);
[[nodiscard]] QString titulo(const QString& modo);

/// Whether its cheques have a due date; bounced ones have none.
[[nodiscard]] bool temVencimento(const QString& modo);

/// The whole statement. Deliberate: received cheques are chosen by their issue, though they are
/// ordered by their due date. Without a chosen order they come by client.
[[nodiscard]] QString instrucao(const Escolha& escolha);

} // namespace Relatorios
