#pragma once

#include "ado/Shown.h"
#include "controls/window/Form.h"
#include "jet/Types.h"
#include "shell/Campos.h"
#include "ui_FrmRenegociar.h"

/// Renegotiation: finds a received cheque, shows what interest at a typed rate makes of its value
/// until a new due date, and stores that date.
///
/// Deliberate: only the due date is stored. Interest and new value are for the clerk to see.
///
/// Invariants:
///  1. txtlancamento holds the key of the cheque on show, or "" for none.
///  2. visto_ is how that cheque was when it was found.
///  3. vencto_ is the due date on show, with the time of day that its box doesn't show.
///  4. Only the rate and the new date are typed; they can't be before a cheque has been found.
class FrmRenegociar final : public Form, private Ui::FrmRenegociar {
    Q_OBJECT
public:
    FrmRenegociar();
    static FrmRenegociar& instance();

    bool mostrarGravado() override;

private:
    void Form_Load() override;

    void txtlancamento_Change();
    void CmdLocalizar_Click();
    void CmdIncluir_Click();
    void CmdSair_Click();
    void txtnovo_vencto_LostFocus();

    void limpar();
    /// The cheque of the current row of rsCheques.
    void mostrarCheque();

    Campos campos_; ///< only to be shown; an empty date leaves today's
    ado::Shown visto_;
    jet::Date vencto_;
};
