#include "agenda/DiasUteis.h"

#include <algorithm>

namespace DiasUteis {

namespace {

struct Feriado {
    int mes;
    int dia;
    int desde = 0; ///< the first year; 0: in all
};

// By law 662/1949 with 10.607/2002, 6.802/1980 and 14.759/2023.
constexpr Feriado kFixos[] = {
    {1,     1 }, // Confraternização Universal
    {4,     21}, // Tiradentes
    {5,     1 }, // Dia do Trabalho
    {9,     7 }, // Independência
    {10,    12, 1980}, // Nossa Senhora Aparecida
    {11,     2     }, // Finados
    {11,     15}, // Proclamação da República
    {11,     20,      2024}, // Zumbi e Consciência Negra
    {12, 25}, // Natal
};

// Days from Easter. No law makes these holidays of the whole country, but the resolution that says
// when banks work does: CMN 4.880/2020, article 5, and 2.932/2002 before it. Ash Wednesday and
// Christmas Eve are working days there, only shorter; so is the last weekday of the year, on which
// banks clear cheques but open to nobody.
constexpr int kPelaPascoa[] = {
    -48, // segunda-feira de Carnaval
    -47, // terça-feira de Carnaval
    -2,  // Sexta-feira da Paixão
    60,  // Corpus Christi
};

/// Easter Sunday of the Gregorian calendar: the Sunday after the first full moon of spring, by the
/// church's tables.
QDate pascoa(int ano) {
    const int lua = ano % 19; // the moon's phases come back to the same days after 19 years
    const int seculo = ano / 100;
    const int bissextosPerdidos = seculo - seculo / 4;
    const int correcaoDaLua = (8 * seculo + 13) / 25;
    int luaCheia = (19 * lua + bissextosPerdidos - correcaoDaLua + 15) % 30; // days after March 21
    luaCheia -= luaCheia == 29 || (luaCheia == 28 && lua > 10) ? 1 : 0;
    const QDate cheia = QDate(ano, 3, 21).addDays(luaCheia);
    return cheia.addDays(7 - cheia.dayOfWeek() % 7);
}

bool feriado(const QDate& dia) {
    const bool fixo = std::ranges::any_of(kFixos, [&](const Feriado& f) {
        return f.mes == dia.month() && f.dia == dia.day() && f.desde <= dia.year();
    });
    if (fixo || dia.month() < 2 || dia.month() > 6) // Easter moves none out of these months
        return fixo;
    const qint64 desdeAPascoa = pascoa(dia.year()).daysTo(dia);
    return std::ranges::find(kPelaPascoa, desdeAPascoa) != std::end(kPelaPascoa);
}

} // namespace

bool ehUtil(const QDate& dia) {
    return dia.isValid() && dia.dayOfWeek() < Qt::Saturday && !feriado(dia);
}

QDate aPartirDe(const QDate& dia) {
    QDate util = dia;
    while (util.isValid() && !ehUtil(util))
        util = util.addDays(1);
    return util;
}

} // namespace DiasUteis
