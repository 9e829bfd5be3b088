#pragma once

#include "agenda/Ficha.h"
#include "agenda/Vencimentos.h"
#include "print/ReportLayout.h"
#include "print/ReportValue.h"

#include <QDateTime>
#include <QHash>
#include <QStringList>

#include <vector>

/// What the agenda prints: how it stands on paper, and what stands there.
namespace Impressos {

struct Impresso {
    QString titulo;
    ReportLayout leiaute;
    QHash<QString, ReportValue> campos; ///< the computed fields by name, "Pagina" left out
    QStringList colunas;
    std::vector<std::vector<ReportValue>> linhas;
};

/// The agenda's list, in its order. `escolha` says in words which cheques these are. With `porDia`
/// they come by their due dates, and where these are several a sum follows those of each.
[[nodiscard]] Impresso vencimentos(const std::vector<Vencimentos::Cheque>& cheques,
                                   const QString& escolha, const Vencimentos::SomaDoDia& total,
                                   bool porDia);

/// A client's sheet, on one page: of what falls due the first days, of what bounced the latest are
/// told one by one, the others together.
[[nodiscard]] Impresso ficha(const Ficha::Cliente& cliente);

/// A deposit slip: what is taken to the bank with the cheques, and what the shop keeps of it.
struct Deposito {
    QString banco;
    QString conta; ///< may be empty
    QDateTime momento;
    std::vector<Vencimentos::Cheque> cheques;
};
/// Its number: by the moment, as no two are made in one second.
[[nodiscard]] QString numero(const Deposito& deposito);
/// In two copies, with room for place, date and signature.
/// @throws jet::Error{outOfRange} if the cheques come to more than an amount can be.
[[nodiscard]] Impresso bordero(const Deposito& deposito);

} // namespace Impressos
