#include "agenda/Apresentacao.h"

#include "agenda/DiasUteis.h"

namespace Apresentacao {

namespace {

constexpr int kMesmaPraca = 30;
constexpr int kOutraPraca = 60;

bool ultimoDiaUtilAte(const QDate& prazo, const QDate& hoje) {
    return hoje <= prazo && DiasUteis::aPartirDe(hoje.addDays(1)) > prazo;
}

} // namespace

Prazos prazos(const QDate& emissao) {
    return {emissao.addDays(kMesmaPraca), emissao.addDays(kOutraPraca)};
}

Aviso aviso(const QDate& emissao, const QDate& vencimento, const QDate& hoje) {
    if (vencimento.isValid() && hoje < vencimento)
        return Aviso::cedo;
    if (!emissao.isValid())
        return Aviso::nenhum;
    const auto [mesmaPraca, outraPraca] = prazos(emissao);
    if (hoje > outraPraca)
        return Aviso::passouDosDois;
    if (ultimoDiaUtilAte(outraPraca, hoje))
        return Aviso::ultimoDiaDeOutra;
    if (hoje > mesmaPraca)
        return Aviso::passouDaMesmaPraca;
    return ultimoDiaUtilAte(mesmaPraca, hoje) ? Aviso::ultimoDia : Aviso::nenhum;
}

QString texto(Aviso aviso) {
    switch (aviso) {
    case Aviso::cedo:
        return "◷ Cedo demais";
    case Aviso::ultimoDia:
        return "⚠ Último dia (30)";
    case Aviso::passouDaMesmaPraca:
        return "! Mais de 30 dias";
    case Aviso::ultimoDiaDeOutra:
        return "⚠ Último dia (60)";
    case Aviso::passouDosDois:
        return "! Mais de 60 dias";
    case Aviso::nenhum:
        break;
    }
    return "";
}

} // namespace Apresentacao
