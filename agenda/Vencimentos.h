#pragma once

#include "controls/typing/Formato.h"

#include <QDate>
#include <QString>

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <vector>

/// The cheques in hand by their due dates, and what falls due on each day.
namespace Vencimentos {

/// What the agenda is asked for, in the order in which it offers them.
enum class Periodo : unsigned char {
    hoje,
    amanha,
    semana, ///< today and the six days after it
    mes,    ///< today and the 29 days after it
    atrasados,
    deAte, ///< the two days that are typed
    semVencimento,
};

/// A first day and a last one, both included; without the first one, all up to the last. Without
/// both, no day: what has no due date.
struct Dias {
    QDate primeiro;
    QDate ultimo;

    friend bool operator==(const Dias& a, const Dias& b) {
        return a.primeiro == b.primeiro && a.ultimo == b.ultimo;
    }
};
/// `deAte` has no days of its own: it is today.
[[nodiscard]] Dias dias(Periodo periodo, const QDate& hoje);

struct Procura {
    Dias dias;
    std::optional<std::int64_t> cliente; ///< its `codigo`; none: all
    std::optional<std::int64_t> banco;
    std::optional<bool> descontar; ///< to be cashed at a bank, or exchanged in the shop

    friend bool operator==(const Procura& a, const Procura& b) {
        return a.dias == b.dias && a.cliente == b.cliente && a.banco == b.banco &&
               a.descontar == b.descontar;
    }
};

struct Cheque {
    std::int64_t lancamento = 0;
    QString numero;
    std::optional<std::int64_t> codigoDoCliente;
    QString cliente; ///< the name; where there is none, which code is missing
    QString banco;
    QString agencia;
    QDate emissao; ///< may be missing, as in all files without that field
    QDate vencimento;
    Amount valor;
    bool marcado = false;
};

/// The cheques that fall due then, each once, whoever gave it: a client, a supplier, or one who is
/// no longer in the file. In the order of due date and entry. All of one state of the file, nobody
/// saves meanwhile; costs what the cheques found cost where the file has an index on the due date.
/// @throws jet::Error.
[[nodiscard]] std::vector<Cheque> procurar(const Procura& procura);

/// These cheques as they are stored now; those that are no longer there are left out. In the same
/// order, all of one state of the file. @throws jet::Error.
[[nodiscard]] std::vector<Cheque> reler(std::span<const std::int64_t> lancamentos);

/// A count of cheques and what they come to.
struct Soma {
    qint64 cheques = 0;
    Amount valor;

    /// @throws jet::Error{outOfRange} beyond the largest amount.
    void mais(const Amount& cheque);
    void mais(const Soma& outra);
    void menos(const Amount& cheque);
};

struct DeUmCliente {
    std::int64_t codigo = 0;
    Soma emMaos;
};

struct SomaDoDia {
    Soma todos;
    Soma marcados;
};
/// By due date. @throws as Soma::mais().
[[nodiscard]] std::map<QDate, SomaDoDia> porDia(std::span<const Cheque> cheques);

/// "1 cheque", "2 cheques".
[[nodiscard]] QString quantos(const Soma& soma);
/// "1 cheque, R$ 10,00", "2 cheques, R$ 20,00".
[[nodiscard]] QString texto(const Soma& soma);

/// How late cheques were settled, those of them that had a due date.
class Atraso {
public:
    void mais(const QDate& vencimento, const QDate& baixa);
    /// In days, "3,2 dias"; "" of no cheques.
    [[nodiscard]] QString medio() const;

private:
    qint64 cheques_ = 0;
    qint64 dias_ = 0; ///< of all of them
};

/// How far off the due date is: "hoje", "amanhã", "em 3 dias", "há 1 dia"; "" without one.
[[nodiscard]] QString distancia(const QDate& vencimento, const QDate& hoje);
/// The banking day of a due date that isn't one, "seg 23/11"; "" where the two are the same.
[[nodiscard]] QString outroDiaUtil(const QDate& vencimento);

} // namespace Vencimentos
