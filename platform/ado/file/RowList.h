#pragma once

#include "ado/file/ListOrder.h"
#include "ado/file/Rows.h"

#include <deque>

namespace ado {

class Engine;

/// What a list over one table asks the file.
struct ListSource {
    jet::Database& database;
    Engine& engine;
    const jet::Table& table;
    std::string all;                ///< a statement: the ids of its rows, in their order
    std::string belongs;            ///< a statement: one row if that of id ?1 is among them
    std::optional<ListOrder> order; ///< nothing: not by columns
    bool byRow; ///< whether a row belongs, and where, depends on nothing but itself
};

/// Some rows of one table, by id, in an order; each once.
class RowList final : public TableRows {
public:
    /// `all` is that of the source, prepared.
    RowList(ListSource source, PreparedStatement all);

    bool first() override;
    bool last() override;
    bool next() override;
    bool previous() override;
    bool empty() override { return rows_.empty(); }
    std::int64_t count() override { return static_cast<std::int64_t>(rows_.size()); }
    bool erased(std::size_t table, const std::unordered_set<std::int64_t>& ids) override;

    bool refresh(const std::vector<jet::RowId>* changed) override;
    [[nodiscard]] bool isRenewable() const override { return true; }
    bool renew(bool same) override;

    [[nodiscard]] jet::RowId row(std::size_t table) const override;
    bool find(PreparedStatement statement,
              const std::function<const jet::RowView*()>& current) override;

    /// It comes last, whatever the order says, until the rows are asked for anew.
    void add(jet::RowId row) override;
    [[nodiscard]] bool isSame(jet::RowReader& reader,
                              std::span<const jet::Value> key) const override;

private:
    // A deque, because a purge deletes row after row near the beginning.
    using Ids = std::deque<RowNumber>;

    [[nodiscard]] static Ids fetch(PreparedStatement all);
    [[nodiscard]] Ids::const_iterator stood() const;
    [[nodiscard]] bool putIn(std::int64_t id, jet::RowReader& reader);

    ListSource source_;
    Ids rows_;
    std::size_t at_ = 0;
    bool gone_ = false; ///< the row stood on was erased; at_ is the one after it
};

} // namespace ado
