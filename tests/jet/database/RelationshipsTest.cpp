// The relationships that the back-office keeps in the file: kept by this engine too.
#include "jet/RuleFile.h"
#include "support/Versions.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>

using namespace jet;
using namespace std::string_literals;

namespace {

using Flags = FileRelationship;

class Relationships : public RuleFile {
protected:
    Relationships() {
        // Children with an index on their parent's key, and without one.
        for (const bool indexed : {true, false}) {
            // clang-format off
            TableSpec child{
                indexed ? "cheques" : "avulsos",
                {{"numero", ColumnType::longInteger},
                 {"cliente", ColumnType::longInteger},
                 {"uf", ColumnType::text, 2}},
                {{"PrimaryKey", {{"numero"}}, true}}
            };
            // clang-format on
            if (indexed)
                child.indexes.push_back({"cliente", {{"cliente"}}});
            database_->createTable(child);
        }
        // clang-format off
        database_->createTable({
            "clientes",
            {{"codigo", ColumnType::longInteger},
             {"uf", ColumnType::text, 2},
             {"pai", ColumnType::longInteger}},
            {{"PrimaryKey", {{"codigo"}}, true}, {"uf", {{"uf"}}}, {"pai", {{"pai"}}}}
        });
        // clang-format on
        database_->createTable(
            {"estados", {{"uf", ColumnType::text, 2}}, {{"PrimaryKey", {{"uf"}}, true}}});
    }

    std::vector<Cascaded> change(const std::string& name, RowId row,
                                 const std::vector<Assignment>& changes) {
        return table(name).update(row, changes);
    }
    void relate(const std::string& child, const std::string& column, const std::string& parent,
                const std::string& key, std::int64_t flags = 0) {
        addRelationship(*database_, {child + parent, child, {column}, parent, {key}, flags});
    }

    /// The accounts of banks and their leaves, whose keys are of two columns.
    void relateAccounts(const std::vector<IndexSpec>& indexesOfLeaves) {
        // clang-format off
        database_->createTable({
            "contas",
            {{"agencia", ColumnType::text, 10}, {"banco", ColumnType::longInteger}},
            {{"PrimaryKey", {{"banco"}, {"agencia"}}, true}}
        });
        database_->createTable({
            "folhas",
            {{"banco", ColumnType::longInteger}, {"agencia", ColumnType::text, 10}},
            indexesOfLeaves
        });
        addRelationship(*database_,
                        {"contasfolhas", "folhas", {"agencia", "banco"},
                         "contas", {"agencia", "banco"}, Flags::kCascadeUpdate});
        // clang-format on
    }

    /// For a test of broken ones: the check of the file, in the end, would rightly tell of them.
    void forgetRelationships() {
        Table& declared = table("MSysRelationships");
        for (RowCursor row = declared.scan(); row.first();)
            declared.erase(row.id());
    }

