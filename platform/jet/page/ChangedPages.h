#pragma once

#include "jet/Types.h"

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace jet {

/// What a transaction changes in a file.
struct ChangedPages {
    struct Page {
        PageNo number;
        std::span<const std::byte> content;
    };
    std::uint32_t fileBefore{}; ///< pages of the file
    std::uint32_t fileAfter{};
    std::vector<Page> pages; ///< ascending
    /// The content of a page of the old file before the transaction, as the file has it now, until
    /// the next call.
    /// @throws Error{conflict} if the transaction doesn't know it like that, Error{io}.
    std::function<std::span<const std::byte>(PageNo)> before;
};

} // namespace jet
