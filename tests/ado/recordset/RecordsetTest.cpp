#include "ado/Shop.h"
#include "support/Versions.h"

namespace {

using ado::Recordset;
using jet::Errc;
using Strings = std::vector<std::string>;

class RecordsetTest : public Shop {};
INSTANTIATE_TEST_SUITE_P(, RecordsetTest, everywhere(), keptName);

TEST_P(RecordsetTest, OpensATableByItsNameInAnyCaseAndStandsOnTheFirstRow) {
    addSomeOfEach();
    for (const char* name : {"bancos", "Bancos", "BANCOS", "[bancos]", "select * from bancos"}) {
        Recordset rows;
        EXPECT_EQ(rows.State(), ado::State::Closed);
        rows.Open(name, connection, ado::CursorType::Dynamic, ado::LockType::Optimistic);
        EXPECT_EQ(rows.State(), ado::State::Open);
        EXPECT_FALSE(rows.BOF());
        EXPECT_FALSE(rows.EOF());
        EXPECT_EQ(rows.RecordCount(), 3);
        EXPECT_EQ(rows["codigo"].integer(), 1);
        EXPECT_EQ(rows["NOME"].text(), "Banco do Norte");
        rows.Close();
        EXPECT_EQ(rows.State(), ado::State::Closed);
    }
}

TEST_P(RecordsetTest, AnEmptyTableIsAtBothEnds) {
    for (const char* source : {"bancos", "select * from bancos where codigo=1",
                               "select * from bancos inner join cheques on banco=codigo",
                               "select codigo+1 as n from bancos"}) {
        Recordset rows;
        rows.Open(source, connection);
        EXPECT_TRUE(rows.BOF()) << source;
        EXPECT_TRUE(rows.EOF()) << source;
        EXPECT_EQ(rows.RecordCount(), 0);
        EXPECT_EQ(errorOf([&] { rows.MoveFirst(); }), Errc::noCurrentRow);
        EXPECT_EQ(errorOf([&] { rows.MoveLast(); }), Errc::noCurrentRow);
        EXPECT_EQ(errorOf([&] { rows.MoveNext(); }), Errc::noCurrentRow);
        EXPECT_EQ(errorOf([&] { rows.MovePrevious(); }), Errc::noCurrentRow);
        EXPECT_EQ(errorOf([&] { (void)rows.field(0).value(); }), Errc::noCurrentRow);
        EXPECT_TRUE(rows.BOF());
        EXPECT_TRUE(rows.EOF());
    }
}

TEST_P(RecordsetTest, WalksBothWaysAndStopsOneBeyondEachEnd) {
    addSomeOfEach();
    for (const char* source :
         {"bancos", "select * from bancos where codigo>0",
          "select * from bancos inner join semfundos on "
          "semfundos.lancamento>0 and semfundos.cliente=1 order by bancos.codigo",
          "select codigo*1 as codigo from bancos order by codigo"}) {
        Recordset rows;
        rows.Open(source, connection);
        const auto at = [&] { return rows["codigo"].integer(); };
        EXPECT_EQ(at(), 1) << source;
        rows.MoveNext();
        EXPECT_EQ(at(), 2);
        rows.MoveNext();
        EXPECT_EQ(at(), 3);
        rows.MoveNext();
        EXPECT_TRUE(rows.EOF());
        EXPECT_FALSE(rows.BOF());
        EXPECT_EQ(errorOf([&] { rows.MoveNext(); }), Errc::noCurrentRow);
        EXPECT_EQ(errorOf([&] { (void)rows["codigo"].value(); }), Errc::noCurrentRow);
        rows.MovePrevious();
        EXPECT_EQ(at(), 3);
        rows.MovePrevious();
        rows.MovePrevious();
        EXPECT_EQ(at(), 1);
        rows.MovePrevious();
        EXPECT_TRUE(rows.BOF());
        EXPECT_FALSE(rows.EOF());
        EXPECT_EQ(errorOf([&] { rows.MovePrevious(); }), Errc::noCurrentRow);
        EXPECT_EQ(errorOf([&] { (void)rows["codigo"].value(); }), Errc::noCurrentRow);
        rows.MoveNext();
        EXPECT_EQ(at(), 1);
        rows.MoveLast();
        EXPECT_EQ(at(), 3);
        rows.MoveFirst();
        EXPECT_EQ(at(), 1);
        EXPECT_EQ(rows.RecordCount(), 3);
    }
}

TEST_P(RecordsetTest, ForwardOnlyAJoinAndWhatIsComputedAreWalkedOnce) {
    if (onServer())
        GTEST_SKIP() << "there all kinds of sets keep their rows, and walk both ways";
    addSomeOfEach();
    for (const char* what : {"bancos.codigo", "bancos.codigo*1 as codigo"}) {
        SCOPED_TRACE(what);
        std::string source = "select ";
        source += what;
        source += ", b5.codigo as quinto"
                  " from bancos, bancos as b2, bancos as b3, bancos as b4, bancos as b5"
                  " order by bancos.codigo, b2.codigo, b3.codigo, b4.codigo, b5.codigo";
        const auto all = [&](ado::CursorType type) {
            Recordset rows;
            rows.Open(source, connection, type);
            std::vector<std::pair<std::int64_t, std::int64_t>> walked;
            for (; !rows.EOF(); rows.MoveNext())
                walked.emplace_back(rows["codigo"].integer(), rows["quinto"].integer());
            return walked;
        };
        EXPECT_EQ(all(ado::CursorType::ForwardOnly), all(ado::CursorType::Static));
        Recordset rows;
        rows.Open(source, connection, ado::CursorType::ForwardOnly);
        rows.MoveFirst();
        for (int row = 0; row < 200; ++row)
            rows.MoveNext();
        EXPECT_EQ(rows["codigo"].integer(), 3);
        EXPECT_EQ(errorOf([&] { rows.MovePrevious(); }), Errc::misuse);
        EXPECT_EQ(errorOf([&] { rows.MoveFirst(); }), Errc::misuse);
        EXPECT_EQ(rows["codigo"].integer(), 3) << "it stays where it is";
        EXPECT_EQ(rows.RecordCount(), 243);
        rows.MoveLast();
        EXPECT_EQ(rows["quinto"].integer(), 3);
        rows.Requery();
        EXPECT_EQ(rows["codigo"].integer(), 1);
    }
}

TEST_P(RecordsetTest, ForwardOnlyARowThatHasGoneIsMissedWhereItStood) {
    if (onServer())
        GTEST_SKIP() << "there all kinds of sets keep their rows, and walk both ways";
    addSomeOfEach();
    Recordset rows;
    rows.Open("select b1.codigo from bancos as b1, bancos as b2, bancos as b3, bancos as b4, "
              "bancos as b5 order by b1.codigo, b2.codigo, b3.codigo, b4.codigo, b5.codigo",
              connection, ado::CursorType::ForwardOnly);
    for (int row = 0; row < 100; ++row)
        rows.MoveNext();
    EXPECT_EQ(rows["codigo"].integer(), 2);
    Recordset banks;
    banks.Open("select * from bancos where codigo=2", connection);
    banks.Delete();
    EXPECT_EQ(errorOf([&] { (void)rows["codigo"].integer(); }), Errc::noCurrentRow);
    rows.MoveNext();
    EXPECT_EQ(errorOf([&] { (void)rows["codigo"].integer(); }), Errc::conflict);
    for (int row = 101; row < 2 * 81; ++row)
        rows.MoveNext();
    EXPECT_EQ(rows["codigo"].integer(), 3);
}

TEST_P(RecordsetTest, ForwardOnlyAListOfSomeFieldsKeepsThemWhenARowIsComparedOrAnOrderGiven) {
    addSomeOfEach();
    const std::string source = "select valor, numero from cheques order by bompara";
    using Cheque = std::pair<std::int64_t, std::string>;
    const auto rest = [](Recordset& rows, bool comparing) {
        std::vector<Cheque> all;
        for (; !rows.EOF(); rows.MoveNext()) {
            all.emplace_back(rows["valor"].currency().tenThousandths, rows["numero"].text());
            if (comparing && all.size() == 2) {
                static_cast<void>(rows.shown());
                EXPECT_EQ(rows["numero"].text(), all.back().second);
            }
        }
        return all;
    };
    Recordset dynamic;
    dynamic.Open(source, connection);
    const std::vector<Cheque> all = rest(dynamic, false);
    EXPECT_GT(all.size(), 2U);
    dynamic.setSort("agencia desc, lancamento");
    const std::vector<Cheque> sorted = rest(dynamic, false);
    Recordset rows;
    rows.Open(source, connection, ado::CursorType::ForwardOnly, ado::LockType::ReadOnly);
    EXPECT_EQ(rest(rows, true), all);
    rows.Close();
    rows.Open(source, connection, ado::CursorType::ForwardOnly, ado::LockType::ReadOnly);
    rows.setSort("agencia desc, lancamento");
    EXPECT_EQ(rest(rows, false), sorted);
    rows.MoveFirst();
    EXPECT_EQ(rest(rows, true), sorted);
}

TEST_P(RecordsetTest, FieldsAreFoundWithoutCaseAndTrailingBlanks) {
    addSomeOfEach();
    Recordset rows;
    rows.Open("cheques", connection);
    EXPECT_EQ(rows["bompara "].date(), day(2024, 1, 10));
    EXPECT_EQ(rows["Lancamento"].integer(), 1);
    EXPECT_EQ(rows["cheques.valor"].currency(), jet::Currency{1005000});
    EXPECT_EQ(rows["valor"].name(), "valor");
    Recordset clients;
    clients.Open("cliente_fornecedor", connection);
    EXPECT_TRUE(clients["RENUNERAÇÃO_MENSAL"].isNull());
    EXPECT_EQ(errorOf([&] { (void)rows["nome"]; }), Errc::notFound);
    try {
        (void)rows["fantasia"];
        FAIL();
    } catch (const jet::Error& error) {
        EXPECT_NE(std::string(error.what()).find("\"fantasia\""), std::string::npos);
    }
}

TEST_P(RecordsetTest, AFieldThatTwoTablesHaveAsksForTheTable) {
    addSomeOfEach();
    Recordset rows;
    rows.Open("select * from cheques inner join bancos on cheques.banco=bancos.codigo", connection);
    EXPECT_EQ(rows["Bancos.Nome"].text(), "Banco do Norte");
    EXPECT_EQ(rows["nome"].text(), "Banco do Norte"); // only bancos has it
    rows.Close();
    rows.Open("select * from (cheques inner join cliente_fornecedor on "
              "cheques.cliente=cliente_fornecedor.codigo) inner join bancos on "
              "cheques.banco=bancos.codigo",
              connection);
    EXPECT_EQ(rows["Cliente_Fornecedor.nome"].text(), "Ana");
    EXPECT_EQ(errorOf([&] { (void)rows["nome"]; }), Errc::notFound);
    rows.Close();
    EXPECT_EQ(
        errorOf([&] { rows.Open("select nome from bancos, cliente_fornecedor", connection); }),
        Errc::syntax);
}

TEST_P(RecordsetTest, AFieldMayBeAskedForWithItsTablesName) {
    addSomeOfEach();
    for (const char* source : {"select * from bancos as b order by codigo",
                               "select distinct nome from bancos order by nome desc"}) {
        Recordset rows;
        rows.Open(source, connection);
        rows.MoveLast();
        EXPECT_EQ(rows["Bancos.Nome"].text(), "Agrário") << source;
        EXPECT_EQ(errorOf([&] { (void)rows["cheques.nome"]; }), Errc::notFound) << source;
    }
}

TEST_P(RecordsetTest, SeveralNamesForOneTableAreToldApart) {
    addSomeOfEach();
    Recordset rows;
    rows.Open("select a.codigo, b.codigo as outro from bancos a, bancos as b "
              "where a.codigo < b.codigo order by a.codigo, b.codigo desc",
              connection);
    Strings pairs;
    for (; !rows.EOF(); rows.MoveNext())
        pairs.push_back(rows["codigo"].text() + rows["outro"].text());
    EXPECT_EQ(pairs, (Strings{"13", "12", "23"}));
    EXPECT_EQ(rows.FieldCount(), 2U);
}

TEST_P(RecordsetTest, OuterJoinsGiveNullsWhereThereIsNoRow) {
    addSomeOfEach();
    Recordset rows;
    rows.Open("select * from cliente_fornecedor left join semfundos on "
              "semfundos.cliente=cliente_fornecedor.codigo order by codigo",
              connection);
    EXPECT_FALSE(rows["empresa"].isNull());
    rows.MoveLast();
    EXPECT_EQ(rows["cliente_fornecedor.nome"].text(), "Zé");
    EXPECT_TRUE(rows["empresa"].isNull());
}

TEST_P(RecordsetTest, AJoinOrAComputedResultCannotBeChanged) {
    addSomeOfEach();
    for (const char* source :
         {"select * from bancos, semfundos", "select cod_banco+1 as n from bancos",
          "select distinct nome from bancos",
          "select nome from bancos union select nome from cliente_fornecedor"}) {
        Recordset rows;
        rows.Open(source, connection);
        EXPECT_EQ(errorOf([&] { rows.AddNew(); }), Errc::readOnly) << source;
        EXPECT_EQ(errorOf([&] { rows.Delete(); }), Errc::readOnly);
    }
    Recordset rows;
    rows.Open("bancos", connection, ado::CursorType::Static, ado::LockType::ReadOnly);
    EXPECT_EQ(errorOf([&] { rows["nome"] = "outro"; }), Errc::readOnly);
    EXPECT_EQ(errorOf([&] { rows.Delete(); }), Errc::readOnly);
    EXPECT_EQ(rowsIn("bancos"), 3);
}

TEST_P(RecordsetTest, ARowThatCantBeComputedFailsWhereTheWalkComesToIt) {
    if (onServer())
        GTEST_SKIP() << "a statement that fails gives no rows there";
    addSomeOfEach();
    Recordset rows;
    rows.Open("select left('abc', 2-codigo) as inicio from bancos", connection);
    EXPECT_EQ(rows["inicio"].text(), "a");
    rows.MoveNext();
    EXPECT_EQ(rows["inicio"].text(), "");
    EXPECT_EQ(errorOf([&] { rows.MoveNext(); }), Errc::syntax);
    EXPECT_EQ(
        errorOf([&] { Recordset().Open("select left('abc', -codigo) from bancos", connection); }),
        Errc::syntax);
}

TEST_P(RecordsetTest, AClosedRecordsetRefusesEverythingButOpening) {
    Recordset rows;
    EXPECT_EQ(errorOf([&] { rows.MoveNext(); }), Errc::misuse);
    EXPECT_EQ(errorOf([&] { (void)rows.EOF(); }), Errc::misuse);
    EXPECT_EQ(errorOf([&] { (void)rows["x"]; }), Errc::misuse);
    rows.Close();
    rows.Open("bancos", connection);
    EXPECT_EQ(errorOf([&] { rows.Open("bancos", connection); }), Errc::misuse);
}

TEST_P(RecordsetTest, WhoUsesOneThatCouldntBeOpenedIsToldWhy) {
    Recordset rows;
    EXPECT_EQ(errorOf([&] { rows.Open("fornecedores", connection); }), Errc::notFound);
    EXPECT_EQ(errorOf([&] { rows.MoveNext(); }), Errc::notFound);
    EXPECT_EQ(errorOf([&] { (void)rows["nome"]; }), Errc::notFound);
    rows.Open("bancos", connection);
    EXPECT_TRUE(rows.EOF());
    rows.Close();
    EXPECT_EQ(errorOf([&] { rows.MoveNext(); }), Errc::misuse) << "which is long ago";
}

TEST_P(RecordsetTest, ACommandIsATableOrOneSelect) {
    for (const char* source : {"delete from bancos",
                               "update bancos set nome='x'",
                               "insert into bancos(nome) values('x')",
                               "drop table bancos",
                               "create table x(a)",
                               "pragma table_list",
                               "attach 'x' as y",
                               "vacuum",
                               "begin",
                               "explain select * from bancos",
                               "with a as (select 1) select * from a",
                               "values(1)",
                               "select * from bancos; delete from bancos",
                               "select * from bancos;;",
                               "select * from bancos -- x",
                               "select /* x */ * from bancos",
                               "select ?",
                               "select :a",
                               "select * from bancos limit 1",
                               "",
                               "   ",
                               ";",
                               "bancos cheques",
                               "select load_extension('x')",
                               "select randomblob(1000000000)",
                               "select",
                               "select * from bancos where",
                               "select * from bancos order nome"}) {
        Recordset rows;
        const Errc code = errorOf([&] { rows.Open(source, connection); });
        EXPECT_TRUE(code == Errc::syntax || code == Errc::notFound) << source;
        EXPECT_EQ(rows.State(), ado::State::Closed);
    }
    Recordset rows;
    EXPECT_EQ(errorOf([&] { rows.Open("select * from sqlite_master", connection); }),
              Errc::notFound);
    EXPECT_EQ(errorOf([&] { rows.Open("select * from pragma_table_list", connection); }),
              Errc::notFound);
    EXPECT_EQ(errorOf([&] { rows.Open("fornecedores", connection); }), Errc::notFound);
    EXPECT_EQ(errorOf([&] { rows.Open("[de fora]", connection); }), Errc::notFound);
    EXPECT_EQ(errorOf([&] { rows.Open("select * from fornecedores", connection); }),
              Errc::notFound);
    EXPECT_EQ(errorOf([&] { rows.Open("select fantasia from bancos", connection); }),
              Errc::notFound);
    EXPECT_EQ(
        errorOf([&] { rows.Open("select \"fantasia\" , [fantasia] from bancos", connection); }),
        Errc::notFound);
    EXPECT_EQ(errorOf([&] {
                  rows.Open("bancos", connection, ado::CursorType::Dynamic,
                            ado::LockType::Optimistic, ado::CommandType::Text);
              }),
              Errc::syntax);
    EXPECT_EQ(errorOf([&] {
                  rows.Open("select * from bancos", connection, ado::CursorType::Dynamic,
                            ado::LockType::Optimistic, ado::CommandType::Table);
              }),
              Errc::notFound);
    rows.Open("select * from bancos ; ", connection);
    rows.Close();
    rows.Open("[Bancos]", connection, ado::CursorType::Dynamic, ado::LockType::Optimistic,
              ado::CommandType::Table);
    EXPECT_EQ(rows.FieldCount(), 3U);
}

} // namespace
