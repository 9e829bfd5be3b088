#include "reports/FrmApagar.h"

#include "controls/look/BusyCursor.h"
#include "controls/window/MessageBox.h"
#include "controls/window/Repainting.h"
#include "controls/window/WindowList.h"
#include "shell/Estrutura.h"
#include "shell/Mirtal.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <chrono>
#include <cstdint>
#include <optional>

using namespace std::chrono_literals;

namespace {

constexpr auto kEntreRepinturas = 10ms;

/// The code of the bank of this name; an apostrophe in it breaks the search, as it does everywhere.
std::optional<std::int64_t> codigoDoBanco(const QString& nome) {
    ado::Recordset& bancos = dbconectar::instance().rsBancos;
    if (!Mirtal::localizar(bancos, "banco='" + nome + "'"))
        return std::nullopt; // nor without any banks: no cheque is taken for its own
    return bancos["codigo"].integer();
}

} // namespace

FrmApagar::FrmApagar() {
    setupUi(this);
    // Deliberate: "incial", as the shop knows it.
    prompts({
        {txtdtinicial, "Informe data incial"             },
        {txtdtfinal,   "Informe data final"              },
        {txtbanco,     "Informe nome do banco (opcional)"}
    });
    enterAsTab({txtdtinicial, txtdtfinal, txtbanco});
    closesWith(cmdsair);
    on(cmdExcluir, &QPushButton::clicked, &FrmApagar::cmdExcluir_Click);
    on(cmdsair, &QPushButton::clicked, &FrmApagar::cmdsair_Click);
}

FrmApagar& FrmApagar::instance() { return WindowList::instance().one<FrmApagar>(); }

void FrmApagar::Form_Load() {
    centre();
    Estrutura::exigir(dbconectar::instance().rsCheques, {"bompara", "banco"});
    Estrutura::exigir(dbconectar::instance().rsBancos, {"codigo", "nome"});
    Mirtal::preencherLista(*txtbanco, dbconectar::instance().rsBancos, "nome", "codigo");
}

void FrmApagar::cmdExcluir_Click() {
    QString comando = "select * from cheques where bompara between " +
                      Valores::literal(txtdtinicial->value()) + " and " +
                      Valores::literal(txtdtfinal->value());
    if (!txtbanco->text().isEmpty()) {
        const auto codigo = codigoDoBanco(txtbanco->text());
        if (!codigo) {
            showMessage("Banco não cadastrado !", "Mensagem", MessageIcon::exclamation);
            return txtbanco->setFocus();
        }
        comando += " and banco=" + QString::number(*codigo);
    }
    Mirtal::excluirMuitos("excluído", Historico::kExpurgo, [&] { excluir(comando); });
    Mirtal::mensagem("");
    showMessage("Operação concluída !", "Mensagem", MessageIcon::information);
    txtdtinicial->setValue(QDate::currentDate());
    txtdtfinal->setValue(QDate::currentDate());
    txtbanco->setText("");
    dbconectar::instance().rsCheques.Requery();
    txtdtinicial->setFocus();
}

void FrmApagar::excluir(const QString& comando) {
    const BusyCursor ocupado;
    Repainting repintura(kEntreRepinturas);
    ado::Recordset rs;
    rs.Open(comando, dbconectar::instance().Automacao);
    for (int contagem = 1; !rs.EOF(); ++contagem) {
        Mirtal::mensagem("Registros excluídos..:" + QString::number(contagem));
        rs.Delete();
        rs.Requery();
        // Deliberate: Requery() stands on the first row, and moving on passes over it each time. So
        // the second cheque stays, and a purge that isn't meant to leave it is run twice.
        if (!rs.EOF())
            rs.MoveNext();
        repintura.repaintIfDue();
    }
}

void FrmApagar::cmdsair_Click() { unload(); }

#include "reports/moc_FrmApagar.cpp"
