#pragma once

#include "agenda/Ficha.h"
#include "controls/window/Form.h"
#include "ui_FrmFicha.h"

#include <optional>

/// The client's sheet: what is in hand of his, his limit and what of it is free, how old and when
/// due that is, and what has bounced. Only reads; as the file was when it was last asked.
class FrmFicha final : public Form, private Ui::FrmFicha {
    Q_OBJECT
public:
    FrmFicha();
    static FrmFicha& instance();
    /// Shows the sheet of the client whom the window in front has on show, if it has one (see
    /// ClienteMostrado.h); or else whose it was, or an empty one for the clerk to choose.
    static void mostrar();

private:
    void Form_Load() override;

    void txtcliente_LostFocus();
    void cmdimprimir_Click();
    void cmdsair_Click();

    /// Asks the file for the sheet of the chosen client; without one the window is empty.
    void mostrarFicha();
    void mostrarFiguras();
    void mostrarPrazos(const Ficha::Cliente& cliente);
    void mostrarListas(const Ficha::Cliente& cliente);

    std::optional<Ficha::Cliente> mostrado_;
    std::optional<std::int64_t> pedido_; ///< whose sheet was asked for last
};
