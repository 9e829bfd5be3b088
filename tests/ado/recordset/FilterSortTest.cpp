#include "ado/Shop.h"
#include "support/Versions.h"

namespace {

using ado::Recordset;
using jet::Errc;
using Strings = std::vector<std::string>;

class FilterSortTest : public Shop {
protected:
    FilterSortTest() { addSomeOfEach(); }
};
INSTANTIATE_TEST_SUITE_P(, FilterSortTest, everywhere(), keptName);

TEST_P(FilterSortTest, AFilterRestrictsAndStandsOnItsFirstRow) {
    for (const char* source :
         {"cheques", "select * from cheques where lancamento<>6 or cliente=1"}) {
        Recordset rows;
        rows.Open(source, connection);
        rows.MoveLast();
        rows.setFilter("cliente=1");
        EXPECT_EQ(rows.Filter(), "cliente=1");
        EXPECT_EQ(rows["lancamento"].integer(), 1);
        EXPECT_EQ(rows.RecordCount(), 3);
        EXPECT_EQ(column(rows, "lancamento"), (Strings{"1", "3", "6"}));
        rows.MoveFirst();
        rows.Find("lancamento=2");
        EXPECT_TRUE(rows.EOF());
        rows.setFilter("cliente=77");
        EXPECT_TRUE(rows.EOF());
        EXPECT_TRUE(rows.BOF());
        EXPECT_EQ(rows.RecordCount(), 0);
        rows.clearFilter();
        EXPECT_EQ(rows.Filter(), "");
        EXPECT_EQ(rows["lancamento"].integer(), 1);
        EXPECT_EQ(rows.RecordCount(), 6);
    }
}

TEST_P(FilterSortTest, TheDuplicateTestOfTheBanks) {
    Recordset rows;
    rows.Open("bancos", connection);
    rows.setFilter("cod_banco=104 And nome='BANCO DO NORTE'");
    EXPECT_EQ(rows.RecordCount(), 1);
    rows.setFilter("cod_banco=104 And nome='Banco do Sul'");
    EXPECT_EQ(rows.RecordCount(), 0);
    EXPECT_EQ(errorOf([&] { rows.setFilter("cod_banco=104 And nome='D'Avila'"); }), Errc::syntax);
    EXPECT_EQ(rows.Filter(), "cod_banco=104 And nome='Banco do Sul'");
    EXPECT_EQ(errorOf([&] { rows.setFilter("banco='x'"); }), Errc::notFound);
    EXPECT_EQ(rows.RecordCount(), 0);
    rows.clearFilter();
    EXPECT_EQ(rows.RecordCount(), 3);
}

TEST_P(FilterSortTest, ASortOrdersAndStandsOnTheFirstRow) {
    for (const char* source : {"bancos", "select * from bancos order by codigo desc"}) {
        Recordset rows;
        rows.Open(source, connection);
        rows.setSort("nome");
        EXPECT_EQ(rows["nome"].text(), "Agrário");
        EXPECT_EQ(column(rows, "codigo"), (Strings{"3", "1", "2"}));
        rows.setSort("cod_banco DESC");
        EXPECT_EQ(column(rows, "cod_banco"), (Strings{"104", "33", "1"}));
        rows.setSort("codigo");
        EXPECT_EQ(column(rows, "codigo"), (Strings{"1", "2", "3"}));
        EXPECT_EQ(errorOf([&] { rows.setSort("fantasia"); }), Errc::notFound);
        EXPECT_EQ(errorOf([&] { rows.setSort("nome,"); }), Errc::syntax);
        EXPECT_EQ(rows.Sort(), "codigo");
        rows.setSort("");
        EXPECT_EQ(rows["codigo"].integer(),
                  rows.RecordCount() == 3 && std::string(source) != "bancos" ? 3 : 1);
    }
}

TEST_P(FilterSortTest, EqualRowsFollowTheKey) {
    Recordset rows;
    rows.Open("cheques", connection);
    rows.setSort("numero desc, cliente");
    EXPECT_EQ(column(rows, "lancamento"), (Strings{"4", "6", "5", "2", "1", "3"}));
    rows.setSort("descontar");
    EXPECT_EQ(column(rows, "lancamento"), (Strings{"1", "3", "5", "6", "2", "4"}));
}

TEST_P(FilterSortTest, FilterAndSortWorkTogetherAndOutliveRequery) {
    Recordset rows;
    rows.Open("select * from cheques where valor>1", connection);
    rows.setSort("bompara");
    rows.setFilter("descontar=true");
    EXPECT_EQ(column(rows, "lancamento"), (Strings{"6", "1", "3"}));
    rows.Requery();
    EXPECT_EQ(column(rows, "lancamento"), (Strings{"6", "1", "3"}));
    rows.MoveFirst();
    rows["descontar"] = false;
    rows.Update();
    rows.Requery();
    EXPECT_EQ(column(rows, "lancamento"), (Strings{"1", "3"}));
}

TEST_P(FilterSortTest, JoinsAndComputedResultsHaveThemToo) {
    Recordset rows;
    rows.Open("select * from cheques inner join bancos on cheques.banco=bancos.codigo "
              "where cheques.lancamento<6 order by lancamento",
              connection);
    rows.setFilter("bancos.nome='banco do norte'");
    EXPECT_EQ(column(rows, "lancamento"), (Strings{"1", "4", "5"}));
    rows.setSort("cheques.valor desc");
    EXPECT_EQ(column(rows, "lancamento"), (Strings{"4", "1", "5"}));
    rows.clearFilter();
    EXPECT_EQ(rows.RecordCount(), 5);
    rows.Close();
    rows.Open("select cliente, sum(valor) as total from cheques group by cliente", connection);
    rows.setSort("total desc");
    EXPECT_EQ(column(rows, "cliente"), (Strings{"3", "2", "1"}));
    rows.setFilter("total < 1000");
    EXPECT_EQ(column(rows, "cliente"), (Strings{"2", "1"}));
    EXPECT_EQ(errorOf([&] { rows.setFilter("valor < 1000"); }), jet::Errc::notFound);
    EXPECT_EQ(rows.Filter(), "total < 1000");
}

} // namespace
