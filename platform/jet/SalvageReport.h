#pragma once

#include "jet/Report.h"

#include <optional>

namespace jet {

/// Something of a damaged file that isn't in the new one as it was.
struct Loss {
    enum class What : std::uint8_t {
        note,     ///< put right: nothing of the shop's is missing
        apart,    ///< a row that its table can't hold, kept in a table beside it
        value,    ///< one field of a row that was saved: it is empty now
        row,      ///< a row
        page,     ///< a page of rows, nobody knows how many
        table,    ///< a table, all its rows with it
        structure ///< a relationship or an index
    };
    What what{};
    std::string table; ///< may be empty
    PageNo page{};
    std::optional<std::uint16_t> slot; ///< of the row
    std::string reason;                ///< in Portuguese
};
inline constexpr std::size_t kLossKinds = 7;

struct SavedTable {
    std::string name;
    std::uint64_t rows = 0;
    std::uint64_t apart = 0; ///< rows in the table beside it
    std::string apartName;   ///< that table's name
    std::uint64_t said = 0;  ///< rows by the damaged table's own counter
};

/// What came of a salvage.
struct SalvageReport {
    static constexpr std::size_t kTold = 20'000;
    std::vector<Loss> losses; ///< in the order met, at most kTold of them
    std::uint64_t counts[kLossKinds]{};
    std::vector<SavedTable> tables; ///< of the user
    Report check;                   ///< of the new file

    [[nodiscard]] std::uint64_t count(Loss::What what) const noexcept {
        return counts[static_cast<std::size_t>(what)];
    }
    /// Everything is there.
    [[nodiscard]] bool complete() const noexcept;
};

} // namespace jet
