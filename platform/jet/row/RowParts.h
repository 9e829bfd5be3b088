#pragma once

#include "jet/TableDefinition.h"

namespace jet {

/// One row's bytes, cut into fields, for who doesn't trust them yet. Unlike RowView it looks at
/// every offset first and throws nothing: what is wrong is a question, and a row with a flaw has no
/// fields.
class RowParts {
public:
    RowParts(const Format& format, const TableDefinition& table);

    /// Cuts another row; the bytes must outlive the questions.
    void cut(std::span<const std::byte> row);

    /// In Portuguese; null if the row is sound.
    [[nodiscard]] const char* flaw() const noexcept { return flaw_; }
    /// Whether bits of the null mask are set that stand for no column.
    [[nodiscard]] bool hasStrayBits() const noexcept;

    /// A yes/no's value, or whether another column isn't null.
    [[nodiscard]] bool bit(const Column& column) const noexcept;
    /// The bytes of a column; nothing if it is null, or a yes/no.
    [[nodiscard]] std::optional<std::span<const std::byte>> field(const Column& column) const;

private:
    void cutVariables();
    [[nodiscard]] bool readOffsets();

    const Format& format_;
    const TableDefinition& table_;
    std::vector<std::size_t> fixedEnds_; ///< by count of columns: bytes the fixed ones take
    std::vector<bool> mayVary_;          ///< by count of columns: whether one of them varies
    std::span<const std::byte> row_;
    const char* flaw_ = nullptr;
    std::size_t count_ = 0;
    std::size_t maskAt_ = 0;
    std::size_t tableAt_ = 0;          ///< where what follows the variable values begins
    std::vector<std::size_t> offsets_; ///< of the variable values, and their end
};

} // namespace jet
