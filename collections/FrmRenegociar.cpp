#include "collections/FrmRenegociar.h"

#include "collections/FrmLocCHTerceiros.h"
#include "collections/Juros.h"
#include "controls/box/ClearControls.h"
#include "controls/box/ShowOnly.h"
#include "controls/window/WindowList.h"
#include "shell/Estrutura.h"
#include "shell/Mirtal.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

FrmRenegociar::FrmRenegociar() {
    setupUi(this);
    showOnly({txtnome, txtlancamento, txtnumero, txtdata, txtvalor, txtbom_para, txtvl_juros,
              txtnovo_valor});
    campos_ = Campos(Campos::Nulo::mantem, {
                                               {"bompara", txtbom_para},
                                               {"valor",   txtvalor   },
                                               {"data",    txtdata    },
                                               {"numero",  txtnumero  },
    });
    prompts({
        {txttaxa_juros,  "Digite a taxa de juros ao mês"               },
        {txtnovo_vencto, "Digite a nova data a ser descontado o cheque."},
    });
    enterAsTab({txttaxa_juros, txtnovo_vencto});
    on(txtlancamento, &QLineEdit::textChanged, &FrmRenegociar::txtlancamento_Change);
    txtlancamento_Change();
    txtlancamento->hide(); // told by the heading
    txtnovo_vencto->setNotBefore(txtbom_para);
    closesWith(CmdSair);
    lostFocus(txtnovo_vencto, &FrmRenegociar::txtnovo_vencto_LostFocus);
    on(CmdLocalizar, &QPushButton::clicked, &FrmRenegociar::CmdLocalizar_Click);
    on(CmdIncluir, &QPushButton::clicked, &FrmRenegociar::CmdIncluir_Click);
    on(CmdSair, &QPushButton::clicked, &FrmRenegociar::CmdSair_Click);
}

FrmRenegociar& FrmRenegociar::instance() { return WindowList::instance().one<FrmRenegociar>(); }

void FrmRenegociar::Form_Load() {
    centre();
    Estrutura::exigir(dbconectar::instance().rsCheques,
                      {"lancamento", "cliente", "numero", "bompara", "valor"});
    Estrutura::exigir(dbconectar::instance().rsCliente, {"codigo", "nome"});
    campos_.dispensar(dbconectar::instance().rsCheques);
    limpar();
    CmdLocalizar->setFocus();
}

void FrmRenegociar::txtlancamento_Change() {
    Label10->setRecord(txtlancamento->text().isEmpty() ? QString("Nenhum cheque")
                                                       : "Lançamento " + txtlancamento->text());
}

void FrmRenegociar::limpar() {
    limparControles(*this);
    visto_ = {};
    vencto_ = Valores::data(txtbom_para->value());
    nothingTyped();
}

// ---- find

void FrmRenegociar::CmdLocalizar_Click() {
    limpar();
    Mirtal::registroEscolhido = false;
    Mirtal::modo = "localizarCH";
    FrmLocCHTerceiros::instance().showModal();
    if (!Mirtal::registroEscolhido)
        return;
    ado::Recordset& rs = dbconectar::instance().rsCheques;
    rs.clearFilter();
    rs.Requery();
    if (Mirtal::localizar(rs, "lancamento=" + QString::number(Mirtal::lancamentoEscolhido)))
        mostrarCheque();
}

void FrmRenegociar::mostrarCheque() {
    const ado::Recordset& rs = dbconectar::instance().rsCheques;
    const ado::Shown visto = rs.shown();
    ado::Recordset& clientes = dbconectar::instance().rsCliente;
    const bool achado =
        Mirtal::localizar(clientes, "Codigo=" + QString::number(rs["cliente"].integer()));
    txtnome->setText(achado ? Valores::texto(clientes["nome"]) : ""); // a supplier isn't found
    txtnome->setCursorPosition(0); // a long name shows its beginning
    if (!rs["bompara"].isNull())
        vencto_ = rs["bompara"].date();
    campos_.mostrar(rs);
    txtlancamento->setText(Valores::texto(rs["lancamento"]));
    txttaxa_juros->setEnabled(true);
    txtnovo_vencto->setEnabled(true);
    visto_ = visto; // only now: what was shown in part isn't seen
    nothingTyped();
    txttaxa_juros->setFocus();
}

bool FrmRenegociar::mostrarGravado() {
    if (!Mirtal::foiAlterado(dbconectar::instance().rsCheques,
                             "lancamento=" + txtlancamento->text(), visto_))
        return false;
    mostrarCheque();
    return true;
}

// ---- interest

// Deliberate: any date will do, one before the due date too, which makes the interest negative.
void FrmRenegociar::txtnovo_vencto_LostFocus() {
    const float dias = Juros::dias(vencto_, Valores::data(txtnovo_vencto->value()));
    const Amount juros =
        Juros::juros(txtvalor->valor(), Juros::fator(txttaxa_juros->valor(), dias));
    txtvl_juros->setValor(juros);
    txtnovo_valor->setValor(Juros::novoValor(txtvalor->valor(), juros));
    CmdIncluir->setFocus();
}

// ---- save

// Deliberate: the search goes on from the row that the finding left, and nothing is said, neither
// of a cheque stored nor of one that is gone.
void FrmRenegociar::CmdIncluir_Click() {
    if (txtlancamento->text().isEmpty())
        return;
    ado::Recordset& rs = dbconectar::instance().rsCheques;
    rs.Find("lancamento=" + txtlancamento->text());
    if (!rs.EOF()) {
        const Historico::Operacao operacao(dbconectar::instance().historico,
                                           Historico::kRenegociacao);
        ado::Transaction gravacao(dbconectar::instance().Automacao);
        rs.Edit(visto_);
        rs["bompara "] = Valores::data(txtnovo_vencto->value()); // the shop's name for it: bompara
        rs.Update();
        rs.Requery();
        gravacao.commit();
    }
    limpar();
    txttaxa_juros->setFocus();
}

void FrmRenegociar::CmdSair_Click() { unload(); }

#include "collections/moc_FrmRenegociar.cpp"
