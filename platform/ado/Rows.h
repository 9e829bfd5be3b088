#pragma once

#include "ado/Engine.h"
#include "jet/Table.h"

#include <algorithm>
#include <deque>
#include <exception>
#include <optional>
#include <unordered_set>
#include <utility>
#include <vector>

/// The rows of a recordset and a place among them, in four kinds: a whole table walked by its key
/// (TableWalk), a list of rows of one table (RowList), rows of a join (JoinRows), computed values
/// (ComputedRows).
namespace ado {

class Rows {
public:
    Rows() = default;
    Rows(const Rows&) = delete;
    Rows& operator=(const Rows&) = delete;
    virtual ~Rows() = default;

    /// Each moves and says whether there is a row there; where there is none, first() or last()
    /// must come next. When the row it stood on has been erased, next() and previous() go to its
    /// neighbours.
    virtual bool first() = 0;
    virtual bool last() = 0;
    virtual bool next() = 0;
    virtual bool previous() = 0;

    [[nodiscard]] virtual bool empty() = 0;
    [[nodiscard]] virtual std::int64_t count() = 0;

    /// Rows of table number `table` have been erased, given by their packed ids; true if the one
    /// stood on is among them.
    virtual bool erased(std::size_t table, const std::unordered_set<std::int64_t>& ids) = 0;
};

/// Rows that are rows of tables.
class LiveRows : public Rows {
public:
    /// The row of table number `table` at the place it stands on; RowId{} where an outer join has
    /// none.
    [[nodiscard]] virtual jet::RowId row(std::size_t table) const = 0;
};

/// All rows of a table in the order of its primary key, or else of a scan. Remembers one place
/// only.
class TableWalk final : public LiveRows {
public:
    explicit TableWalk(const jet::Table& table);

    bool first() override;
    bool last() override;
    bool next() override;
    bool previous() override;
    bool empty() override;
    std::int64_t count() override { return table_.rowCount(); }
    bool erased(std::size_t table, const std::unordered_set<std::int64_t>& ids) override;
    [[nodiscard]] jet::RowId row(std::size_t table) const override;

    /// To a row of the table.
    void goTo(jet::RowId row);
    /// Whether the row stood on is still there, with the key that it had.
    [[nodiscard]] bool isSame() const;

private:
    const jet::Table& table_;
    std::optional<jet::IndexTree::Cursor> walk_;
    std::optional<jet::RowCursor> scan_;
    jet::RowId row_; ///< stood on
};

/// Some rows of one table, by id, in an order; each once.
class RowList final : public LiveRows {
public:
    bool first() override;
    bool last() override;
    bool next() override;
    bool previous() override;
    bool empty() override { return rows_.empty(); }
    std::int64_t count() override { return static_cast<std::int64_t>(rows_.size()); }
    bool erased(std::size_t table, const std::unordered_set<std::int64_t>& ids) override;
    [[nodiscard]] jet::RowId row(std::size_t table) const override;

    [[nodiscard]] const std::deque<std::int64_t>& ids() const noexcept { return rows_; }
    [[nodiscard]] std::size_t place() const noexcept { return at_; }
    void goTo(std::size_t place);
    void append(jet::RowId row) { rows_.push_back(jet::packed(row)); }
    void insert(std::size_t place, jet::RowId row);
    /// Takes the rows of a newer list. Stays on its row, if that is in it and `same` (an erased row
    /// may have left its id to another); else it stands as if that had been erased.
    /// @return whether it stays.
    bool renew(RowList&& newer, bool same);

private:
    // A deque, because a purge deletes row after row near the beginning.
    std::deque<std::int64_t> rows_; ///< packed: 8 bytes each
    std::size_t at_ = 0;
    bool gone_ = false; ///< the row stood on was erased; at_ is the one after it
};

/// What a statement gives, fetched as far as it has been walked and somewhat beyond, and kept.
template <class Cell, class Base>
class Fetched : public Base {
    static constexpr std::size_t kLargestBatch = 64;

public:
    explicit Fetched(Statement statement)
        : statement_(std::move(statement)), width_(static_cast<std::size_t>(statement_.columns())) {
    }

