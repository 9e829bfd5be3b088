#pragma once

#include "controls/window/Form.h"
#include "reports/Relatorios.h"
#include "ui_FrmFiltroRelat.h"

/// What a report is to show: a period, and if wanted one client, one bank, an order. Stays open for
/// the next report.
class FrmFiltroRelat final : public Form, private Ui::FrmFiltroRelat {
    Q_OBJECT
public:
    FrmFiltroRelat();
    static FrmFiltroRelat& instance();
    /// Shows the filter of the report that Mirtal::modo names. Deliberate: one that is open comes
    /// to the front as it is, whichever report it is for, with what has been chosen in it.
    static void mostrar();

private:
    void Form_Load() override;

    void CmdImprimir_Click();
    void cmdsair_Click();

    void darVista();
    [[nodiscard]] Relatorios::Escolha escolha() const;

    /// Mirtal::modo as it was at loading: other windows change it while this one is open.
    QString modo_;
};
