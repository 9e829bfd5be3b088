// Stations that are processes: nobody's work is lost, nobody sees half of another's, a foreign
// program is noticed, and who dies leaves the file whole.
#include "jet/Process.h"
#include "jet/Sentences.h"
#include "jet/Waiting.h"
#include "jet/share/CounterFile.h"
#include "jet/share/FileAlone.h"
#include "support/TemporaryFolder.h"
#include "support/Versions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iostream>
#include <set>
#include <thread>

using namespace jet;
using namespace std::string_literals;
using testing::HasSubstr;
using testing::Not;

namespace {

/// A shop's file on the real disk, and stations that are processes of their own.
class Stations : public testing::TestWithParam<Version>, protected CounterFile {
protected:
    Stations() : path(folder / "loja.mdb") { makeShop(path, GetParam()); }

    Process station(const std::string& what, const std::string& argument = "") {
        return Process({JET_STATION, what, path.string(), argument});
    }
    std::vector<Process> stations(std::size_t count, const std::string& what,
                                  const std::string& argument) {
        std::vector<Process> all;
        all.reserve(count);
        while (all.size() < count)
            all.push_back(station(what, argument));
        return all;
    }
    Process foreigner() {
        Process process({JET_STATION, "foreign", (folder / "loja.ldb").string()});
        EXPECT_EQ(process.read(), "ready\n");
        return process;
    }
    static void expectDone(Process& process) {
        std::string said;
        EXPECT_EQ(process.finish(&said), 0) << said;
    }

    TemporaryFolder folder;
    std::filesystem::path path;
};

INSTANTIATE_TEST_SUITE_P(, Stations, bothVersions(), versionName);

TEST_P(Stations, CountersAddUp) {
    constexpr int kTimes = 60;
    std::vector<Process> processes = stations(4, "count", std::to_string(kTimes));
    for (Process& process : processes)
        expectDone(process);
    Database file(path);
    Table& table = file.table("contador");
    EXPECT_EQ(valueOf(table, firstRow(table)), 4 * kTimes);
    expectSound(path);
}

TEST_P(Stations, RowsAddedAtOnceAreAllKeptUnderNumbersOfTheirOwn) {
    constexpr int kTimes = 60;
    std::vector<Process> processes = stations(3, "add", std::to_string(kTimes));
    for (Process& process : processes)
        expectDone(process);
    Database file(path);
    Table& table = file.table("numerados");
    std::set<std::int64_t> given;
    RowCursor row = table.scan();
    for (bool there = row.first(); there; there = row.next())
        given.insert(row.row().integer(0));
    EXPECT_EQ(given.size(), 3U * kTimes);
    EXPECT_EQ(table.rowCount(), 3 * kTimes);
    expectSound(path);
    EXPECT_TRUE(std::filesystem::exists(folder / "loja.ldb"));
}

TEST_P(Stations, ReadersNeverSeeHalfATransaction) {
    const char* asked = std::getenv("VALTRINO_SHARING_SECONDS");
    const std::string seconds = asked ? asked : "2.5";
    const char* many = std::getenv("VALTRINO_SHARING_STATIONS");
    const std::size_t count = many ? std::stoul(many) : 4;
    std::vector<Process> processes = stations(count, "work", seconds);
    std::int64_t writes = 0;
    std::int64_t reads = 0;
    for (Process& process : processes) {
        std::string said;
        ASSERT_EQ(process.finish(&said), 0) << said;
        std::istringstream words(said);
        std::int64_t written = 0;
        std::int64_t read = 0;
        words >> written >> read;
        EXPECT_GT(written, 0);
        writes += written;
        reads += read;
    }
    std::cout << count << " stations, " << seconds << " s: " << writes << " transactions, " << reads
              << " readings of " << kAccounts << " rows\n";
    expectSound(path);
    EXPECT_FALSE(std::filesystem::exists(folder / "loja.ldb"));
    EXPECT_FALSE(std::filesystem::exists(folder / "loja.mdb-journal"));
}

TEST_P(Stations, KilledWhileWritingLeaveTheFileWhole) {
    std::mt19937 random(11);
    for (int i = 0; i < 100; ++i) {
        Process writer = station("write");
        ASSERT_EQ(writer.read().substr(0, 1), ".");
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 12000));
        writer.kill();
        Database file(path);
        ASSERT_EQ(file.readOnlyReason(), std::nullopt);
        ASSERT_EQ(file.notice(), std::nullopt);
        Table& table = file.table("contas");
        std::int64_t sum = 0;
        RowCursor row = table.scan();
        for (bool there = row.first(); there; there = row.next())
            sum += row.row().integer(1);
        ASSERT_EQ(sum, 0) << "kill " << i;
        ASSERT_TRUE(check(path).clean()) << "kill " << i;
    }
}

