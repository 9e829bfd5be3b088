#pragma once

#include "controls/window/Form.h"
#include "ui_frmcaminho.h"

/// Chooses the folder of the shop's database and writes it into init.ini. Counts from the next
/// start on: the program at work goes on with the folder it has.
///
/// Deliberate: the folder is whatever stands in txtcaminho, chosen or typed. It may be empty, and
/// it may have no database in it.
class frmcaminho final : public Form, private Ui::frmcaminho {
    Q_OBJECT
public:
    frmcaminho();
    static frmcaminho& instance();

private:
    void Form_Load() override;

    void Drive1_Change();
    void Dir1_Change();
    void Dir1_Click();
    void File1_Click();
    void txtcaminho_LostFocus();
    void cmdemitir_Click();
    void cmdcancelar_Click();
    void cmdsair_Click();

    void posicionar();
};
