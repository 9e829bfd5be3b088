// Who keeps a record of the changes made through a connection: what is recorded happens together
// with the change it is about, or neither does.
#include "ado/Recorder.h"

#include "ado/ConnectionString.h"
#include "ado/Shop.h"
#include "support/Cluster.h"
#include "support/FileRules.h"
#include "support/Versions.h"

#include <gmock/gmock.h>

#include <optional>
#include <thread>

namespace {

using ado::Recordset;
using jet::Errc;
using testing::ElementsAre;
using testing::IsEmpty;
using Strings = std::vector<std::string>;

/// Of banks: notes their names before and after, as the firms of bounced cheques.
class Notes final : public ado::Recorder {
public:
    explicit Notes(ado::Connection& connection) : connection_(connection) {}

    bool keeps(const ado::TableShape& table, bool isNew) override {
        return table.name() == "bancos" && !(isNew && leavesNew);
    }
    void changed(std::span<const Change> rows) override {
        if (!notes_.has_value())
            notes_.emplace().Open("semfundos", connection_);
        std::string said;
        for (const auto& [table, before, after] : rows) {
            const auto owned = table.findColumn("nome");
            const std::size_t name = owned ? *owned : *table.findColumn("numero");
            const auto named = [&](const jet::Row* row) {
                const auto* const text = row ? std::get_if<std::string>(&(*row)[name]) : nullptr;
                return text ? *text : "-";
            };
            said += (said.empty() ? "" : ", ") + named(before) + ">" + named(after);
        }
        notes_->AddNew();
        (*notes_)["empresa"] = said;
        notes_->Update();
        if (refuses)
            throw jet::Error(Errc::full, "no room");
    }

    bool refuses = false;
    bool leavesNew = false;

private:
    ado::Connection& connection_;
    std::optional<Recordset> notes_;
};

class RecorderTest : public Shop {
protected:
    RecorderTest() {
        connection.Close();
        connection.setRecorder(&notes);
        connection.Open();
        add("bancos", {
                          {"cod_banco", std::int64_t{1}   },
                          {"nome",      std::string("Sul")}
        });
        connection.flush();
        banks.Open("bancos", connection);
        noted.Open("select * from semfundos order by lancamento", connection);
    }
    /// Adds a bank, changes it, deletes it.
    void changeAll() {
        banks.AddNew();
        banks["nome"] = "Norte";
        banks.Update();
        banks["nome"] = "Leste";
        banks.Update();
        banks.Delete();
    }
    Strings notesOf(Recordset& list) {
        list.Requery();
        return column(list, "empresa");
    }
    [[nodiscard]] Strings names() { return column("select * from bancos order by codigo", "nome"); }

