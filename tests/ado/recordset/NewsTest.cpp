#include "ado/Shop.h"
#include "support/Versions.h"

#include <memory>
#include <random>

namespace {

using ado::Recordset;
using Strings = std::vector<std::string>;

/// What recordsets make of changes by each other, by the engine's own users, and by roll-backs.
class NewsTest : public Shop {
protected:
    NewsTest() { addSomeOfEach(); }
};
INSTANTIATE_TEST_SUITE_P(, NewsTest, everywhere(), keptName);

TEST_P(NewsTest, ADeletedRowIsGoneFromAllSetsAtOnce) {
    if (onServer())
        GTEST_SKIP() << kNewsAtOnce;
    Recordset whole;
    Recordset sorted;
    Recordset deleting;
    whole.Open("cheques", connection);
    sorted.Open("cheques", connection, ado::CursorType::Keyset);
    sorted.setSort("numero");
    deleting.Open("select * from cheques where lancamento = 2", connection);
    deleting.Delete();
    EXPECT_EQ(whole.RecordCount(), 5);
    EXPECT_EQ(sorted.RecordCount(), 5);
    EXPECT_EQ(column(sorted, "lancamento"), (Strings{"1", "3", "5", "6", "4"}));
    // A new row may take the place of the old one in the file: it isn't taken for it.
    add("cheques", {
                       {"numero", std::string("novo")}
    });
    EXPECT_EQ(column(sorted, "lancamento"), (Strings{"1", "3", "5", "6", "4"}));
    sorted.Requery();
    EXPECT_EQ(column(sorted, "numero").back(), "novo");
}

TEST_P(NewsTest, ANewRowIsSeenAtOnceInAWholeTableAndAfterRequeryElsewhere) {
    if (onServer())
        GTEST_SKIP() << kNewsAtOnce;
    Recordset whole;
    Recordset some;
    Recordset adding;
    whole.Open("bancos", connection);
    some.Open("select * from bancos where cod_banco>0", connection);
    adding.Open("bancos", connection);
    adding.AddNew();
    adding["cod_banco"] = 5;
    adding.Update();
    whole.MoveLast();
    EXPECT_EQ(whole["cod_banco"].integer(), 5);
    EXPECT_EQ(some.RecordCount(), 3);
    some.Requery();
    EXPECT_EQ(some.RecordCount(), 4);
}

TEST_P(NewsTest, ARollBackIsNewsToo) {
    Recordset some;
    some.Open("select * from bancos where cod_banco<1000 order by nome", connection);
    connection.BeginTrans();
    some.MoveFirst();
    some["nome"] = "Zulu";
    some.Update();
    some.MoveNext();
    some.Delete();
    some.AddNew();
    some["cod_banco"] = 8;
    some["nome"] = "Novo";
    some.Update();
    some.Requery();
    EXPECT_EQ(column(some, "nome"), (Strings{"Banco do Sul", "Novo", "Zulu"}));
    connection.RollbackTrans();
    some.Requery();
    EXPECT_EQ(column(some, "nome"), (Strings{"Agrário", "Banco do Norte", "Banco do Sul"}));
}

TEST_P(NewsTest, ARollBackUndoesChangesPastTheConnectionToo) {
    if (onServer())
        GTEST_SKIP() << kNewsAtOnce;
    Recordset some;
    some.Open("select * from bancos where cod_banco>0 order by nome", connection);
    connection.BeginTrans();
    some["nome"] = "Zulu";
    some.Update();
    add("bancos", {
                      {"cod_banco", std::int64_t{9}}
    });
    connection.RollbackTrans();
    some.Requery();
    EXPECT_EQ(column(some, "nome"), (Strings{"Agrário", "Banco do Norte", "Banco do Sul"}));
    // Those that a list has seen, too.
    connection.BeginTrans();
    add("bancos", {
                      {"cod_banco", std::int64_t{9}}
    });
    some.Requery();
    EXPECT_EQ(some.RecordCount(), 4);
    connection.RollbackTrans();
    some.Requery();
    EXPECT_EQ(some.RecordCount(), 3);
}

TEST_P(NewsTest, ATableWithoutAKeyIsWalkedAndListedInTheOrderOfItsRows) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    connection.database().createTable({
        "avulsos", {{"n", jet::ColumnType::longInteger}, {"letra", jet::ColumnType::text, 1}},
         {                                   }
    });
    Recordset whole;
    whole.Open("avulsos", connection);
    EXPECT_TRUE(whole.EOF());
    EXPECT_EQ(errorOf([&] { whole.MoveLast(); }), jet::Errc::noCurrentRow);
    EXPECT_TRUE(whole.BOF());
    const std::pair<int, const char*> rows[] = {
        {3, "a"},
        {1, "b"},
        {2, "c"},
        {1, "d"}
    };
    for (const auto& [n, letter] : rows) {
        whole.AddNew();
        whole["n"] = n;
        whole["letra"] = letter;
        whole.Update();
        EXPECT_EQ(whole["letra"].text(), letter);
    }
    Strings backwards;
    for (whole.MoveLast(); !whole.BOF(); whole.MovePrevious())
        backwards.push_back(whole["letra"].text());
    EXPECT_EQ(backwards, (Strings{"d", "c", "b", "a"}));
    EXPECT_FALSE(whole.EOF());

