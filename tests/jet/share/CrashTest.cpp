// The promise of a transaction: whenever the power goes, the file is what it was before or after
// it. Every write, sync and rename of a workload is recorded on a disk in memory; for every place
// in the record the disks that a power cut there can leave are made, opened, compared and checked.
#include "jet/Afterwards.h"
#include "jet/page/ByteView.h"
#include "jet/page/CommitPairs.h"
#include "jet/page/Format.h"
#include "support/Versions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>

using namespace jet;
using namespace std::string_literals;

namespace {

/// A workload as it was recorded: what the disk held at first, and the contents after each step
/// with the place in the record where the step began and ended.
struct Recorded {
    struct Step {
        std::size_t begin;
        std::size_t end;
        std::uint64_t content;
    };
    DiskImage before;
    MemoryDisk disk;
    std::vector<Step> steps;

    Recorded(Version version, int count) : before(emptyShop(version)), disk(before) {
        ShopWork workload(42);
        {
            Database file(kPath, on(disk));
            steps.push_back({0, 0, contentOf(file)});
            for (int i = 1; i <= count; ++i) {
                const std::size_t begin = disk.record().size();
                workload.step(file, i);
                const std::size_t end = disk.record().size();
                steps.push_back({begin, end, contentOf(file)});
            }
        }
    }

    /// The contents allowed after a cut behind `operations` of the record.
    [[nodiscard]] std::vector<std::uint64_t> allowed(std::size_t operations) const {
        std::vector<std::uint64_t> contents;
        for (const Step& step : steps) {
            if (step.end <= operations)
                contents.assign(1, step.content);
            else if (step.begin < operations)
                contents.push_back(step.content);
        }
        return contents;
    }
};

void expectAllowed(const Afterwards::Outcome& outcome, const std::vector<std::uint64_t>& allowed,
                   const std::string& where) {
    ASSERT_EQ(outcome.problem, "") << where;
    ASSERT_THAT(allowed, testing::Contains(outcome.content)) << where;
}

bool isMarked(const DiskImage& image) {
    const Format& format =
        formatOf(image.at(kPath)[0x14] == std::byte{0} ? Version::jet3 : Version::jet4);
    return load<std::uint16_t>(image.at(kPath).data() + format.header.commitPairs.at + 2) ==
           CommitPairs::kWriting;
}

class Crash : public testing::TestWithParam<Version> {};

INSTANTIATE_TEST_SUITE_P(, Crash, bothVersions(), versionName);

TEST_P(Crash, EveryCutLeavesTheStateBeforeOrAfterATransaction) {
    const Recorded work(GetParam(), 90);
    std::mt19937_64 random(7);
    Afterwards after;
    PowerCut cut(work.before);
    std::size_t recoveries = 0;
    std::size_t cutRecoveries = 0;
    for (std::size_t i = 0; i < work.disk.record().size(); ++i) {
        cut.advance(work.disk.record()[i]);
        if (i % JET_ONE_IN != 0)
            continue;
        const auto allowed = work.allowed(i + 1);
        const std::string where = "after operation " + std::to_string(i + 1);
        for (const DiskImage& image : imagesOf(cut, random)) {
            const Afterwards::Outcome& outcome = after.of(image);
            ASSERT_NO_FATAL_FAILURE(expectAllowed(outcome, allowed, where));
            // A program that knows nothing of journals finds a whole file, or one marked as not.
            if (outcome.recovered && !isMarked(image)) {
                DiskImage alone{
                    {kPath, image.at(kPath)}
                };
                ASSERT_NO_FATAL_FAILURE(
                    expectAllowed(after.of(alone), allowed, where + ", without the journal"));
            }
            if (!outcome.recovered || ++recoveries % 17 != 0)
                continue;
            // The power goes again while the file is being recovered.
            MemoryDisk second(image);
            { Database file(kPath, on(second)); }
            PowerCut again(image);
            for (const MemoryDisk::Operation& operation : second.record()) {
                again.advance(operation);
                for (const DiskImage& twice :
                     {again.nothingMore(), again.everything(), again.some(random, 50)}) {
                    ASSERT_NO_FATAL_FAILURE(
                        expectAllowed(after.of(twice), allowed, where + ", in its recovery"));
                    ++cutRecoveries;
                }
            }
        }
    }
    std::cout << "crash points: " << after.points() << " (" << cutRecoveries
              << " during recovery), different images opened: " << after.images()
              << ", checked: " << after.checks() << '\n';
    EXPECT_GE(after.points(), 10000U / JET_ONE_IN);
}

} // namespace
