#include "collections/Juros.h"

#include "shell/Valores.h"

#include <cmath>

namespace Juros {

namespace {

constexpr double kUnidade = 10'000; ///< of an Amount
constexpr double kLimite = 0x1p63;  ///< the first that is too large for one

constexpr char kQue[] = "O valor do cheque com os juros";

} // namespace

float dias(jet::Date vencimento, jet::Date novo) {
    return static_cast<float>(novo.moment() - vencimento.moment());
}

float fator(Amount taxa, float dias) {
    const double porCento = static_cast<double>(taxa.tenThousandths) / kUnidade;
    return static_cast<float>(porCento * static_cast<double>(dias) / 100);
}

// Of whole ten-thousandths, not of reais: there a half is a half, while 0,00005 is no number that a
// double has. Up to 53.687,09 the product of 29 and 24 bits is exact besides.
Amount juros(Amount valor, float fator) {
    const double produto = static_cast<double>(valor.tenThousandths) * static_cast<double>(fator);
    const double inteiro = std::nearbyint(produto); // halves to even
    if (!(std::abs(inteiro) < kLimite))
        Valores::grandeDemais(kQue);
    return {static_cast<std::int64_t>(inteiro)};
}

Amount novoValor(Amount valor, Amount juros) { return Valores::soma(valor, juros, kQue); }

} // namespace Juros