    Notes notes{connection};
    Recordset banks;
    Recordset noted;
};
INSTANTIATE_TEST_SUITE_P(, RecorderTest, everywhere(), keptName);

TEST_P(RecorderTest, ToldOfEachChangeWithTheRowBeforeAndAfter) {
    changeAll();
    EXPECT_THAT(notesOf(noted), ElementsAre("->Norte", "Norte>Leste", "Leste>-"));
    EXPECT_THAT(names(), ElementsAre("Sul"));
}

/// What goes along with a bank: its cheques, and with them what is noted of those.
class RecorderOfCascades : public RecorderTest {
protected:
    RecorderOfCascades() {
        makeTable({
            "vistos",
            {{"codigo", jet::ColumnType::longInteger, 0, true},
              {"cheque", jet::ColumnType::longInteger},
              {"numero", jet::ColumnType::text, 20}},
            {{"PrimaryKey", {{"codigo"}}, true}            }
        });
        for (const char* numero : {"101", "102", "103"})
            add("cheques", {
                               {"banco",  std::int64_t{numero == std::string("103") ? 2 : 1}},
                               {"numero", std::string(numero)                               }
            });
        add("bancos", {
                          {"nome", std::string("Sol")}
        });
        add("vistos", {
                          {"cheque", std::int64_t{2}  },
                          {"numero", std::string("v2")}
        });
        connection.flush();
        banks.Requery();
    }
    void relate(const char* child, const char* column, const char* parent, const char* key,
                std::int64_t flags) {
        using Flags = FileRelationship;
        if (!onServer())
            return addRelationship(
                connection.database(),
                {std::string(child) + parent, child, {column}, parent, {key}, flags});
        const auto before = connection.store().generation();
        Cluster::relate(ado::serverAddress(connectionString()).value(),
                        std::string(child) + " add foreign key (" + column + ") references " +
                            parent + " (" + key + ")" +
                            ((flags & Flags::kCascadeUpdate) != 0 ? " on update cascade" : "") +
                            ((flags & Flags::kCascadeDelete) != 0 ? " on delete cascade"
                             : (flags & Flags::kCascadeNull) != 0 ? " on delete set null"
                                                                  : ""));
        while (connection.store().generation() == before)
            std::this_thread::yield(); // until it has been told
    }
    static constexpr auto kDeletes = FileRelationship::kCascadeDelete;
    static constexpr auto kNulls = FileRelationship::kCascadeNull;
    static constexpr auto kUpdates = FileRelationship::kCascadeUpdate;
};
INSTANTIATE_TEST_SUITE_P(, RecorderOfCascades, everywhere(), keptName);

TEST_P(RecorderOfCascades, ToldOfAllThatGoesWithARowEachBeforeWhatItFollows) {
    relate("cheques", "banco", "bancos", "codigo", kDeletes);
    relate("vistos", "cheque", "cheques", "lancamento", kDeletes);
    connection.flush();
    const auto written = connection.store().tally().written;
    banks.Delete();
    connection.flush();
    EXPECT_EQ(connection.store().tally().written, written + 1);
    const Strings said = notesOf(noted);
    ASSERT_THAT(said, testing::SizeIs(1));
    EXPECT_THAT(said[0], testing::AnyOf("v2>-, 102>-, 101>-, Sul>-", "v2>-, 101>-, 102>-, Sul>-",
                                        "101>-, v2>-, 102>-, Sul>-"));
    EXPECT_THAT(column("select numero from cheques", "numero"), ElementsAre("103"));
    EXPECT_THAT(column("select numero from vistos", "numero"), IsEmpty());
}

TEST_P(RecorderOfCascades, ToldOfWhatStaysWithoutAParent) {
    relate("cheques", "banco", "bancos", "codigo", kNulls);
    banks.Delete();
    EXPECT_THAT(notesOf(noted),
                ElementsAre(testing::AnyOf("102>102, 101>101, Sul>-", "101>101, 102>102, Sul>-")));
    EXPECT_THAT(column("select * from cheques order by lancamento", "banco"),
                ElementsAre("", "", "2"));
}

class RecorderOnAServer : public RecorderOfCascades {};
INSTANTIATE_TEST_SUITE_P(, RecorderOnAServer, onServers(), keptName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RecorderOnAServer);

TEST_P(RecorderOnAServer, ToldOfWhatFollowsAKeyThatIsEmptied) {
    makeTable({
        "donos",
        {{"codigo", jet::ColumnType::longInteger}, {"nome", jet::ColumnType::text, 20}},
        {{"PrimaryKey", {{"codigo"}}, true}                                       }
    });
    for (const std::int64_t code : {1, 2})
        add("donos", {
                         {"codigo", code               },
                         {"nome",   std::string("Dora")}
        });
    banks.MoveLast();
    banks["cod_banco"] = 2;
    banks.Update();
    Cluster::relate(ado::serverAddress(connectionString()).value(),
                    "bancos add unique (cod_banco)");
    relate("vistos", "cheque", "bancos", "cod_banco", kUpdates);
    relate("bancos", "cod_banco", "donos", "codigo", kNulls);
    Recordset owner;
    owner.Open("select * from donos where codigo=2", connection);
    owner.Delete();
    EXPECT_THAT(notesOf(noted), ElementsAre("Sol>Sol", "v2>v2, Sol>Sol, Dora>-"));
    EXPECT_THAT(column("select * from vistos", "cheque"), ElementsAre(""));
}

TEST_P(RecorderOfCascades, ToldOfTheNewKeyInEachRow) {
    makeTable({
        "donos",
        {{"nome", jet::ColumnType::text, 50}, {"fone", jet::ColumnType::text, 20}},
        {{"PrimaryKey", {{"nome"}}, true}                                  }
    });
    for (const char* name : {"Sul", "Sol"})
        add("donos", {
                         {"nome", std::string(name)}
        });
    relate("bancos", "nome", "donos", "nome", kUpdates);
    Recordset owner;
    owner.Open("select * from donos where nome='Sul'", connection);
    owner["fone"] = "1";
    owner.Update();
    EXPECT_THAT(notesOf(noted), IsEmpty()) << "the key is as it was";
    owner["nome"] = "Sal";
    owner.Update();
    EXPECT_THAT(notesOf(noted), ElementsAre("Sul>Sal, Sul>Sal"));
    EXPECT_THAT(names(), ElementsAre("Sal", "Sol"));
}

TEST_P(RecorderOfCascades, ToldOfATableThatNoRecordIsKeptOfWhereOneReachesAnother) {
    relate("bancos", "cod_banco", "cheques", "lancamento", kDeletes);
    Recordset cheques;
    cheques.Open("select * from cheques order by lancamento", connection);
    cheques.Delete(); // the bank with that code
    EXPECT_THAT(notesOf(noted), ElementsAre("Sul>-, 101>-"));
    cheques.MoveNext();
    cheques.Delete(); // which no bank has
    EXPECT_THAT(notesOf(noted), testing::SizeIs(1));
    EXPECT_THAT(names(), ElementsAre("Sol"));
}

TEST_P(RecorderOfCascades, WhatItRefusesUndoesAllThatHasFollowed) {
    relate("cheques", "banco", "bancos", "codigo", kDeletes);
    notes.refuses = true;
    EXPECT_EQ(errorOf([&] { banks.Delete(); }), Errc::full);
    EXPECT_THAT(names(), ElementsAre("Sul", "Sol"));
    EXPECT_THAT(column("select * from cheques", "numero"), testing::SizeIs(3));
    ado::Transaction transaction(connection);
    banks.Requery();
    EXPECT_EQ(errorOf([&] { banks.Delete(); }), Errc::full);
    transaction.commit();
    EXPECT_THAT(column("select * from cheques", "numero"), testing::SizeIs(3));
}

TEST_P(RecorderTest, NotToldOfOtherTablesNorOfNewRowsUnlessItWants) {
    notes.leavesNew = true;
    changeAll();
    EXPECT_THAT(notesOf(noted), ElementsAre("Norte>Leste", "Leste>-"));
    Recordset clients;
    clients.Open("cliente_fornecedor", connection);
    clients.AddNew();
    clients["nome"] = "Ana";
    clients.Update();
    EXPECT_THAT(notesOf(noted), testing::SizeIs(2));
}

TEST_P(RecorderTest, WhatIsRecordedCountsWithItsChange) {
    const auto before = connection.store().tally().written;
    changeAll();
    connection.flush();
    EXPECT_EQ(connection.store().tally().written, before + 3);
}

TEST_P(RecorderTest, WhatItRefusesIsUndone) {
    notes.refuses = true;
    EXPECT_EQ(errorOf([&] { banks.Delete(); }), Errc::full);
    banks.Requery();
    banks["nome"] = "Leste";
    EXPECT_EQ(errorOf([&] { banks.Update(); }), Errc::full);
    banks.CancelUpdate();
    banks.AddNew();
    EXPECT_EQ(errorOf([&] { banks.Update(); }), Errc::full);
    banks.CancelUpdate();
    EXPECT_THAT(names(), ElementsAre("Sul"));
    EXPECT_THAT(notesOf(noted), IsEmpty());
    notes.refuses = false;
    changeAll();
    EXPECT_THAT(notesOf(noted), testing::SizeIs(3));
}

TEST_P(RecorderTest, InATransactionWhatItRefusesLeavesTheRestOfIt) {
    ado::Transaction transaction(connection);
    changeAll();
    notes.refuses = true;
    banks.MoveFirst();
    EXPECT_EQ(errorOf([&] { banks.Delete(); }), Errc::full);
    transaction.commit();
    EXPECT_THAT(names(), ElementsAre("Sul"));
    EXPECT_THAT(notesOf(noted), testing::SizeIs(3));
}

TEST_P(RecorderTest, ATransactionThatIsUndoneTakesTheRecordAlong) {
    {
        const ado::Transaction transaction(connection);
        changeAll();
        EXPECT_THAT(notesOf(noted), testing::SizeIs(3));
    }
    EXPECT_THAT(notesOf(noted), IsEmpty());
}

TEST_P(RecorderTest, AChangeThatIsRefusedIsntRecorded) {
    banks["nome"] = "Leste";
    ado::Connection other;
    other.Open(connectionString());
    Recordset theirs;
    theirs.Open("bancos", other);
    theirs["nome"] = "De outra";
    theirs.Update();
    other.Close();
    EXPECT_EQ(errorOf([&] { banks.Update(); }), Errc::conflict);
    EXPECT_THAT(notesOf(noted), IsEmpty());
}

} // namespace
