// A database in a folder of another machine: what a station reads after it has got a lock is what
// the others have written, not what its own machine remembers.
#include "jet/Database.h"
#include "jet/MemoryDisk.h"
#include "jet/Notes.h"
#include "jet/share/LockFile.h"
#include "support/Versions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

using namespace jet;
using namespace std::string_literals;
using testing::MatchesRegex;
using testing::StartsWith;

namespace {

constexpr std::uint64_t kLook = 0x7FFFFFF0;

class NetworkFolder : public testing::TestWithParam<Version> {
protected:
    NetworkFolder() {
        disk.onLock = [this](std::uint64_t byte) {
            if (byte == kLook)
                events += 'l';
            if (byte == LockFile::kReading || byte == LockFile::kWriting)
                events += byte == LockFile::kReading ? 'R' : 'W';
        };
        disk.onRead = [this](std::uint64_t) { events += 'r'; };
    }

    /// What happens meanwhile: R or W is taken or given back, the byte that makes the machine look
    /// again likewise (l), something is read (r).
    std::string during(const std::function<void()>& work) {
        events.clear();
        work();
        return events;
    }
    static std::ptrdiff_t looksIn(const std::string& events) {
        return std::ranges::count(events, 'l') / 2;
    }

    MemoryDisk disk{diskOfNotes(GetParam())};
    std::string events;
};

INSTANTIATE_TEST_SUITE_P(, NetworkFolder, bothVersions(), versionName);

TEST_P(NetworkFolder, IsLookedAtAgainWithEachLock) {
    disk.remembers = true;
    Database file(kPath, on(disk));
    Table& table = file.table("notas");
    EXPECT_THAT(during([&] { const Reading section(file); }), MatchesRegex("Rllr+R"));
    RowId id;
    EXPECT_THAT(during([&] { id = table.insert(Row{"uma"s}); }), MatchesRegex("R?W+llr.*"));
    const std::string saving = during([&] { file.flush(); });
    EXPECT_THAT(saving, MatchesRegex("Rllr.*R.*W.*")); // before the first byte is read
    EXPECT_EQ(looksIn(saving), 1);
    // A short look that takes no lock of the others' asks the server all the same.
    EXPECT_THAT(during([&] { static_cast<void>(table.read(id)); }), StartsWith("ll"));
}

TEST_P(NetworkFolder, OfTheOwnMachineCostsNothing) {
    const auto calls = [&](bool remembers) {
        disk.remembers = remembers;
        Database file(kPath, on(disk));
        Table& table = file.table("notas");
        const std::uint64_t before = disk.calls();
        const std::ptrdiff_t looks = looksIn(during([&] {
            const Reading section(file);
            table.insert(Row{"outra"s});
            file.flush();
        }));
        return std::pair(disk.calls() - before, looks);
    };
    const auto [here, none] = calls(false);
    const auto [there, looked] = calls(true);
    EXPECT_EQ(none, 0);
    // Each time the byte is taken and given back, and nothing else.
    EXPECT_GE(looked, 3);
    EXPECT_EQ(there - here, 2U * static_cast<unsigned>(looked));
}

} // namespace
