// A migration that is broken off, anywhere: nothing of it is left on the other side.
#include "ado/migrate/Migrated.h"
#include "ado/server/ServerWire.h"
#include "support/FailingDisk.h"
#include "support/FileRules.h"
#include "support/Relay.h"
#include "support/Versions.h"

#include <cerrno>
#include <fstream>

namespace {

using jet::Errc;
using testing::HasSubstr;
using Cut = Relay::Cut;

class MigrationFaults : public Migration {
protected:
    void SetUp() override {
        Migration::SetUp();
        if (IsSkipped())
            return;
        path_ = file([](jet::Database& database) {
            for (const jet::TableSpec& spec : shopTables())
                database.createTable(spec);
            setRules(database, "cheques",
                     {
                         {.column = "valor", .rule = ">0"}
            });
            jet::relate(database, {"banco do cheque", "cheques", "bancos", {{"banco", "codigo"}}});
            for (std::int64_t i = 1; i <= 3; ++i)
                database.table("bancos").insert(jet::Row{i, i, std::string("Banco")});
        });
        before_ = bytes(path_);
    }
    static std::string bytes(const std::filesystem::path& path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    /// Of a migration there over that line, which ends at those words.
    void expectNothingKept(Relay& relay, Cut when, const char* words) {
        const std::string direct = std::exchange(address_, relay.address());
        relay.cut(when, words);
        try {
            static_cast<void>(there(path_));
            ADD_FAILURE() << "was migrated";
        } catch (const jet::Error& error) {
            EXPECT_EQ(error.code(), Errc::offline);
            EXPECT_THAT(error.what(), HasSubstr("Nada ficou nele"));
        }
        address_ = direct;
    }
    /// What stands in the file's folder.
    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const auto& entry : std::filesystem::directory_iterator(path_.parent_path()))
            all.push_back(entry.path().filename().string());
        return all;
    }
    std::filesystem::path path_;
    std::string before_;
};
INSTANTIATE_TEST_SUITE_P(, MigrationFaults, testing::Values(jet::Version::jet4), versionName);

TEST_P(MigrationFaults, ALineCutOnTheWayThereLeavesNothing) {
    Relay relay(address_);
    const std::pair<Cut, const char*> cuts[] = {
        {Cut::before,   "create schema valtrino"            },
        {Cut::answered, "create table \"bancos\""           },
        {Cut::at,       "copy \"bancos\" from"              },
        {Cut::before,   "copy \"bancos\" to"                },
        {Cut::answered, "select count(*)"                   },
        {Cut::at,       "alter table \"bancos\" add primary"},
        {Cut::before,   "alter table \"cheques\" validate"  },
        {Cut::answered, "insert into valtrino_arquivo.relac"},
        {Cut::before,   "analyze"                           },
        {Cut::before,   "commit"                            },
    };
    for (const auto& [when, words] : cuts) {
        SCOPED_TRACE(words);
        expectNothingKept(relay, when, words);
        EXPECT_EQ(answer("select count(*) from pg_namespace where nspname like 'valtrino%'"), "0");
        EXPECT_TRUE(bytes(path_) == before_);
    }
}