    bool first() override { return goTo(0); }
    bool last() override {
        while (fetch()) {
        }
        return fetched_ > 0 && goTo(fetched_ - 1);
    }
    bool next() override { return goTo(at_ + 1); }
    bool previous() override { return at_ > 0 && goTo(at_ - 1); }
    bool empty() override { return fetched_ == 0 && !fetch(); }
    std::int64_t count() override {
        while (fetch()) {
        }
        return static_cast<std::int64_t>(fetched_);
    }

    [[nodiscard]] const Cell& cell(std::size_t column) const {
        return cells_[at_ * width_ + column];
    }

protected:
    [[nodiscard]] std::size_t place() const noexcept { return at_; }
    [[nodiscard]] std::size_t width() const noexcept { return width_; }
    [[nodiscard]] std::vector<Cell>& cells() noexcept { return cells_; }

private:
    /// @throws Error{full} if that is more than is kept of one statement.
    void keep(Cell&& cell) {
        kept_ += sizeof(Cell);
        if constexpr (!std::is_same_v<Cell, std::int64_t>) {
            if (const auto* text = std::get_if<std::string>(&cell))
                kept_ += text->size();
            else if (const auto* bytes = std::get_if<jet::Bytes>(&cell))
                kept_ += bytes->size();
        }
        if (kept_ > Bounds().bytes)
            tooMuch();
        cells_.push_back(std::move(cell));
    }
    /// One more row at least; false if there is none.
    bool fetch() {
        if (failure_)
            std::rethrow_exception(std::exchange(failure_, nullptr));
        if (complete_)
            return false;
        const std::size_t before = fetched_;
        complete_ = true; // also when it fails: a failed statement would begin anew
        try {
            complete_ = !statement_.steps(batch_, [this] {
                for (std::size_t i = 0; i < width_; ++i)
                    keep(read(statement_, static_cast<int>(i)));
                ++fetched_;
            });
        } catch (...) {
            if (fetched_ == before)
                throw;
            failure_ = std::current_exception(); // of a row that nobody has come to yet
        }
        if (complete_)
            statement_.reset();
        batch_ = std::min(2 * batch_, kLargestBatch);
        return fetched_ > before;
    }
    bool goTo(std::size_t place) {
        while (fetched_ <= place) {
            if (!fetch())
                return false;
        }
        at_ = place;
        return true;
    }
    static Cell read(const Statement& statement, int column) {
        if constexpr (std::is_same_v<Cell, std::int64_t>)
            return statement.integer(column);
        else
            return statement.value(column);
    }

    Statement statement_;
    std::size_t width_;
    std::vector<Cell> cells_;
    std::size_t kept_ = 0; ///< bytes
    std::size_t fetched_ = 0;
    std::size_t at_ = 0;
    std::size_t batch_ = 1; ///< rows to fetch next: the first shows at once, a long list costs less
    bool complete_ = false;
    std::exception_ptr failure_; ///< what the walk will come to after the rows fetched
};

/// Rows of a join: the statement gives one row id for each table.
class JoinRows final : public Fetched<std::int64_t, LiveRows> {
public:
    using Fetched::Fetched;
    bool erased(std::size_t table, const std::unordered_set<std::int64_t>& ids) override;
    [[nodiscard]] jet::RowId row(std::size_t table) const override {
        return jet::unpacked(cell(table));
    }
    /// The ids of all tables at the place it stands on.
    [[nodiscard]] std::vector<std::int64_t> ids() const;

    /// In place of the id of a row that was erased: a page and slot that no row has.
    static constexpr std::int64_t kErased = 1;
};

/// Values computed by a statement.
class ComputedRows final : public Fetched<jet::Value, Rows> {
public:
    using Fetched::Fetched;
    bool erased(std::size_t /*table*/, const std::unordered_set<std::int64_t>& /*ids*/) override {
        return false;
    }
};

} // namespace ado
