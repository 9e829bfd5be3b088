#pragma once

#include "agenda/Vencimentos.h"
#include "controls/window/Form.h"
#include "ui_FrmBordero.h"

/// The deposit slip of cheques that were ticked in the agenda: asks where they are deposited, and
/// shows the slip to be printed. The cheques stay in the file as they are; that there was a slip is
/// kept in the history.
class FrmBordero final : public Form, private Ui::FrmBordero {
    Q_OBJECT
public:
    FrmBordero();
    static FrmBordero& instance();

    /// The cheques of the slip; before the window is shown.
    void preparar(std::vector<Vencimentos::Cheque> cheques);

private:
    void Form_Load() override;

    void cmdimprimir_Click();
    void cmdsair_Click() { unload(); }

    std::vector<Vencimentos::Cheque> cheques_;
    Vencimentos::Soma soma_; ///< of them
};
