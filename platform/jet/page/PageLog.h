#pragma once

#include "jet/Types.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace jet {

/// Which pages of a file may have become others, for who remembers what it has made of them: the
/// last few thousand changes. Nothing is kept until somebody asks.
class PageLog {
public:
    /// Everything before it is known to its holder; 0 before all.
    using Position = std::uint64_t;

    /// Whether somebody has asked.
    [[nodiscard]] bool isKept() const noexcept { return !pages_.empty(); }
    void note(PageNo page) noexcept {
        if (isKept())
            pages_[++end_ % kKept] = page;
    }
    /// Any page may have.
    void lose() noexcept { begin_ = ++end_; }

    /// What has come since `position`, which moves to the end; a page may be there several times.
    /// Nothing if that can't be told: then any page may have become another.
    [[nodiscard]] std::optional<std::vector<PageNo>> since(Position& position);

private:
    static constexpr Position kKept = 4096;

    Position begin_ = 1; ///< what was before it is lost
    Position end_ = 1;
    std::vector<PageNo> pages_; ///< a ring: each is at its position's place
};

} // namespace jet
