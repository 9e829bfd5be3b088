#include "collections/ListaDeCheques.h"

#include "shell/Mirtal.h"
#include "shell/Valores.h"

#include <QDate>
#include <QRegularExpression>

namespace ListaDeCheques {

namespace {

struct Tabela {
    const char* nome;
    const char* ordem;
    const char* data; ///< the date that cheques are chosen by
};

constexpr Tabela kRecebidos{"cheques", " order by cliente_fornecedor.nome,cheques.bompara ",
                            "bompara"};
constexpr Tabela kSemFundos{"semfundos", " order by cliente_fornecedor.nome,semfundos.data ",
                            "data"};

const Tabela& tabela(const QString& modo) {
    return modo == "localizarSF" ? kSemFundos : kRecebidos;
}

} // namespace

QString comando(const QString& modo, const QString& onde) {
    return Mirtal::comClienteEBanco(tabela(modo).nome) + onde + tabela(modo).ordem;
}

QString comandoDoCliente(const QString& modo, const QString& lancamento) {
    return QString("select cliente from %1 where lancamento=%2").arg(tabela(modo).nome, lancamento);
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
