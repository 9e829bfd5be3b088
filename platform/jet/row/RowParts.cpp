#include "jet/row/RowParts.h"

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
    const std::size_t base = format_.columnCountSize;
    if (row.size() < base) {
        flaw_ = "a linha está vazia";
        return;
    }
    count_ = base == 1 ? load<std::uint8_t>(row.data()) : load<std::uint16_t>(row.data());
    const std::size_t mask = (count_ + 7) / 8;
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
    if (!(format_.isJet3() ? readOffsetsJet3() : readOffsetsJet4())) {
        flaw_ = "a tabela de posições da linha não cabe nela";
        return;
    }
    if (offsets_.front() < format_.columnCountSize + fixedEnds_[count_])
        flaw_ = "os valores da linha cobrem os campos fixos";
    else if (!std::is_sorted(offsets_.begin(), offsets_.end()))
        flaw_ = "as posições da linha estão fora de ordem";
    else if (offsets_.back() > tableAt_)
        flaw_ = "um valor está fora da sua linha";
    else if (offsets_.size() - 1 > table_.maxVariables)
        flaw_ = "a linha tem mais campos variáveis do que a tabela";
}

bool RowParts::readOffsetsJet3() {
    const auto byteAt = [&](std::size_t at) { return std::to_integer<std::size_t>(row_[at]); };
    // Offsets are single bytes; the jump table says from which entry on another 256 are added.
    const std::size_t jumps = (row_.size() - 1) / 256;
    if (maskAt_ < format_.columnCountSize + 2 + jumps)
        return false;
    const std::size_t variables = byteAt(maskAt_ - 1);
    const std::size_t first = maskAt_ - 2 - jumps;
    if (first < format_.columnCountSize + variables)
        return false;
    const std::size_t used = (first - variables) / 256 < jumps ? jumps - 1 : jumps;
    tableAt_ = first - variables;
    std::size_t add = 0;
    for (std::size_t entry = 0, jump = 0; entry <= variables; ++entry) {
        for (; jump < used && byteAt(maskAt_ - 2 - jump) == entry; ++jump)
            add += 256;
        offsets_.push_back(byteAt(first - entry) + add);
    }
    return true;
}

bool RowParts::readOffsetsJet4() {
    if (maskAt_ < format_.columnCountSize + 4)
        return false;
    const std::size_t variables = load<std::uint16_t>(row_.data() + maskAt_ - 2);
    if (maskAt_ < format_.columnCountSize + 4 + 2 * variables)
        return false;
    tableAt_ = maskAt_ - 4 - 2 * variables;
    for (std::size_t entry = 0; entry <= variables; ++entry)
        offsets_.push_back(load<std::uint16_t>(row_.data() + maskAt_ - 4 - 2 * entry));
    return true;
}

bool RowParts::hasStrayBits() const noexcept {
    return count_ % 8 != 0 && (std::to_integer<unsigned>(row_.back()) >> (count_ % 8)) != 0;
}

bool RowParts::bit(const Column& column) const noexcept {
    return column.number < count_ &&
           (std::to_integer<unsigned>(row_[maskAt_ + column.number / 8]) >> (column.number % 8) &
            1U) != 0;
}

std::optional<std::span<const std::byte>> RowParts::field(const Column& column) const {
    if (column.type == ColumnType::boolean || !bit(column))
        return std::nullopt;
    if (column.fixed)
        return row_.subspan(format_.columnCountSize + column.fixedOffset, column.length);
    const std::size_t at = column.variableIndex;
    if (at + 1 >= offsets_.size())
        return std::nullopt; // the column is younger than the row
    return row_.subspan(offsets_[at], offsets_[at + 1] - offsets_[at]);
}

} // namespace jet
