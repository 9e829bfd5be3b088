#pragma once

#include "jet/Table.h"
#include "jet/TableSpec.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>

namespace jet {

/// An open database file.
///
/// Several stations may have one file open and all may write, one transaction after the other: who
/// changes something has the file from the first change of a transaction to its end, and the others
/// wait for that long (see setWaitHook), at most ten seconds. What another has written is seen by
/// the next look at the file. A program that isn't a copy of this one makes the file read-only as
/// long as it has it open. One thread at a time.
class Database {
public:
    struct Options {
        bool readOnly = false;
        /// Jet 3: the code page of the texts, where the file names a wrong one.
        std::optional<std::uint16_t> codePage;
        std::string password;
        Disk* disk = nullptr; ///< another than the system's; outlives the database
        /// With readOnly: the caller sees to it that nobody changes the file meanwhile (FileAlone),
        /// and this opening is nobody's station.
        bool unshared = false;
    };

    /// Opens an existing file. A file that may be read but not written (no permission, in use by
    /// another, damaged by one) opens read-only: see readOnlyReason().
    /// @throws Error{notFound, io, corrupt, unsupported, password}.
    Database(const std::filesystem::path& path, const Options& options);
    explicit Database(const std::filesystem::path& path) : Database(path, Options{}) {}
    /// Makes a new file with the system tables and no others, complete on return.
    /// @throws Error{exists, io, full}.
    static void create(const std::filesystem::path& path, Version version,
                       Disk& disk = Disk::system());
    /// Writes implicit changes; an explicit transaction still open is rolled back.
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const noexcept;
    [[nodiscard]] Version version() const noexcept;
    /// Why the file can't be changed at this moment, or nothing if it can: looks each time whether
    /// a foreign program has come or gone. Costs a few calls of the system.
    [[nodiscard]] std::optional<std::string> readOnlyReason();

    /// Whether a save has failed half-way and couldn't be undone: the next opening undoes it, and
    /// until then nothing can be done with this object.
    [[nodiscard]] bool isBroken() const noexcept;

    /// What the opening found and the operator must know, or nothing: a journal that was left
    /// beside the file and couldn't be used.
    [[nodiscard]] const std::optional<std::string>& notice() const noexcept;

    /// What has been found damaged, a sentence: before its first change each table is looked over,
    /// and one that isn't sound stays as it is (Error{readOnly}).
    [[nodiscard]] const std::optional<std::string>& damage() const noexcept;

    /// The user tables, in the order of their names.
    [[nodiscard]] std::vector<std::string> tableNames() const;
    /// The same and the system's own.
    [[nodiscard]] std::vector<std::string> allTableNames() const;
    [[nodiscard]] bool hasTable(std::string_view name) const;
    /// By name, without regard to case; the same object each time, and there as long as the
    /// database is. If the file has the table no more, because another program has deleted or
    /// renamed it or changed its structure, that object answers everything with an error that says
    /// so, and the next call here gives what has the name now.
    /// @throws Error{notFound}.
    [[nodiscard]] Table& table(std::string_view name);
    /// @throws Error{exists, misuse, notFound, readOnly, full}.
    Table& createTable(const TableSpec& spec);

    /// The order of texts in this file: that of new columns.
    [[nodiscard]] const SortOrder& sortOrder() const noexcept;
    /// Compares texts in UTF-8 as the file's own order does: without regard to case, with regard to
    /// accents and trailing blanks.
    [[nodiscard]] int compareText(std::string_view a, std::string_view b) const;
    /// Appends the bytes by which texts are ordered so, for who sorts many.
    void appendTextKey(Bytes& key, std::string_view text) const;

    /// Explicit transactions; not nested. commit() returns when the disk has everything.
    /// @throws Error{misuse} if one is open (begin) or none is (commit, rollback); Error{readOnly}.
    void begin();
    void commit();
    void rollback();
    /// As commit(), but what the transaction has changed is gathered, as are changes outside one:
    /// on the disk half a second later at most, and nobody else sees it before. For one of many
    /// transactions of one piece of work, which calls flush() at its end. Each can still be rolled
    /// back on its own.
    void commitLater();
    /// Inside a transaction: from here on nobody else changes the file until it ends, and all that
    /// others have written until now has been noticed. The first change does it by itself.
    /// @throws Error{locked, readOnly}.
    void claim();
    [[nodiscard]] bool inTransaction() const noexcept;
    /// Several changes as one, in a transaction or outside: all of them are kept or none, they are
    /// written together, and they count as one (see Tally).
    /// @throws what `changes` throws, and as claim().
    void asOne(const std::function<void()>& changes);

