#include "cheques/Cmc7.h"

#include <algorithm>

namespace {

constexpr qsizetype kDigitos = 30;

/// Of digits: doubles every other one from the right; those of a product are added.
int modulo10(QStringView digitos) {
    int soma = 0;
    int peso = 2;
    for (auto i = digitos.size(); i-- > 0; peso = 3 - peso) {
        const int produto = digitos[i].digitValue() * peso;
        soma += produto / 10 + produto % 10;
    }
    return (10 - soma % 10) % 10;
}

/// Where each part stands and where the digit that checks it.
struct Parte {
    qsizetype inicio;
    qsizetype tamanho;
    qsizetype digito;
};
constexpr Parte kPartes[] = {
    {0,  7,  18},
    {8,  10, 7 },
    {19, 10, 29},
};

} // namespace

namespace Cmc7 {

std::optional<ChequeLido> ler(const QString& digitos) {
    const auto algarismo = [](QChar c) { return c >= '0' && c <= '9'; };
    if (digitos.size() != kDigitos || !std::ranges::all_of(digitos, algarismo))
        return std::nullopt;
    for (const auto& [inicio, tamanho, digito] : kPartes)
        if (modulo10(QStringView(digitos).mid(inicio, tamanho)) != digitos[digito].digitValue())
            return std::nullopt;
    return ChequeLido{.banco = digitos.mid(0, 3).toInt(),
                      .agencia = digitos.mid(3, 4),
                      .numero = digitos.mid(11, 6)};
}

QString semZeros(const QString& numero) {
    qsizetype zeros = 0;
    while (zeros < numero.size() - 1 && numero[zeros] == '0')
        ++zeros;
    return numero.mid(zeros);
}

} // namespace Cmc7
