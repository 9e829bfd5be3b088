#include "reports/FonteDeCheques.h"

#include "controls/look/BusyCursor.h"
#include "reports/LayoutDoRelatorio.h"
#include "shell/Valores.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

namespace {

ReportValue impresso(const ado::FieldValue& campo, bool dinheiro) {
    const jet::Value valor = campo.value();
    if (jet::isNull(valor))
        return {};
    if (dinheiro)
        return Valores::valor(campo);
    if (std::holds_alternative<jet::Date>(valor))
        return Valores::dia(campo);
    return Valores::texto(campo);
}

constexpr qint64 kLinhasPorParte = 64;

} // namespace

FonteDeCheques::FonteDeCheques(const Relatorios::Escolha& escolha, ado::Connection& conexao)
    : conexao_(conexao), valor_(static_cast<std::size_t>(
                             LayoutDoRelatorio::colunas().indexOf(LayoutDoRelatorio::kValor))) {
    ado::Store& dados = conexao.store();
    dados.onSnapshot([] {}); // so that what others have saved by now is no change
    estado_ = dados.generation();
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
    if (proxima_ == parte_.size()) {
        if (!fim_ && !ler())
            return NextRow::anew;
        if (parte_.size() == proxima_)
            return NextRow::none;
    }
    const qint64 aberta = proxima_ % kLinhasPorParte;
    if (aberta == 0) {
        abertas_.clear();
        parte_.visit(proxima_, std::min(proxima_ + kLinhasPorParte, parte_.size()),
                     [this](qint64, const std::vector<ReportValue>& linha) {
                         abertas_.push_back(linha);
                         return true;
                     });
    }
    values = std::move(abertas_[static_cast<std::size_t>(aberta)]);
    ++proxima_;
    return NextRow::row;
}

/// The next part; false if it is the first one of rows that begin anew.
bool FonteDeCheques::ler() {
    ado::Store& dados = conexao_.store();
    bool continua = true;
    // Twice if we had something to save ourselves: then nobody was kept from it meanwhile.
    do {
        dados.onSnapshot([&] {
            if (dados.generation() != estado_ || !inteira_) {
                continua = false;
                recomecar();
            }
            lerParte();
        });
    } while (dados.generation() != estado_);
    return continua;
}

void FonteDeCheques::recomecar() {
    ++vezes_;
    primeira_ = inteira_ = true;
    fim_ = false;
    estado_ = conexao_.store().generation();
    rs_.Requery();
}

void FonteDeCheques::lerParte() {
    const bool tudo = vezes_ > kVezes;
    const qint64 maximo = tudo ? std::numeric_limits<qint64>::max() : kLinhasPorParte;
    std::optional<BusyCursor> ocupado;
    if (tudo)
        ocupado.emplace();
    inteira_ = false;
    proxima_ = 0;
    parte_.clear(columns().size());
    std::vector<ReportValue> linha(campos_.size());
    while (!fim_ && parte_.size() < maximo) {
        if (!std::exchange(primeira_, false))
            rs_.MoveNext();
        fim_ = rs_.EOF();
        if (fim_)
            break;
        lerLinha(linha);
        parte_.add(linha);
    }
    inteira_ = true;
}

void FonteDeCheques::lerLinha(std::vector<ReportValue>& linha) const {
    for (std::size_t i = 0; i < campos_.size(); ++i)
        if (campos_[i])
            linha[i] = impresso(*campos_[i], i == valor_);
}