TEST_P(Stations, AKilledStationIsRecoveredByTheOthersThatAreThere) {
    Database file(path);
    Table& table = file.table("contas");
    for (int i = 0; i < 25; ++i) {
        Process writer = station("write");
        ASSERT_EQ(writer.read().substr(0, 1), ".");
        std::this_thread::sleep_for(std::chrono::microseconds(300 * i));
        writer.kill();
        std::int64_t sum = 0;
        {
            const Reading reading(file);
            RowCursor row = table.scan();
            for (bool there = row.first(); there; there = row.next())
                sum += row.row().integer(1);
        }
        ASSERT_EQ(sum, 0) << "kill " << i;
        ASSERT_TRUE(check(path).sound()) << "kill " << i;
        table.insert(rowOf(0));
        file.flush();
        ASSERT_TRUE(check(path).clean()) << "kill " << i;
    }
}

TEST_P(Stations, AForeignProgramMakesTheFileReadOnlyUntilItLeaves) {
    Database file(path);
    Table& table = file.table("contador");
    const RowId id = firstRow(table);
    set(table, id, 1);
    file.flush();
    {
        Process foreign = foreigner();
        ASSERT_TRUE(file.readOnlyReason());
        EXPECT_THAT(*file.readOnlyReason(), HasSubstr("outro programa, de CAIXA2 (Maria)."));
        EXPECT_THAT(sentenceOf([&] { set(table, id, 2); }, Errc::locked),
                    HasSubstr("CAIXA2 (Maria)"));
        EXPECT_EQ(valueOf(table, id), 1);
        Database second(path);
        EXPECT_TRUE(second.readOnlyReason());
        EXPECT_EQ(valueOf(second.table("contador"), id), 1);
        EXPECT_EQ(foreign.finish(), 0);
    }
    EXPECT_EQ(file.readOnlyReason(), std::nullopt);
    set(table, id, 3);
    file.flush();
    EXPECT_EQ(valueOf(table, id), 3);
}

TEST_P(Stations, AForeignProgramThatComesBeforeTheSaveStopsIt) {
    Database file(path);
    Table& table = file.table("contador");
    const RowId id = firstRow(table);
    file.begin();
    set(table, id, 7);
    {
        Process foreign = foreigner();
        EXPECT_THAT(sentenceOf([&] { file.commit(); }, Errc::locked), HasSubstr("CAIXA2"));
        EXPECT_TRUE(file.inTransaction());
        EXPECT_EQ(foreign.finish(), 0);
    }
    file.commit();
    EXPECT_EQ(valueOf(table, id), 7);
}

TEST_P(Stations, AForeignProgramThatHasTheFileFirstIsNamed) {
    Process foreign = foreigner();
    Database file(path);
    EXPECT_THAT(file.readOnlyReason().value_or(""), HasSubstr("CAIXA2"));
    EXPECT_EQ(file.table("contas").rowCount(), kAccounts);
    EXPECT_EQ(foreign.finish(), 0);
    EXPECT_EQ(file.readOnlyReason(), std::nullopt);
}

