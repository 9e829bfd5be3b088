#include "ado/Shop.h"
#include "support/Versions.h"

namespace {

using ado::Recordset;
using jet::Currency;
using jet::Errc;
using Strings = std::vector<std::string>;

/// The statements of the windows, as they send them.
class ShopStatements : public Shop {
protected:
    ShopStatements() { addSomeOfEach(); }

    static constexpr const char* kCheques =
        "Select * from (cheques inner join cliente_fornecedor on "
        "cheques.cliente=cliente_fornecedor.codigo) inner join bancos on "
        "cheques.banco=bancos.codigo ";
    static constexpr const char* kBounced =
        "Select * from (semfundos inner join cliente_fornecedor on "
        "semfundos.cliente=cliente_fornecedor.codigo) inner join bancos on "
        "semfundos.banco=bancos.codigo ";

    Strings cheques(const std::string& rest) { return column(kCheques + rest, "lancamento"); }
    Strings prefix(const std::string& typed, std::size_t length) {
        return column(
            "select codigo,nome from cliente_fornecedor where tipo=true and mid$(nome,1," +
                std::to_string(length) + ")='" + typed + "'" + "order by NOME",
            "codigo");
    }
};
INSTANTIATE_TEST_SUITE_P(, ShopStatements, everywhere(), keptName);

TEST_P(ShopStatements, ClientsAreTheRowsWithTipoTrue) {
    EXPECT_EQ(column("select * from cliente_fornecedor where tipo=true", "nome"),
              (Strings{"Ana", "JOÃO", "joão pequeno"}));
    EXPECT_EQ(column("select * from cliente_fornecedor where tipo = FALSE", "nome"), Strings{"Zé"});
    EXPECT_EQ(column("select * from cliente_fornecedor where tipo", "codigo").size(), 3U);
    EXPECT_EQ(column("select * from cliente_fornecedor where not tipo", "codigo").size(), 1U);
}

TEST_P(ShopStatements, NamePrefixesMatchWithoutCaseAndInOrder) {
    EXPECT_EQ(prefix("jo", 2), (Strings{"2", "3"}));
    EXPECT_EQ(prefix("JOÃO P", 6), Strings{"3"});
    EXPECT_EQ(prefix("joa", 3), Strings{}); // an accent counts
    EXPECT_EQ(prefix("", 0), (Strings{"1", "2", "3"}));
    EXPECT_EQ(prefix(" jo", 2), Strings{}); // typed with a blank, its length counted without
    EXPECT_EQ(prefix("z", 1), Strings{});   // a supplier
}

TEST_P(ShopStatements, AnApostropheBreaksTheStatement) {
    for (const char* typed : {"D'Avila", "'", "x'--", "';delete from cheques", "d'"}) {
        const Errc code = errorOf([&] { (void)prefix(typed, 3); });
        EXPECT_TRUE(code == Errc::syntax || code == Errc::notFound) << typed;
    }
    EXPECT_EQ(rowsIn("cheques"), 6);
}

TEST_P(ShopStatements, DatesIncludeBothEndsAndHaveTheMonthFirst) {
    EXPECT_EQ(cheques(" where bompara between #01/10/2024# and #02/01/2024# order by lancamento"),
              (Strings{"1", "2", "3"}));
    EXPECT_EQ(column("select * from cheques where bompara between #02/29/2024# and #02/29/2024#",
                     "lancamento"),
              Strings{"4"});
    EXPECT_EQ(column("select * from cheques where bompara between #12/31/2024# and #01/01/2024#",
                     "lancamento"),
              Strings{});
    EXPECT_EQ(column("select * from cheques where bompara between #01/01/2024# and #12/31/2024# "
                     "and banco=1",
                     "lancamento"),
              (Strings{"1", "4", "5"}));
    EXPECT_EQ(errorOf([&] { (void)cheques(" where bompara > #31/12/2024#"); }), Errc::syntax);
    EXPECT_EQ(errorOf([&] { (void)cheques(" where bompara > #02/30/2024#"); }), Errc::syntax);
}

TEST_P(ShopStatements, TheChequeListFiltersAndOrders) {
    const std::string order = " order by cliente_fornecedor.nome,cheques.bompara ";
    EXPECT_EQ(cheques(" where descontar=true " + order), (Strings{"6", "1", "3", "5"}));
    EXPECT_EQ(cheques(" where descontar=false " + order), (Strings{"2", "4"}));
    EXPECT_EQ(cheques(" where banco=1" + order), (Strings{"1", "5", "4"}));
    EXPECT_EQ(cheques(" where cliente=1" + order), (Strings{"6", "1", "3"}));
    EXPECT_EQ(cheques(" where bompara between #01/31/2024# and #02/29/2024#" + order),
              (Strings{"3", "2", "4"}));
    EXPECT_EQ(column(std::string(kBounced) + " where data between #12/01/2023# and #12/02/2023#" +
                         " order by cliente_fornecedor.nome,semfundos.data ",
                     "lancamento"),
              (Strings{"2", "1"}));
    EXPECT_EQ(column(std::string(kBounced) + " where cliente=2 order by "
                                             "cliente_fornecedor.nome,semfundos.data ",
                     "empresa"),
              Strings{"Loja"});
}

TEST_P(ShopStatements, TheReportsOrderAsChosen) {
    const std::string where = " where  data between #01/01/2024# and #12/31/2024#";
    EXPECT_EQ(cheques(where + " ORDER BY bancos.nome,bompara"),
              (Strings{"3", "1", "4", "5", "6", "2"}));
    EXPECT_EQ(cheques(where + " ORDER BY cliente_fornecedor.nome,bompara"),
              (Strings{"6", "1", "3", "2", "5", "4"}));
    EXPECT_EQ(cheques(where + " ORDER BY bompara,cliente_fornecedor.nome"),
              (Strings{"6", "1", "2", "3", "4", "5"}));
    EXPECT_EQ(cheques(" where  cliente=1 And banco=2 and data between #01/01/2024# and #01/01/2024#"
                      " ORDER BY numero"),
              Strings{"6"});
}

TEST_P(ShopStatements, DeleteByKeyTakesTheFirstRowOnly) {
    Recordset rows;
    rows.Open("select * from cheques where numero ='000123'", connection);
    EXPECT_EQ(rows.RecordCount(), 2);
    rows.Delete();
    rows.Close();
    EXPECT_EQ(column("cheques", "lancamento"), (Strings{"2", "3", "4", "5", "6"}));

    rows.Open("select * from SemFundos where lancamento = 2", connection);
    rows.Delete();
    rows.Close();
    EXPECT_EQ(column("semfundos", "lancamento"), Strings{"1"});

    rows.Open("select * from Cheques where lancamento = 99", connection);
    EXPECT_EQ(errorOf([&] { rows.Delete(); }), Errc::noCurrentRow);
}

TEST_P(ShopStatements, ThePurgeLeavesTheSecondRow) {
    Recordset rows;
    rows.Open("select * from cheques where bompara between #01/01/2024# and #02/01/2024#",
              connection);
    ASSERT_EQ(rows.RecordCount(), 4);
    int count = 0;
    while (!rows.EOF()) {
        rows.Delete();
        rows.Requery();
        if (!rows.EOF())
            rows.MoveNext();
        ++count;
    }
    EXPECT_EQ(count, 3);
    EXPECT_EQ(column("cheques", "lancamento"), (Strings{"2", "4", "5"}));
}

TEST_P(ShopStatements, SumsOfAmountsAreExact) {
    for (int i = 0; i < 1000; ++i)
        add("semfundos", {
                             {"cliente", std::int64_t{9}},
                             {"valor",   Currency{1}    }
        });
    Recordset rows;
    rows.Open("select sum(valor) as total, count(*) as quantos, avg(valor) as media, "
              "min(valor) as menor, max(valor) as maior from semfundos where cliente=9",
              connection);
    EXPECT_EQ(rows["total"].currency(), Currency{1000});
    EXPECT_EQ(rows["quantos"].integer(), 1000);
    EXPECT_EQ(rows["media"].currency(), Currency{1});
    EXPECT_EQ(rows["menor"].currency(), Currency{1});
    EXPECT_EQ(rows["maior"].currency(), Currency{1});
    rows.Close();
    rows.Open("select cliente, sum(valor) from cheques group by cliente order by cliente",
              connection);
    EXPECT_EQ(rows.field(1).currency(), Currency{1005000 + 100000 + 333333});
    rows.Close();
    rows.Open("select sum(valor) from cheques where cliente=77", connection);
    EXPECT_TRUE(rows.field(0).isNull());
    rows.Close();
    // Beside the largest the smallest would be lost, or counted for more.
    constexpr std::int64_t kLargest = 9'000'000'000'000'000;
    for (const std::int64_t amount : std::vector<std::int64_t>{kLargest, 1, 1, 1, 1, 1, -kLargest})
        add("semfundos", {
                             {"cliente", std::int64_t{10}},
                             {"valor",   Currency{amount}}
        });
    rows.Open("select sum(valor) from semfundos where cliente=10", connection);
    EXPECT_EQ(rows.field(0).currency(), Currency{5});
}

TEST_P(ShopStatements, ASumThatFitsNoWholeNumberIsNearTheRightOne) {
    Recordset rows;
    rows.Open("select sum(9223372036854775807), avg(9223372036854775807) from bancos", connection);
    EXPECT_DOUBLE_EQ(rows.field(0).number(), 3 * 9223372036854775807.0);
    EXPECT_DOUBLE_EQ(rows.field(1).number(), 9223372036854775807.0);
    rows.Close();
    // Their ten-thousandths fit 1024 times.
    rows.Open(
        "select sum(900719925474.0991) from cheques, cheques as b, cheques as c, cheques as d",
        connection);
    EXPECT_NEAR(rows.field(0).number(), 1296 * 900719925474.0991, 1000);
}

TEST_P(ShopStatements, AmountsCompareWithLiterals) {
    EXPECT_EQ(column("select * from cheques where valor > 100.5", "lancamento"),
              (Strings{"2", "4"}));
    EXPECT_EQ(column("select * from cheques where valor >= 100.5", "lancamento"),
              (Strings{"1", "2", "4"}));
    EXPECT_EQ(column("select * from cheques where valor = 200.0001", "lancamento"), Strings{"2"});
    EXPECT_EQ(column("select * from cheques where valor = 33.3333 or valor=1500", "lancamento"),
              (Strings{"4", "6"}));
}

} // namespace
