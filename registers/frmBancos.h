#pragma once

#include "ado/Shown.h"
#include "controls/window/Form.h"
#include "shell/Campos.h"
#include "ui_frmBancos.h"

/// Bank register: one bank in two boxes, all banks in a list. Adds and changes banks, never deletes
/// one: that is for the back-office system that shares the file.
/// Invariant: lblCodigo holds the key of the stored bank on show, or "" for a new one; visto_ is
/// how that bank was when it was shown.
class frmBancos final : public Form, private Ui::frmBancos {
    Q_OBJECT
public:
    frmBancos();
    static frmBancos& instance();

    bool mostrarGravado() override;

private:
    void Form_Load() override;

    void btnNavegacao_Click(int indice);
    void cmdNovo_Click();
    void cmdSalvar_Click();
    void cmdExcluir_Click();
    void cmdFechar_Click();
    void lstListagem_ColumnClick(int coluna, const QString& titulo);
    void lstListagem_ItemClick(const QString& chave);
    void txtCodigo_LostFocus();
    void txtNome_Enter();

    /// The key of the bank on show, "" for a new one, which the heading tells apart in words.
    void mostrarChave(const QString& codigo);
    void limpar();
    void mostrarRegistro();
    void preencherLista();
    void destacarNaLista();
    /// Whether a bank with the code and name of the boxes is stored.
    [[nodiscard]] bool jaCadastrado();

    Campos campos_; ///< all fields but the key
    ado::Shown visto_;
};
