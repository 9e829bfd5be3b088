#include "agenda/FiltroDaAgenda.h"

#include "controls/box/DatePicker.h"
#include "controls/box/DropDownList.h"

#include <algorithm>

namespace {

using Vencimentos::Periodo;

constexpr const char* kPeriodos[] = {"Hoje",      "Amanhã",   "Semana (7 dias)", "Mês (30 dias)",
                                     "Atrasados", "De - até", "Sem vencimento"};

struct Destino {
    const char* nome;
    std::optional<bool> descontar;
};
constexpr Destino kDestinos[] = {
    {"Todos",              std::nullopt},
    {"Descontar no banco", true        },
    {"Trocar na loja",     false       }
};

} // namespace

void FiltroDaAgenda::encher() {
    for (const char* nome : kPeriodos)
        campos_.periodo->addItem(nome);
    for (const Destino& destino : kDestinos)
        campos_.destino->addItem(destino.nome);
    completar();
}

void FiltroDaAgenda::escolher(const Vencimentos::Dias& dias) {
    const QDate hoje = QDate::currentDate();
    int qual = 0;
    while (qual < static_cast<int>(Periodo::deAte) &&
           !(Vencimentos::dias(static_cast<Periodo>(qual), hoje) == dias))
        ++qual;
    campos_.periodo->setListIndex(qual);
    if (qual != static_cast<int>(Periodo::deAte))
        return;
    campos_.inicio->setValue(dias.primeiro);
    campos_.fim->setValue(dias.ultimo);
}

void FiltroDaAgenda::trocarPeriodo() {
    if (const int escolhido = campos_.periodo->listIndex(); escolhido >= 0)
        periodo_ = static_cast<Periodo>(escolhido);
    for (auto* dia : {campos_.inicio, campos_.fim})
        dia->setEnabled(periodo_ == Periodo::deAte);
}

void FiltroDaAgenda::completar() {
    campos_.periodo->setListIndex(static_cast<int>(periodo_));
    campos_.destino->setListIndex(std::max(0, campos_.destino->listIndex()));
}

void FiltroDaAgenda::mostrarDias(const Vencimentos::Dias& dias,
                                 const std::vector<Vencimentos::Cheque>& achados) {
    if (periodo_ == Periodo::deAte || periodo_ == Periodo::semVencimento)
        return;
    const QDate primeiro = achados.empty() ? dias.ultimo : achados.front().vencimento;
    campos_.inicio->setValue(dias.primeiro.isValid() ? dias.primeiro : primeiro);
    campos_.fim->setValue(dias.ultimo);
}

Vencimentos::Procura FiltroDaAgenda::procura() const {
    const Vencimentos::Dias digitados{campos_.inicio->value(), campos_.fim->value()};
    const int destino = std::max(0, campos_.destino->listIndex());
    return {.dias = periodo_ == Periodo::deAte ? digitados
                                               : Vencimentos::dias(periodo_, QDate::currentDate()),
            .cliente = campos_.cliente->chosenData(),
            .banco = campos_.banco->chosenData(),
            .descontar = kDestinos[destino].descontar};
}

QString FiltroDaAgenda::emPalavras(const Vencimentos::Procura& procurado) const {
    const auto& [primeiro, ultimo] = procurado.dias;
    QStringList partes{primeiro.isValid()
                           ? "Vencem de " + formatDate(primeiro) + " a " + formatDate(ultimo)
                       : ultimo.isValid() ? "Vencidos até " + formatDate(ultimo)
                                          : QString("Sem vencimento")};
    if (procurado.cliente)
        partes += campos_.cliente->text();
    if (procurado.banco)
        partes += campos_.banco->text();
    if (procurado.descontar)
        partes += campos_.destino->text();
    return partes.join("; ");
}
