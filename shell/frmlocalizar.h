#pragma once

#include "controls/window/Form.h"
#include "shell/ClienteMostrado.h"
#include "ui_frmlocalizar.h"

/// Finds a client by the beginning of the name: the list follows each key. Shown by the client
/// register, which puts the client chosen on its screen.
class frmlocalizar final : public Form, public ClienteMostrado, private Ui::frmlocalizar {
    Q_OBJECT
public:
    frmlocalizar();
    static frmlocalizar& instance();

    /// That of the current row.
    [[nodiscard]] std::optional<std::int64_t> clienteMostrado() const override;

signals:
    /// A client was chosen: rsCliente stands on it. The window closes after that.
    void clienteEscolhido();

private:
    void txtpesquisar_Change();
    void LstEncontrado_ItemClick(const QString& chave);
    void cmdsair_Click();

    QString clicada_; ///< the key of the row clicked last
};