    Recordset falling;
    falling.Open("select * from avulsos where n>0 order by n desc", connection);
    EXPECT_EQ(column(falling, "letra"), (Strings{"a", "c", "b", "d"}));
    const auto set = [&](const char* letter, int n) {
        whole.MoveFirst();
        whole.Find("letra='" + std::string(letter) + "'");
        whole["n"] = n;
        whole.Update();
        falling.Requery();
    };
    set("b", 2);
    EXPECT_EQ(column(falling, "letra"), (Strings{"a", "b", "c", "d"}));
    set("d", 3);
    EXPECT_EQ(column(falling, "letra"), (Strings{"a", "d", "b", "c"}));
    set("a", 2);
    EXPECT_EQ(column(falling, "letra"), (Strings{"d", "a", "b", "c"}));
    whole.Delete();
    EXPECT_EQ(column(falling, "letra"), (Strings{"d", "b", "c"}));
    whole.MoveNext();
    EXPECT_EQ(whole["letra"].text(), "b");
}

TEST_P(NewsTest, ChangesPastTheConnectionAreSeenByRequery) {
    Recordset some;
    some.Open("select * from bancos where cod_banco>0", connection);
    add("bancos", {
                      {"cod_banco", std::int64_t{9}}
    });
    some.Requery();
    EXPECT_EQ(some.RecordCount(), 4);
}

TEST_P(NewsTest, AJoinFindsAClientByWhatItsCodeIsByThen) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    {
        ado::Transaction adding(connection); // so many that the last isn't fetched with the first
        Recordset cheques;
        cheques.Open("cheques", connection);
        for (int i = 0; i < 300; ++i) {
            cheques.AddNew();
            cheques["cliente"] = 1;
            cheques.Update();
        }
        adding.commit();
    }
    Recordset joined;
    joined.Open("select * from cheques left join cliente_fornecedor on "
                "cheques.cliente=cliente_fornecedor.codigo",
                connection);
    const auto client = [&] { return joined["lancamento"].text() + " " + joined["nome"].text(); };
    EXPECT_EQ(client(), "1 Ana");
    joined.MoveNext();
    joined.MoveNext();
    EXPECT_EQ(client(), "3 Ana");
    // Two clients change their codes: the last cheque of client 1 hasn't been come to yet.
    jet::Table& clients = table("cliente_fornecedor");
    jet::RowCursor ana = clients.scan();
    ASSERT_TRUE(ana.first());
    const jet::RowId first = ana.id();
    ASSERT_TRUE(ana.next());
    const jet::RowId second = ana.id();
    const auto code = [&](jet::RowId row, std::int64_t number) {
        const jet::Assignment change{*clients.findColumn("codigo"), number};
        static_cast<void>(clients.update(row, {&change, 1}));
    };
    code(first, 99);
    code(second, 1);
    code(first, 2);
    joined.MoveLast();
    EXPECT_EQ(client(), "306 JOÃO");
}

/// After any changes, the quick Requery gives what asking anew gives.
TEST_P(NewsTest, RequeryGivesWhatAskingAnewGives) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    const std::vector<std::pair<std::string, std::string>> kinds{
        {"select * from cheques where cliente<5",                                     ""            },
        {"select * from cheques where cliente<5 order by numero desc, valor",         ""            },
        {"cheques",                                                                   "bompara desc"},
        {"cheques",                                                                   "numero"      },
        {"select * from cheques where bompara between #01/01/2024# and #06/30/2024#", "valor"       },
        {"select * from cheques where mid$(numero,1,1)='a' or descontar=true",        "agencia"     }
    };
    std::vector<std::unique_ptr<Recordset>> sets;
    for (const auto& [source, sort] : kinds) {
        sets.push_back(std::make_unique<Recordset>());
        sets.back()->Open(source, connection);
        if (!sort.empty())
            sets.back()->setSort(sort);
    }
    std::mt19937 random(7);
    const auto pick = [&](int most) {
        return static_cast<std::int64_t>(random() % static_cast<unsigned>(most));
    };
    Recordset editor;
    editor.Open("cheques", connection);
    for (int round = 0; round < 150; ++round) {
        for (std::int64_t changes = pick(4); changes >= 0; --changes) {
            const bool add = editor.RecordCount() < 5 || pick(3) == 0;
            if (add) {
                editor.AddNew();
            } else {
                editor.MoveFirst();
                for (std::int64_t skip = pick(5); skip > 0 && !editor.EOF(); --skip)
                    editor.MoveNext();
                if (editor.EOF())
                    editor.MoveLast();
                if (pick(3) == 0) {
                    editor.Delete();
                    continue;
                }
            }
            editor["cliente"] = pick(8);
            editor["numero"] =
                std::string(1, static_cast<char>('A' + pick(3))) + std::to_string(pick(4));
            editor["valor"] = jet::Currency{pick(5) * 10000};
            editor["descontar"] = pick(2) == 0;
            editor["bompara"] = day(2024, static_cast<int>(pick(12)) + 1, 15);
            if (pick(4) == 0)
                editor["bompara"] = nullptr;
            editor.Update();
        }
        if (round % 25 == 24) { // and past the connection
            auto scan = table("cheques").scan();
            if (scan.last())
                table("cheques").erase(scan.id());
        }
        const auto which = static_cast<std::size_t>(pick(static_cast<int>(sets.size())));
        Recordset& quick = *sets[which];
        quick.Requery();
        Recordset anew;
        anew.Open(kinds[which].first, connection);
        anew.setSort(kinds[which].second);
        ASSERT_EQ(column(quick, "lancamento"), column(anew, "lancamento"))
            << "round " << round << ", " << kinds[which].first;
    }
}

} // namespace
