#pragma once

#include "ado/engine/SqlError.h"
#include "ado/file/Rows.h"

#include <algorithm>
#include <deque>
#include <exception>
#include <utility>

namespace ado {

/// What a statement gives, fetched as far as it has been walked and somewhat beyond, and kept: a
/// window shows its first row before the last is known. `Cell`: what is kept of each column. Where
/// the statement fails, the rows before come first, and the failure when the walk comes to it.
template <class Cell, class Base>
class Fetched : public Base {
    static constexpr std::size_t kLargestBatch = 64;

public:
    explicit Fetched(PreparedStatement statement)
        : statement_(std::move(statement)), width_(static_cast<std::size_t>(statement_.columns())) {
    }

    bool first() override { return goTo(0); }
    /// Fetches all.
    bool last() override {
        while (fetch()) {
        }
        return fetched_ > 0 && goTo(fetched_ - 1);
    }
    bool next() override { return goTo(at_ + 1); }
    bool previous() override { return at_ > 0 && goTo(at_ - 1); }
    bool empty() override { return fetched_ == 0 && !fetch(); }
    /// Fetches all.
    std::int64_t count() override {
        while (fetch()) {
        }
        return static_cast<std::int64_t>(fetched_);
    }

    /// Of the row stood on.
    [[nodiscard]] const Cell& cell(std::size_t column) const {
        return cells_[at_ * width_ + column];
    }

protected:
    [[nodiscard]] std::size_t place() const noexcept { return at_; }
    [[nodiscard]] std::size_t width() const noexcept { return width_; }
    [[nodiscard]] std::deque<Cell>& cells() noexcept { return cells_; }

private:
    /// @throws Error{full} if that is more than is kept of one statement.
    void keep(Cell&& cell) {
        kept_ += sizeof(Cell);
        if constexpr (!std::is_same_v<Cell, RowNumber>) {
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
    static Cell read(const PreparedStatement& statement, int column) {
        if constexpr (std::is_same_v<Cell, RowNumber>)
            return static_cast<RowNumber>(statement.integer(column));
        else
            return statement.value(column);
    }

    PreparedStatement statement_;
    std::size_t width_;
    std::deque<Cell> cells_; // which never has to be moved as a whole
    std::size_t kept_ = 0;   ///< bytes
    std::size_t fetched_ = 0;
    std::size_t at_ = 0;
    std::size_t batch_ = 1; ///< rows to fetch next: the first shows at once, a long list costs less
    bool complete_ = false;
    std::exception_ptr failure_; ///< what the walk will come to after the rows fetched
};

/// Rows of a join: the statement gives one row id for each table.
class JoinRows final : public Fetched<RowNumber, LiveRows> {
public:
    using Fetched::Fetched;
    bool erased(std::size_t table, const std::unordered_set<std::int64_t>& ids) override;
    [[nodiscard]] jet::RowId row(std::size_t table) const override {
        return jet::unpacked(cell(table));
    }
    bool find(PreparedStatement statement,
              const std::function<const jet::RowView*()>& current) override;

    /// In place of the id of a row that was erased: a page and slot that no row has.
    static constexpr RowNumber kErased = 1;
};

/// Values computed by a statement. Which rows they came from isn't known, so that nothing that
/// happens to those is noticed.
class ComputedRows final : public Fetched<jet::Value, Rows> {
public:
    using Fetched::Fetched;
    bool erased(std::size_t /*table*/, const std::unordered_set<std::int64_t>& /*ids*/) override {
        return false;
    }
};

} // namespace ado
