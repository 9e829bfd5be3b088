// The relationships that the back-office keeps in the file: kept by this engine too.
#include "jet/database/RelatedTables.h"

using namespace jet;
using namespace std::string_literals;

namespace {

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

} // namespace
