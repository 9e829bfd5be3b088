#pragma once

#include "agenda/Vencimentos.h"

#include <QDate>
#include <QString>

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

/// All that the shop knows of a client's cheques on a day.
namespace Ficha {

/// How far off a cheque's due date is.
enum Prazo : unsigned char {
    kAtrasado,
    kAte30, ///< days from today on, today among them
    kAte60,
    kAte90,
    kDepois,
    kSemVencimento,
    kPrazos
};
[[nodiscard]] Prazo prazo(const QDate& vencimento, const QDate& hoje);
/// "Até 30 dias".
[[nodiscard]] QString nome(Prazo prazo);
/// The same for below a bar.
[[nodiscard]] QString nomeCurto(Prazo prazo);

struct SemFundos {
    QString numero;
    QDate data;
    Amount valor;
};

/// What the history tells of the last twelve months, but for what was undone.
struct Passado {
    Vencimentos::Soma baixados;
    Vencimentos::Atraso atraso;
    Vencimentos::Soma devolvidosExcluidos;
};

struct Cliente {
    QString nome;
    Amount limite; ///< 0: he has none
    Vencimentos::Soma emMaos;
    std::array<Vencimentos::Soma, kPrazos> porPrazo;
    std::map<QDate, Vencimentos::Soma> aVencer; ///< by due date, from today on
    std::vector<SemFundos> semFundos;           ///< the latest first
    Vencimentos::Soma devolvidos;               ///< these
    std::optional<Passado> passado;             ///< nothing where the file has no history
};

/// All of one state of the file; costs what the client's cheques cost. Of a client who isn't in the
/// file any more the cheques are told all the same.
/// @throws jet::Error.
[[nodiscard]] Cliente ler(std::int64_t codigo, const QDate& hoje);
/// Only his name and his limit. @throws jet::Error.
[[nodiscard]] Cliente cadastro(std::int64_t codigo);

/// What may still be taken of him: "R$ 10,00", "nada: passou R$ 5,00 do limite", "sem limite".
[[nodiscard]] QString livre(const Cliente& cliente);
/// "2 cheques, R$ 30,00, atraso médio 3,2 dias".
[[nodiscard]] QString baixados(const Cliente& cliente);
/// "1 cheque, R$ 10,00; excluídos em 12 meses: 2 cheques, R$ 30,00".
[[nodiscard]] QString devolvidos(const Cliente& cliente);

} // namespace Ficha
