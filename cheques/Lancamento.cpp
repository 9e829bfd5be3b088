#include "cheques/Lancamento.h"

#include "controls/window/MessageBox.h"
#include "shell/Mirtal.h"
#include "shell/dbconectar.h"

#include <QString>

#include <utility>

namespace Lancamento {

namespace {

bool naoMostrado(const QString& motivo) {
    showMessage(motivo, "Mensagem", MessageIcon::exclamation);
    return false;
}

bool irAte(const QString& criterio) {
    dbconectar& dados = dbconectar::instance();
    ado::Recordset cheque;
    cheque.Open("select lancamento from cheques where " + criterio, dados.Automacao);
    if (cheque.EOF())
        return false;
    if (Mirtal::localizar(dados.rsCheques, criterio))
        return true;
    dados.rsCheques.clearFilter();
    return Mirtal::localizar(dados.rsCheques, criterio);
}

} // namespace

bool cabe(qint32 lancamento) {
    return std::in_range<std::int16_t>(lancamento) ||
           naoMostrado("O lançamento " + QString::number(lancamento) +
                       " não pode ser mostrado na entrada de cheques, que só mostra "
                       "lançamentos até 32767.");
}

bool ir(qint32 lancamento) {
    const QString numero = QString::number(lancamento);
    return cabe(lancamento) &&
           (irAte("Lancamento=" + numero) ||
            naoMostrado("O cheque do lançamento " + numero +
                        " não está mais cadastrado: foi excluído ou baixado depois de listado."));
}

} // namespace Lancamento
