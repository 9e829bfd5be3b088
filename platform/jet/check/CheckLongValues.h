#pragma once

#include "jet/check/CheckDefinition.h"
#include "jet/row/LongValueWalk.h"

namespace jet {

/// For a check: the long values of one memo or OLE column, and the pages they are on.
class LongValueCheck {
public:
    /// `pages` are those that `owner` has got.
    LongValueCheck(const CheckContext& context, PageLedger::Owner owner, std::vector<PageNo> pages);

    /// The content of the value that `row` stores as `stored`; nothing (and a finding) if its parts
    /// don't hold together. A part that has been met before ends the way, so all values together
    /// cost no more than the column's pages.
    std::optional<Bytes> follow(std::span<const std::byte> stored, RowId row);

    /// After the last row: the pages themselves, and parts that no row names.
    void finish();

private:
    const CheckContext& context_;
    PageLedger::Owner owner_;
    std::vector<PageNo> pages_;
    LongValueWalk walk_;
};

} // namespace jet
