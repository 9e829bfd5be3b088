#pragma once

#include "jet/Disk.h"

#include <chrono>
#include <functional>
#include <optional>
#include <stop_token>
#include <vector>

namespace jet {

/// The dated copies of a database, one for each day it was used, in the folder "backup" beside it:
/// automacao.mdb has backup/automacao-2004-06-01.mdb and so on. A copy counts, and has its name,
/// only after it has been checked from end to end: what is damaged never takes the place of what
/// was good.
///
/// Works through files of its own and shares nothing with an open Database, so that a thread of its
/// own may run it.
class Backup {
public:
    static constexpr std::size_t kKept = 10;
    using Today = std::function<std::chrono::year_month_day()>;

    /// `today` is the day by the shop's clock.
    explicit Backup(std::filesystem::path database, Today today = localToday);

    /// Makes today's copy unless it is there, then removes the oldest beyond kKept. The path of the
    /// new one; nothing if there was nothing to do.
    /// @throws Error{corrupt} if the database has errors (the copies stay as they were),
    ///         Error{locked} if it never stood still long enough to be copied, Error{cancelled}
    ///         soon after `stop` asks for it; Error{notFound, readOnly, full, io}. Nothing is left
    ///         of a copy that failed.
    [[nodiscard]] std::optional<std::filesystem::path>
    makeIfDue(const std::stop_token& stop = {}) const;

    /// Those there are, oldest first.
    /// @throws Error{io} if the folder can't be read.
    [[nodiscard]] std::vector<std::filesystem::path> copies() const;

    [[nodiscard]] static std::chrono::year_month_day localToday();

private:
    [[nodiscard]] std::filesystem::path copyOf(std::chrono::year_month_day day) const;
    [[nodiscard]] std::optional<std::chrono::year_month_day>
    dayOf(const std::filesystem::path& copy) const;
    void make(const std::filesystem::path& copy, const std::stop_token& stop) const;
    void removeOld(const std::filesystem::path& newest) const;

    std::filesystem::path database_;
    std::filesystem::path folder_;
    Today today_;
};

/// Puts a copy in the database's place, in one step and for good, after checking it from end to
/// end. What was there is kept beside it under a name that says so, and with it the journal of a
/// transaction that was cut off, unless that could be undone. Whenever the power goes, the name is
/// that of the one file or of the other, and both are there.
/// @return the name under which the replaced file is kept; nothing if there was none.
/// @throws Error{corrupt} if the copy has errors, Error{locked} if somebody has the database open;
///         Error{notFound, readOnly, full, io}. Then everything is as it was; only if the disk's
///         word that it is done is all that was missing, the copy is in place and the other kept.
std::optional<std::filesystem::path> restore(const std::filesystem::path& copy,
                                             const std::filesystem::path& database,
                                             Disk& disk = Disk::system());

} // namespace jet
