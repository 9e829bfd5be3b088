#include "collections/Juros.h"

#include "jet/Error.h"

#include <cmath>

namespace Juros {

namespace {

constexpr double kUnidade = 10'000; ///< of an Amount
constexpr double kLimite = 0x1p63;  ///< the first that is too large for one

jet::Error grandeDemais() {
    return {jet::Errc::outOfRange, "O valor do cheque com os juros passa do maior valor possível."};
}

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
        throw grandeDemais();
    return {static_cast<std::int64_t>(inteiro)};
}

Amount novoValor(Amount valor, Amount juros) {
    const auto total = sum(valor, juros);
    if (!total)
        throw grandeDemais();
    return *total;
}

} // namespace Juros
