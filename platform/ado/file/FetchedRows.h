#pragma once

#include "ado/engine/SqlError.h"
#include "ado/file/Rows.h"
#include "jet/Error.h"

#include <algorithm>
#include <deque>
#include <exception>
#include <utility>

namespace ado {

/// What a statement gives, fetched as far as it has been walked and somewhat beyond, and kept: a
/// window shows its first row before the last is known. `Cell`: what is kept of each column. Where
/// the statement fails, the rows before come first, and the failure when the walk comes to it.
/// Forward only, no row is kept for long that has been passed.
template <class Cell, class Base>
class Fetched : public Base {
    static constexpr std::size_t kLargestBatch = 256;

public:
    Fetched(PreparedStatement statement, bool forwardOnly)
        : statement_(std::move(statement)), width_(static_cast<std::size_t>(statement_.columns())),
          forwardOnly_(forwardOnly) {}

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
        return cells_[(at_ - passed_) * width_ + column];
    }

protected:
    /// Of the row stood on, among those that are kept.
    [[nodiscard]] std::size_t place() const noexcept { return at_ - passed_; }
    [[nodiscard]] std::size_t width() const noexcept { return width_; }
    [[nodiscard]] std::deque<Cell>& cells() noexcept { return cells_; }

private:
    static std::size_t bytesOf(const Cell& cell) {
        if constexpr (!std::is_same_v<Cell, RowNumber>) {
            if (const auto* text = std::get_if<std::string>(&cell))
                return sizeof(Cell) + text->size();
            if (const auto* bytes = std::get_if<jet::Bytes>(&cell))
                return sizeof(Cell) + bytes->size();
        }
        return sizeof(Cell);
    }
    /// @throws Error{full} if that is more than is kept of one statement.
    void keep(Cell&& cell) {
        kept_ += bytesOf(cell);
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
            complete_ = !statement_.steps(
                kLargestBatch, [this] { forget(); },
                [this] {
                    for (std::size_t i = 0; i < width_; ++i)
                        keep(read(statement_, static_cast<int>(i)));
                    ++fetched_;
                });
        } catch (...) {
            if (fetched_ == before || (before == 0 && statement_.isDisturbed()))
                throw;
            failure_ = std::current_exception(); // of a row that nobody has come to yet
        }
        if (complete_)
            statement_.reset();
        return fetched_ > before;
    }
    void forget() {
        cells_.clear();
        kept_ = fetched_ = 0;
    }
    bool goTo(std::size_t place) {
        while (fetched_ <= place) {
            if (!fetch())
                return false;
        }
        if (forwardOnly_ && place < at_)
            throw jet::Error(jet::Errc::misuse, "Este conjunto só se percorre para a frente.");
        at_ = place;
        if (forwardOnly_ && at_ - passed_ >= kLargestBatch)
            dropPassed();
        return true;
    }
    void dropPassed() {
        const auto end = cells_.begin() + static_cast<std::ptrdiff_t>(place() * width_);
        for (auto cell = cells_.begin(); cell != end; ++cell)
            kept_ -= bytesOf(*cell);
        cells_.erase(cells_.begin(), end);
        passed_ = at_;
    }
    static Cell read(const PreparedStatement& statement, int column) {
        if constexpr (std::is_same_v<Cell, RowNumber>)
            return static_cast<RowNumber>(statement.integer(column));
        else
            return statement.value(column);
    }

    PreparedStatement statement_;
    std::size_t width_;
    bool forwardOnly_;
    std::deque<Cell> cells_; // which never has to be moved as a whole
    std::size_t kept_ = 0;   ///< bytes
    std::size_t fetched_ = 0;
    std::size_t passed_ = 0; ///< rows that aren't kept any more
    std::size_t at_ = 0;
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
