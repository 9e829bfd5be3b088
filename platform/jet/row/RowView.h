#pragma once

#include "jet/TableDefinition.h"
#include "jet/page/UsageMap.h"

namespace jet {

/// A row as it lies on its page, values decoded when asked for. Valid as long as the cursor or
/// reader that gave it stands on it.
///
/// Columns are named by their place in Table::columns(). Which of the typed questions fits a column
/// follows from its type; asking another is a programming error. A question about a null column
/// answers with zero or nothing.
class RowView {
public:
    [[nodiscard]] bool isNull(std::size_t column) const {
        const Column& asked = definition_->columns[column];
        // A yes/no has no bytes: the bit that says of others whether they are there is its value.
        return asked.type != ColumnType::boolean &&
               (!bit(asked) || (!asked.fixed && !variableField(asked)));
    }
    [[nodiscard]] bool boolean(std::size_t column) const;
    [[nodiscard]] std::int64_t integer(std::size_t column) const; ///< byte, integer, long
    [[nodiscard]] Currency currency(std::size_t column) const;
    [[nodiscard]] double real(std::size_t column) const; ///< single, double
    [[nodiscard]] Date date(std::size_t column) const;
    /// Text or memo as UTF-8, in `buffer`, which is overwritten. The view is into `buffer`.
    std::string_view text(std::size_t column, std::string& buffer) const;
    /// Any column.
    [[nodiscard]] Value value(std::size_t column) const;
    /// The bytes stored for a column that isn't null and isn't a yes/no (of a long value: its
    /// definition in the row).
    [[nodiscard]] std::span<const std::byte> stored(std::size_t column) const;
    [[nodiscard]] Row values() const;

    /// The whole stored row.
    [[nodiscard]] std::span<const std::byte> bytes() const noexcept { return bytes_; }

private:
    friend class RowReader;
    friend class RowCursor;
    void place(Pager& pager, const TableDefinition& definition, std::span<const std::byte> bytes,
               PageNo page);
    [[nodiscard]] std::optional<std::span<const std::byte>> field(const Column& column) const;
    [[nodiscard]] std::span<const std::byte> fixedField(const Column& column) const;
    [[nodiscard]] std::optional<std::span<const std::byte>>
    variableField(const Column& column) const;
    [[nodiscard]] bool bit(const Column& column) const noexcept {
        return column.number < count_ && hasBit(bytes_.subspan(maskAt_), column.number);
    }
    /// Begin and end of a variable value in the row; both 0 if the row is older than the column.
    [[nodiscard]] std::pair<std::size_t, std::size_t> extent(std::size_t index) const;

    [[nodiscard]] Bytes longValue(std::span<const std::byte> definition) const;

    const TableDefinition* definition_ = nullptr;
    Pager* pager_ = nullptr;
    std::uint64_t refreshes_ = 0; ///< of the pager, when the row was read
    std::span<const std::byte> bytes_;
    PageNo page_{};
    std::size_t base_ = 0;   ///< bytes of the column count that the row starts with
    std::size_t count_ = 0;  ///< columns that existed when the row was written
    std::size_t maskAt_ = 0; ///< where the null mask begins; it ends the row
};

} // namespace jet
