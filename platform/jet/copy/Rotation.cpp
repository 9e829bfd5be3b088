#include "jet/copy/Rotation.h"

#include "jet/Database.h"
#include "jet/Error.h"
#include "jet/database/DatabasePager.h"
#include "jet/page/CommitPairs.h"

#include <algorithm>
#include <functional>
#include <set>
#include <tuple>

namespace jet {

namespace {

using std::chrono::sys_days;

constexpr std::size_t kDays = 10;
constexpr std::size_t kWeeks = 8;
constexpr std::size_t kMonths = 12;

// What a day belongs to: of two days the later one has the greater number.
int dayItself(sys_days day) { return static_cast<int>(day.time_since_epoch().count()); }
int weekOf(sys_days day) { // from Monday on; the first day counted was a Thursday
    constexpr int kDaysOfWeek = 7;
    const int days = dayItself(day) + 3;
    return (days >= 0 ? days : days - kDaysOfWeek + 1) / kDaysOfWeek;
}
int monthOf(sys_days day) {
    const std::chrono::year_month_day date(day);
    return static_cast<int>(date.year()) * 12 + static_cast<int>(unsigned(date.month()));
}

constexpr struct {
    int (*spanOf)(sys_days);
    std::size_t kept;
} kSpans[] = {
    {dayItself, kDays  },
    {weekOf,    kWeeks },
    {monthOf,   kMonths},
};

} // namespace

std::optional<Extent> extentOf(const std::filesystem::path& database, Disk& disk, bool unshared) {
    try {
        Database file(database, {true, {}, {}, &disk, unshared});
        const Reading reading(file);
        Extent extent;
        Pager& pager = DatabasePager::of(file);
        for (const std::string& name : file.tableNames()) {
            const PageRef page = pager.read(file.table(name).definition().page());
            extent.entries += page.view().load(pager.format().definition.lastNumber);
        }
        const CommitPairs pairs(pager.file(), pager.format());
        for (std::size_t user = 0; user < CommitPairs::kUsers; ++user)
            extent.commits += pairs[user];
        return extent;
    } catch (const Error&) {
        return std::nullopt;
    }
}

std::vector<std::filesystem::path> superfluous(std::vector<DatedCopy> copies, sys_days today) {
    std::set<std::filesystem::path> kept;
    // What is most, of a day that has been, the latest: first.
    std::ranges::sort(copies, std::greater(), [&](const DatedCopy& copy) {
        return std::tuple(copy.extent, copy.day <= today, copy.day);
    });
    for (std::size_t i = 0; i < std::min(kDays, copies.size()); ++i)
        kept.insert(copies[i].path);

    std::ranges::sort(copies, std::greater(), &DatedCopy::day);
    for (const auto& [spanOf, most] : kSpans) {
        std::set<int> spans;
        for (const DatedCopy& copy : copies)
            if (copy.day <= today && spans.size() < most && spans.insert(spanOf(copy.day)).second)
                kept.insert(copy.path);
    }

    std::vector<std::filesystem::path> rest;
    for (const DatedCopy& copy : copies)
        if (!kept.contains(copy.path))
            rest.push_back(copy.path);
    return rest;
}

} // namespace jet
