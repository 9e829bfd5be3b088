#pragma once

#include "jet/TableSpec.h"

#include <optional>

namespace ado {

/// A number that stands for all values of a row: two rows that differ have another, but for one
/// case in 2 to the 64th.
[[nodiscard]] std::uint64_t digestOf(const jet::Row& row);

/// The same for all rows of a table, in their order; and sums, which the server is asked for too.
class TableDigest {
public:
    explicit TableDigest(const jet::TableSpec& table);

    void add(const jet::Row& row);
    [[nodiscard]] const std::vector<std::uint64_t>& rows() const noexcept { return rows_; }
    [[nodiscard]] std::uint64_t whole() const;

    struct Sum {
        std::size_t column;
        bool currency;
        std::optional<std::int64_t> total{0}; ///< nothing if it has got too large
    };
    [[nodiscard]] const std::vector<Sum>& sums() const noexcept { return sums_; }
    /// As the server writes it.
    [[nodiscard]] static std::string text(const Sum& sum);

private:
    std::vector<std::uint64_t> rows_;
    std::vector<Sum> sums_;
};

/// Microseconds from the beginning of the year 2000, as a server counts moments; of whole seconds.
[[nodiscard]] std::int64_t microsecondsOf(jet::Date date);
[[nodiscard]] jet::Date dateOfMicroseconds(std::int64_t moment);

} // namespace ado
