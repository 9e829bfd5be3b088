#include "cheques/TelaDeCheque.h"

#include "ado/Recordset.h"
#include "controls/window/MessageBox.h"

namespace TelaDeCheque {

std::optional<Campos::Recusa> falta(const Exigidos& exigidos) {
    const auto& [cliente, banco, numero, valor] = exigidos;
    const struct {
        bool falta;
        Campos::Recusa recusa;
    } regras[] = {
        {cliente->listIndex() < 0,   {cliente, "É necessário preencher o nome do cliente."} },
        {banco->listIndex() < 0,     {banco, "É necessário preencher o nome do banco."}     },
        {numero->text().isEmpty(),   {numero, "É necessário preencher O número do cheque."}},
        {valor->valor() == Amount{}, {valor, "É necessário preencher o Valor do Cheque."}   },
    };
    for (const auto& [falta, recusa] : regras) {
        if (falta)
            return recusa;
    }
    return std::nullopt;
}

bool confirmarExclusao(const ado::Recordset& rs) {
    if (rs.isEmpty()) {
        showMessage("Não existe registros para excluir !", "Mensagem", MessageIcon::exclamation);
        return false;
    }
    return showMessage("Deseja realmente excluir este registro ?", "Exclusão",
                       MessageIcon::critical, MessageButtons::yesNo) == MessageAnswer::yes;
}

} // namespace TelaDeCheque
