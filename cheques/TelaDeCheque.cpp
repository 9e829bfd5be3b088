#include "cheques/TelaDeCheque.h"

#include "ado/Recordset.h"
#include "controls/DatePicker.h"
#include "controls/DropDownList.h"
#include "controls/MessageBox.h"
#include "controls/MoneyEdit.h"
#include "shell/Mirtal.h"
#include "shell/Valores.h"

#include <algorithm>

namespace TelaDeCheque {

void limitar(const ado::Recordset& rs, const Textos& textos) {
    for (const auto& [campo, caixa] : textos) {
        if (const auto tamanho = rs[campo].DefinedSize())
            caixa->setMaxLength(static_cast<int>(*tamanho));
    }
}

void mostrar(QLineEdit& caixa, const ado::FieldValue& campo) {
    const QString texto = Valores::texto(campo);
    caixa.setMaxLength(std::max(caixa.maxLength(), static_cast<int>(texto.size())));
    caixa.setText(texto);
    caixa.setCursorPosition(0);
}

void mostrar(DatePicker& data, const ado::FieldValue& campo) {
    data.setValue(campo.isNull() ? QDate::currentDate() : Valores::dia(campo));
}

std::int64_t codigo(const DropDownList& escolhido) {
    return escolhido.itemData(escolhido.listIndex());
}

void escolher(DropDownList& lista, ado::Recordset& rs, std::int64_t codigo) {
    lista.setListIndex(-1);
    if (!Mirtal::localizar(rs, "CODIGO=" + QString::number(codigo)))
        return;
    for (int i = 0; i < lista.count(); ++i) {
        if (lista.itemData(i) == codigo)
            return lista.setListIndex(i);
    }
    lista.addItem(Valores::texto(rs["nome"]), codigo);
    lista.setListIndex(lista.count() - 1);
}

std::optional<Impedimento> falta(const Exigidos& exigidos) {
    const auto& [cliente, banco, numero, valor] = exigidos;
    const struct {
        bool falta;
        Impedimento impedimento;
    } regras[] = {
        {cliente->listIndex() < 0,   {cliente, "É necessário preencher o nome do cliente."} },
        {banco->listIndex() < 0,     {banco, "É necessário preencher o nome do banco."}     },
        {numero->text().isEmpty(),   {numero, "É necessário preencher O número do cheque."}},
        {valor->valor() == Amount{}, {valor, "É necessário preencher o Valor do Cheque."}   },
    };
    for (const auto& [falta, impedimento] : regras) {
        if (falta)
            return impedimento;
    }
    return std::nullopt;
}

std::optional<Impedimento> naoCabe(const ado::Recordset& rs, const Textos& textos,
                                   MoneyEdit* valor) {
    for (const auto& [campo, caixa] : textos) {
        if (const auto motivo = rs[campo].refusal(caixa->text()))
            return Impedimento{caixa, QString::fromStdString(*motivo)};
    }
    if (const auto motivo = rs["valor"].refusal(Valores::moeda(valor->valor())))
        return Impedimento{valor, QString::fromStdString(*motivo)};
    return std::nullopt;
}

bool confirmarExclusao(const ado::Recordset& rs) {
    if (rs.RecordCount() == 0) {
        showMessage("Não existe registros para excluir !", "Mensagem", MessageIcon::exclamation);
        return false;
    }
    return showMessage("Deseja realmente excluir este registro ?", "Exclusão",
                       MessageIcon::critical, MessageButtons::yesNo) == MessageAnswer::yes;
}

} // namespace TelaDeCheque
