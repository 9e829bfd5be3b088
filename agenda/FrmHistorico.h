#pragma once

#include "controls/window/Form.h"
#include "ui_FrmHistorico.h"

/// The history: what was done with the cheques, by period, client, operation and text.
class FrmHistorico final : public Form, private Ui::FrmHistorico {
    Q_OBJECT
public:
    FrmHistorico();
    static FrmHistorico& instance();

private:
    void Form_Load() override { centre(); }

    void cmdsair_Click() { unload(); }
};
