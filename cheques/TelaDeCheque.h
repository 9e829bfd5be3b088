#pragma once

#include <QString>

#include <array>
#include <cstdint>
#include <optional>

class DatePicker;
class DropDownList;
class MoneyEdit;
class QLineEdit;
class QWidget;

namespace ado {
class FieldValue;
class Recordset;
} // namespace ado

/// What the windows that show one cheque, received or bounced, do alike.
namespace TelaDeCheque {

struct Texto {
    const char* campo;
    QLineEdit* caixa;
};
/// The text boxes of such a window and their fields.
using Textos = std::array<Texto, 4>;

/// Lets no more be typed into each box than its field holds.
void limitar(const ado::Recordset& rs, const Textos& textos);
/// A long text shows its beginning. One that is wider than the box lets through, because another
/// table has more room for it, is shown whole: that it can't be stored is for the clerk to know.
void mostrar(QLineEdit& caixa, const ado::FieldValue& campo);
/// An empty field shows as an empty date box does: today's date.
void mostrar(DatePicker& data, const ado::FieldValue& campo);

/// The code of the chosen client or bank.
[[nodiscard]] std::int64_t codigo(const DropDownList& escolhido);
/// Goes to the row of a client or bank, by its code, and chooses its entry: by the code too, since
/// several may have one name. Who has been added elsewhere since the list was filled gets his
/// entry. Where the row is missing none is chosen, so that no save hands the cheque to whoever was
/// on show before.
void escolher(DropDownList& lista, ado::Recordset& rs, std::int64_t codigo);

/// Why a cheque can't be saved: where, and what to tell the clerk.
struct Impedimento {
    QWidget* controle;
    QString mensagem;
};
/// What every cheque must have.
struct Exigidos {
    DropDownList* cliente;
    DropDownList* banco;
    QLineEdit* numero;
    MoneyEdit* valor;
};
/// The first of these that is missing, in this order; nothing if all are there.
[[nodiscard]] std::optional<Impedimento> falta(const Exigidos& exigidos);
/// The first text, or else the value, that its field can't hold: a pasted sign that the file has no
/// place for, cents where the back-office keeps whole reais. Nothing if all can be stored.
[[nodiscard]] std::optional<Impedimento> naoCabe(const ado::Recordset& rs, const Textos& textos,
                                                 MoneyEdit* valor);

/// Asks whether the cheque on show is to be deleted; if there are no cheques at all, says so.
/// @return whether it is.
[[nodiscard]] bool confirmarExclusao(const ado::Recordset& rs);

} // namespace TelaDeCheque
