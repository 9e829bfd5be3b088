#pragma once

#include "jet/TableDefinition.h"
#include "jet/page/UsageMap.h"

#include <functional>

namespace jet {

/// Where the content of a memo or OLE value is: in the row behind its definition, in one slot of a
/// long-value page, or in a chain of slots.
struct LongValueDefinition {
    enum class Kind : std::uint8_t { chain = 0, single = 1, inRow = 2 };

    static constexpr Field<std::uint32_t> kHead{0};  ///< length, and the kind in the top two bits
    static constexpr Field<RowId> kFirst{4};         ///< 0 if the content is in the row
    static constexpr Field<std::uint32_t> kStamp{8}; ///< see DataPageLayout; we write 0
    static constexpr std::size_t kSize = 12;         ///< the content in the row comes behind
    static_assert(fill(0, kSize, {kHead, kFirst, kStamp}));
    /// What each part of a chain begins with: where the next one is; 0 in the last.
    static constexpr Field<RowId> kNext{0};

    Kind kind;
    std::uint32_t length; ///< of the content, in bytes as stored
    RowId first;          ///< of a single or a chain

    /// @throws Error{corrupt} naming `page` if `stored` isn't one.
    static LongValueDefinition parse(std::span<const std::byte> stored, PageNo page);
};

/// The content of a long value, given what its row holds.
/// @throws Error{corrupt} if the parts don't add up to its length, or don't end.
[[nodiscard]] Bytes readLongValue(Pager& pager, std::span<const std::byte> stored, PageNo page);

/// Every slot that a long value uses, first to last; for `check` and for giving them back.
[[nodiscard]] std::vector<RowId> longValueParts(Pager& pager, std::span<const std::byte> stored,
                                                PageNo page);

/// What the row is to hold for `content`, its parts put where `place` says. Short content stays in
/// the row if it `mayStay`.
[[nodiscard]] Bytes
writeLongValue(const Format& format, std::span<const std::byte> content, bool mayStay,
               const std::function<RowId(std::span<const std::byte> part)>& place);

/// Stores the contents of one memo or OLE column and gives their space back.
class LongValueStore {
public:
    LongValueStore(Pager& pager, PageAllocator& pages, const LongValueMaps& maps);

    /// What the row is to hold for `content`. Short content stays in the row if it `mayStay`.
    [[nodiscard]] Bytes write(std::span<const std::byte> content, bool mayStay);
    /// Gives back the slots of a value that its row no longer holds.
    void release(std::span<const std::byte> stored, PageNo page);

private:
    RowId place(std::span<const std::byte> part);

    Pager& pager_;
    PageAllocator& pages_;
    UsageMap owned_;
    std::optional<UsageMap> free_;
};

} // namespace jet
