#include "cheques/ChequeRepetido.h"

#include "cheques/Cmc7.h"
#include "shell/Mirtal.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <QStringList>

namespace {

// No cheque has more digits.
constexpr qsizetype kAlgarismos = 8;

/// The number as it can be stored: with so many zeros before it. In a list, each is found by the
/// index.
QString escritas(const QString& numero) {
    QStringList todas;
    for (QString escrita = Cmc7::semZeros(numero); todas.empty() || escrita.size() <= kAlgarismos;
         escrita.prepend('0'))
        todas += "'" + escrita + "'";
    return todas.join(',');
}

/// The entry number of the other one in a table; "" for none.
QString outroEm(const char* tabela, const ChequeRepetido::Procurado& cheque) {
    ado::Recordset rs;
    rs.Open(QString("select * from %1 where numero in (%2) and banco=%3")
                .arg(tabela, escritas(cheque.numero))
                .arg(cheque.banco),
            dbconectar::instance().Automacao);
    rs.addOptional("agencia");
    for (; !rs.EOF(); rs.MoveNext()) {
        QString lancamento = Valores::texto(rs["lancamento"]);
        if (lancamento != cheque.lancamento &&
            Cmc7::semZeros(Valores::texto(rs["agencia"])) == Cmc7::semZeros(cheque.agencia))
            return lancamento;
    }
    return {};
}

} // namespace

namespace ChequeRepetido {

QString aviso(const Procurado& cheque) {
    // A quote would end the text that the number is looked for as.
    if (cheque.numero.isEmpty() || cheque.numero.contains('\''))
        return {};
    if (const QString outro = outroEm("cheques", cheque); !outro.isEmpty())
        return "Cheque repetido: em mãos, lançamento " + outro;
    const ado::Recordset& semFundos = dbconectar::instance().rsSemFundos;
    if (semFundos.State() == ado::State::Closed || semFundos.missing("numero") ||
        semFundos.missing("banco"))
        return {};
    // Entry numbers of the bounced are another count.
    const QString outro = outroEm("semfundos", {cheque.banco, cheque.agencia, cheque.numero, {}});
    return outro.isEmpty() ? outro : "Cheque repetido: sem fundos, lançamento " + outro;
}

} // namespace ChequeRepetido
