#pragma once

#include "agenda/Vencimentos.h"
#include "controls/box/ListRows.h"

#include <QDate>
#include <QHash>

#include <span>
#include <vector>

/// How cheques and days stand in the agenda's lists: the columns, and the orders that it offers.
namespace ListaDaAgenda {

enum ColunaDaAgenda {
    kNumero, ///< with the check box
    kCliente,
    kBanco,
    kAgencia,
    kEmissao,
    kVencimento,
    kDiaUtil,
    kDistancia,
    kValor,
    kPrazos,
    kAviso
};
[[nodiscard]] std::vector<ListColumn> colunas();

/// Of the list of days, those that ticking a cheque changes.
enum ColunaDoDia { kMarcadosDoDia = 4, kSomaMarcadaDoDia };
[[nodiscard]] std::vector<ListColumn> colunasDosDias();
[[nodiscard]] ListItem linhaDoDia(const QDate& vencimento, const Vencimentos::SomaDoDia& soma);

/// The rows of cheques, as they are to be read today. Keeps what it has worked out of a due date or
/// an issue: of 100,000 cheques most share theirs with others.
class Linhas {
public:
    [[nodiscard]] ListItem de(const Vencimentos::Cheque& cheque);

private:
    struct Vencimento {
        QString data, diaUtil, distancia;
    };
    struct Emissao {
        QString data, prazos;
    };
    QDate hoje_ = QDate::currentDate();
    QHash<QDate, Vencimento> vencimentos_;
    QHash<QDate, Emissao> emissoes_;
};

struct Ordenacao {
    const char* nome;
    ColunaDaAgenda coluna;
};
[[nodiscard]] std::span<const Ordenacao> ordens();
/// Which one orders by this column, as ordenavel() gives it: an index of them.
[[nodiscard]] int ordem(ColunaDaAgenda coluna);
/// Which of these orders a column of the list asks for: some say the same of a cheque in other
/// words.
[[nodiscard]] ColunaDaAgenda ordenavel(int coluna);

/// Puts them in the order of a column that ordenavel() gives; equal ones stay as they stand. Texts
/// come as in a dictionary, whatever their case and accents, with numbers in them by their value.
void ordenar(std::vector<Vencimentos::Cheque>& cheques, ColunaDaAgenda coluna, bool aoContrario);

} // namespace ListaDaAgenda
