#pragma once

#include "controls/box/ActiveText.h"
#include "controls/box/DatePicker.h"
#include "controls/box/DropDownList.h"
#include "controls/box/MemoEdit.h"
#include "controls/box/MoneyEdit.h"

#include <QCheckBox>
#include <QString>
#include <QVariant>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <variant>
#include <vector>

namespace ado {
class FieldValue;
class Recordset;
} // namespace ado

/// Which field each control of a window shows and saves: a table, the only one that a window has of
/// them. A control that can't hold a field doesn't compile.
///
/// A save changes what the operator changed and nothing else. A control that still holds what it
/// was given when the record was shown leaves its field alone: a time of day that the back-office
/// stores with a date stays, and so does a value that the control can't show whole.
class Campos {
public:
    /// A box that shows a document number punctuated; its field has the bare digits.
    struct CaixaDocumento {
        QLineEdit* caixa;
    };
    /// A list of clients or banks, filled from their recordset; the field has the code of one.
    struct ListaDeCodigos {
        DropDownList* lista;
        ado::Recordset* registros;
    };
    /// (The field of a DropDownList by itself is its text.)
    using Controle = std::variant<QLineEdit*, ActiveText*, CaixaDocumento, MemoEdit*, DropDownList*,
                                  ListaDeCodigos, QCheckBox*, DatePicker*, MoneyEdit*>;
    struct Campo {
        const char* nome;
        Controle controle;
    };

    /// What a null field does to its control.
    enum class Nulo : unsigned char {
        mantem,  ///< nothing: it stays as it was
        esvazia, ///< it becomes as in an empty window: no text, today's date, zero
    };

    /// None yet.
    Campos() = default;
    /// The fields in the order in which they are shown, checked and saved.
    Campos(Nulo nulo, const std::vector<Campo>& campos);

    /// Chooses the entry of a client or bank, which the list gets if it has been registered since;
    /// none if there is none.
    static void escolher(ListaDeCodigos codigos, std::int64_t codigo);

    /// Switches off the controls whose fields the table lacks, and says which these are.
    void dispensar(const ado::Recordset& rs) const;
    /// Lets no more be typed into each control than its field in `rs` holds, from now on.
    void limitar(const ado::Recordset& rs);

    /// Shows the current row. A text that is longer than may be typed is shown whole.
    void mostrar(const ado::Recordset& rs);
    /// Shows what the current row of another table has of the fields, but for `menos`. It is taken
    /// for typed: nothing of it is stored where this window saves.
    void copiar(const ado::Recordset& rs, const char* menos);
    /// The controls have been emptied for a new record.
    void esquecer();
    /// What stands in the controls has been stored.
    void lembrar();

    /// A control whose text or amount its field can't hold, and why.
    struct Recusa {
        QWidget* controle;
        QString motivo; ///< a sentence for the operator, who knows the field by its label
    };
    /// The first of them that gravar() would write; nothing if all can be stored.
    [[nodiscard]] std::optional<Recusa> recusa(const ado::Recordset& rs) const;

    /// Sets the fields of the current row whose controls have been changed.
    void gravar(ado::Recordset& rs) const;

private:
    struct Linha {
        Campo campo;
        std::optional<std::size_t> limite; ///< of characters
        QVariant gravado; ///< what the control holds as long as nobody changes it; or nothing
    };
    void mostrarCampo(Linha& linha, const ado::FieldValue& valor) const;

    Nulo nulo_ = Nulo::esvazia;
    std::vector<Linha> linhas_;
};
