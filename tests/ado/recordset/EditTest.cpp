#include "ado/Shop.h"
#include "support/Versions.h"

#include <functional>
#include <limits>

namespace {

using ado::EditMode;
using ado::Recordset;
using jet::Currency;
using jet::Errc;
using Strings = std::vector<std::string>;

class EditTest : public Shop {
protected:
    EditTest() { addSomeOfEach(); }
};
INSTANTIATE_TEST_SUITE_P(, EditTest, everywhere(), keptName);

/// What a form hands over: something that turns itself into text.
struct FormText {
    std::string text;
    [[nodiscard]] std::string toStdString() const { return text; }
};

TEST_P(EditTest, ANewRowIsStoredNumberedAndCurrent) {
    for (const char* source :
         {"bancos", "select * from bancos where cod_banco<1000 order by nome"}) {
        Recordset rows;
        rows.Open(source, connection);
        const auto before = rows.RecordCount();
        rows.AddNew();
        EXPECT_EQ(rows.EditMode(), EditMode::Add);
        EXPECT_TRUE(rows["codigo"].isNull());
        EXPECT_TRUE(rows["nome"].isNull());
        rows["cod_banco"] = FormText{" 237 "};
        rows["nome"] = "Aroeira";
        EXPECT_EQ(rows["cod_banco"].integer(), 237);
        rows.Update();
        EXPECT_EQ(rows.EditMode(), EditMode::None);
        EXPECT_EQ(rows["codigo"].integer(), before + 1);
        EXPECT_EQ(rows["nome"].text(), "Aroeira");
        EXPECT_EQ(rows.RecordCount(), before + 1);
        rows.Requery();
        EXPECT_EQ(rows.RecordCount(), before + 1);
    }
    EXPECT_EQ(column("select * from bancos order by nome", "codigo"),
              (Strings{"3", "4", "5", "1", "2"}));
}

TEST_P(EditTest, ANewRowInAnEmptyTableIsCurrent) {
    Recordset all;
    all.Open("select * from semfundos where lancamento>0", connection);
    while (!all.EOF()) {
        all.Delete();
        all.MoveNext();
    }
    Recordset rows;
    rows.Open("semfundos", connection);
    EXPECT_TRUE(rows.EOF());
    rows.AddNew();
    EXPECT_FALSE(rows.EOF());
    EXPECT_FALSE(rows.BOF());
    EXPECT_EQ(errorOf([&] { rows.Delete(); }), Errc::misuse) << "it isn't stored yet";
    EXPECT_EQ(rows.EditMode(), EditMode::Add);
    rows["numero"] = 5;
    rows.Update();
    EXPECT_FALSE(rows.EOF());
    EXPECT_EQ(rows["numero"].text(), "5");
}

TEST_P(EditTest, ChangedFieldsAreStoredByUpdateAndNotBefore) {
    Recordset rows;
    rows.Open("cheques", connection);
    rows.Find("lancamento=2");
    rows["valor"] = "1.234,5678";
    rows["bompara "] = day(2025, 12, 31);
    rows["descontar"] = true;
    rows["observacao"] = FormText{"ação"};
    rows["agencia"] = nullptr;
    EXPECT_EQ(rows.EditMode(), EditMode::InProgress);
    EXPECT_EQ(rows["valor"].currency(), Currency{12345678});

    Recordset other;
    other.Open("select * from cheques where lancamento=2", connection);
    EXPECT_EQ(other["valor"].currency(), Currency{2000001});
    rows.Update();
    EXPECT_EQ(other["valor"].currency(), Currency{12345678});
    EXPECT_EQ(other["bompara"].date(), day(2025, 12, 31));
    EXPECT_TRUE(other["descontar"].boolean());
    EXPECT_EQ(other["observacao"].text(), "ação");
    EXPECT_EQ(other["numero"].text(), "000200");
}

TEST_P(EditTest, ACancelledEditLeavesNothing) {
    Recordset rows;
    rows.Open("bancos", connection);
    rows.MoveNext();
    rows["nome"] = "x";
    rows.CancelUpdate();
    EXPECT_EQ(rows["nome"].text(), "Banco do Sul");
    rows.AddNew();
    rows["nome"] = "x";
    rows.CancelUpdate();
    EXPECT_EQ(rows["nome"].text(), "Banco do Sul");
    rows.Update();
    EXPECT_EQ(rows.RecordCount(), 3);
}

TEST_P(EditTest, ARowStaysCurrentWhenItsKeyChanges) {
    makeTable({"chaves", {{"n", jet::ColumnType::longInteger}}, {{"PrimaryKey", {{"n"}}, true}}});
    for (const std::int64_t n : {1, 2, 3})
        add("chaves", {
                          {"n", n}
        });
    for (const char* source : {"chaves", "select * from chaves where n>0"}) {
        Recordset rows;
        rows.Open(source, connection);
        const auto first = rows["n"].integer();
        rows["n"] = 9;
        rows.Update();
        EXPECT_EQ(rows["n"].integer(), 9) << source;
        add("chaves", {
                          {"n", first}
        }); // past the connection
        EXPECT_EQ(rows["n"].integer(), 9) << source;
        rows.MoveLast();
        EXPECT_EQ(rows["n"].integer(), 9) << source;
        rows.Delete();
    }
    Recordset whole;
    whole.Open("chaves", connection);
    whole["n"] = 5;
    whole.Update();
    EXPECT_FALSE(whole.EOF());
    whole.MovePrevious();
    EXPECT_EQ(whole["n"].integer(), 3) << "the neighbour of its new place";
}

TEST_P(EditTest, MovingStoresAPendingEdit) {
    Recordset rows;
    rows.Open("bancos", connection);
    rows["nome"] = "Um";
    rows.MoveNext();
    rows["nome"] = "Dois";
    rows.Find("codigo=3");
    rows.AddNew();
    rows["nome"] = "Quatro";
    rows.MoveFirst();
    EXPECT_EQ(column("bancos", "nome"), (Strings{"Um", "Dois", "Agrário", "Quatro"}));
}

TEST_P(EditTest, EveryWayToLeaveARowStoresIt) {
    const std::pair<const char*, std::function<void(Recordset&)>> ways[] = {
        {"to the first", [](Recordset& rows) { rows.MoveFirst(); }                  },
        {"to the last",  [](Recordset& rows) { rows.MoveLast(); }                   },
        {"onwards",      [](Recordset& rows) { rows.MoveNext(); }                   },
        {"back",         [](Recordset& rows) { rows.MovePrevious(); }               },
        {"to be found",  [](Recordset& rows) { rows.Find("codigo=3"); }             },
        {"to a filter",  [](Recordset& rows) { rows.setFilter("codigo=1"); }        },
        {"to an order",  [](Recordset& rows) { rows.setSort("nome desc"); }         },
        {"to a new one", [](Recordset& rows) { rows.AddNew(), rows.CancelUpdate(); }},
    };
    for (const auto& [way, leave] : ways) {
        Recordset rows;
        rows.Open("bancos", connection);
        rows.MoveNext();
        rows["nome"] = way;
        leave(rows);
        EXPECT_EQ(rows.EditMode(), EditMode::None) << way;
        EXPECT_EQ(column("bancos", "nome").at(1), way);
    }
}

TEST_P(EditTest, RequeryRefusesWhileAnEditIsPending) {
    Recordset rows;
    rows.Open("bancos", connection);
    rows["nome"] = "x";
    EXPECT_EQ(errorOf([&] { rows.Requery(); }), Errc::misuse);
    rows.CancelUpdate();
    rows.Requery();
}

TEST_P(EditTest, ValuesThatDontFitAreRefusedAtOnce) {
    Recordset rows;
    rows.Open("bancos", connection);
    EXPECT_EQ(errorOf([&] { rows["cod_banco"] = ""; }), Errc::outOfRange);
    EXPECT_EQ(errorOf([&] { rows["cod_banco"] = "12x"; }), Errc::outOfRange);
    EXPECT_EQ(rows.EditMode(), EditMode::None);
    try {
        rows["cod_banco"] = "abc";
    } catch (const jet::Error& error) {
        EXPECT_STREQ(error.what(),
                     "O campo \"cod_banco\" pede um número inteiro, e recebeu \"abc\".");
    }
    rows["cod_banco"] = 99999999999;
    EXPECT_EQ(errorOf([&] { rows.Update(); }), Errc::outOfRange);
    rows.CancelUpdate();
    rows["nome"] = std::string(51, 'x');
    EXPECT_EQ(errorOf([&] { rows.Update(); }), Errc::tooLong);
    rows.CancelUpdate();
    EXPECT_EQ(rows["nome"].text(), "Banco do Norte");
}

TEST_P(EditTest, AnAssignmentFromAnotherFieldTakesItsValue) {
    Recordset from;
    Recordset to;
    from.Open("cheques", connection);
    to.Open("semfundos", connection);
    to.AddNew();
    for (const char* field : {"cliente", "banco", "numero", "data", "valor", "observacao"})
        to[field] = from[field];
    to.Update();
    EXPECT_EQ(to["valor"].currency(), Currency{1005000});
    EXPECT_EQ(to["numero"].text(), "000123");
    EXPECT_TRUE(to["observacao"].isNull());
}

TEST_P(EditTest, AfterDeleteTheRowIsGoneAndTheNeighboursAreThere) {
    for (const char* source : {"cheques", "select * from cheques where lancamento>0"}) {
        Recordset rows;
        rows.Open(source, connection);
        rows.MoveNext();
        const auto gone = rows["lancamento"].integer();
        rows.Delete();
        EXPECT_FALSE(rows.EOF());
        EXPECT_FALSE(rows.BOF());
        EXPECT_EQ(errorOf([&] { (void)rows["numero"].value(); }), Errc::noCurrentRow);
        EXPECT_EQ(errorOf([&] { rows.Delete(); }), Errc::noCurrentRow);
        EXPECT_EQ(errorOf([&] { rows["numero"] = 1; }), Errc::noCurrentRow);
        rows.MoveNext();
        EXPECT_EQ(rows["lancamento"].integer(), gone + 1);
        rows.Delete();
        rows.MovePrevious();
        EXPECT_EQ(rows["lancamento"].integer(), 1);
        rows.MoveLast();
        rows.Delete();
        rows.MoveNext();
        EXPECT_TRUE(rows.EOF());
        rows.Close();
        rows.Open(source, connection);
        EXPECT_EQ(rows.RecordCount(), 3);
        // For the next source.
        for (int i = 0; i < 3; ++i) {
            rows.MoveLast();
            rows.Delete();
        }
        EXPECT_EQ(rows.RecordCount(), 0);
        rows.MoveNext();
        EXPECT_TRUE(rows.EOF());
        EXPECT_TRUE(rows.BOF());
        rows.Close();
        for (std::int64_t i = 1; i < 7; ++i)
            add("cheques", {
                               {"lancamento", i}
            });
    }
}

TEST_P(EditTest, ARowChangedByAnotherIsAConflict) {
    Recordset mine;
    Recordset other;
    mine.Open("bancos", connection);
    other.Open("select * from bancos where codigo=1", connection);
    EXPECT_EQ(mine["nome"].text(), "Banco do Norte");

    // Changed after it was read, before it is edited.
    other["nome"] = "Outro";
    other.Update();
    mine["cod_banco"] = 5;
    EXPECT_EQ(errorOf([&] { mine.Update(); }), Errc::conflict);
    EXPECT_EQ(errorOf([&] { mine.Update(); }), Errc::conflict);
    EXPECT_EQ(other["cod_banco"].integer(), 104);
    mine.CancelUpdate();

    // Changed while it is edited.
    mine["cod_banco"] = 5;
    other["cod_banco"] = 6;
    other.Update();
    EXPECT_EQ(errorOf([&] { mine.Update(); }), Errc::conflict);
    EXPECT_EQ(other["cod_banco"].integer(), 6);
    mine.CancelUpdate();

    // Changed after it was read, before it is deleted.
    EXPECT_EQ(mine["cod_banco"].integer(), 6);
    other["cod_banco"] = 8;
    other.Update();
    EXPECT_EQ(errorOf([&] { mine.Delete(); }), Errc::conflict);
    EXPECT_EQ(mine.RecordCount(), 3);
    mine.MoveFirst();

    // Read again: no conflict.
    mine["cod_banco"] = 5;
    mine.Update();
    EXPECT_EQ(other["cod_banco"].integer(), 5);
    mine["cod_banco"] = 7;
    mine.Update();
    EXPECT_EQ(mine["cod_banco"].integer(), 7);
}

TEST_P(EditTest, ARowChangedPastTheConnectionIsAConflict) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    Recordset mine;
    mine.Open("cliente_fornecedor", connection);
    mine["nome"] = "A";
    jet::Table& clients = table("cliente_fornecedor");
    const std::size_t remarks = clients.findColumn("observacao").value();
    auto scan = clients.scan();
    ASSERT_TRUE(scan.first());
    const jet::Assignment change{remarks, std::string(5000, 'x')};
    clients.update(scan.id(), std::span(&change, 1));
    EXPECT_EQ(errorOf([&] { mine.Update(); }), Errc::conflict);
    mine.CancelUpdate();
    EXPECT_EQ(mine["observacao"].text().size(), 5000U);
}

