#pragma once

#include "controls/window/Form.h"
#include "ui_FrmAjuda.h"

/// The manual, in front of the window that it was asked from and at the page of that window.
class FrmAjuda final : public Form, private Ui::FrmAjuda {
    Q_OBJECT
public:
    FrmAjuda();
    static FrmAjuda& instance();

    /// Shows the page of the window in front; that of this one, if it is in front itself.
    static void mostrar();

private:
    void Form_Load() override;

    void cmdlocalizar_Click();
    void cmdvoltar_Click();
    void cmdindice_Click();
    void cmdimprimir_Click();
    void cmdsair_Click() { unload(); }
    void txtpagina_Mudou();
};
