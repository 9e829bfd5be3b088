#include "collections/ListaDeCheques.h"

#include "support/QtPrinters.h"

#include <QDate>

#include <gtest/gtest.h>

namespace {

using namespace ListaDeCheques;

const QDate kPrimeiro(2024, 2, 1);
const QDate kUltimo(2024, 12, 31);

TEST(ListStatements, AskForReceivedChequesByClientAndDueDate) {
    for (const char* mode : {"Baixar", "localizarCH", ""})
        EXPECT_EQ(comando(mode, ondeDescontar(true)),
                  "Select * from (cheques inner join cliente_fornecedor on "
                  "cheques.cliente=cliente_fornecedor.codigo) inner join bancos on "
                  "cheques.banco=bancos.codigo  where descontar=true  order by "
                  "cliente_fornecedor.nome,cheques.bompara ");
}

TEST(ListStatements, AskForBouncedChequesByClientAndIssueDate) {
    EXPECT_EQ(comando("localizarSF", ondeCliente(7)),
              "Select * from (semfundos inner join cliente_fornecedor on "
              "semfundos.cliente=cliente_fornecedor.codigo) inner join bancos on "
              "semfundos.banco=bancos.codigo  where cliente=7 order by "
              "cliente_fornecedor.nome,semfundos.data ");
}

TEST(ListStatements, JoinTheTextsAsTheyStand) {
    EXPECT_EQ(comando("Baixar", ""), "Select * from (cheques inner join cliente_fornecedor on "
                                     "cheques.cliente=cliente_fornecedor.codigo) inner join bancos "
                                     "on cheques.banco=bancos.codigo  order by "
                                     "cliente_fornecedor.nome,cheques.bompara ");
}

TEST(ListStatements, HaveTheFiltersWhereClauses) {
    EXPECT_EQ(ondeDescontar(true), " where descontar=true ");
    EXPECT_EQ(ondeDescontar(false), " where descontar=false ");
    EXPECT_EQ(ondeBanco(12), " where banco=12");
    EXPECT_EQ(ondeCliente(-3), " where cliente=-3");
}

TEST(ListStatements, WriteDatesMonthFirst) {
    for (const char* mode : {"Baixar", "localizarCH"})
        EXPECT_EQ(ondeDatas(mode, kPrimeiro, kUltimo),
                  " where bompara between #02/01/2024# and #12/31/2024#");
    EXPECT_EQ(ondeDatas("localizarSF", kPrimeiro, kUltimo),
              " where data between #02/01/2024# and #12/31/2024#");
    EXPECT_EQ(comando("Baixar", ondeDatas("Baixar", kPrimeiro, kPrimeiro)),
              "Select * from (cheques inner join cliente_fornecedor on "
              "cheques.cliente=cliente_fornecedor.codigo) inner join bancos on "
              "cheques.banco=bancos.codigo  where bompara between #02/01/2024# and #02/01/2024# "
              "order by cliente_fornecedor.nome,cheques.bompara ");
}

// Ticking and unticking read the value in two ways, and that stays so.
TEST(ListTotals, TickingStopsAtTheComma) {
    const struct {
        const char* shown;
        std::int64_t ticked;
        std::int64_t unticked;
    } values[] = {
        {"0,00",               0,         0                    },
        {"999,00",             9'990'000, 9'990'000            },
        {"150,50",             1'500'000, 1'505'000            },
        {"1.000,00",           10'000,    10'000'000           },
        {"1.234,56",           12'340,    12'345'600           },
        {"-1.234,56",          -12'340,   -12'345'600          },
        {"-0,50",              0,         -5'000               },
        {"12.345.678,90",      123'450,   123456789'000        },
        {"922.337.203.685,00", 9'223'370, 9'223'372'036'850'000},
    };
    for (const auto& [shown, ticked, unticked] : values) {
        EXPECT_EQ(somaAoMarcar(shown).tenThousandths, ticked) << shown;
        EXPECT_EQ(somaAoDesmarcar(shown).tenThousandths, unticked) << shown;
    }
}

} // namespace