TEST_P(EditTest, ARowDeletedByAnotherIsAConflict) {
    if (onServer())
        GTEST_SKIP() << kJoinsStay;
    Recordset mine;
    Recordset other;
    mine.Open("bancos", connection);
    other.Open("select * from bancos where codigo=1", connection);
    mine["nome"] = "x";
    other.Delete();
    EXPECT_EQ(errorOf([&] { mine.Update(); }), Errc::conflict);
    mine.CancelUpdate();
    EXPECT_EQ(errorOf([&] { (void)mine["nome"].value(); }), Errc::noCurrentRow);
    mine.MoveNext();
    EXPECT_EQ(mine["codigo"].integer(), 2);
    Recordset joined;
    joined.Open("select * from bancos inner join cheques on bancos.codigo=cheques.banco "
                "where bancos.codigo=2 order by lancamento",
                connection);
    EXPECT_EQ(joined["lancamento"].integer(), 2);
    Recordset cheque;
    cheque.Open("select * from cheques where lancamento=2", connection);
    cheque.Delete();
    EXPECT_EQ(errorOf([&] { (void)joined["numero"].value(); }), Errc::noCurrentRow);
    joined.MoveNext();
    EXPECT_EQ(joined["lancamento"].integer(), 6);
}

TEST_P(EditTest, AChangedRowStaysInItsSetUntilRequery) {
    if (onServer())
        GTEST_SKIP() << kNewsAtOnce;
    Recordset rows;
    rows.Open("select * from cheques where cliente=1 order by numero", connection);
    EXPECT_EQ(rows.RecordCount(), 3);
    rows["cliente"] = 2;
    rows.Update();
    EXPECT_EQ(rows.RecordCount(), 3);
    EXPECT_EQ(rows["cliente"].integer(), 2);
    rows.Requery();
    EXPECT_EQ(rows.RecordCount(), 2);
}

