#pragma once

#include "jet/row/LongValues.h"

#include <bitset>
#include <functional>
#include <unordered_map>

namespace jet {

/// Follows the long values of one column through pages that nobody vouches for. A part that has
/// been met before ends the way, so all values together cost no more than the file.
class LongValueWalk {
public:
    struct Outcome {
        std::optional<Bytes> content;  ///< nothing if the parts don't hold together
        const char* problem = nullptr; ///< then: why, in Portuguese,
        PageNo page{};                 ///< and where
        bool surplus = false;          ///< the parts hold more than the value says it is long
    };

    /// The value that `row` stores as `stored`. Parts on pages that `mayUse` refuses aren't looked
    /// at.
    /// @throws Error{io} if a page can't be read.
    [[nodiscard]] Outcome follow(Pager& pager, std::span<const std::byte> stored, RowId row,
                                 const std::function<bool(PageNo)>& mayUse);

    /// Whether a value that has been followed uses the slot.
    [[nodiscard]] bool uses(RowId slot) const noexcept;
    void forget() noexcept { used_.clear(); }

private:
    std::unordered_map<PageNo, std::bitset<256>> used_;
};

} // namespace jet
