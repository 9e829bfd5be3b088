#pragma once

#include "jet/TableDefinition.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace ado {

/// A table as who works with its rows knows it, wherever they are kept: its name and its columns.
/// Looks at what its provider has; for the call that it is handed to, and what follows at once.
class TableShape {
public:
    TableShape(const std::string& name, std::span<const jet::Column> columns)
        : name_(&name), columns_(columns) {}

    [[nodiscard]] const std::string& name() const noexcept { return *name_; }
    [[nodiscard]] std::span<const jet::Column> columns() const noexcept { return columns_; }
    /// By name, without regard to case and trailing blanks.
    [[nodiscard]] std::optional<std::size_t> findColumn(std::string_view name) const;
    /// What tells the table from one of the same name that was made in its place.
    [[nodiscard]] const void* identity() const noexcept { return name_; }

private:
    const std::string* name_;
    std::span<const jet::Column> columns_;
};

} // namespace ado
