#include "jet/row/RowParts.h"

#include "jet/row/RowOffsets.h"

#include <algorithm>

namespace jet {

RowParts::RowParts(const Format& format, const TableDefinition& table)
    : format_(format), table_(table), fixedEnds_(std::size_t{table.maxColumns} + 1),
      mayVary_(std::size_t{table.maxColumns} + 1) {
    for (const Column& column : table.columns)
        for (std::size_t count = column.number + std::size_t{1}; count < fixedEnds_.size();
             ++count) {
            if (column.type == ColumnType::boolean)
                continue;
            if (column.fixed)
                fixedEnds_[count] =
                    std::max(fixedEnds_[count], std::size_t{column.fixedOffset} + column.length);
            else
                mayVary_[count] = true;
        }
}

void RowParts::cut(std::span<const std::byte> row) {
    row_ = row;
    flaw_ = nullptr;
    offsets_.clear();
    const std::size_t base = format_.row.countSize;
    if (row.size() < base) {
        flaw_ = "a linha está vazia";
        return;
    }
    count_ = load(row.data(), format_.row.count());
    const std::size_t mask = RowLayout::maskSize(count_);
    if (count_ > table_.maxColumns) {
        flaw_ = "a linha tem mais colunas do que a tabela";
        return;
    }
    if (base + mask + fixedEnds_[count_] > row.size()) {
        flaw_ = "a linha é mais curta do que as suas colunas";
        return;
    }
    tableAt_ = maskAt_ = row.size() - mask;
    // A row written before the table had any variable column has no offsets, and no use for them.
    if (mayVary_[count_])
        cutVariables();
}

void RowParts::cutVariables() {
    if (!readOffsets()) {
        flaw_ = "a tabela de posições da linha não cabe nela";
        return;
    }
    if (offsets_.front() < format_.row.countSize + fixedEnds_[count_])
        flaw_ = "os valores da linha cobrem os campos fixos";
    else if (!std::is_sorted(offsets_.begin(), offsets_.end()))
        flaw_ = "as posições da linha estão fora de ordem";
    else if (offsets_.back() > tableAt_)
        flaw_ = "um valor está fora da sua linha";
    else if (offsets_.size() - 1 > table_.maxVariables)
        flaw_ = "a linha tem mais campos variáveis do que a tabela";
}

bool RowParts::readOffsets() {
    const RowOffsets offsets(format_, row_, maskAt_);
    if (!offsets.hasCount() || !offsets.fit())
        return false;
    tableAt_ = offsets.begin();
    for (std::size_t value = 0; value <= offsets.count(); ++value)
        offsets_.push_back(offsets[value]);
    return true;
}

bool RowParts::hasStrayBits() const noexcept {
    return count_ % 8 != 0 && (std::to_integer<unsigned>(row_.back()) >> (count_ % 8)) != 0;
}

bool RowParts::bit(const Column& column) const noexcept {
    return column.number < count_ && hasBit(row_.subspan(maskAt_), column.number);
}

std::optional<std::span<const std::byte>> RowParts::field(const Column& column) const {
    if (column.type == ColumnType::boolean || !bit(column))
        return std::nullopt;
    if (column.fixed)
        return row_.subspan(format_.row.countSize + column.fixedOffset, column.length);
    const std::size_t at = column.variableIndex;
    if (at + 1 >= offsets_.size())
        return std::nullopt; // the column is younger than the row
    return row_.subspan(offsets_[at], offsets_[at + 1] - offsets_[at]);
}

} // namespace jet