TEST_P(Stations, WaitForEachOtherWithTheWindowAlive) {
    Process holder = station("hold");
    ASSERT_EQ(holder.read(), "ready\n");
    int calls = 0;
    setWaitHook([&] {
        if (++calls == 3)
            holder.closeInput();
    });
    {
        Database file(path);
        Table& table = file.table("contador");
        set(table, firstRow(table), 5);
        file.flush();
        EXPECT_EQ(valueOf(table, firstRow(table)), 5);
    }
    setWaitHook({});
    EXPECT_GE(calls, 3);
    EXPECT_EQ(holder.finish(), 0);
}

class StationsThatWait : public testing::Test, protected CounterFile {};

TEST_F(StationsThatWait, GiveUpWithASentenceThatNamesTheOther) {
    const TemporaryFolder folder;
    makeShop(folder / "loja.mdb", Version::jet4);
    Process holder({JET_STATION, "hold", (folder / "loja.mdb").string()});
    ASSERT_EQ(holder.read(), "ready\n");
    Database file(folder / "loja.mdb");
    Table& table = file.table("contador");
    EXPECT_THAT(sentenceOf([&] { set(table, firstRow(table), 5); }, Errc::locked),
                testing::AllOf(HasSubstr("Outra estação está gravando"),
                               HasSubstr("há muito tempo: "), Not(HasSubstr("Admin"))));
    EXPECT_EQ(valueOf(table, firstRow(table)), 0);
    EXPECT_EQ(holder.finish(), 0);
}

TEST_P(Stations, GatheredChangesGiveWayToAnotherStation) {
    Database file(path);
    Table& table = file.table("contas");
    Process other = station("count", "5");
    const auto begin = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - begin < std::chrono::milliseconds(1200))
        table.insert(rowOf(0));
    file.flush();
    expectDone(other);
    Table& counter = file.table("contador");
    EXPECT_EQ(valueOf(counter, firstRow(counter)), 5);
}

TEST_P(Stations, ALockFileLeftBehindBlocksNobody) {
    std::string names;
    for (const char* name : {"UM", "DOIS", "TRES", "QUATRO", "CINCO"}) {
        std::string slot(64, ' ');
        slot.replace(0, std::strlen(name) + 1, std::string(name) + '\0');
        slot.replace(32, 6, "Admin\0"s);
        names += slot;
    }
    std::ofstream(folder / "loja.ldb", std::ios::binary) << names;
    {
        Database file(path);
        EXPECT_EQ(file.readOnlyReason(), std::nullopt);
        std::ifstream in(folder / "loja.ldb", std::ios::binary);
        const std::string now((std::istreambuf_iterator<char>(in)), {});
        EXPECT_EQ(now.size(), names.size());
        EXPECT_NE(now.substr(0, 2), "UM");
        EXPECT_EQ(now.substr(64), names.substr(64));
        EXPECT_EQ(now.substr(32, 32), "Admin\0"s + std::string(26, ' '));
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "loja.ldb"));
}

TEST_P(Stations, AloneMeansAlone) {
    {
        Database other(path);
        EXPECT_THAT(sentenceOf([&] { const FileAlone alone(path); }, Errc::locked),
                    HasSubstr("está aberto em outro programa ou estação"));
        Table& table = other.table("contador");
        set(table, firstRow(table), 1); // nothing is left locked
    }
    const auto counter = [&] {
        Database::Options options;
        options.readOnly = options.unshared = true;
        Database file(path, options);
        return valueOf(file.table("contador"), firstRow(file.table("contador")));
    };
    std::optional<Process> other;
    {
        const FileAlone alone(path);
        other.emplace(station("count", "1"));
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        EXPECT_EQ(counter(), 1);
    }
    expectDone(*other);
    EXPECT_EQ(counter(), 2);
}

} // namespace
