// A disk that fails: every call that the engine makes to it, one after the other, fails once or
// from then on. The operator gets a sentence, and the file is sound when it is opened again.
#include "jet/Fault.h"

#include "jet/Check.h"
#include "jet/MemoryDisk.h"
#include "jet/Sentences.h"
#include "jet/ShopWork.h"
#include "jet/database/DatabasePager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>

using namespace jet;

namespace {

constexpr int kSteps = 6;

class Faults : public testing::TestWithParam<Fault> {};

INSTANTIATE_TEST_SUITE_P(, Faults, allFaults(), faultName);

/// A shop with some rows in it.
DiskImage usedShop(Version version) {
    MemoryDisk disk(emptyShop(version));
    {
        Database file(kPath, on(disk));
        ShopWork work(3);
        for (int i = 1; i <= 6; ++i)
            work.step(file, i);
    }
    return disk.image();
}

/// How the contents go when nothing fails.
std::vector<std::uint64_t> contentsOf(const DiskImage& shop) {
    MemoryDisk disk(shop);
    Database file(kPath, on(disk));
    ShopWork work(5);
    std::vector<std::uint64_t> contents{contentOf(file)};
    for (int i = 1; i <= kSteps; ++i) {
        work.step(file, i);
        contents.push_back(contentOf(file));
    }
    return contents;
}

TEST_P(Faults, EachEndsInASentenceAndASoundFile) {
    const Fault fault = GetParam();
    const DiskImage shop = usedShop(fault.version);
    const std::vector<std::uint64_t> contents = contentsOf(shop);
    std::size_t failures = 0;
    std::uint64_t number = 1;
    for (bool failed = true; failed; ++number) {
        SCOPED_TRACE("call " + std::to_string(number));
        MemoryDisk disk(shop);
        disk.failFrom(number, fault.forever, fault.error);
        std::size_t done = 0;
        std::string sentence;
        try {
            Database file(kPath, on(disk));
            ShopWork work(5);
            try {
                for (int i = 1; i <= kSteps; ++i) {
                    work.step(file, i);
                    done = static_cast<std::size_t>(i);
                }
            } catch (const Error& error) {
                sentence = error.what();
                // What failed is undone, at once or by the next opening; what comes after works or
                // says why not.
                try {
                    if (file.inTransaction())
                        file.rollback();
                    const std::uint64_t content = contentOf(file);
                    if (DatabasePager::of(file).inTransaction())
                        throw Error(Errc::io, "Há alterações ainda não gravadas.");
                    ASSERT_THAT(contents, testing::Contains(content));
                } catch (const Error& next) {
                    EXPECT_STRNE(next.what(), "");
                }
            }
        } catch (const Error& error) {
            sentence = error.what();
        }
        failed = disk.calls() >= number;
        failures += sentence.empty() ? 0 : 1;
        disk.failNoMore();

        Database file(kPath, on(disk));
        EXPECT_FALSE(file.readOnlyReason());
        EXPECT_FALSE(file.notice());
        const std::uint64_t content = contentOf(file);
        const bool sound = content == contents[done] ||
                           (done + 1 < contents.size() && content == contents[done + 1]);
        ASSERT_TRUE(sound) << sentence;
        for (const Finding& finding : check(kPath, disk).findings)
            ADD_FAILURE() << finding.sentence << '\n' << sentence;
        ASSERT_FALSE(HasFailure());
    }
    std::cout << "calls made to fail: " << number - 2 << ", told to the operator: " << failures
              << '\n';
    EXPECT_GT(failures, 100U);
}

/// Some of a save is in the file, and the disk fails. Who has it open neither sees nor writes
/// anything more; the next opening finds all of it or nothing.
TEST_P(Faults, AfterASaveThatCouldNotBeUndoneNothingIsReadUntilTheFileIsOpenedAgain) {
    const Fault fault = GetParam();
    if (!fault.forever)
        return;
    const DiskImage shop = usedShop(fault.version);
    std::size_t broken = 0;
    std::size_t stored = 0;
    std::uint64_t number = 1;
    for (bool failed = true; failed; ++number) {
        SCOPED_TRACE("call " + std::to_string(number));
        MemoryDisk disk(shop);
        bool wasBroken = false;
        std::uint64_t before = 0;
        std::uint64_t after = 0;
        {
            Database file(kPath, on(disk));
            before = contentOf(file);
            file.begin();
            Table& table = file.table("Cheques");
            RowCursor row = table.scan();
            ASSERT_TRUE(row.first());
            table.erase(row.id());
            after = contentOf(file);
            const std::uint64_t begin = disk.calls();
            disk.failFrom(begin + number, true, fault.error);
            try {
                file.commit();
            } catch (const Error& error) {
                EXPECT_STRNE(error.what(), "");
            }
            failed = disk.calls() >= begin + number;
            disk.failNoMore();
            wasBroken = file.isBroken();
            if (wasBroken) {
                ++broken;
                const auto expectTold = [&](const std::function<void()>& action) {
                    EXPECT_THAT(
                        sentenceOf(action, Errc::io),
                        testing::AllOf(testing::HasSubstr("falhou no meio e não pôde ser desfeita"),
                                       testing::HasSubstr("valeu inteira ou nada dela valeu")));
                };
                expectTold([&] { (void)contentOf(file); });
                expectTold([&] { file.commit(); });
                expectTold([&] { table.insert(Row(table.columns().size())); });
            }
        }
        Database file(kPath, on(disk));
        const std::uint64_t content = contentOf(file);
        EXPECT_TRUE(content == before || content == after);
        EXPECT_TRUE(check(kPath, disk).sound());
        stored += wasBroken && content == after ? 1 : 0;
    }
    EXPECT_GT(broken, 2U);
    EXPECT_GT(stored, 0U) << "the last sync failed, and what it was for was on the disk";
    EXPECT_LT(stored, broken);
}

/// What a sync hasn't brought to the disk the next one doesn't bring either, though it succeeds:
/// the system takes it for written. What the file says after a failure must be true without the
/// system.
TEST_P(Faults, WhatWasSavedOrUndoneAfterASyncThatFailedIsOnTheDisk) {
    const Fault fault = GetParam();
    const DiskImage shop = usedShop(fault.version);
    std::size_t losses = 0;
    std::uint64_t number = 1;
    for (bool failed = true; failed; ++number) {
        SCOPED_TRACE("call " + std::to_string(number));
        MemoryDisk disk(shop);
        try {
            Database file(kPath, on(disk));
            const std::uint64_t begin = disk.calls();
            disk.failFrom(begin + number, fault.forever, fault.error);
            ShopWork(5).step(file, 1);
            failed = disk.calls() >= begin + number;
        } catch (const Error& error) {
            EXPECT_STRNE(error.what(), "");
        }
        disk.failNoMore();
        std::uint64_t content = 0;
        {
            Database file(kPath, on(disk));
            content = contentOf(file);
        }
        PowerCut cut(shop);
        for (const MemoryDisk::Operation& operation : disk.record()) {
            losses += operation.kind == MemoryDisk::Operation::Kind::loss ? 1 : 0;
            cut.advance(operation);
        }
        MemoryDisk afterwards(cut.nothingMore());
        Database file(kPath, on(afterwards));
        ASSERT_FALSE(file.readOnlyReason());
        ASSERT_EQ(contentOf(file), content);
        ASSERT_TRUE(check(kPath, afterwards).sound());
    }
    EXPECT_GE(losses, 3U);
}

} // namespace
