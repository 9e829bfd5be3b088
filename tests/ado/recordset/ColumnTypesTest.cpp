// Columns of every type that a file can have, in statements, orders, searches and fields.
#include "ado/Shop.h"
#include "jet/Numbers.h"
#include "support/Versions.h"

#include <memory>

namespace {

using ado::Recordset;
using jet::ColumnType;
using jet::Currency;
using jet::Errc;
using jet::Value;
using namespace std::string_literals;
using Strings = std::vector<std::string>;

class ColumnTypes : public Shop {
protected:
    /// Three rows, in whose columns "b" comes after "a" and before "c"; each column has an index,
    /// but those that can't have one.
    ColumnTypes() {
        jet::TableSpec spec{
            "tipos",
            {{"nome", ColumnType::text, 1},
              {"byte", ColumnType::byte},
              {"curto", ColumnType::integer},
              {"longo", ColumnType::longInteger},
              {"valor", ColumnType::currency},
              {"simples", ColumnType::single},
              {"duplo", ColumnType::real},
              {"dia", ColumnType::date},
              {"texto", ColumnType::text, 10},
              {"sim", ColumnType::boolean},
              {"memo", ColumnType::memo},
              {"guid", ColumnType::guid},
              {"cru", ColumnType::binary, 4},
              {"objeto", ColumnType::ole}},
            {{"PrimaryKey", {{"nome"}}, true}}
        };
        if (hasDecimals)
            spec.columns.push_back({"decimal", ColumnType::numeric, 0, false, 10, 2});
        for (const char* column : kOrdered)
            spec.indexes.push_back({column, {{column}}});
        for (const char* column : kOrdered)
            spec.indexes.push_back({"desc_"s + column, {{column, false}}});
        makeTable(spec);
        const auto put = [&](const char* name, std::int64_t whole, double real) {
            const auto byte = static_cast<std::byte>(whole);
            jet::Guid guid;
            guid.bytes.fill(byte);
            const jet::RowId row =
                add("tipos", {
                                 {"nome",    std::string(name)                               },
                                 {"byte",    whole                                           },
                                 {"curto",   -300 + whole                                    },
                                 {"longo",   70'000 + whole                                  },
                                 {"valor",   Currency{whole * 12'345}                        },
                                 {"simples", real                                            },
                                 {"duplo",   real * 2                                        },
                                 {"dia",     jet::Date{40'000.5 + static_cast<double>(whole)}},
                                 {"texto",   std::string(name)                               },
                                 {"sim",     whole == 2                                      },
                                 {"memo",    std::string(name)                               },
                                 {"guid",    guid                                            },
                                 {"cru",     jet::Bytes{byte}                                },
                                 {"objeto",  jet::Bytes{byte, byte}                          }
            });
            if (hasDecimals)
                putDecimal(row, *jet::numericFrom(false, std::to_string(whole), 2));
        };
        put("b", 2, 0.1);
        put("c", 3, 436.88);
        put("a", 1, -7.5);
    }
    /// The decimal of a row.
    void putDecimal(jet::RowId row, const Value& value) {
        const jet::Assignment change[] = {
            {*table("tipos").findColumn("decimal"), value}
        };
        static_cast<void>(table("tipos").update(row, change));
    }
    /// Types beside those of kOrdered; the older files have no decimals.
    [[nodiscard]] Strings rare() const {
        Strings types{"memo", "guid", "cru", "objeto"};
        if (hasDecimals)
            types.push_back("decimal");
        return types;
    }
    const bool hasDecimals = GetParam() == jet::Version::jet4;
    static constexpr const char* kOrdered[] = {"byte",    "curto", "longo", "valor",
                                               "simples", "duplo", "dia",   "texto"};
    Strings names(const std::string& tail) {
        return column("select nome from tipos " + tail, "nome");
    }
};

INSTANTIATE_TEST_SUITE_P(, ColumnTypes, bothVersions(), keptName);

TEST_P(ColumnTypes, AreOrderedByTheirValues) {
    for (const char* name : kOrdered) {
        SCOPED_TRACE(name);
        const std::string field = name;
        EXPECT_EQ(names("order by " + field), (Strings{"a", "b", "c"}));
        EXPECT_EQ(names("order by " + field + " desc"), (Strings{"c", "b", "a"}));
        Recordset rows;
        rows.Open("tipos", connection);
        rows.setSort(field + " desc");
        EXPECT_EQ(column(rows, "nome"), (Strings{"c", "b", "a"}));
    }
    EXPECT_EQ(names("order by sim, nome"), (Strings{"b", "a", "c"})) << "yes is -1";
    for (const std::string& name : rare())
        EXPECT_EQ(names("order by " + name + " desc"), (Strings{"c", "b", "a"})) << name;
}

TEST_P(ColumnTypes, ARowThatIsChangedGoesToItsPlaceInAList) {
    Recordset editor;
    editor.Open("tipos", connection);
    Strings all = rare();
    all.insert(all.end(), std::begin(kOrdered), std::end(kOrdered));
    all.push_back("sim");
    for (const std::string& field : all) {
        editor.MoveFirst();
        Strings orders;
        std::vector<std::unique_ptr<Recordset>> lists;
        for (const char* way : {"", " desc"}) {
            orders.push_back("where nome<'z' order by " + field + way);
            lists.push_back(std::make_unique<Recordset>());
            lists.back()->Open("select * from tipos " + orders.back(), connection);
        }
        const auto expectInOrder = [&] {
            for (std::size_t i = 0; i < lists.size(); ++i) {
                lists[i]->Requery();
                EXPECT_EQ(column(*lists[i], "nome"), names(orders[i])) << orders[i];
            }
        };
        const auto set = [&](const char* row, const Value& value) {
            editor.MoveFirst();
            editor.Find("nome='"s + row + "'");
            Value before = editor[field].value();
            editor[field] = value;
            editor.Update();
            expectInOrder();
            return before;
        };
        editor.Find("nome='c'");
        const Value last = editor[field].value();
        const Value first = set("a", last);
        const Value second = set("b", Value{});
        set("a", first);
        set("b", second);
    }
}

TEST_P(ColumnTypes, AreComparedWithWhatAStatementSays) {
    const struct {
        const char* column;
        const char* second;  ///< the value of "b"
        const char* between; ///< a value between those of "b" and "c"
    } cases[] = {
        {"byte",    "2",                     "2.5"         },
        {"curto",   "-298",                  "-297.5"      },
        {"longo",   "70002",                 "70002.5"     },
        {"valor",   "2.469",                 "2.46905"     },
        {"simples", "0.1",                   "0.10000001"  },
        {"duplo",   "0.2",                   "0.3"         },
        {"dia",     "#07/08/2009 12:00:00#", "#07/09/2009#"},
        {"texto",   "'B'",                   "'bb'"        },
    };
    for (const auto& [column, second, between] : cases) {
        SCOPED_TRACE(column);
        const auto where = [&, &name = column](const char* sign, const char* value) {
            return names("where "s + name + sign + value + " order by nome");
        };
        EXPECT_EQ(where("=", second), (Strings{"b"}));
        EXPECT_EQ(where("<", second), (Strings{"a"}));
        EXPECT_EQ(where("<=", second), (Strings{"a", "b"}));
        EXPECT_EQ(where(">", second), (Strings{"c"}));
        EXPECT_EQ(where(">=", second), (Strings{"b", "c"}));
        EXPECT_EQ(where("=", between), Strings{});
        EXPECT_EQ(where("<", between), (Strings{"a", "b"}));
        EXPECT_EQ(where("<=", between), (Strings{"a", "b"}));
        EXPECT_EQ(where(">=", between), (Strings{"c"}));
        Recordset rows;
        rows.Open("tipos", connection);
        rows.Find(std::string(column) + "=" + second);
        EXPECT_EQ(rows["nome"].text(), "b");
        rows.setFilter(std::string(column) + ">" + second);
        EXPECT_EQ(this->column(rows, "nome"), (Strings{"c"}));
    }
    EXPECT_EQ(names("where byte=300"), Strings{}) << "no value of the column's";
    EXPECT_EQ(names("where byte<300 order by nome"), (Strings{"a", "b", "c"}));
    EXPECT_EQ(names("where curto>-40000 order by nome"), (Strings{"a", "b", "c"}));
    EXPECT_EQ(names("where simples<1e300 order by nome"), (Strings{"a", "b", "c"}));
    EXPECT_EQ(names("where dia<1e9 order by nome"), (Strings{"a", "b", "c"}));
    EXPECT_EQ(names("where sim=true"), (Strings{"b"}));
    EXPECT_EQ(names("where sim=-1"), (Strings{"b"}));
    EXPECT_EQ(names("where sim=1"), Strings{});
    EXPECT_EQ(names("where not sim order by nome"), (Strings{"a", "c"}));
    EXPECT_EQ(names("where memo='B'"), (Strings{"b"}));
    EXPECT_EQ(names("where guid='{02020202-0202-0202-0202-020202020202}'"), (Strings{"b"}));
    if (hasDecimals) {
        EXPECT_EQ(names("where decimal=0.02"), (Strings{"b"}));
        EXPECT_EQ(names("where decimal>0.02"), (Strings{"c"}));
    }
}

TEST_P(ColumnTypes, AreReadFromAJoinAndFromAComputedResultAsTheyAreStored) {
    const Strings text{"2", "-298", "70002", "2,469", "0,1"};
    const char* const fields[] = {"byte", "curto", "longo", "valor", "simples"};
    for (const char* statement :
         {"select * from tipos where tipos.nome='b'",
          "select tipos.* from tipos inner join bancos on bancos.codigo<>tipos.byte "
          "where tipos.nome='b'",
          "select byte,curto,longo,valor,simples,guid,cru,objeto,memo from tipos where nome='b' "
          "group by byte,curto,longo,valor,simples,guid,cru,objeto,memo"}) {
        SCOPED_TRACE(statement);
        if (table("bancos").rowCount() == 0)
            add("bancos", {
                              {"cod_banco", std::int64_t{1}}
            });
        Recordset rows;
        rows.Open(statement, connection);
        ASSERT_EQ(rows.RecordCount(), 1);
        for (std::size_t i = 0; i < text.size(); ++i)
            EXPECT_EQ(rows[fields[i]].text(), text[i]) << fields[i];
        EXPECT_EQ(rows["guid"].text(), "{02020202-0202-0202-0202-020202020202}");
        EXPECT_EQ(rows["cru"].value(), Value(jet::Bytes{std::byte{2}}));
        EXPECT_EQ(rows["objeto"].value(), Value(jet::Bytes(2, std::byte{2})));
        EXPECT_EQ(rows["memo"].text(), "b");
        EXPECT_EQ(errorOf([&] { (void)rows["cru"].text(); }), Errc::outOfRange);
    }
}

/// A row is looked for by its key again when it may have gone.
TEST_P(ColumnTypes, CanEachBeTheKey) {
    int number = 0;
    for (const char* name : {"byte", "curto", "longo", "valor", "simples", "duplo", "dia", "texto",
                             "sim", "guid", "cru", "decimal"}) {
        SCOPED_TRACE(name);
        if (name == "decimal"s && !hasDecimals)
            continue;
        const std::string other = "chave" + std::to_string(++number);
        const jet::Column& column =
            table("tipos").columns()[table("tipos").findColumn(name).value()];
        makeTable({
            other,
            {{name, column.type,
              static_cast<std::uint16_t>(column.type == ColumnType::text     ? 10
                                         : column.type == ColumnType::binary ? 4
                                                                             : 0),
              false, column.precision, column.scale},
              {"obs", ColumnType::text, 5}},
            {{"PrimaryKey", {{name}}, true}                                                   }
        });
        Recordset from;
        from.Open("tipos", connection);
        Recordset rows;
        rows.Open(other, connection);
        for (from.MoveFirst(); !from.EOF(); from.MoveNext()) {
            if (name == "sim"s && from["nome"].text() == "c")
                continue; // "a" says no already
            rows.AddNew();
            rows[name] = from[name];
            rows["obs"] = from["nome"];
            rows.Update();
        }
        rows.Requery();
        for (const char* wanted : {"a", "b", "c"}) {
            rows.MoveFirst();
            rows.Find("obs='"s + wanted + "'");
            if (name == "sim"s && wanted == "c"s)
                EXPECT_TRUE(rows.EOF());
            else
                EXPECT_EQ(rows["obs"].text(), wanted);
        }
        rows.MoveLast();
        const Value last = rows[name].value();
        // Another window takes the last row away: who stands on it comes to the end.
        Recordset window;
        window.Open(other, connection);
        window.MoveLast();
        window.Delete();
        EXPECT_EQ(errorOf([&] { (void)rows["obs"].text(); }), Errc::noCurrentRow);
        rows.MovePrevious();
        EXPECT_NE(rows[name].value(), last);
        EXPECT_EQ(rows.RecordCount(), name == "sim"s ? 1 : 2);
    }
}

TEST_P(ColumnTypes, SayWhatTheyCantHold) {
    Recordset rows;
    rows.Open("cliente_fornecedor", connection); // of which there is no row
    EXPECT_TRUE(rows["codigo"].isNumbered());
    EXPECT_FALSE(rows["nome"].isNumbered());
    EXPECT_EQ(rows["limite_credito"].refusal(Currency{1}), std::nullopt);
    EXPECT_EQ(rows["nome"].refusal(Currency{1}), std::nullopt) << "it is written there";
    EXPECT_NE(rows["codigo"].refusal(Currency{1}), std::nullopt) << "a fraction";
    EXPECT_EQ(rows["codigo"].refusal(Currency{10'000}), std::nullopt);
    EXPECT_EQ(errorOf([&] { (void)rows.field(rows.FieldCount()); }), Errc::notFound);
    EXPECT_EQ(rows.field(0).name(), "codigo");

    Recordset computed;
    computed.Open("select count(*) as quantos, max(nome) as ultimo from cliente_fornecedor",
                  connection);
    EXPECT_FALSE(computed["quantos"].isNumbered());
    EXPECT_EQ(computed["quantos"].refusal(Currency{1}), std::nullopt);
    EXPECT_EQ(computed["ultimo"].unstorable("\xE4\xB8\xAD"), std::nullopt);
}

TEST_P(ColumnTypes, ShowTheFirstCharacterThatTheFileHasNoPlaceFor) {
    Recordset rows;
    rows.Open("cliente_fornecedor", connection);
    const auto at = [&](const char* field, std::string_view text) {
        const auto found = rows[field].unstorable(text);
        return found ? std::to_string(found->at) + "+" + std::to_string(found->bytes) : "";
    };
    const bool jet3 = GetParam() == jet::Version::jet3;
    for (const char* field : {"nome", "observacao"}) {
        EXPECT_EQ(at(field, ""), "");
        EXPECT_EQ(at(field, "ação €"), "");
        EXPECT_EQ(at(field, "a\xE4\xB8\xAD"
                            "b\xE4\xB8\xAD"),
                  jet3 ? "1+3" : "");
        EXPECT_EQ(at(field, "ç\xF0\x9F\x98\x80"), jet3 ? "2+4" : "");
        EXPECT_EQ(at(field, "\xEF\xBB\xBF"
                            "a"),
                  "0+3")
            << "the mark of a text";
        EXPECT_EQ(at(field, "a\xFF"), "1+1");
    }
    EXPECT_EQ(at("codigo", "\xE4\xB8\xAD"), "") << "no text column";
}

TEST_P(ColumnTypes, ThatATableMayLackReadAsNullAndTakeNothing) {
    addSomeOfEach();
    Recordset rows;
    rows.Open("bancos", connection);
    EXPECT_NE(rows.missing("celular"), std::nullopt);
    EXPECT_EQ(rows.missing("NOME"), std::nullopt);
    EXPECT_EQ(errorOf([&] { (void)rows["celular"]; }), Errc::notFound);
    rows.addOptional("Celular");
    rows.addOptional("nome"); // is there
    EXPECT_EQ(rows.missing("nome"), std::nullopt);
    EXPECT_NE(rows.missing("celular"), std::nullopt) << "whoever says so";
    EXPECT_TRUE(rows["celular"].isNull());
    EXPECT_EQ(rows["celular"].text(), "");
    EXPECT_EQ(rows["celular"].name(), "");
    EXPECT_EQ(rows["celular"].DefinedSize(), std::nullopt);
    EXPECT_EQ(rows["celular"].refusal("qualquer"), std::nullopt);
    EXPECT_FALSE(rows["celular"].isNumbered());
    rows["celular"] = "99";
    rows["nome"] = "Banco Novo";
    rows.Update();
    EXPECT_TRUE(rows["celular"].isNull());
    EXPECT_EQ(rows["nome"].text(), "Banco Novo");
    rows.Close();
    rows.Open("bancos", connection);
    EXPECT_EQ(errorOf([&] { (void)rows["celular"]; }), Errc::notFound) << "until it is closed";
    Recordset join;
    join.Open("select * from cheques inner join bancos on cheques.banco=bancos.codigo", connection);
    EXPECT_NE(join.missing("celular").value_or("").find("conjunto"), std::string::npos);
}

} // namespace
