// What a change of a parent brings with it for its children, where the file says so.
#include "jet/database/RelatedTables.h"

using namespace jet;
using namespace std::string_literals;

namespace {

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
