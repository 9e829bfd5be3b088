#pragma once

#include "agenda/Vencimentos.h"
#include "controls/window/Form.h"
#include "ui_FrmBordero.h"

#include <cstdint>
#include <span>
#include <vector>

/// The deposit slip of cheques that were ticked in the agenda: asks where they are deposited, and
/// shows the slip to be printed. The cheques stay in the file as they are; that there was a slip is
/// kept in the history.
class FrmBordero final : public Form, private Ui::FrmBordero {
    Q_OBJECT
public:
    FrmBordero();
    static FrmBordero& instance();

    /// Takes the cheques of the slip, by `lancamento`, as they are stored now; those that can't be
    /// on it are told. Before the window is shown.
    /// @return how many are no longer stored. @throws jet::Error.
    std::size_t preparar(std::span<const std::int64_t> lancamentos);
    [[nodiscard]] bool vazio() const { return cheques_.empty(); }

private:
    void Form_Load() override;

    void cmdimprimir_Click();
    void cmdsair_Click() { unload(); }

    std::vector<Vencimentos::Cheque> cheques_;
    Vencimentos::Soma soma_; ///< of them
};
