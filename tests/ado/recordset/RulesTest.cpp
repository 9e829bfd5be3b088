// The rules that the file keeps, met through a recordset: what a window sees of them.
#include "ado/Shop.h"
#include "support/FileRules.h"
#include "support/Versions.h"

namespace {

using ado::EditMode;
using ado::Recordset;
using jet::Errc;
using Strings = std::vector<std::string>;

class RulesTest : public Shop {
protected:
    RulesTest() { addSomeOfEach(); }
    jet::Database& file() { return connection.database(); }
};
INSTANTIATE_TEST_SUITE_P(, RulesTest, bothVersions(), keptName);

template <class Body>
std::string messageOf(Body&& body) {
    try {
        body();
    } catch (const jet::Error& error) {
        return error.what();
    }
    return "nothing was thrown";
}

TEST_P(RulesTest, ANewRowTakesTheDefaultsOfFieldsNotAssigned) {
    setRules(file(), "bancos",
             {
                 {.column = "nome",      .defaultValue = "\"Sem nome\""},
                 {.column = "cod_banco", .defaultValue = "0"           }
    });
    Recordset rows;
    rows.Open("bancos", connection);
    rows.AddNew();
    rows["cod_banco"] = 5;
    rows.Update();
    EXPECT_EQ(rows["nome"].text(), "Sem nome");
    EXPECT_EQ(rows["cod_banco"].integer(), 5);
    rows.AddNew();
    rows["nome"] = nullptr;
    rows.Update();
    EXPECT_TRUE(rows["nome"].isNull());
    EXPECT_EQ(rows["cod_banco"].integer(), 0);
    EXPECT_FALSE(rows["cod_banco"].isNull());
}

TEST_P(RulesTest, AnEmptyBoxIsNullWhereTheFileTakesNoEmptyText) {
    setRules(file(), "bancos",
             {
                 {.column = "nome", .allowZeroLength = false}
    });
    setRules(file(), "cheques",
             {
                 {.column = "agencia", .allowZeroLength = true}
    });
    Recordset rows;
    rows.Open("bancos", connection);
    rows["nome"] = "";
    EXPECT_TRUE(rows["nome"].isNull());
    EXPECT_EQ(rows["nome"].refusal(""), std::nullopt);
    rows.Update();
    EXPECT_TRUE(rows["nome"].isNull());
    Recordset cheques;
    cheques.Open("cheques", connection);
    cheques["agencia"] = "";
    cheques.Update();
    EXPECT_EQ(cheques["agencia"].value(), jet::Value{std::string()});
}

TEST_P(RulesTest, ARefusedNewRowCanBeCorrectedOrGivenUp) {
    setRules(file(), "bancos",
             {
                 {.column = "cod_banco", .rule = ">0", .message = "O código é positivo."},
                 {.column = "nome",                     .required = true                 }
    });
    Recordset rows;
    rows.Open("bancos", connection);
    const auto before = rows.RecordCount();
    rows.AddNew();
    rows["cod_banco"] = -1;
    rows["nome"] = "Aroeira";
    EXPECT_EQ(rows["cod_banco"].refusal("-1"), "O código é positivo.");
    EXPECT_EQ(rows["cod_banco"].refusal("7"), std::nullopt);
    EXPECT_EQ(messageOf([&] { rows.Update(); }), "O código é positivo.");
    EXPECT_EQ(rows.EditMode(), EditMode::Add);
    EXPECT_EQ(rows["nome"].text(), "Aroeira");
    EXPECT_EQ(rows["cod_banco"].integer(), -1);
    EXPECT_EQ(rows.RecordCount(), before);
    rows["cod_banco"] = 1;
    rows["nome"] = nullptr;
    EXPECT_EQ(errorOf([&] { rows.Update(); }), Errc::nullValue);
    rows["nome"] = "Ipê";
    rows.Update();
    EXPECT_EQ(rows.EditMode(), EditMode::None);
    EXPECT_EQ(rows.RecordCount(), before + 1);
    EXPECT_EQ(rows["nome"].text(), "Ipê");

    rows.AddNew();
    EXPECT_EQ(errorOf([&] { rows.Update(); }), Errc::nullValue);
    rows.CancelUpdate();
    EXPECT_EQ(rows.EditMode(), EditMode::None);
    EXPECT_EQ(rows["nome"].text(), "Ipê");
    EXPECT_EQ(rows.RecordCount(), before + 1);
}

TEST_P(RulesTest, ARefusedChangeCanBeCorrectedOrGivenUp) {
    setRules(file(), "cheques", {{.rule = "[valor]>0 Or [valor] Is Null"}});
    Recordset rows;
    rows.Open("cheques", connection);
    rows.Find("lancamento=2");
    const std::string agency = rows["agencia"].text();
    connection.BeginTrans();
    rows["valor"] = -5;
    rows["agencia"] = "nova";
    EXPECT_EQ(errorOf([&] { rows.Update(); }), Errc::rule);
    EXPECT_EQ(rows.EditMode(), EditMode::InProgress);
    EXPECT_EQ(rows["agencia"].text(), "nova");
    rows["valor"] = 5;
    rows.Update();
    EXPECT_EQ(rows.EditMode(), EditMode::None);
    connection.CommitTrans();
    EXPECT_EQ(rows["agencia"].text(), "nova");

    rows["valor"] = 0;
    EXPECT_EQ(errorOf([&] { rows.Update(); }), Errc::rule);
    rows.CancelUpdate();
    EXPECT_EQ(rows["valor"].text(), "5,00");
    EXPECT_EQ(rows.EditMode(), EditMode::None);
}

TEST_P(RulesTest, ARefusedDeletionLeavesTheRowCurrent) {
    addRelationship(file(), {"r", "cheques", {"cliente"}, "cliente_fornecedor", {"codigo"}});
    Recordset clients;
    clients.Open("cliente_fornecedor", connection);
    clients.Find("codigo=1");
    const auto before = clients.RecordCount();
    EXPECT_EQ(errorOf([&] { clients.Delete(); }), Errc::related);
    EXPECT_EQ(clients["codigo"].integer(), 1);
    EXPECT_EQ(clients.RecordCount(), before);
    clients["nome"] = "Ana Maria";
    clients.Update();
    EXPECT_EQ(clients["nome"].text(), "Ana Maria");
}

TEST_P(RulesTest, RowsThatGoByACascadeAreGoneForEveryRecordset) {
    addRelationship(file(), {"r",
                             "cheques",
                             {"cliente"},
                             "cliente_fornecedor",
                             {"codigo"},
                             FileRelationship::kCascadeDelete});
    Recordset all;
    all.Open("cheques", connection);
    Recordset list;
    list.Open("select * from cheques where lancamento>0 order by lancamento", connection);
    const Strings mine = column("select * from cheques where cliente=1", "lancamento");
    ASSERT_FALSE(mine.empty());
    const auto before = list.RecordCount();
    Recordset clients;
    clients.Open("select * from cliente_fornecedor where codigo<10", connection);
    clients.Find("codigo=1");

    connection.BeginTrans();
    clients.Delete();
    list.Requery();
    EXPECT_EQ(list.RecordCount(), before - static_cast<std::int64_t>(mine.size()));
    EXPECT_TRUE(column("select * from cheques where cliente=1", "lancamento").empty());
    for (all.MoveFirst(); !all.EOF(); all.MoveNext())
        EXPECT_NE(all["cliente"].integer(), 1);
    connection.RollbackTrans();
    list.Requery();
    EXPECT_EQ(list.RecordCount(), before);
    EXPECT_EQ(column("select * from cheques where cliente=1", "lancamento"), mine);

    clients.Requery();
    clients.Find("codigo=1");
    clients.Delete();
    clients.MoveNext();
    EXPECT_EQ(clients["codigo"].integer(), 2);
    for (list.MoveFirst(); !list.EOF(); list.MoveNext())
        EXPECT_NE(list["cliente"].integer(), 1);
    list.Requery();
    EXPECT_EQ(list.RecordCount(), before - static_cast<std::int64_t>(mine.size()));
}

/// In one format: what is remembered of changes has nothing to do with it.
class ManyChangesTest : public RulesTest {};
INSTANTIATE_TEST_SUITE_P(, ManyChangesTest, testing::Values(jet::Version::jet4), keptName);

/// However many rows one change takes along, and so whether it is remembered which or not.
TEST_P(ManyChangesTest, ListsShowAllRowsThatWentWithOne) {
    file().createTable({"donos",
                        {{"codigo", jet::ColumnType::longInteger}},
                        {{"PrimaryKey", {{"codigo"}}, true}}});
    file().createTable({
        "itens",
        {{"numero", jet::ColumnType::longInteger, 0, true}, {"dono", jet::ColumnType::longInteger}},
        {{"PrimaryKey", {{"numero"}}, true},                {"dono", {{"dono"}}}                  }
    });
    addRelationship(file(), {"r",
                             "itens",
                             {"dono"},
                             "donos",
                             {"codigo"},
                             FileRelationship::kCascadeUpdate | FileRelationship::kCascadeDelete});
    add("donos", {
                     {"codigo", std::int64_t{1}}
    });
    Recordset owner;
    owner.Open("donos", connection);
    Recordset whole;
    whole.Open("itens", connection);
    Recordset ordered;
    ordered.Open("select * from itens where dono>0 order by dono, numero desc", connection);
    Recordset odd;
    odd.Open("select * from itens where dono mod 2=1", connection);
    int there = 0;
    for (const int rows : {1'200, 4'500, 8'300}) {
        SCOPED_TRACE(rows);
        connection.BeginTrans();
        for (; there < rows; ++there)
            add("itens", {
                             {"dono", owner["codigo"].value()}
            });
        connection.CommitTrans();
        ordered.Requery();
        odd.Requery();
        owner["codigo"] = owner["codigo"].integer() + 1;
        owner.Update();
        const std::string of = "dono=" + owner["codigo"].text();
        ordered.Requery();
        EXPECT_EQ(ordered.RecordCount(), rows);
        EXPECT_EQ(ordered["numero"].integer(), rows);
        odd.Requery();
        EXPECT_EQ(odd.RecordCount(), owner["codigo"].integer() % 2 == 1 ? rows : 0);
        ordered.Find("not " + of);
        EXPECT_TRUE(ordered.EOF());
        whole.MoveFirst();
        whole.Find("not " + of);
        EXPECT_TRUE(whole.EOF());
    }
    ordered.MoveFirst();
    whole.MoveFirst();
    owner.Delete();
    EXPECT_EQ(ordered.RecordCount(), 0);
    EXPECT_EQ(whole.RecordCount(), 0);
    ordered.Requery();
    EXPECT_TRUE(ordered.EOF());
}

} // namespace
