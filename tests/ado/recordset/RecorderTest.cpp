// Who keeps a record of the changes made through a connection: what is recorded happens together
// with the change it is about, or neither does.
#include "ado/Recorder.h"

#include "ado/Shop.h"
#include "support/Versions.h"

#include <gmock/gmock.h>

#include <optional>

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
    void changed(const ado::TableShape& table, const jet::Row* before,
                 const jet::Row* after) override {
        const std::size_t name = *table.findColumn("nome");
        const auto named = [&](const jet::Row* row) {
            const auto* const text = row ? std::get_if<std::string>(&(*row)[name]) : nullptr;
            return text ? *text : "-";
        };
        if (!notes_.has_value())
            notes_.emplace().Open("semfundos", connection_);
        notes_->AddNew();
        (*notes_)["empresa"] = named(before) + ">" + named(after);
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
