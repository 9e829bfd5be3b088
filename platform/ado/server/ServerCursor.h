#pragma once

#include "ado/provider/Cursor.h"
#include "ado/server/ServerSession.h"

#include <deque>

namespace ado {

/// What all open recordsets over a server have: the statement and its fields.
class ServerCursor : public Cursor {
public:
    /// The one that fits the statement, at its first row. @throws Error{syntax, notFound}.
    [[nodiscard]] static std::unique_ptr<Cursor> open(ServerSession& session,
                                                      const std::string& source, CursorType type,
                                                      LockType lock, CommandType command);

    [[nodiscard]] QueryFields& fields() noexcept override { return query_.fields(); }
    [[nodiscard]] bool live() const noexcept override { return query_.live(); }
    [[nodiscard]] bool updatable() const noexcept override { return query_.keyed() != nullptr; }
    [[nodiscard]] std::span<const jet::Column> columns(std::size_t table) const override {
        return query_.tables()[table]->columns;
    }
    [[nodiscard]] bool takesEmptyText(const QueryField& /*field*/) override { return true; }
    [[nodiscard]] std::optional<std::string> refusal(const QueryField& field,
                                                     const jet::Value& value) override;
    [[nodiscard]] const std::string& filter() const noexcept override { return filter_; }
    [[nodiscard]] const std::string& sort() const noexcept override { return sort_; }
    void setFilter(const std::string& condition) override;
    void setSort(const std::string& fields) override;
    void reload() final;
    [[nodiscard]] std::vector<std::string> writersSince(std::uint64_t moment) const override {
        return updatable() ? session_.writersSince(query_.keyed()->name, moment)
                           : std::vector<std::string>();
    }

protected:
    ServerCursor(ServerSession& session, ServerQuery query)
        : session_(session), query_(std::move(query)) {}

    /// Asks for the rows anew, as the query has them now. @throws Error{syntax, notFound}, and what
    /// there was stays.
    virtual void fetchFirst() = 0;
    [[nodiscard]] Spelling spelling();

    ServerSession& session_;
    ServerQuery query_;

private:
    void restrict(const std::function<void(ServerQuery&)>& change);

    std::string filter_;
    std::string sort_;
    bool fresh_ = false; ///< the rows have just been asked for
    bool later_ = false; ///< they can wait until one is asked for
};

/// Rows of one table, asked for by ranges of their order: a window of some rows is kept, and moves
/// along. They can be changed.
class ServerList final : public ServerCursor {
public:
    ServerList(ServerSession& session, ServerQuery query, CursorType type);

    /// As soon as a row is asked for: who looks for one next needs none of the first.
    void refresh() override;
    void restart() override;
    [[nodiscard]] At place() override;
    void catchUp() override;
    [[nodiscard]] bool empty() override;
    [[nodiscard]] std::int64_t count() override;
    void find(const std::string& criterion) override;
    void findFirst(const std::string& criterion) override;
    [[nodiscard]] jet::Value value(const QueryField& field) override;
    [[nodiscard]] State state(std::size_t table) override;
    [[nodiscard]] std::optional<std::uint64_t> version() override;
    [[nodiscard]] std::optional<std::uint64_t> versionToEdit() override;
    [[nodiscard]] std::optional<std::uint64_t> versionToChange() override;
    void forgetSeen() noexcept override { seen_.reset(); }
    void insert(Given given, const Stored& stored) override;
    void update(Given given, std::optional<std::uint64_t> expected, const Stored& stored) override;
    [[nodiscard]] std::optional<std::uint64_t>
    versionToErase(std::optional<std::uint64_t> asShown) override;
    void erase(std::optional<std::uint64_t> expected) override;

protected:
    bool first() override;
    bool last() override;
    bool next() override;
    bool previous() override;
    void arrived() noexcept override { seen_.reset(); }
    void fetchFirst() override;

private:
    using From = ServerQuery::From;
    [[nodiscard]] std::deque<ServerRow> fetch(From from, bool forwards, const std::string& more,
                                              std::size_t most);
    /// How much has been changed of what these rows are.
    [[nodiscard]] ServerSession::Moment now();
    /// What others have done makes the rows around the one stood on unknown.
    void forgetNeighbours();
    void requireCurrent();
    void requireFingerprints();
    void catchUpRow();
    [[nodiscard]] std::deque<ServerRow> fetchBeyond(bool forwards);
    [[nodiscard]] bool findHere(const std::string& criterion);
    [[nodiscard]] bool readAgain();
    bool step(bool forwards);
    void settle();
    void find(From from, const std::string& criterion);
    void fetchFirst(std::size_t most);
    [[nodiscard]] bool mayKeep();
    [[nodiscard]] bool isWhole();
    void setAside();
    [[nodiscard]] bool takeBack();
    [[nodiscard]] ServerRow& here() { return rows_[at_]; }

