#pragma once

#include <QDate>
#include <QString>

/// When a cheque can be handed in at a bank. What is said of it here helps the clerk to look; it
/// promises nothing, since it depends on places and courts that the file doesn't know.
///
/// Not before its due date: handing a post-dated cheque in earlier is taken for moral damage (STJ,
/// Súmula 370). And within 30 days of its issue if that was at the bank's own place, within 60 if
/// elsewhere (law 7.357/1985, article 33); which of the two the file doesn't tell.
namespace Apresentacao {

/// The last day of each term, counted from the day after the issue; none without an issue date.
struct Prazos {
    QDate mesmaPraca;
    QDate outraPraca;
};
[[nodiscard]] Prazos prazos(const QDate& emissao);

enum class Aviso : unsigned char {
    nenhum,
    cedo,               ///< due tomorrow or later
    ultimoDia,          ///< no banking day of the shorter term is left after today
    passouDaMesmaPraca, ///< the shorter term is over, the longer one isn't
    ultimoDiaDeOutra,   ///< the same of the longer term
    passouDosDois,
};

/// What is to be said on a day of a cheque issued and due on these; either may be missing. One that
/// isn't due yet is too early, whatever its terms.
[[nodiscard]] Aviso aviso(const QDate& emissao, const QDate& vencimento, const QDate& hoje);

/// Sign and words of it, for a column of a list; "" for none.
[[nodiscard]] QString texto(Aviso aviso);

} // namespace Apresentacao