// As long as somebody else there answers, it is waited for.
TEST_P(MigrationFaults, AServerThatStandsStillInTheMiddleLeavesNothing) {
    {
        jet::Database database(path_);
        database.createTable({.name = "notas",
                              .columns = {{.name = "texto", .type = jet::ColumnType::memo}},
                              .indexes = {}});
        for (int i = 0; i < 40; ++i) // more than lies on the way
            database.table("notas").insert(jet::Row{std::string(300'000, 'n')});
    }
    const auto silence = std::exchange(ado::ServerLine::silence, std::chrono::milliseconds(50));
    for (const char* words : {"copy \"notas\" from", "copy \"notas\" to"}) {
        SCOPED_TRACE(words);
        Relay relay(address_);
        expectNothingKept(relay, Cut::never, words);
    }
    ado::ServerLine::silence = silence;
    EXPECT_EQ(answer("select count(*) from pg_namespace where nspname like 'valtrino%'"), "0");
}

// Of the last word of all, the answer may be lost though it has been done.
TEST_P(MigrationFaults, ALineCutBehindTheLastWordIsDoneAllTheSame) {
    const std::string direct = address_;
    Relay relay(direct);
    address_ = relay.address();
    relay.cut(Cut::answered, "commit");
    EXPECT_EQ(there(path_).tables.size(), shopTables().size());
    address_ = direct;
    expectSame(path_, back());
}

TEST_P(MigrationFaults, ALineCutOnTheWayBackLeavesNoFile) {
    static_cast<void>(there(path_));
    Relay relay(address_);
    address_ = relay.address();
    const auto before = names();
    for (const auto& [when, words] : {std::pair(Cut::answered, "select pg_catalog.min(xmin"),
                                      std::pair(Cut::before, "copy (select \"codigo\""),
                                      std::pair(Cut::at, "copy (select \"lancamento\""),
                                      std::pair(Cut::before, "select c.relname, k")}) {
        SCOPED_TRACE(words);
        relay.cut(when, words);
        try {
            static_cast<void>(back());
            ADD_FAILURE() << "was brought back";
        } catch (const jet::Error& error) {
            EXPECT_EQ(error.code(), Errc::offline);
            EXPECT_THAT(error.what(), HasSubstr("O arquivo não foi feito"));
        }
        EXPECT_EQ(names(), before);
    }
    expectSame(path_, back());
}

TEST_P(MigrationFaults, AFullDiskOnTheWayBackLeavesNoFile) {
    static_cast<void>(there(path_));
    const auto before = names();
    const auto to = folder_ / "volta.mdb";
    FailingDisk disk;
    disk.error = ENOSPC;
    bool full = true;
    for (int spared = 0; full; spared = spared * 2 + 1) {
        disk.spared = spared;
        disk.refused = ".mdb";
        try {
            static_cast<void>(ado::migrateToFile(address_, to, GetParam(), {}, disk));
            full = false;
        } catch (const jet::Error& error) {
            EXPECT_EQ(error.code(), Errc::full) << error.what();
            EXPECT_EQ(names(), before) << spared;
        }
        ASSERT_LT(spared, 1 << 20);
    }
    expectSame(path_, to);
}

// As often as somebody is told how far it is, he may say that it is enough.
TEST_P(MigrationFaults, WhoStopsItAnywhereLeavesNothing) {
    const auto before = names();
    const auto stoppedAt = [](int& left) {
        return [&left](const std::string&, std::uint64_t, std::uint64_t) {
            if (left-- == 0)
                throw jet::Error(Errc::cancelled, "parado");
        };
    };
    const auto untilDone = [&](auto&& work, auto&& look) {
        int stops = 0;
        for (bool stopped = true; stopped; ++stops) {
            int left = stops;
            stopped = false;
            try {
                work(stoppedAt(left));
            } catch (const jet::Error& error) {
                EXPECT_EQ(error.code(), Errc::cancelled) << error.what();
                look();
                stopped = true;
            }
        }
        EXPECT_GT(stops, 4);
    };
    untilDone([&](const jet::Progress& progress) { static_cast<void>(there(path_, progress)); },
              [&] {
                  EXPECT_EQ(
                      answer("select count(*) from pg_namespace where nspname like 'valtrino%'"),
                      "0");
              });
    EXPECT_TRUE(bytes(path_) == before_);
    const auto to = folder_ / "volta.mdb";
    untilDone(
        [&](const jet::Progress& progress) {
            static_cast<void>(ado::migrateToFile(address_, to, GetParam(), progress));
        },
        [&] { EXPECT_EQ(names(), before); });
    expectSame(path_, to);
}

} // namespace
