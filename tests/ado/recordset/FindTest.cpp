#include "ado/Shop.h"
#include "support/CpuTimer.h"
#include "support/Versions.h"

namespace {

using ado::Recordset;
using jet::Errc;
using Strings = std::vector<std::string>;

class FindTest : public Shop {
protected:
    FindTest() { addSomeOfEach(); }
};
INSTANTIATE_TEST_SUITE_P(, FindTest, everywhere(), keptName);

TEST_P(FindTest, GoesForwardFromTheCurrentRowItselfIncluded) {
    for (const char* source : {"cheques", "select * from cheques where lancamento>0",
                               "select * from cheques inner join bancos on "
                               "cheques.banco=bancos.codigo order by lancamento"}) {
        Recordset rows;
        rows.Open(source, connection);
        const auto find = [&](const char* criterion) {
            rows.Find(criterion);
            return rows.EOF() ? "EOF" : rows["lancamento"].text();
        };
        EXPECT_EQ(find("numero='000123'"), "1") << source;
        EXPECT_EQ(find("numero='000123'"), "1");
        rows.MoveNext();
        EXPECT_EQ(find("numero='000123'"), "3");
        rows.MoveNext();
        EXPECT_EQ(find("numero='000123'"), "EOF");
        EXPECT_EQ(find("numero='000123'"), "EOF"); // from the end there is nothing more
        rows.MoveFirst();
        EXPECT_EQ(find("lancamento=5"), "5");
        EXPECT_EQ(find("lancamento=4"), "EOF");
        rows.MoveFirst();
        EXPECT_EQ(find("lancamento =2"), "2");
        EXPECT_EQ(find("Lancamento= 5"), "5");
        rows.MoveFirst();
        rows.MovePrevious();
        EXPECT_EQ(find("cliente=1"), "1"); // from before the first: from the first
        EXPECT_EQ(find("cliente=2 and descontar=true"), "5");
        EXPECT_EQ(find("valor>10"), "6");
    }
}

TEST_P(FindTest, FindsByTextWithoutRegardToCase) {
    Recordset rows;
    rows.Open("select * from cliente_fornecedor where tipo=true", connection);
    rows.Find("nome='joão'");
    EXPECT_EQ(rows["CODIGO"].integer(), 2);
    rows.MoveFirst();
    rows.Find("mid$(nome,1,5)='joão '");
    EXPECT_EQ(rows["codigo"].integer(), 3);
    rows.MoveFirst();
    rows.Find("codigo=4"); // a supplier: in the table, but not in this set
    EXPECT_TRUE(rows.EOF());
}

TEST_P(FindTest, TheFirstInTheSetsOrderIsFound) {
    Recordset rows;
    rows.Open("cheques", connection);
    rows.setSort("bompara desc");
    rows.Find("cliente=1");
    EXPECT_EQ(rows["lancamento"].integer(), 3);
    rows.MoveNext();
    rows.Find("cliente=1");
    EXPECT_EQ(rows["lancamento"].integer(), 1);
}

TEST_P(FindTest, WorksInATableWithoutKeyAndWithAKeyOfTwoColumns) {
    if (onServer())
        GTEST_SKIP() << "keys have no direction there, and a table without one no order";
    jet::TableSpec plain{"avulsos", {{"n", jet::ColumnType::longInteger}}, {}};
    jet::TableSpec paired{
        "pares",
        {{"a", jet::ColumnType::longInteger}, {"b", jet::ColumnType::text, 10}},
        {{"PrimaryKey", {{"a"}, {"b", false}}, true}                                  }
    };
    makeTable(plain);
    makeTable(paired);
    for (const std::int64_t n : {3, 1, 2, 1})
        add("avulsos", {
                           {"n", n}
        });
    for (const std::int64_t n : {2, 1})
        for (const char* b : {"x", "y", "z"})
            add("pares", {
                             {"a", n             },
                             {"b", std::string(b)}
            });
    EXPECT_EQ(column("avulsos", "n"), (Strings{"3", "1", "2", "1"}));
    EXPECT_EQ(column("pares", "b"), (Strings{"z", "y", "x", "z", "y", "x"}));
    Recordset rows;
    rows.Open("avulsos", connection);
    rows.Find("n=1");
    rows.MoveNext();
    EXPECT_EQ(rows["n"].integer(), 2);
    rows.Find("n=1");
    rows.MoveNext();
    EXPECT_TRUE(rows.EOF());
    rows.Close();
    rows.Open("pares", connection);
    rows.Find("b='y'");
    EXPECT_EQ(rows["a"].integer(), 1);
    rows.MoveNext();
    rows.Find("b='y'");
    EXPECT_EQ(rows["a"].integer(), 2);
    rows.MoveNext();
    rows.Find("b='y'");
    EXPECT_TRUE(rows.EOF());
}

TEST_P(FindTest, AWrongCriterionFailsAndMovesNothing) {
    Recordset rows;
    rows.Open("bancos", connection);
    rows.MoveNext();
    for (const char* criterion :
         {"", "codigo=", "codigo=1 order by nome", "nome='D'Avila'", "1=1) or (1=1",
          "codigo=1; select 1", "select codigo from bancos"}) {
        EXPECT_EQ(errorOf([&] { rows.Find(criterion); }), Errc::syntax) << criterion;
    }
    EXPECT_EQ(errorOf([&] { rows.Find("banco='x'"); }), Errc::notFound);
    EXPECT_EQ(rows["codigo"].integer(), 2);
    Recordset computed;
    computed.Open("select codigo+0 as c from bancos", connection);
    EXPECT_EQ(errorOf([&] { computed.Find("c=1"); }), Errc::misuse);
}

TEST_P(FindTest, ContinuesAfterADeletedRow) {
    for (const char* source : {"cheques", "select * from cheques where lancamento<9"}) {
        Recordset rows;
        rows.Open(source, connection);
        rows.Find("lancamento=1 or lancamento=3");
        rows.Delete();
        rows.Find("cliente=1");
        const auto found = rows["lancamento"].integer();
        EXPECT_TRUE(found == 3 || found == 6) << found;
    }
}

TEST_P(FindTest, InALargeTableAnIndexFindsAtOnce) {
    if (onServer())
        GTEST_SKIP() << "what is measured is our own work, and there it is the server's";
    connection.BeginTrans();
    for (std::int64_t i = 1; i <= 20000; ++i)
        add("cheques", {
                           {"cliente", i % 500 + 10     },
                           {"numero",  std::to_string(i)}
        });
    connection.CommitTrans();
    Recordset whole;
    whole.Open("cheques", connection);
    Recordset sorted;
    sorted.Open("cheques", connection);
    sorted.setSort("numero");
    CpuTimer timer;
    for (; !whole.EOF(); whole.MoveNext())
        EXPECT_GT(whole["lancamento"].integer(), 0);
    const double reading = timer.milliseconds();
    timer.restart();
    constexpr int kSearches = 200;
    for (std::int64_t i = 0; i < kSearches; ++i) {
        const std::int64_t key = 19000 - i * 50;
        for (Recordset* rows : {&whole, &sorted}) {
            rows->MoveFirst();
            rows->Find("lancamento=" + std::to_string(key));
            ASSERT_FALSE(rows->EOF());
            EXPECT_EQ((*rows)["lancamento"].integer(), key);
        }
    }
    EXPECT_LT(timer.milliseconds(), 4 * reading)
        << "of which each would be one or half of one without an index";
    whole.MoveFirst();
    whole.Find("numero='19999'");
    EXPECT_EQ(whole["lancamento"].integer(), 19999 + 6);
}

TEST_P(FindTest, AFieldMayGoByAnotherNameAsWell) {
    Recordset rows;
    rows.Open("bancos", connection);
    EXPECT_EQ(errorOf([&] { rows.Find("banco='Banco do Sul'"); }), Errc::notFound);
    rows.addAlias("Banco", "nome");
    for (const char* sort : {"", "nome", "banco"}) {
        rows.setSort(sort);
        rows.Find("banco='BANCO DO SUL'");
        EXPECT_EQ(rows["codigo"].integer(), 2) << sort;
        EXPECT_EQ(rows["banco"].text(), "Banco do Sul");
        EXPECT_EQ(rows["bancos.banco "].text(), "Banco do Sul");
        EXPECT_EQ(rows["nome"].text(), "Banco do Sul");
    }
    EXPECT_EQ(column(rows, "codigo"), (Strings{"3", "1", "2"})) << "sorted by the other name";
    rows.setFilter("bancos.banco='Agrário'");
    EXPECT_EQ(column(rows, "codigo"), Strings{"3"});
    EXPECT_EQ(rows.FieldCount(), 3U);
    EXPECT_EQ(errorOf([&] { rows.addAlias("x", "fantasia"); }), Errc::notFound);
}

TEST_P(FindTest, AFieldThatHasTheNameKeepsIt) {
    Recordset rows;
    rows.Open("cheques", connection);
    rows.addAlias("BANCO", "numero");
    rows.Find("banco=2");
    EXPECT_EQ(rows["lancamento"].integer(), 2);
    EXPECT_EQ(rows["banco"].integer(), 2);
}

} // namespace