    using Contents = std::map<std::string, std::vector<Row>>;
    [[nodiscard]] Contents contents() {
        Contents all;
        for (const std::string& name : database_->tableNames()) {
            RowCursor row = table(name).scan();
            for (bool there = row.first(); there; there = row.next())
                all[name].push_back(row.row().values());
        }
        return all;
    }
    /// The message of the Error{related} that `body` throws; nothing has changed.
    template <class Body>
    std::string refusal(Body&& body) {
        const Contents before = contents();
        try {
            body();
            ADD_FAILURE() << "nothing was refused";
        } catch (const Error& error) {
            EXPECT_EQ(error.code(), Errc::related) << error.what();
            EXPECT_EQ(contents(), before);
            return error.what();
        }
        return {};
    }
    [[nodiscard]] std::vector<Value> column(const std::string& name, std::size_t place) {
        std::vector<Value> values;
        const Contents all = contents();
        for (const Row& row : all.at(name))
            values.push_back(row[place]);
        return values;
    }
};
INSTANTIATE_TEST_SUITE_P(, Relationships, bothVersions(), versionName);

TEST_P(Relationships, NoChildWithoutItsParent) {
    for (const char* child : {"cheques", "avulsos"}) {
        SCOPED_TRACE(child);
        relate(child, "cliente", "clientes", "codigo");
        EXPECT_EQ(refusal([&] {
                      add(child, {whole(1), whole(7), {}});
                  }),
                  "O registro da tabela \""s + child +
                      "\" não pode ser gravado: o valor de \"cliente\" (7) não existe em "
                      "\"codigo\" da tabela \"clientes\" (relacionamento \"" +
                      child + "clientes\"). Cadastre-o lá primeiro, ou corrija-o.");
        const RowId orphan = add(child, {whole(1), {}, {}}); // a null refers to nobody
        const RowId parent = add("clientes", {whole(7), {}, {}});
        const RowId row = add(child, {whole(2), whole(7), {}});
        refusal([&] {
            change(child, row,
                   {
                       {1, whole(8)}
            });
        });
        refusal([&] {
            change(child, orphan,
                   {
                       {1, whole(8)}
            });
        });
        change(child, row,
               {
                   {0, whole(3)}
        });
        change(child, orphan,
               {
                   {1, whole(7)}
        });
        table(child).erase(row);
        table(child).erase(orphan);
        table("clientes").erase(parent);
    }
}

TEST_P(Relationships, NoParentLeavesItsChildren) {
    for (const char* child : {"cheques", "avulsos"}) {
        SCOPED_TRACE(child);
        relate(child, "cliente", "clientes", "codigo");
        const RowId parent = add("clientes", {whole(7), {}, {}});
        const RowId other = add("clientes", {whole(8), {}, {}});
        const RowId row = add(child, {whole(2), whole(7), {}});
        EXPECT_EQ(refusal([&] { table("clientes").erase(parent); }),
                  "O registro (7) da tabela \"clientes\" não pode ser excluído: a tabela \""s +
                      child +
                      "\" tem registros ligados a ele pelo campo \"cliente\" "
                      "(relacionamento \"" +
                      child +
                      "clientes\"). Altere-os ou exclua-os "
                      "primeiro.");
        EXPECT_EQ(refusal([&] {
                      change("clientes", parent,
                             {
                                 {0, whole(9)}
                      });
                  }),
                  "O valor de \"codigo\" (7) da tabela \"clientes\" não pode ser alterado: a "
                  "tabela \""s +
                      child +
                      "\" tem registros ligados a ele pelo campo \"cliente\" "
                      "(relacionamento \"" +
                      child +
                      "clientes\"). Altere-os ou exclua-os "
                      "primeiro.");
        change("clientes", parent,
               {
                   {1, "SP"s   },
                   {0, whole(7)}
        }); // the same key again
        change("clientes", other,
               {
                   {0, whole(10)}
        });
        table("clientes").erase(other);
        table(child).erase(row);
        change("clientes", parent,
               {
                   {0, whole(9)}
        });
        table("clientes").erase(parent);
    }
}

TEST_P(Relationships, DeletingCascadesWhereDeclared) {
    relate("clientes", "uf", "estados", "uf", Flags::kCascadeDelete);
    relate("cheques", "cliente", "clientes", "codigo", Flags::kCascadeDelete);
    relate("avulsos", "uf", "estados", "uf", Flags::kCascadeNull);
    const RowId state = add("estados", {"SP"s});
    add("estados", {"RJ"s});
    for (std::int64_t i = 0; i < 40; ++i) {
        add("clientes", {whole(i), (i % 2 == 0 ? "sp"s : "RJ"s), {}});
        add("cheques", {whole(i), whole(i), {}});
        add("cheques", {whole(100 + i), whole(i), {}});
        add("avulsos", {whole(i), whole(i), "SP"s});
    }
    refusal([&] {
        change("estados", state,
               {
                   {0, "MG"s}
        });
    });
    const auto others = table("estados").erase(state);
    EXPECT_EQ(others.size(), 20U + 40U + 40U);
    EXPECT_EQ(std::count_if(others.begin(), others.end(),
                            [](const Cascaded& other) { return other.erased; }),
              60);
    for (const Cascaded& other : others) {
        if (other.table->name() == "avulsos") {
            EXPECT_EQ(other.before.at(2), Value("SP"s)) << "as it was until then";
        }
    }
    EXPECT_EQ(table("clientes").rowCount(), 20);
    EXPECT_EQ(table("cheques").rowCount(), 40);
    for (const Value& uf : column("avulsos", 2))
        EXPECT_TRUE(isNull(uf));
    for (const Value& client : column("cheques", 1))
        EXPECT_EQ(std::get<std::int64_t>(client) % 2, 1);
}

TEST_P(Relationships, ATableTellsWhichOthersItsCascadesReach) {
    relate("clientes", "uf", "estados", "uf", Flags::kCascadeDelete | Flags::kCascadeUpdate);
    relate("clientes", "pai", "clientes", "codigo", Flags::kCascadeDelete);
    relate("cheques", "cliente", "clientes", "codigo", Flags::kCascadeDelete);
    relate("avulsos", "uf", "estados", "uf");
    using Tables = std::vector<const Table*>;
    const Tables both{&table("clientes"), &table("cheques")};
    EXPECT_EQ(table("estados").cascadesTo(std::nullopt), both);
    EXPECT_THAT(table("clientes").cascadesTo(std::nullopt),
                testing::UnorderedElementsAreArray(both))
        << "itself too";
    const std::vector<Assignment> state{
        {0, "MG"s}
    };
    EXPECT_EQ(table("estados").cascadesTo(std::span(state)), both) << "by what a new key may meet";
    const std::vector<Assignment> code{
        {0, whole(7)}
    };
    EXPECT_EQ(table("clientes").cascadesTo(std::span(code)), Tables()) << "only deletions";
    EXPECT_EQ(table("cheques").cascadesTo(std::nullopt), Tables());
}

TEST_P(Relationships, UpdatingCascadesWhereDeclared) {
    relate("clientes", "uf", "estados", "uf", Flags::kCascadeUpdate);
    relate("cheques", "cliente", "clientes", "codigo", Flags::kCascadeUpdate);
    const RowId state = add("estados", {"SP"s});
    const RowId client = add("clientes", {whole(1), "SP"s, {}});
    add("clientes", {whole(2), {}, {}});
    add("cheques", {whole(1), whole(1), {}});
    add("cheques", {whole(2), whole(2), {}});
    add("cheques", {whole(3), whole(1), {}});
    EXPECT_EQ(change("estados", state,
                     {
                         {0, "MG"s}
    })
                  .size(),
              1U);
    EXPECT_EQ(column("clientes", 1), (std::vector<Value>{"MG"s, {}}));
    EXPECT_EQ(change("clientes", client,
                     {
                         {0, whole(5)}
    })
                  .size(),
              2U);
    EXPECT_EQ(column("cheques", 1), (std::vector<Value>{whole(5), whole(2), whole(5)}));
    EXPECT_EQ(change("estados", state,
                     {
                         {0, "mg"s}
    })
                  .size(),
              0U)
        << "the same key still";
    EXPECT_EQ(refusal([&] { table("estados").erase(state); }).substr(0, 11), "O registro ");
}

TEST_P(Relationships, ACascadeThatFailsUndoesEverything) {
    relate("clientes", "uf", "estados", "uf", Flags::kCascadeDelete | Flags::kCascadeUpdate);
    relate("cheques", "cliente", "clientes", "codigo");
    setRules(*database_, "clientes",
             {
                 {.column = "uf", .rule = "<>'XX'"}
    });
    const RowId state = add("estados", {"SP"s});
    for (std::int64_t i = 0; i < 30; ++i)
        add("clientes", {whole(i), "SP"s, {}});
    add("cheques", {whole(1), whole(15), {}});
    refusal([&] { table("estados").erase(state); });
    const Contents before = contents();
    EXPECT_THROW(change("estados", state,
                        {
                            {0, "XX"s}
    }),
                 Error);
    EXPECT_EQ(contents(), before);

    database_->begin(); // the same inside a transaction, which goes on
    add("clientes", {whole(99), "SP"s, {}});
    refusal([&] { table("estados").erase(state); });
    change("estados", state,
           {
               {0, "RJ"s}
    });
    database_->commit();
    EXPECT_EQ(table("clientes").rowCount(), 31);
    EXPECT_EQ(column("clientes", 1), std::vector<Value>(31, "RJ"s));
}

TEST_P(Relationships, ATableMayReferToItself) {
    relate("clientes", "pai", "clientes", "codigo");
    refusal([&] { add("clientes", {whole(1), {}, whole(2)}); });
    const RowId own = add("clientes", {whole(1), {}, whole(1)}); // its own parent
    const RowId child = add("clientes", {whole(2), {}, whole(1)});
    refusal([&] { table("clientes").erase(own); });
    refusal([&] {
        change("clientes", own,
               {
                   {0, whole(3)}
        });
    });
    table("clientes").erase(child);
    refusal([&] {
        change("clientes", own,
               {
                   {0, whole(3)}
        });
    });
    change("clientes", own,
           {
               {0, whole(3)},
               {2, whole(3)}
    });
    table("clientes").erase(own);
}

TEST_P(Relationships, AFamilyOfAnyDepthGoesAtOnce) {
    relate("clientes", "pai", "clientes", "codigo", Flags::kCascadeDelete);
    database_->begin();
    RowId first{};
    constexpr std::int64_t kGenerations = 3000;
    for (std::int64_t i = 1; i <= kGenerations; ++i) {
        const RowId row = add("clientes", {whole(i), {}, i > 1 ? whole(i - 1) : Value{}});
        first = i == 1 ? row : first;
    }
    change("clientes", first,
           {
               {2, whole(kGenerations)}
    }); // and in a ring
    EXPECT_EQ(table("clientes").erase(first).size(), static_cast<std::size_t>(kGenerations - 1));
    database_->commit();
    EXPECT_EQ(table("clientes").rowCount(), 0);
}

TEST_P(Relationships, RowsThatReferToEachOtherGoTogetherAndChangeTogether) {
    // A client's first cheque, and the cheque's client: each the other's child.
    database_->createTable({
        "contas",
        {{"codigo", ColumnType::longInteger}, {"folha", ColumnType::longInteger}},
        {{"PrimaryKey", {{"codigo"}}, true},  {"folha", {{"folha"}}}            }
    });
    database_->createTable({
        "folhas",
        {{"numero", ColumnType::longInteger}, {"conta", ColumnType::longInteger}},
        {{"PrimaryKey", {{"numero"}}, true},  {"conta", {{"conta"}}}            }
    });
    constexpr auto kAll = Flags::kCascadeDelete | Flags::kCascadeUpdate;
    relate("contas", "folha", "folhas", "numero", kAll);
    relate("folhas", "conta", "contas", "codigo", kAll);
    const RowId account = add("contas", {whole(1), {}});
    add("folhas", {whole(10), whole(1)});
    add("contas", {whole(2), whole(10)});
    add("folhas", {whole(20), whole(2)});
    change("contas", account,
           {
               {1, whole(20)}
    }); // the ring: 1 <- 10 <- 2 <- 20 <- 1
    EXPECT_EQ(change("contas", account,
                     {
                         {0, whole(5)}
    })
                  .size(),
              1U);
    EXPECT_EQ(contents()["folhas"], (std::vector<Row>{
                                        {whole(10), whole(5)},
                                        {whole(20), whole(2)}
    }));
    refusal([&] {
        change("contas", account,
               {
                   {1, whole(77)}
        });
    });
    EXPECT_EQ(table("contas").erase(account).size(), 3U);
    EXPECT_EQ(table("contas").rowCount() + table("folhas").rowCount(), 0);
}

TEST_P(Relationships, AKeyThatIsAReferenceTooIsPassedOn) {
    // One to one, and on to a third: the key of each is that of the one before.
    for (const char* name : {"fichas", "saldos"})
        database_->createTable(
            {name, {{"codigo", ColumnType::longInteger}}, {{"PrimaryKey", {{"codigo"}}, true}}});
    constexpr auto kAll = Flags::kCascadeDelete | Flags::kCascadeUpdate;
    relate("fichas", "codigo", "clientes", "codigo", kAll);
    relate("saldos", "codigo", "fichas", "codigo", kAll);
    const RowId client = add("clientes", {whole(1), {}, {}});
    add("clientes", {whole(2), {}, {}});
    for (const char* name : {"fichas", "saldos"}) {
        add(name, {whole(1)});
        EXPECT_THROW(add(name, {whole(1)}), Error);
    }
    refusal([&] { add("saldos", {whole(2)}); });
    change("clientes", client,
           {
               {0, whole(9)}
    });
    EXPECT_EQ(column("saldos", 0), std::vector<Value>{whole(9)});
    table("clientes").erase(client);
    EXPECT_EQ(table("fichas").rowCount() + table("saldos").rowCount(), 0);
}

TEST_P(Relationships, AnUpdateThatCascadesWithinItsOwnTableEnds) {
    relate("clientes", "pai", "clientes", "codigo", Flags::kCascadeUpdate);
    const RowId own = add("clientes", {whole(1), {}, whole(1)}); // its own parent
    add("clientes", {whole(2), {}, whole(1)});
    change("clientes", own,
           {
               {0, whole(7)}
    });
    EXPECT_EQ(column("clientes", 2), (std::vector<Value>{whole(7), whole(7)}));
}

TEST_P(Relationships, ACascadeThatMeetsAKeyThatIsThereAlreadyUndoesEverything) {
    database_->createTable({
        "fichas",
        {{"codigo", ColumnType::longInteger}, {"uf", ColumnType::text, 2}},
        {{"PrimaryKey", {{"uf"}}, true}                                  }
    });
    const RowId state = add("estados", {"SP"s});
    add("fichas", {whole(1), "SP"s});
    add("fichas", {whole(2), "MG"s}); // from before the relationship: its state isn't there
    relate("fichas", "uf", "estados", "uf", Flags::kCascadeUpdate);
    const Contents before = contents();
    EXPECT_THROW(change("estados", state,
                        {
                            {0, "mg"s}
    }),
                 Error);
    EXPECT_EQ(contents(), before);
}

TEST_P(Relationships, TextsAreTheSameWhateverTheirCapitals) {
    relate("clientes", "uf", "estados", "uf", Flags::kCascadeUpdate);
    const RowId state = add("estados", {"SP"s});
    add("clientes", {whole(1), "sp"s, {}});
    add("clientes", {whole(2), "Sp"s, {}});
    refusal([&] { add("clientes", {whole(3), "SR"s, {}}); });
    refusal([&] { table("estados").erase(state); });
    EXPECT_EQ(change("estados", state,
                     {
                         {0, "RJ"s}
    })
                  .size(),
              2U);
    EXPECT_EQ(column("clientes", 1), std::vector<Value>(2, "RJ"s));
}

TEST_P(Relationships, KeysOfSeveralColumnsGoTogether) {
    relateAccounts({
        {"chave", {{"agencia", false}, {"banco"}}}
    });
    const RowId account = add("contas", {"12"s, whole(1)});
    add("contas", {"34"s, whole(2)});
    refusal([&] { add("folhas", {whole(1), "34"s}); });
    add("folhas", {whole(1), "12"s});
    add("folhas", {{}, "99"s}); // not all there: not looked at
    EXPECT_EQ(change("contas", account,
                     {
                         {0, "56"s}
    })
                  .size(),
              1U);
    EXPECT_EQ(contents()["folhas"], (std::vector<Row>{
                                        {whole(1), "56"s},
                                        {{},       "99"s}
    }));
    refusal([&] { table("contas").erase(account); });
}

TEST_P(Relationships, AChildOfTwoParentsFollowsBothInOneStatement) {
    // The state's key goes down two ways to the same column: between the two no bond may be missed.
    database_->createTable(
        {"capitais", {{"uf", ColumnType::text, 2}}, {{"PrimaryKey", {{"uf"}}, true}}});
    relate("capitais", "uf", "estados", "uf", Flags::kCascadeUpdate);
    relate("clientes", "uf", "estados", "uf", Flags::kCascadeUpdate);
    addRelationship(*database_,
                    {"outra", "clientes", {"uf"}, "capitais", {"uf"}, Flags::kCascadeUpdate});
    const RowId state = add("estados", {"SP"s});
    add("capitais", {"SP"s});
    add("clientes", {whole(1), "SP"s, {}});
    change("estados", state,
           {
               {0, "RJ"s}
    });
    EXPECT_EQ(column("capitais", 0), std::vector<Value>{"RJ"s});
    EXPECT_EQ(column("clientes", 1), std::vector<Value>{"RJ"s});
}

TEST_P(Relationships, OnesThatAreNotToBeEnforcedOrNameUnknownThingsAreLeftAlone) {
    relate("cheques", "cliente", "clientes", "codigo", Flags::kNotEnforced);
    relate("avulsos", "cliente", "naoexiste", "codigo");
    relate("clientes", "uf", "estados", "naoexiste");
    relate("naoexiste", "cliente", "clientes", "codigo");
    addRelationship(*database_, {"outra", "cheques", {"naoexiste"}, "clientes", {"codigo"}});
    const RowId client = add("clientes", {whole(1), "XX"s, {}});
    add("cheques", {whole(1), whole(1), {}});
    add("cheques", {whole(2), whole(77), {}});
    add("avulsos", {whole(2), whole(77), {}});
    table("clientes").erase(client);

    forgetRelationships();
}

TEST_P(Relationships, OfSeveralColumnsAreKeptWithoutAnIndexToo) {
    relateAccounts({});
    const RowId account = add("contas", {"12"s, whole(1)});
    add("contas", {"12"s, whole(2)});
    add("contas", {"34"s, whole(1)});
    for (const auto& [bank, branch] : {
             std::pair(1, "12"s), {2, "12"s},
               {1, "34"s}
    })
        add("folhas", {whole(bank), branch});
    refusal([&] { add("folhas", {whole(2), "34"s}); });
    refusal([&] { table("contas").erase(account); });
    EXPECT_EQ(change("contas", account,
                     {
                         {0, "56"s}
    })
                  .size(),
              1U);
    EXPECT_EQ(column("folhas", 1), (std::vector<Value>{"56"s, "12"s, "34"s}));
}

TEST_P(Relationships, AKeyThatTheChildCouldNeverHoldHasNoChildren) {
    database_->createTable(
        {"curtos", {{"cliente", ColumnType::integer}}, {{"cliente", {{"cliente"}}}}});
    relate("curtos", "cliente", "clientes", "codigo");
    const RowId client = add("clientes", {whole(70'000), {}, {}});
    add("clientes", {whole(7), {}, {}});
    add("curtos", {whole(7)});
    table("clientes").erase(client);
    EXPECT_EQ(table("clientes").rowCount(), 1);
}

TEST_P(Relationships, AKeyThatIsNoNumberAndNoTextIsNotShown) {
    database_->createTable(
        {"dias", {{"dia", ColumnType::date}}, {{"PrimaryKey", {{"dia"}}, true}}});
    database_->createTable({"vencimentos", {{"dia", ColumnType::date}}, {{"dia", {{"dia"}}}}});
    relate("vencimentos", "dia", "dias", "dia");
    const std::string told = refusal([&] { add("vencimentos", {Date{45000}}); });
    EXPECT_NE(told.find("o valor de \"dia\" não existe em \"dia\" da tabela \"dias\""),
              std::string::npos)
        << told;
    const RowId day = add("dias", {Date{45000}});
    add("vencimentos", {Date{45000}});
    EXPECT_EQ(refusal([&] { table("dias").erase(day); }).substr(0, 23), "O registro da tabela \"d");
}

TEST_P(Relationships, ARowThatTwoOfThemReachGoesOnce) {
    // Its two states are the same one: the one way empties a field of the row that the other takes.
    database_->createTable({
        "viagens", {{"de", ColumnType::text, 2}, {"para", ColumnType::text, 2}},
         {                           }
    });
    const std::pair<std::int64_t, std::int64_t> ways[] = {
        {Flags::kCascadeDelete, Flags::kCascadeDelete},
        {Flags::kCascadeDelete, Flags::kCascadeNull  },
        {Flags::kCascadeNull,   Flags::kCascadeDelete}
    };
    for (const auto& [from, to] : ways) {
        forgetRelationships();
        relate("viagens", "de", "estados", "uf", from);
        addRelationship(*database_, {"ida", "viagens", {"para"}, "estados", {"uf"}, to});
        const RowId state = add("estados", {"SP"s});
        add("viagens", {"SP"s, "SP"s});
        table("estados").erase(state);
        EXPECT_EQ(table("viagens").rowCount(), 0);
        EXPECT_EQ(table("estados").rowCount(), 0);
    }
}

TEST_P(Relationships, OneWhosePairsDontBelongTogetherMakesItsTablesReadOnly) {
    const struct {
        const char* column;
        Value wrong;
    } cases[] = {
        {"ccolumn",            whole(3)  },
        {"icolumn",            whole(5)  },
        {"szObject",           "avulsos"s},
        {"szReferencedObject", "cheques"s},
    };
    for (const auto& [column, wrong] : cases) {
        SCOPED_TRACE(column);
        addRelationship(*database_,
                        {
                            "partida", "cheques", {"cliente", "uf"},
                              "clientes", {"codigo",  "uf"}
        });
        Table& relationships = table("MSysRelationships");
        RowCursor row = relationships.scan();
        ASSERT_TRUE(row.first() && row.next());
        const Assignment change[] = {
            {relationships.findColumn(column).value(), wrong}
        };
        relationships.update(row.id(), change);
        EXPECT_NE(table("cheques").readOnlyReason().value_or("").find("partida"),
                  std::string::npos);
        forgetRelationships();
        EXPECT_FALSE(table("cheques").readOnlyReason());
    }
}

TEST_P(Relationships, OneThatIsNotWholeMakesItsTablesReadOnly) {
    add("clientes", {whole(1), {}, {}});
    addRelationship(*database_,
                    {
                        "partida", "cheques", {"cliente", "uf"},
                          "clientes", {"codigo",  "uf"}
    });
    Table& relationships = table("MSysRelationships");
    RowCursor row = relationships.scan();
    ASSERT_TRUE(row.first());
    relationships.erase(row.id());
    for (const char* name : {"clientes", "cheques"}) {
        ASSERT_TRUE(table(name).readOnlyReason()) << name;
        EXPECT_NE(table(name).readOnlyReason()->find("partida"), std::string::npos);
    }
    EXPECT_FALSE(table("avulsos").readOnlyReason());
    forgetRelationships();
}

TEST_P(Relationships, AChildThatMayNotBeChangedStopsTheCascade) {
    relate("clientes", "uf", "estados", "uf", Flags::kCascadeDelete);
    const RowId state = add("estados", {"SP"s});
    add("clientes", {whole(1), "SP"s, {}});
    setRules(*database_, "clientes",
             {
                 {.column = "uf", .rule = "Desconhecida([uf])"}
    });
    try {
        table("estados").erase(state);
        ADD_FAILURE();
    } catch (const Error& error) {
        EXPECT_EQ(error.code(), Errc::readOnly);
        EXPECT_NE(std::string(error.what()).find("Desconhecida([uf])"), std::string::npos);
    }
    EXPECT_EQ(table("estados").rowCount(), 1);
}

} // namespace
