#pragma once

#include "ado/Shown.h"
#include "controls/window/Form.h"
#include "shell/Campos.h"
#include "shell/ClienteMostrado.h"
#include "ui_frmCliFor.h"

/// Client register: one client on three tabs, walked with the navigation bar or found by name. Adds
/// and changes clients, never deletes one: that is for the back-office system that shares the file.
///
/// Invariant: txtCódigo holds the code of the stored client on show, or "" for a new one; visto_ is
/// how that client was when he was shown.
class frmCliFor final : public Form, public ClienteMostrado, private Ui::frmCliFor {
    Q_OBJECT
public:
    frmCliFor();
    static frmCliFor& instance();

    bool mostrarGravado() override;
    [[nodiscard]] std::optional<std::int64_t> clienteMostrado() const override;

private:
    void Form_Load() override;

    void definirCampos();
    void definirPrompts();
    void definirTeclas();

    void btnNavegacao_Click(int indice);
    void cmdNovo_Click();
    void cmdSalvar_Click();
    void cmdExcluir_Click();
    void cmdLocalizar_Click();
    void cmdFechar_Click() { unload(); }
    void tabCliFor_Click(int aba);
    void txtCGCCPF_GotFocus();
    void txtCGCCPF_LostFocus();
    void txtNomePessoa02_Enter();
    void txtObservação_Enter();
    void txtEMailCli_Enter();

    void limpar();
    void mostrarRegistro();
    [[nodiscard]] bool validar();
    /// Says what is missing or wrong, then brings the control up, with the focus. @return false.
    [[nodiscard]] bool recusar(QWidget* controle, const QString& texto);
    void irPara(QWidget* controle);

    /// All fields but the code, which only finds the row, and `tipo`.
    Campos campos_;
    ado::Shown visto_;
};
