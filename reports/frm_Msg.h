#pragma once

#include "controls/window/Form.h"
#include "ui_frm_Msg.h"

/// Says what the operator is waiting for.
class frm_Msg final : public Form, private Ui::frm_Msg {
    Q_OBJECT
public:
    frm_Msg();
    static frm_Msg& instance();

    /// Shows the text at once, in the middle of the window's height.
    void setMensagem(const QString& texto);

protected:
    void Form_Load() override { centre(); }
};

/// The wait window with a text, on show while it lives.
class Espera {
public:
    explicit Espera(const QString& texto);
    Espera(const Espera&) = delete;
    Espera& operator=(const Espera&) = delete;
    ~Espera() { frm_Msg::instance().unload(); }
};
