// How often a window's work has to wait for the server: what a long way to it costs.
#include "ado/ConnectionString.h"
#include "ado/Recorder.h"
#include "ado/Shop.h"
#include "support/Relay.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace {

using ado::Recordset;

/// Writes down what is done to cheques, as the history does: looks for a number, and adds a row.
class Diary final : public ado::Recorder {
public:
    explicit Diary(ado::Connection& base) : base_(base) {}
    bool keeps(const ado::TableShape& table, bool isNew) override {
        return table.name() == "cheques" && !isNew;
    }
    void changed(std::span<const Change> /*rows*/) override {
        Recordset same;
        same.Open("select lancamento from semfundos where numero='7'", base_);
        EXPECT_TRUE(same.EOF());
        rows_.AddNew();
        rows_["empresa"] = "Diário";
        rows_.Update();
    }
    void open() { rows_.Open("semfundos", base_); }
    void close() { rows_.Close(); }

private:
    ado::Connection& base_;
    Recordset rows_;
};

class RoundTripsTest : public Shop {
protected:
    RoundTripsTest() : diary(station) {
        addSomeOfEach();
        relay.emplace(ado::serverAddress(connectionString()).value());
        station.setRecorder(&diary);
        station.Open("Data Source=" + relay->address());
        diary.open();
        cheques.Open("cheques", station);
    }
    void TearDown() override {
        cheques.Close();
        diary.close();
        station.Close();
        relay.reset();
        Shop::TearDown();
    }
    /// How often the server is asked meanwhile, as the relay sees it.
    std::uint64_t asked(const std::function<void()>& work) {
        const std::uint64_t before = relay->questions();
        work();
        return relay->questions() - before;
    }
    std::optional<Relay> relay;
    ado::Connection station;
    Diary diary;
    Recordset cheques;
};
INSTANTIATE_TEST_SUITE_P(, RoundTripsTest, onServers(), keptName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RoundTripsTest);

TEST_P(RoundTripsTest, OfAListAndItsRows) {
    Recordset list;
    const auto open = [&] {
        list.Open("select * from cheques where cliente=1 order by bompara", station);
        EXPECT_EQ(list["numero"].text(), "000300");
    };
    EXPECT_EQ(asked(open), 1U);
    EXPECT_EQ(asked([&] { list.MoveNext(); }), 0U);
    EXPECT_EQ(asked([&] { list.MovePrevious(); }), 0U);
    EXPECT_LE(asked([&] { list.MoveLast(); }), 1U);
    EXPECT_LE(asked([&] { list.MoveFirst(); }), 1U);
    EXPECT_EQ(asked([&] { list.Find("numero='000123'"); }), 1U);
    EXPECT_EQ(list["numero"].text(), "000123");
    for (const auto& move : {&Recordset::MovePrevious, &Recordset::MoveNext})
        EXPECT_LE(asked([&] { (list.*move)(); }), 1U);
    EXPECT_EQ(asked([&] { list.FindFirst("numero='000300'"); }), 1U);
    EXPECT_EQ(asked([&] { list.setFilter("banco=2"); }), 1U);
    EXPECT_EQ(asked([&] { list.setSort("numero"); }), 1U);
    EXPECT_EQ(asked([&] { EXPECT_EQ(list.RecordCount(), 1); }), 0U); // all that is there is known
    EXPECT_EQ(asked([&] { EXPECT_FALSE(list.EOF() || list.BOF()); }), 0U);
}

