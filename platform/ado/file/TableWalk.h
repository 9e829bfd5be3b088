#pragma once

#include "ado/file/Rows.h"

#include <optional>

namespace ado {

/// All rows of a table in the order of its primary key, or else of a scan. Remembers one place
/// only.
class TableWalk final : public TableRows {
public:
    explicit TableWalk(const jet::Table& table);

    bool first() override;
    bool last() override;
    bool next() override;
    bool previous() override;
    bool empty() override;
    std::int64_t count() override { return table_.rowCount(); }
    bool erased(std::size_t table, const std::unordered_set<std::int64_t>& ids) override;
    bool refresh(const std::vector<jet::RowId>* /*changed*/) override { return true; }

    [[nodiscard]] jet::RowId row(std::size_t /*table*/) const override { return row_; }
    bool find(PreparedStatement statement,
              const std::function<const jet::RowView*()>& current) override;

    void add(jet::RowId row) override { goTo(row); }
    /// Its place goes by its key, which may be another now.
    void changed(jet::RowId row) override { goTo(row); }
    [[nodiscard]] bool isSame(jet::RowReader& reader,
                              std::span<const jet::Value> key) const override;

private:
    bool arrive(bool found);
    void goTo(jet::RowId row);

    const jet::Table& table_;
    std::optional<jet::IndexTree::Cursor> walk_;
    std::optional<jet::RowCursor> scan_;
    jet::RowId row_; ///< stood on
};

} // namespace ado
