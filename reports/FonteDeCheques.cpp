#include "reports/FonteDeCheques.h"

#include "reports/LayoutDoRelatorio.h"
#include "shell/Valores.h"

namespace {

ReportValue impresso(const ado::FieldValue& campo) {
    const jet::Value valor = campo.value();
    if (jet::isNull(valor))
        return {};
    if (std::holds_alternative<jet::Currency>(valor))
        return Valores::valor(campo);
    if (std::holds_alternative<jet::Date>(valor))
        return Valores::dia(campo);
    return Valores::texto(campo);
}

} // namespace

FonteDeCheques::FonteDeCheques(const Relatorios::Escolha& escolha, ado::Connection& conexao) {
    rs_.Open(Relatorios::instrucao(escolha), conexao, ado::CursorType::ForwardOnly,
             ado::LockType::ReadOnly);
    const ado::Recordset& rs = rs_;
    for (const QString& coluna : columns())
        if (coluna == LayoutDoRelatorio::kVencimento && !Relatorios::temVencimento(escolha.modo))
            campos_.emplace_back();
        else
            campos_.emplace_back(rs[coluna.toStdString()]);
}

QStringList FonteDeCheques::columns() const { return LayoutDoRelatorio::colunas(); }

NextRow FonteDeCheques::next(std::vector<ReportValue>& values) {
    if (rs_.State() == ado::State::Closed)
        return NextRow::none;
    if (!std::exchange(primeira_, false))
        rs_.MoveNext();
    if (rs_.EOF())
        return NextRow::none;
    for (std::size_t i = 0; i < campos_.size(); ++i)
        if (campos_[i])
            values[i] = impresso(*campos_[i]);
    return NextRow::row;
}
