#pragma once

#include "controls/window/Form.h"
#include "ui_FrmApagar.h"

/// The purge: deletes the received cheques that fall due from one day to another, both included, of
/// all banks or of one. Bounced cheques stay. Nothing is asked before; the status bar counts along.
///
/// Of two or more cheques that it finds, the second one stays: see excluir(). Purging the same
/// period again takes that one too.
class FrmApagar final : public Form, private Ui::FrmApagar {
    Q_OBJECT
public:
    FrmApagar();
    static FrmApagar& instance();

private:
    void Form_Load() override;

    void cmdExcluir_Click();
    void cmdsair_Click();

    /// Deletes the cheques that a statement selects, all but the second.
    static void excluir(const QString& comando);
};
