#pragma once

#include "jet/Disk.h"

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <stop_token>
#include <vector>

namespace jet {

class Database;

/// The dated copies of a database in the folder "backup" beside it: automacao.mdb has
/// backup/automacao-2004-06-01.mdb and so on. One is made for each day it is used; which of them
/// are kept, see Rotation.h. A copy has its name only after it has been checked from end to end:
/// what is damaged never takes the place of what was good. Nobody waits while one is made: see
/// LiveCopy. Who may use the database may use its copies.
///
/// While errors are known to be in the database a note of them lies beside the copies, for every
/// station and until the database has been found sound, and no copy is removed.
///
/// Works through files of its own and shares nothing with an open Database, so that a thread of its
/// own may run it. It remembers what it has checked.
class Backup {
public:
    using Today = std::function<std::chrono::year_month_day()>;

    /// `today` is the day by the shop's clock.
    explicit Backup(const std::filesystem::path& database, Today today = localToday,
                    Disk& disk = Disk::system());

    /// Makes today's copy unless it is there and sound, and removes those that aren't kept. The
    /// path of the new one; nothing if there was nothing to do. While errors are noted, or another
    /// program says that there are some, the database is checked in any case.
    /// @throws Error{corrupt} if the database has errors, which are noted (the copies stay as they
    ///         were), Error{locked} if it never stood still long enough to be copied,
    ///         Error{cancelled} soon after `stop` asks for it; Error{notFound, readOnly, full, io}.
    ///         Nothing is left of a copy that failed.
    [[nodiscard]] std::optional<std::filesystem::path> makeIfDue(const std::stop_token& stop = {});

    /// Files that have a copy's name, in the order of their days.
    /// @throws Error{io} if the folder can't be read.
    [[nodiscard]] std::vector<std::filesystem::path> copies() const;
    /// That of the latest day, days to come aside, which is sound; each is checked from end to end.
    /// @throws as makeIfDue().
    [[nodiscard]] std::optional<std::filesystem::path>
    newestSound(const std::stop_token& stop = {});

    /// What is noted of errors in the database, a sentence in Portuguese, or nothing.
    [[nodiscard]] std::optional<std::string> damage() const;
    /// Notes an error that somebody has met. That it can't be noted is no error.
    void noteDamage(const std::string& sentence) noexcept;

    [[nodiscard]] static std::chrono::year_month_day localToday();

private:
    /// A file in the folder as it was when it was last checked.
    struct Checked {
        Disk::Entry entry;
        bool sound;
    };

    [[nodiscard]] std::filesystem::path copyOf(std::chrono::year_month_day day) const;
    [[nodiscard]] std::optional<std::chrono::year_month_day> dayOf(const std::string& name) const;
    [[nodiscard]] std::filesystem::path notePath() const;
    [[nodiscard]] std::vector<Disk::Entry> entries() const;
    [[nodiscard]] bool isSound(const Disk::Entry& entry, const std::stop_token& stop);
    [[nodiscard]] bool isTodays(const std::filesystem::path& copy, const std::stop_token& stop);
    [[nodiscard]] bool isOld(const std::filesystem::path& copy) const;
    [[nodiscard]] bool isSuspect() const;
    void make(const std::filesystem::path& copy, bool keep, const std::stop_token& stop);
    void remember(const std::filesystem::path& copy, bool sound);
    void rotate() const;
    void removeDeadParts(std::int64_t now) const;

    std::filesystem::path database_;
    std::filesystem::path folder_;
    Today today_;
    Disk& disk_;
    std::map<std::string, Checked> checked_;
};

/// Puts a copy in the database's place, in one step and for good, after checking it from end to
/// end. What was there is kept beside it under a name that says so, and with it the journal of a
/// transaction that was cut off, unless that could be undone. Whenever the power goes, the name is
/// that of the one file or of the other, and both are there. Owner, group and mode stay those of
/// the database: an account that can't see to that is refused.
/// @return the name under which the replaced file is kept; nothing if there was none.
/// @throws Error{corrupt} if the copy has errors, Error{locked} if somebody has the database open;
///         Error{notFound, readOnly, full, io}. Then everything is as it was; only if the disk's
///         word that it is done is all that was missing, the copy is in place and the other kept.
std::optional<std::filesystem::path> restore(const std::filesystem::path& copy,
                                             const std::filesystem::path& database,
                                             Disk& disk = Disk::system());

/// Changes a database that nobody else may use meanwhile, all or nothing: `change` works on a copy,
/// which takes the database's place as restore() puts one there, checked from end to end.
/// @return the name under which the file as it was is kept.
/// @throws what `change` throws, and as restore(): everything is as it was then.
std::filesystem::path changeAside(const std::filesystem::path& database,
                                  const std::function<void(Database&)>& change,
                                  Disk& disk = Disk::system());

} // namespace jet
