#include "agenda/FrmBordero.h"

#include "agenda/Impressos.h"
#include "agenda/JanelaDeImpressao.h"
#include "controls/look/Style.h"
#include "controls/window/MessageBox.h"
#include "controls/window/WindowList.h"
#include "shell/Mirtal.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <vector>

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

std::size_t FrmBordero::preparar(std::span<const std::int64_t> lancamentos) {
    cheques_ = Vencimentos::reler(lancamentos);
    const std::size_t sumidos = lancamentos.size() - cheques_.size();
    const std::size_t aVencer = std::erase_if(cheques_, [hoje = QDate::currentDate()](auto& c) {
        return !c.vencimento.isValid() || c.vencimento > hoje;
    });
    soma_ = {};
    for (const Vencimentos::Cheque& cheque : cheques_)
        soma_.mais(cheque.valor);
    lblsoma->setText(Vencimentos::texto(soma_));

    QStringList fora;
    if (sumidos > 0)
        fora += QString("Não estão mais cadastrados, por terem sido baixados ou excluídos: %1.")
                    .arg(sumidos);
    if (aVencer > 0)
        fora +=
            QString("Ainda não venceram, e o banco não deve recebê-los antes: %1.").arg(aVencer);
    if (!fora.isEmpty())
        showMessage("Dos cheques marcados, ficam fora do borderô:\n\n" + fora.join('\n'), "Borderô",
                    MessageIcon::exclamation);
    return sumidos;
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
