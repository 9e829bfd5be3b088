#include "agenda/Apresentacao.h"

#include <gtest/gtest.h>

namespace {

using Apresentacao::Aviso;

TEST(Presentation, HasATermOfThirtyDaysAndOneOfSixtyAfterTheIssue) {
    const auto [mesmaPraca, outraPraca] = Apresentacao::prazos({2026, 10, 1});
    EXPECT_EQ(mesmaPraca, QDate(2026, 10, 31));
    EXPECT_EQ(outraPraca, QDate(2026, 11, 30));
    EXPECT_FALSE(Apresentacao::prazos({}).mesmaPraca.isValid());
    EXPECT_FALSE(Apresentacao::prazos({}).outraPraca.isValid());
}

// Issued on 2026-10-23, a Friday: the terms end on Sunday, November 22nd, and Tuesday, December
// 22nd. November 20th is a holiday.
TEST(Presentation, IsWarnedOfByTheDay) {
    const QDate emissao(2026, 10, 23);
    const struct {
        QDate hoje;
        Aviso aviso;
    } kDias[] = {
        {{2026, 10, 23}, Aviso::nenhum            },
        {{2026, 11, 18}, Aviso::nenhum            },
        {{2026, 11, 19}, Aviso::ultimoDia         },
        {{2026, 11, 20}, Aviso::ultimoDia         }, // too late for the banks, not for the law
        {{2026, 11, 22}, Aviso::ultimoDia         },
        {{2026, 11, 23}, Aviso::passouDaMesmaPraca},
        {{2026, 12, 21}, Aviso::passouDaMesmaPraca},
        {{2026, 12, 22}, Aviso::ultimoDiaDeOutra  },
        {{2026, 12, 23}, Aviso::passouDosDois     },
    };
    for (const auto& [hoje, aviso] : kDias)
        EXPECT_EQ(Apresentacao::aviso(emissao, emissao, hoje), aviso)
            << hoje.toString().toStdString();
}

TEST(Presentation, IsTooEarlyBeforeTheDueDateWhateverTheTerms) {
    const QDate vencimento(2026, 12, 1);
    EXPECT_EQ(Apresentacao::aviso({2026, 1, 1}, vencimento, {2026, 11, 30}), Aviso::cedo);
    EXPECT_EQ(Apresentacao::aviso({}, vencimento, {2026, 11, 30}), Aviso::cedo);
    EXPECT_EQ(Apresentacao::aviso({}, vencimento, vencimento), Aviso::nenhum);
    EXPECT_EQ(Apresentacao::aviso({2026, 11, 1}, {}, {2026, 11, 10}), Aviso::nenhum);
    EXPECT_EQ(Apresentacao::aviso({}, {}, {2026, 11, 10}), Aviso::nenhum);
}

TEST(Presentation, IsToldInWordsNotBySignsAlone) {
    EXPECT_EQ(Apresentacao::texto(Aviso::nenhum), "");
    for (const Aviso aviso : {Aviso::cedo, Aviso::ultimoDia, Aviso::passouDaMesmaPraca,
                              Aviso::ultimoDiaDeOutra, Aviso::passouDosDois})
        EXPECT_GE(Apresentacao::texto(aviso).count(' '), 2);
}

} // namespace
