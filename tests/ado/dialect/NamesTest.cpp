// Files that hold more than a statement needs: damaged tables, and tables and columns with odd
// names.
#include "ado/Shop.h"
#include "support/Versions.h"

namespace {

using ado::Recordset;
using jet::ColumnType;
using jet::Errc;
using Strings = std::vector<std::string>;

class NamesTest : public Shop {
protected:
    NamesTest() { addSomeOfEach(); }

    void addTable(const std::string& name, const std::vector<std::string>& columns = {"a"}) {
        jet::TableSpec spec{name, {}, {}};
        for (const std::string& column : columns)
            spec.columns.push_back({column, ColumnType::text, 20});
        connection.database().createTable(spec).insert(jet::Row(columns.size(), std::string("x")));
    }

    /// What the shop asks, with words in it that a table may be called, and what comes back.
    void expectTheShopsAnswers() {
        EXPECT_EQ(column("select nome from bancos where cod_banco>1 order by nome", "nome"),
                  (Strings{"Agrário", "Banco do Norte"}));
        EXPECT_EQ(column("select c.numero from cheques as c inner join bancos b on "
                         "c.banco=b.codigo where b.nome like 'Banco%' and c.valor>100 and "
                         "date()>c.bompara and mid$(b.nome,1,5)='banco' order by c.numero",
                         "numero"),
                  (Strings{"000123", "000200", "A-77"}));
        EXPECT_EQ(column("select cliente, sum(valor) as total, count(*) as order1 from cheques "
                         "where cliente in (select codigo from cliente_fornecedor where tipo) "
                         "group by cliente order by cliente",
                         "cliente"),
                  (Strings{"1", "2", "3"}));
        Recordset rows;
        rows.Open("bancos", connection);
        rows.Find("nome='agrário'");
        EXPECT_EQ(rows["cod_banco"].text(), "33");
        rows.setFilter("nome like 'banco%'");
        rows.setSort("nome desc, bancos.codigo");
        EXPECT_EQ(column(rows, "nome"), (Strings{"Banco do Sul", "Banco do Norte"}));
        rows.MoveFirst();
        rows["nome"] = "Banco do Sul";
        rows.Update();
    }
};
INSTANTIATE_TEST_SUITE_P(, NamesTest, bothVersions(), keptName);

/// Each a column, a function, a keyword, a label or another table's second name in the statements.
const Strings kWords{"nome",  "valor", "numero", "banco",   "date",   "mid",
                     "count", "c",     "b",      "total",   "order1", "like",
                     "tipo",  "sum",   "codigo", "bompara", "select"};

TEST_P(NamesTest, DamagedTablesThatNoStatementUsesBreakNone) {
    const std::size_t pageSize = jet::formatOf(GetParam()).pageSize;
    std::vector<std::size_t> definitions;
    for (const std::string& name : kWords) {
        addTable(name);
        definitions.push_back(jet::number(connection.database().table(name).definition().page()) *
                              pageSize);
    }
    std::string sound;
    changeBytes([&](std::string& bytes) {
        sound = bytes;
        for (const std::size_t at : definitions)
            bytes.replace(at, pageSize, pageSize, '\xA5');
    });
    expectTheShopsAnswers();
    for (const std::string& name : kWords) {
        Recordset rows;
        EXPECT_EQ(errorOf([&] { rows.Open("[" + name + "]", connection); }), Errc::corrupt) << name;
    }
    expectTheShopsAnswers();

    changeBytes([&](std::string& bytes) { // which keep what was written meanwhile
        for (const std::size_t at : definitions)
            bytes.replace(at, pageSize, sound, at, pageSize);
    });
}

TEST_P(NamesTest, OddlyNamedTablesBreakNoneAndCanBeAsked) {
    const Strings odd{"order",
                      "group by",
                      "as\"pas",
                      "it's",
                      "count",
                      "1x",
                      "from",
                      "texto",
                      "jet_mid",
                      "valor",
                      "nome",
                      "c",
                      "pragma_table_info",
                      "rowid"};
    for (const std::string& name : odd)
        addTable(name, {"a", "select", "x\"y", "it's", "order", "nome"});
    expectTheShopsAnswers();
    for (const std::string& name : odd) {
        EXPECT_EQ(column("select a from [" + name + "] where [select]='X' and [order]='x'", "a"),
                  Strings{"x"})
            << name;
        EXPECT_EQ(column("select * from [" + name + "] where [x\"y]='x' and [it's]='x'", "nome"),
                  Strings{"x"})
            << name;
    }
    expectTheShopsAnswers();
}

TEST_P(NamesTest, ATableNamedLikeTheEnginesOwnIsRefusedWithASentence) {
    addTable("sqlite_master");
    addTable("SQLite_Schema");
    expectTheShopsAnswers();
    for (const char* statement : {"sqlite_master", "select * from SQLITE_MASTER", "sqlite_schema",
                                  "select count(*) from sqlite_schema"}) {
        Recordset rows;
        EXPECT_EQ(errorOf([&] { rows.Open(statement, connection); }), Errc::unsupported)
            << statement;
    }
    expectTheShopsAnswers();
}

TEST_P(NamesTest, ColumnsAreThoseOfTheStatementsTables) {
    addTable("um", {"AÇÃO", "É"});
    addTable("dois", {"ação", "é"});
    addTable("três", {"Ação"});
    for (int round = 0; round < 2; ++round) {
        for (const char* table : {"um", "dois"}) {
            const std::string from = std::string(" from ") + table;
            EXPECT_EQ(column("select ação" + from, "ação"), Strings{"x"}) << table;
            EXPECT_EQ(column("select AçãO" + from + " where É='x' order by AÇÃO", "ação"),
                      Strings{"x"});
            EXPECT_EQ(column("select Ç.aÇão" + from + " as ç where ç.É='x'", "ação"), Strings{"x"});
            Recordset rows;
            rows.Open(table, connection);
            rows.Find("AçÃo='x'");
            EXPECT_FALSE(rows.EOF());
            rows.setFilter("açÃO='x' and é in (select Ação from TRÊS)");
            rows.setSort("AÇão");
            EXPECT_EQ(rows.RecordCount(), 1);
        }
        EXPECT_EQ(column("select um.ação as primeira from um, dois where um.ação=dois.ação and "
                         "dois.É=um.é",
                         "primeira"),
                  Strings{"x"});
    }
    Recordset sums;
    sums.Open("select ação, count(*) as quantos from dois group by AÇÃO", connection);
    sums.setFilter("AÇÃO='x' and QUANTOS=1");
    EXPECT_FALSE(sums.EOF());
}

} // namespace
