// Which of the daily copies are kept.
#include "jet/copy/Rotation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

using namespace jet;
using namespace std::chrono_literals;

namespace {

using std::chrono::days;
using std::chrono::sys_days;

std::string nameOf(sys_days day) { return std::to_string(day.time_since_epoch().count()); }

DatedCopy copyOf(sys_days day, std::int64_t entries, std::uint64_t commits = 0) {
    return {
        nameOf(day), day, {entries, commits}
    };
}

/// A shop that makes a copy every day and removes what isn't kept.
class Shop {
public:
    void open(sys_days day, std::int64_t entries) {
        copies_.push_back(copyOf(day, entries));
        for (const auto& gone : superfluous(copies_, day))
            std::erase_if(copies_, [&](const DatedCopy& copy) { return copy.path == gone; });
    }
    [[nodiscard]] std::vector<sys_days> kept() const {
        std::vector<sys_days> kept;
        for (const DatedCopy& copy : copies_)
            kept.push_back(copy.day);
        std::ranges::sort(kept);
        return kept;
    }

private:
    std::vector<DatedCopy> copies_;
};

TEST(Rotation, KeepsTenDaysEightWeeksAndTwelveMonths) {
    const sys_days today(2026y / 11 / 21); // a Saturday
    Shop shop;
    for (int day = 400; day >= 0; --day)
        shop.open(today - days(day), 400 - day);

    std::set<sys_days> expected;
    for (int day = 0; day < 10; ++day)
        expected.insert(today - days(day));
    for (sys_days sunday(2026y / 11 / 15); sunday > today - days(7 * 7); sunday -= days(7))
        expected.insert(sunday);
    for (int month = 1; month < 12; ++month) {
        const auto last = 2026y / 11 / std::chrono::last - std::chrono::months(month);
        expected.insert(sys_days(last));
    }
    const auto kept = shop.kept();
    EXPECT_EQ(std::set(kept.begin(), kept.end()), expected);
}

TEST(Rotation, CountsWhatThereIsNotWhatTimeHasPassed) {
    Shop shop;
    const sys_days summer(2026y / 1 / 31);
    for (int day = 30; day >= 0; --day)
        shop.open(summer - days(day), 30 - day);
    const std::size_t before = shop.kept().size();
    shop.open(summer + days(200), 100);
    EXPECT_GE(shop.kept().size(), before) << "a long holiday costs no copy";
}

TEST(Rotation, DaysToComeCountByWhatTheyHold) {
    const sys_days today(2026y / 11 / 21);
    std::vector<DatedCopy> copies;
    copies.reserve(21);
    for (int day = 0; day < 10; ++day)
        copies.push_back(copyOf(today - days(day), 100 - day));
    for (int day = 0; day < 10; ++day)
        copies.push_back(copyOf(today + days(1000 + day), 50));
    EXPECT_EQ(superfluous(copies, today).size(), 10U);
    // Made yesterday, the clock being wrong: it holds as much as any.
    copies.push_back(copyOf(today + days(2000), 99));
    EXPECT_THAT(superfluous(copies, today),
                testing::Not(testing::Contains(std::filesystem::path(nameOf(today + days(2000))))));
}

TEST(Rotation, WithNothingDoneBetweenTheTrueOnesAreKept) {
    const sys_days today(2026y / 11 / 21);
    std::vector<DatedCopy> copies;
    for (int day = 0; day < 10; ++day) {
        copies.push_back(copyOf(today - days(day), 7));
        copies.push_back(copyOf(today + days(1 + day), 7));
    }
    const auto gone = superfluous(copies, today);
    EXPECT_EQ(gone.size(), 10U);
    for (int day = 0; day < 10; ++day)
        EXPECT_THAT(gone, testing::Contains(std::filesystem::path(nameOf(today + days(1 + day)))));
}

TEST(Rotation, AfterAnOlderCopyWasBroughtBackBothLivesAreKept) {
    const sys_days today(2026y / 11 / 21);
    Shop shop;
    for (int day = 30; day > 10; --day)
        shop.open(today - days(day), 100 - day);
    for (int day = 10; day >= 0; --day)
        shop.open(today - days(day), 10 - day); // brought back from long ago
    const auto kept = shop.kept();
    for (int day = 0; day < 10; ++day)
        EXPECT_THAT(kept, testing::Contains(today - days(day)));
    EXPECT_THAT(kept, testing::Contains(today - days(11))) << "what was left behind";
}

TEST(Rotation, AfterACompactionTheNewOnesAreKept) {
    const sys_days today(2026y / 11 / 21);
    std::vector<DatedCopy> copies;
    copies.reserve(20);
    for (int day = 0; day < 10; ++day)
        copies.push_back(copyOf(today - days(day), 500 - day, 10));
    for (int day = 10; day < 20; ++day)
        copies.push_back(copyOf(today - days(day), 500 - day, 9000));
    const auto gone = superfluous(copies, today);
    EXPECT_FALSE(gone.empty());
    for (const auto& path : gone)
        EXPECT_LT(path, nameOf(today - days(9)));
}

} // namespace
