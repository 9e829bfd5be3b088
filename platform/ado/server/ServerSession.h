#pragma once

#include "ado/Recorder.h"
#include "ado/Store.h"
#include "ado/server/ServerCascades.h"
#include "jet/TableSpec.h"

#include <deque>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace ado {

/// Who wants to hear of every change: which table, which block of its keys.
class NewsListener {
public:
    virtual void hear(std::string_view table, std::uint32_t block) = 0;
    /// What has been changed meanwhile hasn't been told.
    virtual void miss() = 0;

protected:
    ~NewsListener() = default;
};

/// What all who work on one server share: the line, the tables, what has been changed.
class ServerSession {
public:
    /// @throws as ServerWire; Error{notFound} if the database isn't a shop's.
    ServerSession(const std::string& address, Recorder* recorder);
    ServerSession(const ServerSession&) = delete;
    ServerSession& operator=(const ServerSession&) = delete;

    [[nodiscard]] ServerWire& wire() noexcept { return wire_; }
    [[nodiscard]] const ServerWire& wire() const noexcept { return wire_; }
    /// The tables by now. @throws jet::Error if they had to be asked for.
    [[nodiscard]] const ServerCatalog& catalog();
    void createTable(const jet::TableSpec& spec);

    /// How much has been changed, as far as it is known here. Asks nobody: costs no round trip.
    struct Moment {
        std::uint64_t own = 0;    ///< by this connection
        std::uint64_t others = 1; ///< by whoever else
        friend bool operator==(const Moment&, const Moment&) = default;
    };
    [[nodiscard]] Moment now();
    /// The same of one table alone.
    [[nodiscard]] Moment now(const ServerTable& table);

    /// By what names those go on the server who have changed anything in a table since a moment of
    /// others; none if one of them can't be told, or goes by the same name as whoever asks.
    [[nodiscard]] std::vector<std::string> writersSince(const std::string& table,
                                                        std::uint64_t moment);

    /// One change of one row. `before` is the row as it was, null for a new one; `change` makes the
    /// change and gives the row as it is then, nothing for one erased.
    using Change = std::function<std::optional<ServerRow>()>;
    void change(const ServerTable& table, const ServerRow* before, const Change& change) {
        this->change(table, before, false, change);
    }
    void erase(const ServerTable& table, const ServerRow& before, const Change& change) {
        this->change(table, &before, true, change);
    }

    /// As Store::write().
    [[nodiscard]] bool write(std::span<const Store::RowWrite> rows);
    /// Whether what is written isn't waited for, since write() is at work: by whoever records that.
    [[nodiscard]] bool isPutting() const noexcept { return putting_; }
    /// A change of one row of which no record is kept.
    void put(const ServerTable& table, ServerStatement statement);
    /// What changes a row: see there.
    ServerRows write(const ServerStatement& statement);

    void begin();
    void commit();
    void rollback();
    void claim();
    void claimRows();
    [[nodiscard]] bool hasUndone() noexcept { return std::exchange(undone_, false); }
    [[nodiscard]] std::uint64_t written() const noexcept { return written_; }

    void enter(NewsListener& listener) { listeners_.push_back(&listener); }
    void leave(NewsListener& listener) noexcept { std::erase(listeners_, &listener); }

private:
    void change(const ServerTable& table, const ServerRow* before, bool erases,
                const Change& change);
    [[nodiscard]] std::set<const ServerTable*> keptAlong(const ServerTable& table);
    void record(bool wasThere, const FollowedRow& row, const std::vector<FollowedRow>& followed);
    void hear(std::string_view payload, int other);
    void forget();
    void changeAnywhere(std::uint64_t Moment::*whose);
    void claim(void (ServerWire::*how)());

    ServerWire wire_;
    Recorder* recorder_;
    ServerCatalog catalog_;
    bool catalogIsOld_ = true;
    Moment moment_;
    Moment anywhere_;                       ///< the part of it that may be in any table
    std::map<std::string, Moment> inTable_; ///< and in one, by its name
    struct Writing {
        std::uint64_t moment;
        std::string table;
        int by; ///< the server's number of the line
    };
    std::deque<Writing> writings_;   ///< by others, the last ones
    std::uint64_t writingsFrom_ = 0; ///< the moment after which all of them are there
    std::set<std::string> changed_;  ///< tables, here, in the last transaction
    std::vector<NewsListener*> listeners_;
    std::uint64_t lines_ = 1; ///< of the wire, as far as their news are heard
    std::uint64_t written_ = 0;
    std::uint64_t unwritten_ = 0; ///< changes of the open transaction
    bool undone_ = false;
    bool putting_ = false;
};

/// The values of a row, as whoever records it wants them.
[[nodiscard]] jet::Row rowOf(const ServerTable& table, const ServerRow& row);

} // namespace ado
