#pragma once

#include "jet/Disk.h"

#include <chrono>
#include <compare>
#include <optional>
#include <vector>

namespace jet {

/// How far the work in a database had come, by its own account: no clock has a part in that.
struct Extent {
    std::int64_t entries{};  ///< the last autonumbers of all tables, added up: grows with each row
    std::uint64_t commits{}; ///< the commit counters, added up; a compaction begins them anew
    friend auto operator<=>(const Extent&, const Extent&) = default;
};

/// Nothing for a file that doesn't open.
/// `unshared`: as Database::Options has it.
[[nodiscard]] std::optional<Extent> extentOf(const std::filesystem::path& database, Disk& disk,
                                             bool unshared);

/// A copy of a database, the day of its name, and what it holds.
struct DatedCopy {
    std::filesystem::path path;
    std::chrono::sys_days day;
    Extent extent;
};

/// Which of the copies aren't kept. Kept are the ten of the last days, the newest of each of the
/// last eight weeks and twelve months for which there are copies, and the ten that hold most.
///
/// Where the clock has always been right the ten of the last days are those that hold most. Copies
/// of days to come count only by what they hold, so that they never push out a true one; and a copy
/// that was made under a date of long ago stays for what it holds. After an older copy was brought
/// back, the days have what is new, and the others what was left behind.
[[nodiscard]] std::vector<std::filesystem::path> superfluous(std::vector<DatedCopy> copies,
                                                             std::chrono::sys_days today);

} // namespace jet
