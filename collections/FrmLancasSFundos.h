#pragma once

#include "ado/Shown.h"
#include "cheques/TelaDeCheque.h"
#include "controls/window/Form.h"
#include "shell/ClienteMostrado.h"
#include "ui_FrmLancasSFundos.h"

/// Register of the cheques that came back unpaid: they are typed in, or copied from the received
/// cheque of the same number, changed, deleted and walked through one at a time. A received cheque
/// that is copied stays as it is.
///
/// Invariant: txtlancamento holds the key of the stored cheque on show, or "" for a new one; visto_
/// is how that cheque was when it was shown.
class FrmLancasSFundos final : public Form, public ClienteMostrado, private Ui::FrmLancasSFundos {
    Q_OBJECT
public:
    FrmLancasSFundos();
    static FrmLancasSFundos& instance();

    /// Shows the cheque of the current row of rsSemFundos, modally, to be looked at: nothing can be
    /// typed, begun, saved or deleted until the window closes. A cheque that can't be read is told
    /// as any window that can't be loaded is.
    void consultar();

    bool mostrarGravado() override;
    [[nodiscard]] std::optional<std::int64_t> clienteMostrado() const override;

private:
    void Form_Load() override;

    void btnNavegacao_Click(int indice);
    void CmdBuscar_Click();
    void CmdNovo_Click();
    void CmdIncluir_Click();
    void cmdExcluir_Click();
    void CmdLocalizar_Click();
    void CmdSair_Click();
    void cmbncheque_LostFocus();
    void txtobservacao_LostFocus();

    /// Says what is missing or can't be stored and goes there; true if nothing is.
    [[nodiscard]] bool validar();
    /// Nothing can be typed any more.
    void travar();
    /// The current row of rsSemFundos.
    void mostrarRegistro();
    /// Shows what the first received cheque of this number has for a bounced one: all but the
    /// company. @return false, and nothing changes, if there is none.
    bool copiarRecebido(const QString& numero);
    /// For a new cheque: every control as in an empty window.
    void esvaziar();
    /// The same, ready to be typed into.
    void limpar();

    Campos campos_; ///< all but the key
    ado::Shown visto_;
    bool soConsulta_ = false;
};
