#include "agenda/FrmBordero.h"

#include "agenda/Impressos.h"
#include "agenda/JanelaDeImpressao.h"
#include "controls/look/Style.h"
#include "controls/window/WindowList.h"
#include "shell/Mirtal.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <utility>

FrmBordero::FrmBordero() {
    setupUi(this);
    lblsoma->setFont(headingFont());
    prompts({
        {txtbanco, "Escolha o banco em que os cheques são depositados"},
        {txtconta, "Digite a agência e a conta da loja (opcional)"    },
    });
    enterAsTab({txtbanco, txtconta});
    closesWith(cmdsair);
    on(cmdimprimir, &QPushButton::clicked, &FrmBordero::cmdimprimir_Click);
    on(cmdsair, &QPushButton::clicked, &FrmBordero::cmdsair_Click);
}

FrmBordero& FrmBordero::instance() { return WindowList::instance().one<FrmBordero>(); }

void FrmBordero::preparar(std::vector<Vencimentos::Cheque> cheques) {
    cheques_ = std::move(cheques);
    soma_ = {};
    for (const Vencimentos::Cheque& cheque : cheques_)
        soma_.mais(cheque.valor);
    lblsoma->setText(Vencimentos::texto(soma_));
}

void FrmBordero::Form_Load() {
    centre();
    Mirtal::preencherLista(*txtbanco, dbconectar::instance().rsBancos, "nome", "codigo");
}

// The bank of the deposit is the shop's own: one that isn't registered is written as it is typed.
void FrmBordero::cmdimprimir_Click() {
    const QString banco = txtbanco->text().trimmed();
    if (banco.isEmpty())
        return advertir(txtbanco, "É necessário preencher o banco do depósito.");
    const Impressos::Deposito deposito{.banco = banco,
                                       .conta = txtconta->text().trimmed(),
                                       .momento = QDateTime::currentDateTime(),
                                       .cheques = cheques_};
    dbconectar::instance().historico.anotarBordero(
        Impressos::numero(deposito), Valores::moeda(soma_.valor), txtbanco->chosenData());
    unload();
    JanelaDeImpressao::instance().mostrar(Impressos::bordero(deposito));
}

#include "agenda/moc_FrmBordero.cpp"
