#pragma once

#include "ado/Recordset.h"
#include "controls/DatePicker.h"
#include "controls/DropDownList.h"
#include "controls/MemoEdit.h"
#include "controls/MoneyEdit.h"

#include <QString>

#include <optional>
#include <span>
#include <variant>

/// Which field each control of a window shows and saves, as a table. A control that can't hold a
/// field doesn't compile.
namespace Campos {

/// A box that shows a document number punctuated; its field has the bare digits.
struct CaixaDocumento {
    QLineEdit* caixa;
};

using Controle =
    std::variant<QLineEdit*, CaixaDocumento, MemoEdit*, DropDownList*, DatePicker*, MoneyEdit*>;

struct Campo {
    const char* nome;
    Controle controle;
};

/// Switches off the controls whose fields the table lacks, and says which these are.
void dispensar(const ado::Recordset& rs, std::span<const Campo> campos);

/// Lets no more be typed into each control than its field holds.
void limitar(const ado::Recordset& rs, std::span<const Campo> campos);

/// Shows the current row, field by field in the order of the table. Deliberate: a control whose
/// field is null stays as it was.
void mostrar(const ado::Recordset& rs, std::span<const Campo> campos);

/// Sets the fields of the current row from the controls, in the order of the table.
void gravar(ado::Recordset& rs, std::span<const Campo> campos);

/// A control whose text or amount its field can't hold, and why.
struct Recusa {
    QWidget* controle;
    QString motivo; ///< a sentence for the operator
};

/// The first of them; nothing if all can be stored.
[[nodiscard]] std::optional<Recusa> recusa(const ado::Recordset& rs, std::span<const Campo> campos);

} // namespace Campos
