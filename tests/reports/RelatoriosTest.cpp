#include "reports/Relatorios.h"

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

namespace {

using Relatorios::Escolha;

struct Clause {
    int order;
    const char* text;
};
struct Kind {
    const char* mode;
    const char* base;
    std::vector<Clause> clauses;
};
const std::vector<Kind> kKinds = {
    {"relch",
     "Select * from (cheques inner join cliente_fornecedor on "
     "cheques.cliente=cliente_fornecedor.codigo) inner join bancos on cheques.banco=bancos.codigo "
     " where ",                               {{-1, " ORDER BY cliente_fornecedor.nome,bompara"},
      {0, " ORDER BY bancos.nome,bompara"},
      {1, " ORDER BY numero,bompara"},
      {2, " ORDER BY cliente_fornecedor.nome,bompara"},
      {3, " ORDER BY data,bompara"},
      {4, " ORDER BY bompara,cliente_fornecedor.nome"}}                           },
    {"relsf",
     "Select * from (semfundos inner join cliente_fornecedor on "
     "semfundos.cliente=cliente_fornecedor.codigo) inner join bancos on "
     "semfundos.banco=bancos.codigo  where ", {{-1, " ORDER BY cliente_fornecedor.nome,data"},
      {0, " ORDER BY bancos.nome,data"},
      {1, " ORDER BY numero,data"},
      {2, " ORDER BY cliente_fornecedor.nome,data"},
      {3, " ORDER BY data,cliente_fornecedor.nome"}}},
};

struct Condition {
    std::optional<std::int64_t> client;
    std::optional<std::int64_t> bank;
    const char* text;
};
const std::vector<Condition> kConditions = {
    {{}, {}, " data between #02/01/2024# and #12/31/2024#"                          },
    {7,  {}, " cliente=7 and data between #02/01/2024# and #12/31/2024#"            },
    {{}, 3,  " banco=3 and data between #02/01/2024# and #12/31/2024#"              },
    {7,  3,  " cliente=7 And banco=3 and data between #02/01/2024# and #12/31/2024#"},
};

TEST(ReportStatements, AreTheseForEveryChoice) {
    for (const Kind& kind : kKinds)
        for (const Condition& condition : kConditions)
            for (const Clause& clause : kind.clauses)
                EXPECT_EQ(Relatorios::instrucao({
                              .modo = kind.mode,
                              .cliente = condition.client,
                              .banco = condition.bank,
                              .inicio = {2024, 2,  1 },
                              .fim = {2024, 12, 31},
                              .ordem = clause.order
                }),
                          QString(kind.base) + condition.text + clause.text);
}

TEST(ReportStatements, OneDayIsAPeriod) {
    EXPECT_TRUE(
        Relatorios::instrucao({
                                  .modo = "relch", .inicio = {2024, 2, 29},
                                       .fim = {2024, 2, 29}
    })
            .contains(" where  data between #02/29/2024# and #02/29/2024# ORDER"));
}

TEST(ReportStatements, EveryOtherModeStandsForBouncedCheques) {
    const Escolha choice{
        .modo = "relsf", .inicio = {2024, 2, 1},
             .fim = {2024, 2, 2}
    };
    for (const char* mode : {"", "Baixar", "localizarSF"}) {
        Escolha other = choice;
        other.modo = mode;
        EXPECT_EQ(Relatorios::instrucao(other), Relatorios::instrucao(choice)) << mode;
        EXPECT_FALSE(Relatorios::temVencimento(mode));
    }
    EXPECT_TRUE(Relatorios::temVencimento("relch"));
}

// Filter and report don't spell the bounced cheques alike.
TEST(ReportStatements, HaveTheirTitles) {
    EXPECT_EQ(Relatorios::legenda("relch"), "Relatório de Cheques Recebidos");
    EXPECT_EQ(Relatorios::titulo("relch"), "Relatório de Cheques");
    EXPECT_EQ(Relatorios::legenda("relsf"), "Relatório de Cheques sem fundos");
    EXPECT_EQ(Relatorios::titulo("relsf"), "Relatório de Cheques Sem Fundos");
}

} // namespace
