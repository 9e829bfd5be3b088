#pragma once

#include "controls/window/Form.h"
#include "ui_frmSplash.h"

#include <QTimer>

/// First window: on show while the database is found and opened and for a second after that, then
/// gives way to the main window. What the opening throws ends the program.
class frmSplash final : public Form, private Ui::frmSplash {
    Q_OBJECT
public:
    frmSplash();
    static frmSplash& instance();

    /// Neither Esc nor the window manager closes it: the start goes on behind it.
    void reject() override {}

protected:
    void Form_Load() override;
    void closeEvent(QCloseEvent* event) override;

private:
    void Timer1_Timer();
    void pintar();
    void abrirComSenha();

    QTimer Timer1;
};