TEST_P(EditTest, EveryTypeComesBackAsItWent) {
    Recordset rows;
    rows.Open("cliente_fornecedor", connection);
    rows.AddNew();
    rows["nome"] = "Conceição";
    rows["tipo"] = true;
    rows["renuneração_mensal"] = Currency{std::numeric_limits<std::int64_t>::max()};
    rows["limite_credito"] = Currency{-1};
    rows["dt_nascimento"] = day(1890, 2, 3);
    rows["observacao"] = std::string(20000, 'o');
    rows.Update();
    rows.MoveFirst();
    rows.Find("nome='CONCEIÇÃO'");
    ASSERT_FALSE(rows.EOF());
    EXPECT_EQ(rows["renuneração_mensal"].currency(),
              Currency{std::numeric_limits<std::int64_t>::max()});
    EXPECT_EQ(rows["limite_credito"].value(), jet::Value{Currency{-1}});
    EXPECT_EQ(rows["dt_nascimento"].text(), "03/02/1890");
    EXPECT_EQ(rows["observacao"].text(), std::string(20000, 'o'));
    EXPECT_EQ(rows["tipo"].value(), jet::Value{true});
}

TEST_P(EditTest, AFieldTellsHowMuchItHolds) {
    Recordset rows;
    rows.Open("select * from bancos where codigo<0", connection); // no row is needed
    EXPECT_EQ(rows["nome"].DefinedSize(), 50U);
    EXPECT_EQ(rows["codigo"].DefinedSize(), std::nullopt);
    Recordset computed;
    computed.Open("select max(nome) as ultimo from bancos", connection);
    EXPECT_EQ(computed["ultimo"].DefinedSize(), std::nullopt);
    EXPECT_EQ(computed["ultimo"].refusal(std::string(300, 'x')), std::nullopt);
}

TEST_P(EditTest, AFieldTellsWhyItRefusesAText) {
    Recordset rows;
    rows.Open("bancos", connection);
    std::string name;
    for (int i = 0; i < 50; ++i)
        name += "ã";
    EXPECT_EQ(rows["nome"].refusal(name), std::nullopt);
    EXPECT_NE(rows["nome"].refusal(name + "o").value_or("").find("50"), std::string::npos);
    EXPECT_EQ(rows["nome"].refusal("→").has_value(), GetParam() == jet::Version::jet3);
    EXPECT_EQ(rows["cod_banco"].refusal("104"), std::nullopt);
    EXPECT_TRUE(rows["cod_banco"].refusal("cento e quatro").has_value());
    EXPECT_EQ(rows.EditMode(), EditMode::None);
}

} // namespace
