#include "collections/ListaDeCheques.h"

#include "shell/Valores.h"

#include <QDate>
#include <QRegularExpression>

namespace ListaDeCheques {

namespace {

struct Tabela {
    const char* selecao;
    const char* ordem;
    const char* data; ///< the date that cheques are chosen by
};

constexpr Tabela kRecebidos{
    "Select * from (cheques inner join cliente_fornecedor on "
    "cheques.cliente=cliente_fornecedor.codigo) inner join bancos on cheques.banco=bancos.codigo ",
    " order by cliente_fornecedor.nome,cheques.bompara ", "bompara"};
constexpr Tabela kSemFundos{"Select * from (semfundos inner join cliente_fornecedor on "
                            "semfundos.cliente=cliente_fornecedor.codigo) inner join bancos on "
                            "semfundos.banco=bancos.codigo ",
                            " order by cliente_fornecedor.nome,semfundos.data ", "data"};

const Tabela& tabela(const QString& modo) {
    return modo == "localizarSF" ? kSemFundos : kRecebidos;
}

} // namespace

QString comando(const QString& modo, const QString& onde) {
    return tabela(modo).selecao + onde + tabela(modo).ordem;
}

QString ondeDescontar(bool descontar) {
    return descontar ? " where descontar=true " : " where descontar=false ";
}

QString ondeBanco(std::int64_t codigo) { return " where banco=" + QString::number(codigo); }

QString ondeCliente(std::int64_t codigo) { return " where cliente=" + QString::number(codigo); }

QString ondeDatas(const QString& modo, const QDate& inicio, const QDate& fim) {
    return QString(" where ") + tabela(modo).data + " between " + Valores::literal(inicio) +
           " and " + Valores::literal(fim);
}

Amount somaAoMarcar(const QString& valor) {
    static const QRegularExpression kNumero(R"(^(-?)([0-9]*)\.?([0-9]*))");
    const auto lido = kNumero.match(valor);
    const QString decimais = lido.captured(3).leftJustified(kMoneyDecimals, '0', true);
    const std::int64_t soma = (lido.captured(2) + decimais).toLongLong();
    return {lido.captured(1).isEmpty() ? soma : -soma};
}

Amount somaAoDesmarcar(const QString& valor) { return parseMoney(valor).value().amount; }

} // namespace ListaDeCheques
