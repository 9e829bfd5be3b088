#pragma once

#include "ado/Shown.h"
#include "cheques/TelaDeCheque.h"
#include "controls/typing/Formato.h"
#include "controls/window/ChequeReader.h"
#include "controls/window/Form.h"
#include "shell/ClienteMostrado.h"
#include "ui_FrmLancarCheques.h"

#include <functional>

/// Entry of received cheques: records the cheques that clients hand over, changes and deletes them,
/// walks through them one at a time, and warns when a client's cheques pass his credit limit.
///
/// With "Vários Cheques" ticked each save leaves the fields as they are, for the next cheque of the
/// same client 30 days later.
///
/// Invariant: txtlancamento holds the key of the stored cheque on show, or "" for a new one; visto_
/// is how that cheque was when it was shown, or as it was saved from here since.
class FrmLancarCheques final : public Form, public ClienteMostrado, private Ui::FrmLancarCheques {
    Q_OBJECT
public:
    FrmLancarCheques();
    static FrmLancarCheques& instance();

    /// Goes to a stored cheque in rsCheques, as Lancamento::ir(), and, if the window is on show,
    /// puts it on the screen; a window that isn't has nothing to show when the clerk opens it.
    /// @return as Lancamento::ir().
    bool mostrarCheque(qint32 lancamento);

    bool mostrarGravado() override;
    [[nodiscard]] std::optional<std::int64_t> clienteMostrado() const override {
        return txtNome->chosenData();
    }

    /// Sets what shows the cheque list, modally, for CmdLocalizar. The list stands above this
    /// window, because it calls mostrarCheque(). Without it nothing is shown.
    static void aoLocalizar(std::function<void()> mostrarLista);

private:
    void Form_Load() override;
    void Form_Unload() override;

    void btnNavegacao_Click(int indice);
    void CmdNovo_Click() { limpar(); }
    void CmdIncluir_Click();
    void CmdExcluir_Click();
    void CmdLocalizar_Click();
    void CmdSair_Click() { unload(); }
    void txtNome_LostFocus();
    void numeracao_LostFocus();
    void txtvalor_LostFocus();
    void txtobservacao_LostFocus();

    /// The current row of rsCheques.
    void mostrarRegistro();
    /// A cheque reader has typed the line at the foot of a cheque.
    void leitor_Lido(const QString& digitos);
    /// Lets bank, branch and number be taken from it. @return nothing if that bank isn't known.
    [[nodiscard]] bool escolherBanco(int codigoOficial);
    /// Says in the status bar that the shop has this cheque already; "" takes it back.
    void avisarRepetido(const QString& aviso);

    /// Says what is missing or can't be stored and goes there; true if nothing is.
    [[nodiscard]] bool validar();
    /// For a new cheque: every control as in an empty window.
    void esvaziar();
    /// The same, ready to be typed into.
    void limpar();
    /// Issued today, due in 30 days.
    void datasDeHoje();

    Campos campos_; ///< all but the key
    ado::Shown visto_;
    ChequeReader leitor_{*this};
    QString avisado_; ///< of a cheque that the shop has already
    Amount limite_;   ///< credit limit of the client last chosen
};
