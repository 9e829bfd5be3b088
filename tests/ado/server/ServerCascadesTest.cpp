// What goes or changes along with a row by the server's foreign keys: what is told of it turns the
// rows that there were into those that there are.
#include "ado/Recorder.h"
#include "ado/server/ShopWithOthers.h"

#include <algorithm>
#include <map>

namespace {

using ado::Recordset;
using jet::Errc;

/// Of all tables with names of one letter, or of one of them.
class Told final : public ado::Recorder {
public:
    bool keeps(const ado::TableShape& table, bool /*isNew*/) override {
        return table.name().size() == 1 && (only.empty() || only == table.name());
    }
    void changed(std::span<const Change> rows) override {
        for (const auto& [table, before, after] : rows) {
            std::vector<jet::Row>& all = tables[table.name()];
            const auto was = before != nullptr ? std::ranges::find(all, *before) : all.end();
            EXPECT_EQ(was == all.end(), before == nullptr) << "of a row that there wasn't";
            if (was != all.end())
                all.erase(was);
            if (after != nullptr)
                all.push_back(*after);
        }
        ++times;
    }
    std::map<std::string, std::vector<jet::Row>> tables; ///< as they should be
    std::string only;
    int times = 0;
};

class ServerCascadesTest : public ShopWithOthers {
protected:
    ServerCascadesTest() {
        connection.Close();
        connection.setRecorder(&told);
        connection.Open();
    }
    /// p, to which c refers, to which g refers; none of it yet.
    void makeTables(const std::string& more) {
        alter("create table p (n integer primary key, m integer unique, up integer, "
              "unique (n, m)); create table c (n integer primary key, a integer, b integer); "
              "create table g (n integer primary key, a integer); " +
              more);
        for (const char* table : {"p", "c", "g"})
            told.tables[table] = rowsOf(table);
        told.times = 0;
    }
    void dropTables() { alter("drop table p, c, g cascade"); }
    std::vector<jet::Row> rowsOf(const char* table) {
        std::vector<jet::Row> all;
        Recordset rows;
        for (rows.Open(table, connection); !rows.EOF(); rows.MoveNext()) {
            jet::Row& row = all.emplace_back();
            for (std::size_t i = 0; i < rows.FieldCount(); ++i)
                row.push_back(rows.field(i).value());
        }
        return all;
    }
    void expectAsTold() {
        EXPECT_EQ(told.times, 1);
        for (const char* table : {"p", "c", "g"}) {
            const std::vector<jet::Row> is = rowsOf(table);
            EXPECT_TRUE(std::ranges::is_permutation(told.tables[table], is)) << table;
        }
    }
    static void erase(Recordset& parent) { parent.Delete(); }
    static void give(Recordset& parent, const char* field, int value) {
        parent[field] = value;
        parent.Update();
    }
    Told told;
};
INSTANTIATE_TEST_SUITE_P(, ServerCascadesTest, onServers(), keptName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ServerCascadesTest);

TEST_P(ServerCascadesTest, ThatAreToldMakeOfTheRowsWhatTheServerMakes) {
    const std::string cascade = " on delete cascade";
    const std::string empty = " on delete set null";
    const std::string update = " on update cascade";
    const auto bond = [](const std::string& table, const std::string& columns,
                         const std::string& parent) {
        return "alter table " + table + " add foreign key (" + columns + ") references " + parent;
    };
    const std::string two = "; insert into p values (1, 10, null), (2, 20, null); "
                            "insert into c values (1, 1, 1), (2, 1, 2), (3, 2, 1); "
                            "insert into g values (1, 1), (2, 1), (3, 3)";
    const struct {
        const char* what;
        std::string tables;
        std::function<void(Recordset& first)> work; ///< on the parent number 1
    } cases[] = {
        {"more than are asked for at once",
         bond("c",                                                                             "a",                                                          "p (n)") + cascade + "; " + bond("g", "a", "c (n)") + cascade +
             "; insert into p values (1); insert into c select n, 1, n from "
             "generate_series(1, 2100) n; insert into g select n, n from "
             "generate_series(1, 2100, 7) n", erase},
        {"one that is emptied for a row that goes, and goes with it",
         bond("c",                                    "b",                                                                                           "p (n)") + empty + "; " + bond("c", "a", "p (n)") + cascade + two, erase},
        {"one that goes, and would be emptied",
         bond("c",                                                                             "a",                                                                                                   "p (n)") + cascade + "; " + bond("c", "b", "p (n)") + empty + two, erase},
        {"two keys of one row",
         bond("c",                                                       "a",                                                                                                              "p (n)") + update + "; " + bond("c", "b", "p (n)") + update + two,
         [](Recordset& first) { give(first, "n", 9); }},
        {"a key of two columns",
         bond("c",                                                                             "a, b",                                                          "p (n, m)") + update +
             "; insert into p values (1, 10), (2, 20); insert into c values (1, 1, 10), "
             "(2, 1, null), (3, 2, 20)", [](Recordset& first) { give(first, "m", 11); }},
        {"a key of two columns that goes",
         bond("c",                                                         "a, b",                                                                                                                "p (n, m)") + cascade +
             "; insert into p values (1, 10), (2, 20); insert into c values (1, 1, 10), "
             "(2, 1, null), (3, 2, 20)", erase},
        {"rows that refer to their own table, and to themselves",
         bond("p",                                                                             "up",                                                                                "p (n)") + cascade +
             "; insert into p values (1, null, 1), (2, null, 1), (3, null, 2), (4, null, null)", erase},
        {"rows that stay without the one they refer to",
         bond("p",                                                        "up",                                                                                                      "p (n)") + empty +
             "; insert into p values (1, null, 1), (2, null, 1), (3, null, 2)", erase},
        {"a row that refers to itself",
         bond("p",                                                                             "up",                                                       "p (n)") + update +
             "; insert into p values (1, null, 1), (2, null, 1), (3, null, 2)", [](Recordset& first) { give(first, "n", 9); }},
        {"one that others refer to by no value",
         bond("c",                                    "a",                                                                 "p (m)") + update +
             "; insert into p values (1, null, null); "
             "insert into c values (1, null, null)", [](Recordset& first) { give(first, "up", 9); }},
        {"a change of what only goes along when it is deleted",
         bond("c","a",                                     "p (n)") + cascade +
             "; insert into p values (1), (2); "
             "insert into c values (1, 2, null)", [](Recordset& first) { give(first, "n", 9); }},
        {"one deleted that others only change with",
         bond("c",                                                                             "a",                                                         "p (n)") + update +
             "; insert into p values (1), (2); "
             "insert into c values (1, 2, null)", erase},
        {"round and round",
         bond("c",                                                                             "a",                                                                                            "p (n)") + cascade + "; " + bond("p", "up", "c (n)") + cascade +
             "; insert into p values (1), (2); insert into c values (1, 1, null), (2, 2, null); "
             "update p set up = 1 where n = 2", erase},
        {"of a key that is emptied what changes with it",
         "alter table c add unique (a); " + bond("c","a", "p (n)") + empty + "; " +
             bond("g", "a", "c (a)") + update +
             "; insert into p values (1), (2); insert into c values (1, 1, 1), (2, 2, 2); "
             "insert into g values (1, 1), (2, 2)", erase},
        {"what isn't the shop's",
         "create table public.fora (x integer references p (n) on delete cascade); "
         "insert into p values (1), (2); insert into public.fora values (1)",                                                                             erase                                                        },
    };
    for (const auto& [what, tables, work] : cases) {
        SCOPED_TRACE(what);
        for (const char* const only : {"", "c"}) {
            makeTables(tables);
            told.only = only;
            Recordset first;
            first.Open("select * from p where n=1", connection);
            ASSERT_FALSE(first.EOF());
            work(first);
            if (told.only.empty())
                expectAsTold();
            if (!told.only.empty() && told.times > 0) // all of it is told, or nothing
                expectAsTold();
            first.Close();
            alter("drop table if exists public.fora");
            dropTables();
        }
    }
}

TEST_P(ServerCascadesTest, OfATableThatIsGoneNothingFollows) {
    makeTables("alter table c add foreign key (a) references p (n) on delete cascade; "
               "insert into p values (1), (2)");
    Recordset first;
    first.Open("select * from p where n=1", connection);
    alter("drop table c; alter table p rename up to acima");
    EXPECT_FALSE(connection.store().hasTable("c"));
    first.Delete();
    EXPECT_EQ(told.times, 1);
    EXPECT_EQ(rowsIn("p"), 1);
    connection.BeginTrans();
    const jet::Row before = rowsOf("p").front();
    const ado::Store::RowWrite one[] = {
        {"p", &before, nullptr}
    };
    EXPECT_TRUE(connection.store().write(one));
    connection.RollbackTrans();
    EXPECT_TRUE(connection.hasUndone());
    EXPECT_EQ(errorOf([&] { connection.RollbackTrans(); }), Errc::misuse);
    alter("alter table g add foreign key (a) references p (n) on delete cascade");
    connection.BeginTrans();
    EXPECT_FALSE(connection.store().write(one)) << "others may go along with it";
    connection.RollbackTrans();
    EXPECT_EQ(rowsIn("p"), 1);
}

} // namespace