    /// All rows of a list, as they were at a moment.
    struct Whole {
        std::string filter;
        std::string sort;
        ServerSession::Moment moment;
        std::deque<ServerRow> rows;
    };

    // The rows stand in their order without a gap; the one stood on is rows_[at_].
    std::deque<ServerRow> rows_;
    std::size_t at_ = 0;
    bool anchorGone_ = false; ///< rows_[at_] is no row any more: a place between two
    bool fromFirst_ = false;  ///< no row comes before rows_
    bool toLast_ = false;     ///< no row comes behind them
    bool added_ = false;      ///< stands on a row added to a list: behind all others
    bool updated_ = false;    ///< a row here, which may not belong to them any more
    bool toBegin_ = false;    ///< refreshed, and not asked for yet
    std::size_t batch_ = 1;
    const std::size_t firstBatch_;
    bool toWalk_ = false;        ///< refreshed for somebody who wants all rows
    std::size_t walked_ = 0;     ///< rows, when somebody last wanted all
    std::optional<Whole> whole_; ///< set aside

    ServerSession::Moment neighbours_; ///< when the rows around were asked for
    ServerSession::Moment current_;    ///< and the one stood on
    std::optional<std::int64_t> seen_; ///< its fingerprint as first read
    std::optional<std::int64_t> count_;
    ServerSession::Moment counted_;
};

/// Rows of a join, or computed ones, as they were when they were fetched.
class ServerAnswer final : public ServerCursor {
public:
    ServerAnswer(ServerSession& session, ServerQuery query);
    ~ServerAnswer() override;
    /// What is kept of one answer, at most.
    static inline std::size_t mostBytes = std::size_t{256} << 20;

    void refresh() override { reload(); }
    void catchUp() override {}
    [[nodiscard]] bool empty() override { return rows_.empty(); }
    [[nodiscard]] std::int64_t count() override;
    void find(const std::string& criterion) override;
    [[nodiscard]] jet::Value value(const QueryField& field) override;
    [[nodiscard]] State state(std::size_t table) override;
    // Of what can't be changed.
    [[nodiscard]] std::optional<std::uint64_t> version() override { return std::nullopt; }
    [[nodiscard]] std::optional<std::uint64_t> versionToEdit() override { return std::nullopt; }
    [[nodiscard]] std::optional<std::uint64_t> versionToChange() override { return std::nullopt; }
    void forgetSeen() noexcept override {}
    void insert(Given /*given*/, const Stored& /*stored*/) override {}
    void update(Given /*given*/, std::optional<std::uint64_t> /*expected*/,
                const Stored& /*stored*/) override {}
    [[nodiscard]] std::optional<std::uint64_t>
    versionToErase(std::optional<std::uint64_t> asShown) override {
        return asShown;
    }
    void erase(std::optional<std::uint64_t> /*expected*/) override {}

protected:
    bool first() override { return goTo(0); }
    bool last() override;
    bool next() override { return goTo(at_ + 1); }
    bool previous() override { return at_ > 0 && goTo(at_ - 1); }
    void arrived() noexcept override {}
    void fetchFirst() override;

private:
    bool goTo(std::size_t place);
    bool fetchMore();
    void keep(const ServerRows& rows);
    [[nodiscard]] ServerRows openPortal(const std::string& name, std::size_t most);
    void requirePortal();
    [[nodiscard]] ServerRows ask(const std::string& command);
    void closePortal() noexcept;

    std::deque<std::vector<std::optional<std::string>>> rows_;
    std::vector<ServerTable::Type> types_;
    std::size_t at_ = 0;
    bool complete_ = false;
    std::string portal_;     ///< the server's name for what is fetched in pieces; "" for none
    std::uint64_t line_ = 0; ///< where it has that name
    std::size_t kept_ = 0;
};

} // namespace ado
