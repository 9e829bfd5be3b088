#include "agenda/FrmHistorico.h"

#include "controls/window/WindowList.h"

FrmHistorico::FrmHistorico() {
    setupUi(this);
    // clang-format off
    lsthistorico->setColumns({
        {"Data e hora", 1600, Qt::AlignHCenter},
        {"Operação",    1400, Qt::AlignLeft},
        {"Nº  Cheque",  1100, Qt::AlignLeft},
        {"Cliente",     3000, Qt::AlignLeft},
        {"Banco",       1900, Qt::AlignLeft},
        {"Dt.Vencto",   1250, Qt::AlignHCenter},
        {"Valor R$",    1400, Qt::AlignRight},
        {"Estação",     1300, Qt::AlignLeft}
    });
    // clang-format on
    enterAsTab({txtinicio, txtfim, txtoperacao, txtcliente, txttexto});
    closesWith(cmdsair);
    on(cmdsair, &QPushButton::clicked, &FrmHistorico::cmdsair_Click);
}

FrmHistorico& FrmHistorico::instance() { return WindowList::instance().one<FrmHistorico>(); }

#include "agenda/moc_FrmHistorico.cpp"
