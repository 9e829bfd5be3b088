#pragma once

#include "jet/TableSpec.h"

#include <functional>
#include <string>
#include <string_view>

namespace ado {

/// What "copy ... to stdout (format binary)" gives, made rows of: another way than that by which
/// they are written.
class BinaryRows {
public:
    /// The columns are the table's; `take` gets row after row.
    BinaryRows(const jet::TableSpec& table, std::function<void(jet::Row&)> take)
        : table_(table), take_(std::move(take)) {}

    /// Pieces as they come, broken anywhere. @throws Error{corrupt} for what isn't that, or
    /// naming row and column of a value that a file has no place for.
    void add(std::string_view piece);

private:
    [[nodiscard]] bool takeRow();
    [[nodiscard]] bool takeHead();
    [[nodiscard]] jet::Value taken(std::string_view bytes, const jet::ColumnSpec& column) const;

    const jet::TableSpec& table_;
    std::function<void(jet::Row&)> take_;
    std::string rest_;
    std::size_t at_ = 0; ///< where in it what hasn't been read begins
    bool begun_ = false;
    jet::Row row_;
    std::uint64_t number_ = 0; ///< rows so far
};

} // namespace ado
