#pragma once

#include "jet/Error.h"
#include "jet/row/PageRows.h"

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <vector>

namespace jet {

class Database;
class Table;

/// Goes over all rows of a table, page by page and in short pieces, and from then on over those of
/// the pages that have changed: for who keeps something made of them, such as sums.
///
/// Pages changed through the same Database are known by the pager's log, and so are those of the
/// last transaction of another station. When others have written more, every page is read and
/// compared with the checksum that it had; only one that differs is decoded.
///
/// Each piece sees one state of the file, different pieces may see different ones; once nothing is
/// left to do, what was taken is of one state, the newest that has been noticed. Changes that are
/// still to be written are seen, so who doesn't want those of an open transaction waits for its
/// end. Of long values only what lies in the row is followed.
class TableFollower {
public:
    /// Takes the rows of a page, instead of those that it was given of the same page before; none
    /// for a page that the table has no more. They can be met once. If it throws it must have taken
    /// nothing, or be done with the follower.
    using Take = std::function<void(PageNo, PageRows&)>;

    /// Of a table that outlives it, with its database.
    TableFollower(Database& database, const Table& table);

    /// Goes on for about that long, some thousandths of a second or more; other stations can't
    /// write meanwhile.
    /// @return whether there is more to be done at once.
    /// @throws Error{io, corrupt} if the file can't be read or its map of the table's pages is
    ///         damaged, Error{locked}, and what the table was lost by; all of it may be called
    ///         again and goes on where it was.
    bool follow(std::chrono::microseconds time, const Take& take);

    /// Whether all pages have been gone over since it began.
    [[nodiscard]] bool isComplete() const noexcept { return complete_; }
    /// How much of the file it has gone over for that, 0 to 1.
    [[nodiscard]] double progress() const noexcept;
    /// A page that can't be decoded, or that `take` has refused by an Error, counts as one without
    /// rows. Nothing if there is none now.
    [[nodiscard]] std::optional<Error> damage() const;

    /// Pages, from the beginning on.
    struct Tally {
        std::uint64_t compared = 0; ///< with what they were
        std::uint64_t decoded = 0;
    };
    [[nodiscard]] const Tally& tally() const noexcept { return tally_; }

private:
    /// Of a page: its checksum, or one of these.
    using Print = std::uint64_t;
    static constexpr Print kUnknown = 0; ///< nothing has been taken of it
    static constexpr Print kStale = 1;   ///< what was taken has to be taken again

    [[nodiscard]] static Print printOf(std::span<const std::byte> page) noexcept;
    [[nodiscard]] bool learn();
    void goOn(const Take& take);
    void lookAt(PageNo page, const Take& take);
    void compare(PageNo page, std::span<const std::byte> bytes, const Take& take);
    void decode(PageNo page, std::span<const std::byte> bytes, const Take& take);
    void drop(PageNo page, const Take& take);
    void drop(std::uint32_t from, std::uint32_t end, const Take& take);
    void recallGuests(PageNo page, Print print);
    void forgetElsewhere(PageNo page) noexcept;

    Pager& pager_;
    const TableDefinition& definition_;
    UsageMap owned_;
    PageLog::Position known_ = 0; ///< what came later in the log has still to be looked at
    bool passing_ = false;        ///< over all pages
    std::uint32_t next_ = 0;      ///< page of the pass
    bool complete_ = false;
    std::set<PageNo> due_; ///< pages to be looked at before the pass goes on
    std::vector<Print> prints_;
    std::map<PageNo, Error> damaged_;
    /// Pages with rows that have moved: where these lie.
    std::map<PageNo, std::set<PageNo>> elsewhere_;
    /// The same by where they lie, and how that page was then.
    std::map<PageNo, std::map<PageNo, Print>> guests_;
    Bytes buffer_;
    Tally tally_;
};

} // namespace jet
