#pragma once

#include "controls/window/Form.h"
#include "ui_frmAbout.h"

/// The product's picture. Esc or the close box closes it.
class frmAbout final : public Form, private Ui::frmAbout {
    Q_OBJECT
public:
    frmAbout();
    static frmAbout& instance();

protected:
    void Form_Load() override { centre(); }
};