TEST_P(RoundTripsTest, OfAListThatIsWalkedAgain) {
    constexpr int kMore = 40; // than come at first
    {
        Recordset banks;
        banks.Open("bancos", connection);
        for (int i = 0; i < kMore; ++i) {
            banks.AddNew();
            banks["nome"] = i % 2 == 0 ? "Par" : "Ímpar";
            banks.Update();
        }
    }
    Recordset banks;
    banks.Open("bancos", station);
    const auto names = [&] {
        std::vector<std::pair<std::string, std::int64_t>> all;
        banks.setSort("nome");
        for (banks.MoveFirst(); !banks.EOF(); banks.MoveNext())
            all.emplace_back(banks["nome"].text(), banks["codigo"].integer());
        return all;
    };
    const auto before = names();
    ASSERT_EQ(before.size(), 3U + kMore);
    EXPECT_TRUE(std::is_sorted(before.begin() + 3, before.begin() + 3 + kMore / 2));
    EXPECT_TRUE(std::is_sorted(before.end() - kMore / 2, before.end()));
    EXPECT_EQ(asked([&] { EXPECT_EQ(names(), before); }), 0U) << "nobody has changed any";
    EXPECT_EQ(asked([&] { banks.FindFirst("nome='Ímpar' and codigo>20"); }), 1U);
    EXPECT_EQ(banks["nome"].text(), "Ímpar");
    EXPECT_EQ(asked([&] { EXPECT_EQ(names(), before); }), 0U) << "they were kept meanwhile";

    const std::uint64_t heard = station.store().generation();
    Recordset other;
    other.Open("select * from bancos where codigo=3", connection);
    other["nome"] = "Zebra";
    other.Update();
    connection.flush();
    while (station.store().generation() == heard)
        std::this_thread::yield();
    EXPECT_EQ(asked([&] { EXPECT_EQ(names().back(), std::pair(std::string("Zebra"), 3L)); }), 1U)
        << "all of them at once";
    banks.Requery();
    EXPECT_EQ(asked([&] { EXPECT_FALSE(banks.EOF()); }), 1U) << "as it was said";
    {
        ado::Transaction undone(station);
        banks.MoveLast();
        banks["nome"] = "Zulu";
        banks.Update();
    }
    EXPECT_EQ(names().back().first, "Zebra");
}

TEST_P(RoundTripsTest, OfAJoin) {
    const auto join = [&] {
        Recordset list;
        list.Open("select * from cheques inner join bancos on cheques.banco=bancos.codigo",
                  station);
        for (; !list.EOF(); list.MoveNext())
            EXPECT_NE(list["bancos.nome"].text(), "");
    };
    EXPECT_LE(asked(join), 2U); // one of them isn't waited for
}

TEST_P(RoundTripsTest, OfANewCheque) {
    const auto save = [&] {
        ado::Transaction saving(station);
        cheques.AddNew();
        cheques["numero"] = "400";
        cheques.Update();
        EXPECT_EQ(cheques["numero"].text(), "400");
        static_cast<void>(cheques.shown());
        cheques.Requery();
        saving.commit();
    };
    EXPECT_LE(asked(save), 3U);
    EXPECT_EQ(rowsIn("cheques"), 7);
}

TEST_P(RoundTripsTest, OfAChequeThatIsChanged) {
    const ado::Shown shown = cheques.shown();
    const auto save = [&] {
        ado::Transaction saving(station);
        cheques.FindFirst("lancamento=1");
        cheques.Edit(shown);
        cheques["numero"] = "401";
        cheques.Update();
        cheques.Requery();
        saving.commit();
    };
    EXPECT_LE(asked(save), 5U);
    EXPECT_EQ(column("cheques", "numero").front(), "401");
    EXPECT_EQ(rowsIn("semfundos"), 3);
}

TEST_P(RoundTripsTest, OfAChequeThatIsDeleted) {
    const ado::Shown shown = cheques.shown();
    const auto erase = [&] {
        ado::Transaction erasing(station);
        Recordset one;
        one.Open("select * from cheques where lancamento=1", station);
        one.Delete(shown);
        one.Close();
        erasing.commit();
        cheques.Requery();
    };
    EXPECT_LE(asked(erase), 5U);
    EXPECT_EQ(rowsIn("cheques"), 5);
}

TEST_P(RoundTripsTest, OfAChequeThatIsSettled) {
    cheques.Find("lancamento=3");
    const ado::Shown shown = cheques.shown();
    const auto settle = [&] {
        cheques.clearFilter();
        cheques.Requery();
        cheques.FindFirst("lancamento=3");
        ado::Transaction settling(station);
        EXPECT_FALSE(cheques.isOther(shown));
        cheques.Delete(shown);
        cheques.Requery();
        settling.commitLater();
    };
    EXPECT_LE(asked(settle), 5U);
    EXPECT_EQ(rowsIn("cheques"), 5);
    EXPECT_EQ(rowsIn("semfundos"), 3);
}

} // namespace