    /// Changes made outside an explicit transaction are gathered and written together, at the
    /// latest when they are half a second old: by the next change, or by this function, which who
    /// holds an idle database calls from time to time.
    ///
    /// What can't be written stays gathered, and each later flush tries again; meanwhile nobody has
    /// to wait for it. If another station writes first, what was gathered here is undone: whoever
    /// looks at the file next is told, by Error{conflict}.
    void flushIfDue();
    void flush();
    /// Undoes what is gathered. Nothing is done while an explicit transaction is open.
    void discard() noexcept;
    /// Of the rows inserted, updated and erased here, how many are on the disk and how many are
    /// gathered.
    struct Tally {
        std::uint64_t written = 0;
        std::uint64_t gathered = 0;
    };
    [[nodiscard]] Tally tally() const noexcept;

    /// For how long a snapshot is taken for the newest: what is read may then be older by as much
    /// than what other stations have written by now, though still all of one state of the file, and
    /// many readings in a row cost no more calls of the system than one. Zero at first: every
    /// reading asks anew. What is changed is always compared with the newest.
    void setSnapshotHold(std::chrono::milliseconds time);

    /// A moment, for writersSince(): how often it was found so far that other stations have
    /// written.
    [[nodiscard]] std::uint64_t changesByOthers() const noexcept;
    /// Whether another station is about to write, or does: who only wants to read, and has time,
    /// spares itself the wait. One call of the system.
    [[nodiscard]] bool isTakenByOther() const;
    /// The names of the stations that have written since that moment, as far as it has been
    /// noticed: "CAIXA2", "CAIXA2 (Maria)".
    [[nodiscard]] std::vector<std::string> writersSince(std::uint64_t changes) const;

    /// Grows whenever any row, index or table may have changed, by whomever.
    [[nodiscard]] std::uint64_t generation() const noexcept;
    /// Grows when another has written, told or found out.
    [[nodiscard]] std::uint64_t refreshes() const noexcept;

    /// What `body` finds in the file, all of one state. It may be called again, if a foreign
    /// program has written meanwhile; so it must begin anew each time.
    template <class Body>
    decltype(auto) onSnapshot(Body&& body) {
        return pager().onSnapshot(std::forward<Body>(body));
    }
    /// In the middle of an onSnapshot() that takes long: lets other stations write that wait for it
    /// to end. If one does, it begins anew; after some times it holds the file to its end.
    void breathe() noexcept;
    /// Of an error inside an onSnapshot(): whether that begins anew.
    [[nodiscard]] bool isDisturbed() const noexcept;
    /// Whether another station waits to write until a Reading ends. @throws Error{io}.
    [[nodiscard]] bool keepsWriterWaiting();

private:
    friend class DatabasePager;
    friend class Reading;
    friend class Table;
    struct Parts;

    Database() = default;
    [[nodiscard]] Pager& pager() noexcept;
    void loadCatalog();
    void noticeChanges();

    std::unique_ptr<Parts> parts_;
};

/// What is read while one lives is all of one state of the file: another station's transaction is
/// seen whole or not at all. Keep it short: nobody can write meanwhile. They nest, and inside an
/// outer one cost nothing.
class Reading {
public:
    explicit Reading(Database& database) : section_(database.pager()) {}

private:
    Pager::Section section_;
};

/// All changes made while it lives, or none.
class DatabaseTransaction {
public:
    explicit DatabaseTransaction(Database& database) : database_(database) { database_.begin(); }
    DatabaseTransaction(const DatabaseTransaction&) = delete;
    DatabaseTransaction& operator=(const DatabaseTransaction&) = delete;
    ~DatabaseTransaction();
    void commit() {
        database_.commit();
        done_ = true;
    }
    void commitLater() {
        database_.commitLater();
        done_ = true;
    }

private:
    Database& database_;
    bool done_ = false;
};

} // namespace jet
